#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "import/ImportContext.h"
#include "import/Matching.h"
#include "import/StatementReader.h"
#include "store/ImportRecords.h"

// One row of the preview: a row of the statement that carries money, what
// the matching found for it, and what the import does with it.
struct PlannedRow {
    uint32_t row = 0;  // index into StatementFile::rows
    MatchStatus status = MatchStatus::New;
    bool checkable = true;     // the user may tick it (never a row already in the book or unreadable)
    bool checked = false;      // 取り込む
    int64_t matchedItemId = 0;  // 取込済み, 重複の可能性: the book's entry it matches
    int64_t himokuNo = 0;       // an expense or income sub-item,
    int64_t partnerSisanId = 0;  // or a transfer with this asset,
    int64_t pairedItemId = 0;    // taking this entry of that asset as its other row (a pair found in the book)
    bool assigned() const { return himokuNo != 0 || partnerSisanId != 0; }
};

// The counts of a plan, as the preview and the command line report them.
struct ImportSummary {
    int64_t read = 0;  // rows that carry money, readable or not
    int64_t imported = 0;  // ticked
    int64_t already = 0;
    int64_t possibleDuplicates = 0;
    int64_t transfers = 0;  // 振替候補
    int64_t refused = 0;
    int64_t income = 0;   // of the ticked rows, transfers aside
    int64_t expense = 0;
    int64_t unassigned = 0;  // ticked rows without a sub-item or partner
};

// A statement planned for one asset: every row matched against the book and
// given a proposal (the sub-item chosen last time for the same text, the
// file's own category, the layout's default, or a transfer partner), which
// the user may change before the plan becomes the store's ImportBatch.
class ImportPlan {
public:
    // Matches and proposes; needs no store, so it may run on any thread.
    ImportPlan(std::shared_ptr<const StatementFile> statement, ImportContext context);
    // Moved, never copied: it points into its own context.
    ImportPlan(const ImportPlan&) = delete;
    ImportPlan& operator=(const ImportPlan&) = delete;
    ImportPlan(ImportPlan&&) = default;
    ImportPlan& operator=(ImportPlan&&) = default;

    const StatementFile& statement() const { return *statement_; }
    const ImportContext& context() const { return context_; }
    const std::vector<PlannedRow>& rows() const { return rows_; }
    const StatementRow& source(size_t i) const { return statement_->rows[rows_[i].row]; }
    // 1 expense (money out) or 2 income (money in): the kind of sub-item row i takes.
    int64_t syubetuOf(size_t i) const;

    // Why nothing of the file may be imported: it has no row that carries
    // money, or every row is already in the book; "" otherwise.
    std::string nothingToImport() const;
    // Why the file may not go into the chosen asset: it names another
    // account than the asset took this layout's files for; "" otherwise.
    std::string accountProblem() const;
    // Either of the two; "" when the file may be imported.
    std::string refusal() const;
    ImportSummary summary() const;

    // Edits; rows are indexes into rows(). Each returns how many rows changed.
    size_t setChecked(const std::vector<size_t>& rows, bool checked);
    // The sub-item on the rows whose kind it fits, each then ticked.
    size_t setHimoku(const std::vector<size_t>& rows, int64_t himokuNo);
    // The rows whose matching text is row i's, row i included.
    std::vector<size_t> sameText(size_t i) const;
    // The sub-item on every ticked row of its kind that has none, kept as the
    // layout's default for the rows of its files never seen.
    size_t setLayoutDefault(int64_t himokuNo);
    // A transfer with the asset on the rows.
    size_t setTransfer(const std::vector<size_t>& rows, int64_t sisanId);

    // The first ticked row without a sub-item or partner, or rows().size().
    size_t firstUnassigned() const;
    // What the preview says of the row: the matching entry, the pair, why
    // it looks like a transfer, or why it could not be read.
    std::string matchText(size_t i) const;
    // The sub-item's name, "振替: " and the partner's, or "".
    std::string assignmentText(size_t i) const;

    // The ticked rows as the store writes them, with the learned categories.
    ImportBatch batch(const std::string& importedAt) const;

private:
    std::shared_ptr<const StatementFile> statement_;
    ImportContext context_;
    std::vector<PlannedRow> rows_;
    std::vector<ImportAssignment> layoutDefaults_;  // chosen in this preview
    std::unordered_map<int64_t, const ImportBookRow*> byId_;  // the context's entries by Id
    // Per kind (expense, income): the sub-items learned per matching key,
    // the sub-items by name, and the layout's default; only sub-items that
    // exist and are of that kind.
    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    using TextMap = std::unordered_map<std::string, int64_t, TextHash, std::equal_to<>>;
    std::array<TextMap, 2> learned_, named_;
    std::array<int64_t, 2> default_{};

    // A row whose amount the book can hold: not 0, within 32 bits.
    static bool writable(const StatementRow& r);

    void propose(PlannedRow& p, const RowMatch& match);
    void indexAssignments();
    // The sub-item that text names in the map of the kind, or 0.
    static int64_t lookUp(const std::array<TextMap, 2>& maps, int64_t syubetuNo, std::string_view text);
    const ImportBookRow* bookRow(int64_t id) const;
    std::string describe(const ImportBookRow& row) const;
    bool fits(size_t i, int64_t himokuNo) const;
};

// Japanese names of the statuses, as the preview shows them.
const char* statusName(MatchStatus status);
