#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "import/StatementDate.h"
#include "import/StatementRow.h"

// What a column of a statement means.
enum class Role : uint8_t {
    Date,            // the row's date (利用日 on a card)
    Year, Month, Day,  // a date split over three columns
    Text,            // the description; several Text columns are joined with a blank
    Note,            // memo and remark columns, kept for the entry's note
    Amount,          // one signed or card-charge column (see SignConvention)
    In, Out,         // money in / money out, in either order
    TransferAmount,  // a transfer's amount in its own column (Zaim's 振替): money out
    ForeignAmount,   // an amount in a foreign currency: never an entry's amount
    Billed,          // what this statement charges for the row (installments: one part)
    NaturalId,       // the row's own id
    Kind,            // a kind of row (取引内容, 方法, 振替 flag, 種別, カテゴリ)
    Counterpart,     // the other side a row names: PayPay's funding (取引方法), Zaim's 入金先
    Account,         // the account or card a row belongs to
    Category,        // the file's own category columns, joined with "/"
    Ignored,         // a column that only helps to recognise the layout
};
constexpr int kRoleCount = static_cast<int>(Role::Ignored) + 1;

// A column: found by its heading (header layouts) or by its position
// (headerless layouts and mappings without a header line).
struct ColumnRule {
    Role role;
    // Headings the column may have, separated by "|", compared after NFKC and
    // trimming (so "受入金額（円）" also finds "受入金額(円)"). A heading that
    // starts with "^" is a regular expression; its first group, if any, is a
    // value worth keeping (the month of 楽天's "10月支払金額").
    std::string heading;
    int index = -1;
    bool required = true;
};

// A value a file states above its table that the import keeps.
enum class StatedValue : uint8_t { AccountNumber, PaymentDate, PaymentMonth, Period, BilledTotal, CardName };

// A preamble line's label, as a regular expression on the NFKC text of a
// cell. With a group, the group is the value ("お客さま口座番号:(.+)");
// without, the value is the next non-empty cell on the line.
struct PreambleLabel {
    StatedValue value;
    std::string label;
};

// A rule on the text of one column that marks a row: as money moving between
// own assets, or as a line to skip. The pattern is a regular expression on
// the NFKC text of the cell.
struct KindRule {
    Role column;
    std::string pattern;
    TransferHint transfer = TransferHint::None;  // None with a skip reason: skip the row
    std::string partner;                         // the other asset the hint proposes
    std::string skipReason;
    bool partnerFromCounterpart = false;  // the partner is what the Counterpart column names
};

enum class SourceKind : uint8_t { Bank, Card, Emoney, HouseholdBook, Mapping };

// The sign of a single amount column.
enum class SignConvention : uint8_t {
    PositiveIsIncome,   // bank and household-book exports: -1100 is money out
    PositiveIsExpense,  // card statements: 1200 is a purchase, -8570 a refund or cancellation
};

// One layout of statement file, as data. A header layout is recognised by its
// required columns on one of the first 20 lines; a headerless one by its first
// line and the shape of its first data row.
struct ImportProfile {
    std::string id;    // stable name, kept with imported entries ("rakuten-card")
    std::string name;  // what the user reads ("楽天カード ご利用明細")
    SourceKind source = SourceKind::Bank;
    std::vector<ColumnRule> columns;
    SignConvention sign = SignConvention::PositiveIsIncome;
    unsigned dateShapes = DateShape::Any;
    std::vector<PreambleLabel> preamble;
    std::vector<KindRule> kindRules;

    // Headerless layouts: patterns the first line's cells must match (by
    // position), the number of fields of a data row, and for rows with more
    // fields the column whose text held the surplus commas (Vpass writes a
    // merchant's comma unquoted). rowShape: patterns (by position, after the
    // surplus fields are joined) the first data row must match.
    std::vector<std::string> firstLine;
    std::vector<std::string> rowShape;
    int fieldCount = 0;
    int surplusColumn = -1;
    // A line that starts a section (a cardholder line of a card statement):
    // pattern on the NFKC text of its first cell; its second cell is the card's number.
    std::string sectionLine;
    // A file that is no statement but is often picked by mistake (an app's
    // asset-history export): recognising it refuses the file with this message.
    std::string wrongFile;

    bool headerless() const { return !firstLine.empty(); }
};

// The layouts built in: every bank, card, e-money and household-book export
// the program knows, most specific first.
const std::vector<ImportProfile>& builtInProfiles();

// A layout the user described for a file no built-in profile reads: which
// line holds the headings (1-based; 0 when the file has none), which columns
// hold the date, the text and the amount (one signed column, or in and out).
// Column numbers count from 0.
struct UserMapping {
    std::string name;
    int headerLine = 1;
    std::vector<std::string> headings;  // the cells of the header line, as written
    int dateColumn = -1;
    unsigned dateShapes = DateShape::Any;
    std::vector<int> textColumns;
    int amountColumn = -1;  // a signed column: set this, or inColumn and outColumn
    bool positiveIsExpense = false;
    int inColumn = -1;
    int outColumn = -1;
    int noteColumn = -1;
};

// The profile a mapping stands for. With a header line, its columns are found
// by their headings, so the same layout is recognised next time.
ImportProfile profileFromMapping(const UserMapping& mapping);

// A mapping as text to keep in the book, and back; an unreadable text gives
// an empty name.
std::string mappingToJson(const UserMapping& mapping);
UserMapping mappingFromJson(const std::string& json);
