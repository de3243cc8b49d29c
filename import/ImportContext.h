#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "import/CardStatementCheck.h"
#include "import/Matching.h"
#include "store/ImportRecords.h"

class DataModel;
struct StatementFile;

// An asset or a sub-item as the import offers it.
struct ContextSisan {
    int64_t id = 0;
    std::string namae;
};
struct ContextHimoku {
    int64_t id = 0;
    int64_t syubetuNo = 0;  // 1 expense, 2 income
    std::string namae;      // "食費/外食"
};

// What the book knows that a statement's rows are planned with. It is read
// from the store on the store's thread (loadImportContext); planning with it
// needs no store and may run on any thread.
struct ImportContext {
    int64_t sisanId = 0;  // the asset the statement goes to
    std::vector<ContextSisan> sisans;
    std::vector<ContextHimoku> himokus;  // sub-items only, in the tree's order
    std::vector<ImportAssignment> assignments;
    std::vector<ImportAccountRow> accounts;
    // The asset's entries around the statement's dates, and the other
    // assets' entries around its transfer-like rows.
    std::vector<ImportBookRow> sameAsset;
    std::vector<ImportBookRow> otherAssets;
    // The newest import of a file with the same bytes (id 0 when none).
    ImportRecordRow sameFile;
    // For a card asset: the period the statement bills, as the book has it.
    std::optional<CardStatementPeriod> cardPeriod;

    const ContextSisan* sisan(int64_t id) const;
    const ContextHimoku* himoku(int64_t id) const;
};

// The date range the matching needs around the rows: the statement's first
// and last date widened by the matching windows.
struct ImportDateRange {
    std::string from, to;  // yyyy-MM-dd; both empty when no row has a date
};
ImportDateRange sameAssetRange(const StatementFile& statement, const MatchWindows& windows = {});
ImportDateRange transferRange(const StatementFile& statement, const MatchWindows& windows = {});

// Reads the context of importing the statement into the asset. False after
// the store's message.
bool loadImportContext(DataModel& dm, const StatementFile& statement, int64_t sisanId, ImportContext& context);

// The matching's view of a book row.
BookEntry bookEntryOf(const ImportBookRow& row);
