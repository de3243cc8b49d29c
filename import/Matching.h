#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "import/ImportDate.h"
#include "import/StatementReader.h"

// An entry already in the book, as plain data: the caller reads it from the
// store (the statement's asset's entries around the statement's dates, and
// the other assets' entries for pairing transfers).
struct BookEntry {
    int64_t id = 0;       // Items Id
    int64_t sisanId = 0;  // the asset the row belongs to
    ImportDate date;
    int64_t kingaku = 0;     // signed from its asset's side: + money in, - money out
    std::string text;        // the description as imported, or the note typed by hand
    std::string idKey;       // the duplicate keys it was imported with (DuplicateKeys);
    std::string contentKey;  // both empty for an entry typed by hand
    bool transfer = false;   // a row of a transfer between two assets
};

// What the preview shows for a row.
enum class MatchStatus : uint8_t {
    New,                // 新規
    AlreadyImported,    // 取込済み: the same row is in the book
    PossibleDuplicate,  // 重複の可能性: a near match, left to the user
    TransferCandidate,  // 振替候補: money between own assets, paired when the other side is in the book
    Unreadable,         // 読めない行
    Skipped,            // a heading, total or note line: not an entry
};

struct RowMatch {
    MatchStatus status = MatchStatus::New;
    int64_t entryId = 0;         // the book entry it matches, or the other side of a paired transfer
    int64_t partnerSisanId = 0;  // for a paired transfer: the other side's asset
};

struct MatchWindows {
    int nearDays = 3;  // a near match's date is at most this far away
    int pairDays = 5;  // the two sides of a transfer: settlement and posting delays, weekends
};

// Classifies every row of a statement imported into one asset, in row order:
// - 取込済み when the book has the row's id key, or its content key where
//   the row or the book entry has no id (a spreadsheet-saved file lost them);
//   a transfer-like row also when the asset already has a transfer row of the
//   same amount within pairDays (the other side's import made it);
// - 重複の可能性 for the same amount within nearDays and a similar text, or
//   an entry typed by hand (its text says nothing);
// - 振替候補 for rows with a transfer hint, paired with an opposite amount of
//   another asset within pairDays when there is one.
// Each book entry matches at most one row.
std::vector<RowMatch> matchStatement(const StatementFile& statement, std::span<const BookEntry> sameAsset,
                                     std::span<const BookEntry> otherAssets, MatchWindows windows = {});

// A card statement's own total (above the table or on its total line)
// against the sum of what its rows charge (the month's part of an
// installment where the file gives it, else the full amount).
struct BilledTotalCheck {
    bool stated = false;  // the file states a total
    int64_t statedTotal = 0;
    int64_t rowsTotal = 0;
    bool matches() const { return !stated || statedTotal == rowsTotal; }
    std::string message() const;  // "" when it matches, else the difference in Japanese
};
BilledTotalCheck checkBilledTotal(const StatementFile& statement);
