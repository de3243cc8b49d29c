#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct sqlite3;
class StatementCache;

// The book's history: the table History holds one row per recorded
// operation, oldest first, each with the changeset (the session extension's
// format) of what it changed in the book's other tables. An undo, a redo or
// the revert of an older step is an operation of its own, with its own
// changeset and a reference (Target) to the row it acts on; the changesets
// of older rows are never rewritten, only pruned. Every statement on the
// table names its columns: later versions add columns to it.

enum class HistoryKind : int64_t {
    Step = 1,    // a change the program made: an entry added, a category deleted, ...
    Undo = 2,    // 元に戻す of Target: Target's changes inverted
    Redo = 3,    // やり直す of Target: Target's changes made again
    Revert = 4,  // この操作を取り消す: Target's changes inverted as a new step
    Synced = 5,  // an operation made on another PC, brought in through the sync folder
};

struct HistoryEntry {
    int64_t Id = 0;
    int64_t At = 0;  // milliseconds since 1970-01-01 UTC
    HistoryKind Kind = HistoryKind::Step;
    int64_t Target = 0;   // the row an undo, redo or revert acts on; 0 for a step
    std::string Label;    // 食費/外食 1,200円の削除, 「…」を元に戻す, ...
    std::string Sisans;   // names of the assets whose entries or rows it changed, "、" between
    int64_t Changes = 0;  // rows changed
    int64_t Deletes = 0;  // rows deleted
};

// Creates the history table when it is missing; nothing else changes.
bool createHistoryTable(sqlite3* db);

// The time the history records: the system clock unless a test set another.
int64_t historyNowMs();
void setHistoryClock(std::function<int64_t()> clock);
// "2026/11/23 10:15" in the local time zone.
std::string formatHistoryTime(int64_t ms);

// Tables whose changes are recorded: every table except the book's own
// bookkeeping (the history itself and the sync record, BookTables.h) and the
// tables declared derived, which the program rebuilds from the others (a
// search index, with the shadow tables named NAME_...). The session
// extension records only tables with a declared PRIMARY KEY.
void declareDerivedTable(const std::string& name);
bool isRecordedTable(const char* name);

// Sets the entry's Sisans, Changes and Deletes from the changeset and the
// book as it is now (the names of the assets it touched).
bool summarizeChangeset(sqlite3* db, const std::string& changeset, HistoryEntry* entry);
bool summarizeChangeset(StatementCache& cache, const std::string& changeset, HistoryEntry* entry);

// Appends the row and sets entry->Id.
bool insertHistoryEntry(sqlite3* db, HistoryEntry* entry, const std::string& changeset);
bool insertHistoryEntry(StatementCache& cache, HistoryEntry* entry, const std::string& changeset);
bool readHistoryEntry(sqlite3* db, int64_t id, HistoryEntry* entry, std::string* changeset);
// Rows newest first; with deletesOnly only those that deleted rows.
bool readHistoryEntries(sqlite3* db, bool deletesOnly, std::vector<HistoryEntry>* entries);
// Id, Kind, Target and Label of every row, oldest first.
bool readHistoryOutline(sqlite3* db, std::vector<HistoryEntry>* entries);
// The newest row after afterId whose changeset changed the row of `table`
// with the key `key`; false (and found->Id 0) when there is none.
bool findLatestTouching(sqlite3* db, int64_t afterId, const char* table, int64_t key, HistoryEntry* found);

struct HistoryLimits {
    int64_t maxAgeMs = int64_t{180} * 24 * 3600 * 1000;  // 180 days
    int64_t maxBytes = int64_t{20} * 1024 * 1024;         // 20 MB of changesets
    size_t keep = 100;                                    // the newest rows always stay
};

// Deletes the oldest rows until the rest are within the limits (whichever is
// smaller), never one of the newest limits.keep, nor row keepFromId and
// later ones (0: none kept so; sync still needs them). One statement.
bool pruneHistory(sqlite3* db, int64_t nowMs, const HistoryLimits& limits = {}, int64_t keepFromId = 0);
// Replaces an operation's record of what it did (after sync replayed it
// with another effect) and its summary.
bool updateHistoryChangeset(StatementCache& cache, const HistoryEntry& entry, const std::string& changeset);
