#include "import/Recognition.h"

#include <QRegularExpression>
#include <algorithm>

#include "import/StatementAmount.h"
#include "import/StatementDate.h"
#include "import/UnicodeText.h"

namespace {

QRegularExpression regexOf(const std::string& pattern)
{
    return QRegularExpression(QString::fromStdString(pattern));
}

std::vector<std::string> normalisedCells(const CsvRecord& record)
{
    std::vector<std::string> cells;
    cells.reserve(record.fields.size());
    for (const std::string& f : record.fields) cells.push_back(normalisedHeading(f));
    return cells;
}

// Whether a heading names this cell; a regular expression's first group
// goes to *captured.
bool headingMatches(const std::string& heading, const std::string& cell, std::string* captured)
{
    if (heading.starts_with('^')) {
        const QRegularExpressionMatch m = regexOf(heading).match(QString::fromStdString(cell));
        if (m.hasMatch() && m.lastCapturedIndex() >= 1) *captured = m.captured(1).toStdString();
        return m.hasMatch();
    }
    size_t start = 0;
    for (;;) {
        const size_t bar = heading.find('|', start);
        if (normalisedHeading(heading.substr(start, bar - start)) == cell) return true;
        if (bar == std::string::npos) return false;
        start = bar + 1;
    }
}

// Finds every column of the profile on a header line; nullopt when a required one is missing.
std::optional<Layout> resolveHeader(const ImportProfile& profile, const std::vector<std::string>& cells)
{
    Layout layout;
    for (const ColumnRule& column : profile.columns) {
        // A column may serve two roles (PayPay's 取引内容 is a kind and a
        // note), but not twice the same one: two Text columns are two cells.
        std::vector<int>& role = layout.columns[static_cast<size_t>(column.role)];
        int found = column.index;
        std::string captured;
        for (size_t i = 0; found < 0 && i < cells.size(); ++i) {
            const bool taken = std::find(role.begin(), role.end(), static_cast<int>(i)) != role.end();
            if (!taken && headingMatches(column.heading, cells[i], &captured)) found = static_cast<int>(i);
        }
        if (found < 0) {
            if (column.required) return std::nullopt;
            continue;
        }
        role.push_back(found);
        if (column.role == Role::Billed && !captured.empty()) layout.stated.paymentMonth = std::stoi(captured);
    }
    layout.profile = profile;
    layout.headings = cells;
    return layout;
}

int foundColumns(const Layout& layout)
{
    int n = 0;
    for (const auto& c : layout.columns) n += static_cast<int>(c.size());
    return n;
}

void keepStated(StatedValues& stated, StatedValue what, const std::string& value)
{
    if (value.empty()) return;
    switch (what) {
    case StatedValue::AccountNumber:
        if (stated.accountNumber.empty()) stated.accountNumber = value;
        break;
    case StatedValue::CardName:
        if (stated.cardName.empty()) stated.cardName = value;
        break;
    case StatedValue::Period:
        if (stated.period.empty()) stated.period = value;
        break;
    case StatedValue::PaymentDate:
        if (stated.paymentDate.isNull()) stated.paymentDate = readStatementDate(value).date;
        break;
    case StatedValue::PaymentMonth:
        if (stated.paymentMonth == 0) stated.paymentMonth = std::atoi(value.c_str());
        break;
    case StatedValue::BilledTotal: {
        const AmountReading a = readStatementAmount(value);
        if (!stated.hasBilledTotal && a.kind == AmountReading::Kind::Value) {
            stated.hasBilledTotal = true;
            stated.billedTotal = a.value;
        }
        break;
    }
    }
}

// Reads the labelled values of the lines above the table.
void readPreamble(const std::vector<PreambleLabel>& labelRules, const std::vector<CsvRecord>& records, uint32_t headerLine,
                  StatedValues& stated)
{
    std::vector<QRegularExpression> labels;
    for (const PreambleLabel& s : labelRules) labels.push_back(regexOf(s.label));
    for (const CsvRecord& r : records) {
        if (r.line >= headerLine) break;
        const std::vector<std::string> cells = normalisedCells(r);
        for (size_t c = 0; c < cells.size(); ++c) {
            for (size_t s = 0; s < labelRules.size(); ++s) {
                const QRegularExpressionMatch m = labels[s].match(QString::fromStdString(cells[c]));
                if (!m.hasMatch()) continue;
                std::string value;
                if (m.lastCapturedIndex() >= 1) {
                    value = m.captured(1).trimmed().toStdString();
                } else {
                    for (size_t n = c + 1; n < cells.size() && value.empty(); ++n) value = cells[n];
                }
                keepStated(stated, labelRules[s].value, value);
            }
        }
    }
}

bool cellsMatch(const std::vector<std::string>& patterns, const std::vector<std::string>& cells)
{
    for (size_t i = 0; i < patterns.size(); ++i) {
        if (patterns[i].empty()) continue;
        if (i >= cells.size() || !regexOf(patterns[i]).match(QString::fromStdString(cells[i])).hasMatch()) return false;
    }
    return true;
}

// A headerless layout: its first line fits, and so does its first dated row.
std::optional<Layout> resolveHeaderless(const ImportProfile& profile, const std::vector<CsvRecord>& records)
{
    if (records.empty() || !cellsMatch(profile.firstLine, normalisedCells(records.front()))) return std::nullopt;
    for (size_t i = 1; i < records.size(); ++i) {
        CsvRecord row = records[i];
        if (row.fields.empty() || readStatementDate(row.fields[0], profile.dateShapes).date.isNull()) continue;
        joinSurplusFields(row.fields, profile.surplusColumn, profile.fieldCount);
        if (!cellsMatch(profile.rowShape, normalisedCells(row))) return std::nullopt;
        break;
    }
    Layout layout;
    layout.profile = profile;
    for (const ColumnRule& column : profile.columns) layout.columns[static_cast<size_t>(column.role)].push_back(column.index);
    const std::vector<std::string>& first = records.front().fields;
    if (first.size() > 1) layout.stated.accountNumber = std::string(trimmedCell(first[1]));
    if (first.size() > 2) layout.stated.cardName = std::string(trimmedCell(first[2]));
    return layout;
}

}  // namespace

std::string normalisedHeading(const std::string& cell)
{
    return toUtf8(compatibilityForm(trimmedCell(cell)).trimmed());
}

void joinSurplusFields(std::vector<std::string>& fields, int column, int fieldCount)
{
    if (column < 0) return;
    const size_t want = static_cast<size_t>(fieldCount);
    if (fields.size() <= want) return;
    const size_t surplus = fields.size() - want;
    const auto first = fields.begin() + column;
    for (size_t i = 1; i <= surplus; ++i) *first += "," + first[static_cast<std::ptrdiff_t>(i)];
    fields.erase(first + 1, first + 1 + static_cast<std::ptrdiff_t>(surplus));
}

std::optional<Layout> recognise(const std::vector<CsvRecord>& records, const std::vector<ImportProfile>& profiles)
{
    std::optional<Layout> best;
    const size_t lines = std::min(records.size(), kHeaderSearchLines);
    for (const ImportProfile& profile : profiles) {
        if (profile.headerless()) {
            if (!best) best = resolveHeaderless(profile, records);
            continue;
        }
        for (size_t i = 0; i < lines; ++i) {
            if (records[i].line > kHeaderSearchLines) break;
            std::optional<Layout> candidate = resolveHeader(profile, normalisedCells(records[i]));
            if (!candidate) continue;
            candidate->headerLine = records[i].line;
            if (!best || foundColumns(*candidate) > foundColumns(*best)) best = std::move(candidate);
            break;
        }
    }
    if (best && best->headerLine > 0) readPreamble(best->profile.preamble, records, best->headerLine, best->stated);
    return best;
}

std::optional<Layout> applyProfile(const ImportProfile& profile, const std::vector<CsvRecord>& records,
                                   uint32_t headerLine)
{
    const bool byHeading = std::any_of(profile.columns.begin(), profile.columns.end(),
                                       [](const ColumnRule& c) { return !c.heading.empty(); });
    if (byHeading || profile.headerless()) return recognise(records, {profile});
    Layout layout;
    layout.profile = profile;
    layout.headerLine = headerLine;
    for (const ColumnRule& column : profile.columns) layout.columns[static_cast<size_t>(column.role)].push_back(column.index);
    for (const CsvRecord& r : records)
        if (r.line == headerLine) layout.headings = normalisedCells(r);
    return layout;
}
