#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Plain records of the statement import's store operations (DataModel,
// "statement import"; the tables are described in ImportTables.h).

// An entry of the book as a statement's rows are matched against it.
struct ImportBookRow {
    int64_t id = 0;
    int64_t sisanId = 0;
    std::string hizuke;
    int64_t syubetuNo = 0;
    int64_t himokuNo = 0;     // kinds 1 and 2
    int64_t idouSisanNo = 0;  // kinds 3 and 4
    int64_t kingaku = 0;      // signed from its asset's side: + money in, - money out
    std::string bikou;
    // From its origin when it was imported; all empty for an entry typed by hand.
    std::string idKey;
    std::string contentKey;
    std::string text;
};

// One statement row to write into the imported asset.
struct ImportEntry {
    std::string hizuke;  // yyyy-MM-dd
    int64_t nen = 0, tuki = 0, hi = 0;
    int64_t kingaku = 0;  // signed from the imported asset's side, never 0
    // An expense (kingaku < 0) or income sub-item; 0 for a transfer.
    int64_t himokuNo = 0;
    // A transfer: the other asset. With pairedItemId, that asset's entry
    // (of the opposite amount) becomes the transfer's other row; without,
    // the other row is added as the entry panel adds it.
    int64_t partnerSisanId = 0;
    int64_t pairedItemId = 0;
    std::string bikou;
    // The origin: the duplicate keys and the text as the file wrote it.
    std::string idKey;
    std::string contentKey;
    std::string text;
};

// A learned category: for a matching key (layout "") or a layout's default (matchKey "").
struct ImportAssignment {
    std::string layout;
    std::string matchKey;
    int64_t syubetuNo = 0;  // 1 expense, 2 income
    int64_t himokuNo = 0;
};

// The asset a layout's files go to, per account number ("" when the file names none).
struct ImportAccountRow {
    std::string layout;
    std::string account;
    int64_t sisanId = 0;
};

// A layout the user mapped by hand.
struct ImportProfileRow {
    int64_t id = 0;
    std::string namae;
    std::string mapping;  // JSON
};

// What is kept of one imported file.
struct ImportRecordRow {
    int64_t id = 0;
    std::string fileName;
    std::string fileHash;  // SHA-256, hex
    std::string layout;    // the profile's id
    std::string layoutName;
    std::string account;
    std::string importedAt;  // yyyy-MM-dd HH:mm:ss, local time
    int64_t sisanId = 0;
    int64_t rowsRead = 0;
    int64_t rowsImported = 0;
    int64_t rowsAlready = 0;
    int64_t rowsRefused = 0;
};

// Everything one import writes, in one transaction.
struct ImportBatch {
    ImportRecordRow record;  // its id and rowsImported are filled by the write
    std::vector<ImportEntry> entries;
    std::vector<ImportAssignment> assignments;
};

struct ImportOutcome {
    int64_t importId = 0;
    std::vector<int64_t> itemIds;  // the entries' rows in the imported asset, in order
};
