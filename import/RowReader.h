#pragma once

#include <QRegularExpression>
#include <string>
#include <vector>

#include "import/CsvRecords.h"
#include "import/Recognition.h"
#include "import/StatementRow.h"
#include "import/TextPool.h"

// Turns the records of one file into rows under the file's layout: dated
// entries with a signed amount, skipped headings, totals and notes, and
// refused lines with their reason. Never guesses: a line that carries money
// but whose date or amount cannot be read is refused and shown, not dropped.
class RowReader {
public:
    RowReader(const Layout& layout, TextPool& pool);

    // Appends the row a record makes; blank lines, the header line (and its
    // repeats) and the lines above it make none.
    void read(const CsvRecord& record, std::vector<StatementRow>& rows);

    // The total the file's own total lines state: the last grand total, else
    // the sum of the totals of its parts.
    bool hasStatedTotal() const { return hasGrandTotal_ || hasPartTotals_; }
    int64_t statedTotal() const { return hasGrandTotal_ ? grandTotal_ : partTotals_; }
    // The card numbers of a sectioned statement's cardholder lines, in order.
    const std::vector<std::string>& sectionNumbers() const { return sectionNumbers_; }

private:
    void readRecord(const CsvRecord& r, std::vector<StatementRow>& rows);
    std::string_view cell(const CsvRecord& r, Role role) const;
    std::string joined(const CsvRecord& r, Role role, std::string_view separator) const;
    std::string dateText(const CsvRecord& r) const;
    void readUndated(const CsvRecord& r, StatementRow& row);
    void keepTotal(const QString& lineText, int64_t amount);
    bool readAmount(const CsvRecord& r, StatementRow& row);
    void applyKindRules(const CsvRecord& r, StatementRow& row, std::string& partner);
    void fillTexts(const CsvRecord& r, StatementRow& row, std::string partner);
    void finish(StatementRow& row, RowKind kind, std::string_view reason, std::vector<StatementRow>& rows);

    const Layout& layout_;
    TextPool& pool_;
    std::vector<QRegularExpression> kindPatterns_;
    QRegularExpression sectionLine_;
    std::string currentSection_;
    std::vector<std::string> sectionNumbers_;
    bool hasGrandTotal_ = false;
    int64_t grandTotal_ = 0;
    bool hasPartTotals_ = false;
    int64_t partTotals_ = 0;
};
