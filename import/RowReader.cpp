#include "import/RowReader.h"

#include <algorithm>

#include "import/MatchingText.h"
#include "import/OwnTransfers.h"
#include "import/StatementAmount.h"
#include "import/StatementDate.h"
#include "import/UnicodeText.h"

namespace {

QString qtext(std::string_view s)
{
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

bool allEmpty(const CsvRecord& r)
{
    return std::all_of(r.fields.begin(), r.fields.end(), [](const std::string& f) { return trimmedCell(f).empty(); });
}

// A line whose date cell holds a heading, a note or a total instead of a date.
bool isNoteMark(const QString& cell)
{
    static const QRegularExpression mark(QStringLiteral(R"(^[※■□●◆【\[*]|合計|小計)"));
    return mark.match(cell).hasMatch();
}

// A usable natural id: not mangled into a number by a spreadsheet
// (4.68972E+18) and without the leading zeros a spreadsheet may drop.
std::string usableId(std::string_view cell)
{
    std::string id(trimmedCell(cell));
    if (isEmptyCell(id) || id.find("E+") != std::string::npos || id.find("e+") != std::string::npos) return {};
    if (std::all_of(id.begin(), id.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        const size_t nonZero = id.find_first_not_of('0');
        id = nonZero == std::string::npos ? "0" : id.substr(nonZero);
    }
    return id;
}

int64_t signedAmount(int64_t value, SignConvention sign)
{
    return sign == SignConvention::PositiveIsExpense ? -value : value;
}

}  // namespace

RowReader::RowReader(const Layout& layout, TextPool& pool) : layout_(layout), pool_(pool)
{
    for (const KindRule& rule : layout_.profile.kindRules)
        kindPatterns_.emplace_back(QString::fromStdString(rule.pattern));
    if (!layout_.profile.sectionLine.empty()) sectionLine_ = QRegularExpression(QString::fromStdString(layout_.profile.sectionLine));
}

std::string_view RowReader::cell(const CsvRecord& r, Role role) const
{
    const std::vector<int>& cols = layout_.of(role);
    if (cols.empty() || cols.front() < 0 || static_cast<size_t>(cols.front()) >= r.fields.size()) return {};
    return trimmedCell(r.fields[static_cast<size_t>(cols.front())]);
}

std::string RowReader::joined(const CsvRecord& r, Role role, std::string_view separator) const
{
    std::string out;
    for (const int c : layout_.of(role)) {
        if (c < 0 || static_cast<size_t>(c) >= r.fields.size()) continue;
        const std::string_view text = trimmedCell(r.fields[static_cast<size_t>(c)]);
        if (isEmptyCell(text)) continue;
        if (!out.empty()) out += separator;
        out += text;
    }
    return out;
}

std::string RowReader::dateText(const CsvRecord& r) const
{
    if (layout_.of(Role::Year).empty()) return std::string(cell(r, Role::Date));
    const std::string_view y = cell(r, Role::Year), m = cell(r, Role::Month), d = cell(r, Role::Day);
    if (y.empty() && m.empty() && d.empty()) return {};
    return std::string(y) + "/" + std::string(m) + "/" + std::string(d);
}

void RowReader::read(const CsvRecord& record, std::vector<StatementRow>& rows)
{
    if (record.line <= layout_.headerLine) return;
    const ImportProfile& profile = layout_.profile;
    if (!profile.headerless()) return readRecord(record, rows);
    if (!record.fields.empty() && sectionLine_.match(compatibilityForm(trimmedCell(record.fields[0]))).hasMatch()) {
        currentSection_ = record.fields.size() > 1 ? std::string(trimmedCell(record.fields[1])) : std::string();
        sectionNumbers_.push_back(currentSection_);
        StatementRow row;
        row.line = record.line;
        row.text = pool_.add(currentSection_);
        return finish(row, RowKind::Skipped, "カードの見出し行", rows);
    }
    CsvRecord joined = record;
    joinSurplusFields(joined.fields, profile.surplusColumn, profile.fieldCount);
    readRecord(joined, rows);
}

void RowReader::readRecord(const CsvRecord& r, std::vector<StatementRow>& rows)
{
    const ImportProfile& profile = layout_.profile;
    StatementRow row;
    row.line = r.line;
    if (allEmpty(r)) return;
    if (!layout_.headings.empty() && r.fields.size() == layout_.headings.size()) {
        bool same = true;
        for (size_t i = 0; same && i < r.fields.size(); ++i) same = normalisedHeading(r.fields[i]) == layout_.headings[i];
        if (same) return;
    }

    const std::string date = dateText(r);
    if (isEmptyCell(date) || isNoteMark(compatibilityForm(date))) {
        readUndated(r, row);
        if (row.kind == RowKind::Refused) fillTexts(r, row, {});
        rows.push_back(row);
        return;
    }
    const DateReading when = readStatementDate(date, profile.dateShapes);
    std::string partner;
    applyKindRules(r, row, partner);
    fillTexts(r, row, partner);
    if (when.date.isNull()) return finish(row, RowKind::Refused, when.reason, rows);
    row.date = when.date;
    if (!row.reason.empty()) {  // a kind rule skips the line
        row.kind = RowKind::Skipped;
        rows.push_back(row);
        return;
    }
    if (!readAmount(r, row)) {
        row.kind = RowKind::Refused;
        rows.push_back(row);
        return;
    }
    if (row.kingaku == 0) return finish(row, RowKind::Skipped, "金額が0円の行", rows);
    rows.push_back(row);
}

void RowReader::finish(StatementRow& row, RowKind kind, std::string_view reason, std::vector<StatementRow>& rows)
{
    row.kind = kind;
    row.reason = pool_.add(reason);
    rows.push_back(row);
}

// A line without a date: a heading, a note, a total, or money that cannot be
// placed on a day (a discount line of a card statement).
void RowReader::readUndated(const CsvRecord& r, StatementRow& row)
{
    std::string all;
    for (const std::string& f : r.fields)
        if (!isEmptyCell(f)) all += std::string(trimmedCell(f)) + " ";
    const QString text = compatibilityForm(all);
    const std::string description = joined(r, Role::Text, " ");
    AmountReading amount = readStatementAmount(cell(r, Role::Amount));
    if (amount.kind == AmountReading::Kind::Empty) amount = readStatementAmount(cell(r, Role::Billed));
    if (amount.kind == AmountReading::Kind::Empty) amount = readStatementAmount(cell(r, Role::Out));
    const bool hasAmount = amount.kind == AmountReading::Kind::Value;
    const bool total = text.contains(u"合計") || text.contains(u"小計") || (description.empty() && hasAmount);
    row.kind = RowKind::Skipped;
    if (total) {
        row.reason = pool_.add("合計の行");
        if (hasAmount && !text.contains(u"小計")) keepTotal(text, amount.value);
    } else if (hasAmount && !description.empty() && !isNoteMark(qtext(description))) {
        row.kind = RowKind::Refused;
        row.reason = pool_.add("日付のない金額の行です（割引などは手で入力してください）");
    } else {
        row.reason = pool_.add("見出しや注記の行");
    }
    row.text = pool_.add(trimmedCell(all));
}

// A grand total (合計, 【合計】, or an amount alone) states the file's total;
// totals of one part (ショッピング合計, キャッシング合計) add up to it.
void RowReader::keepTotal(const QString& lineText, int64_t amount)
{
    QString name = lineText;
    name.remove(QRegularExpression(QStringLiteral(R"([\s【】\[\]\d,\-¥円]+)")));
    if (name.isEmpty() || name == u"合計" || name == u"総合計") {
        grandTotal_ = amount;
        hasGrandTotal_ = true;
    } else {
        partTotals_ += amount;
        hasPartTotals_ = true;
    }
}

bool RowReader::readAmount(const CsvRecord& r, StatementRow& row)
{
    const SignConvention sign = layout_.profile.sign;
    auto fail = [&](const std::string& why) {
        row.reason = pool_.add(why);
        return false;
    };
    const AmountReading single = readStatementAmount(cell(r, Role::Amount));
    if (single.kind == AmountReading::Kind::Error) return fail(single.reason);
    const AmountReading in = readStatementAmount(cell(r, Role::In));
    if (in.kind == AmountReading::Kind::Error) return fail(in.reason);
    const AmountReading out = readStatementAmount(cell(r, Role::Out));
    if (out.kind == AmountReading::Kind::Error) return fail(out.reason);
    const AmountReading moved = readStatementAmount(cell(r, Role::TransferAmount));
    if (moved.kind == AmountReading::Kind::Error) return fail(moved.reason);
    // In split columns a zero stands for an unused column (Zaim writes 0).
    const bool hasIn = in.kind == AmountReading::Kind::Value && in.value != 0;
    const bool hasOut = out.kind == AmountReading::Kind::Value && out.value != 0;
    if (hasIn && hasOut) return fail("入金と出金の両方に金額があります");
    if (single.kind == AmountReading::Kind::Value) {
        row.kingaku = signedAmount(single.value, sign);
    } else if (hasIn || hasOut) {
        row.kingaku = hasIn ? in.value : -out.value;
    } else if (moved.kind == AmountReading::Kind::Value && moved.value != 0) {
        row.kingaku = -moved.value;
        if (row.transfer == TransferHint::None) row.transfer = TransferHint::MarkedTransfer;
    } else if (in.kind == AmountReading::Kind::Value || out.kind == AmountReading::Kind::Value) {
        row.kingaku = 0;
    } else if (!isEmptyCell(cell(r, Role::ForeignAmount))) {
        return fail("円の金額がない外貨の行です");
    } else {
        return fail("金額がありません");
    }
    const AmountReading billed = readStatementAmount(cell(r, Role::Billed));
    if (billed.kind == AmountReading::Kind::Value) {
        row.hasBilled = true;
        row.billed = billed.value;
    }
    return true;
}

void RowReader::applyKindRules(const CsvRecord& r, StatementRow& row, std::string& partner)
{
    const std::vector<KindRule>& rules = layout_.profile.kindRules;
    for (size_t i = 0; i < rules.size(); ++i) {
        const KindRule& rule = rules[i];
        bool hit = false;
        for (const int c : layout_.of(rule.column)) {
            if (c >= 0 && static_cast<size_t>(c) < r.fields.size())
                hit = hit || kindPatterns_[i].match(compatibilityForm(trimmedCell(r.fields[static_cast<size_t>(c)]))).hasMatch();
        }
        if (!hit) continue;
        if (!rule.skipReason.empty()) {
            row.reason = pool_.add(rule.skipReason);
            return;
        }
        if (row.transfer != TransferHint::None) continue;
        row.transfer = rule.transfer;
        partner = rule.partnerFromCounterpart ? std::string(cell(r, Role::Counterpart)) : rule.partner;
    }
}

void RowReader::fillTexts(const CsvRecord& r, StatementRow& row, std::string partner)
{
    // A row without a description is named by its category, else its kind
    // (Zaim's income rows, PayPay's charges).
    std::string text = joined(r, Role::Text, " ");
    if (text.empty()) text = joined(r, Role::Category, "/");
    if (text.empty()) text = joined(r, Role::Kind, " ");
    row.text = pool_.add(text);
    row.note = pool_.add(joined(r, Role::Note, " "));
    row.naturalId = pool_.add(usableId(cell(r, Role::NaturalId)));
    const std::string key = matchingKey(text);
    row.matchKey = pool_.add(key);
    row.category = pool_.add(joined(r, Role::Category, "/"));
    const std::string account = joined(r, Role::Account, " ");
    row.account = pool_.add(account.empty() ? currentSection_ : account);
    if (row.transfer == TransferHint::None) {
        TransferGuess guess = guessOwnTransfer(key, layout_.profile.source);
        row.transfer = guess.hint;
        partner = std::move(guess.partner);
    }
    row.partner = pool_.add(partner);
}
