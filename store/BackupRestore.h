#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "store/Backup.h"

// Restoring a daily backup (Backup.h) from the running program, and what the
// restore dialog shows of each backup. Without Qt; every function opens
// connections of its own, so it may run on a worker thread while the store's
// connection stays open and idle.

// What a backup holds, read without changing it.
struct BackupSummary {
    std::string day;          // "YYYYMMDD", from its name
    int64_t bytes = 0;
    int64_t entries = 0;      // rows of Items
    int64_t grandTotal = 0;   // its assets' opening amounts plus their entries
    std::string error;        // why it cannot be read; "" when it can
};
BackupSummary readBackupSummary(const std::string& path);

// What differs between a backup and the book as it is now. An entry
// changed since counts as removed (as it was) and added (as it is).
struct BackupDifference {
    int64_t added = 0;    // entries in the book that the backup does not hold
    int64_t removed = 0;  // entries in the backup that the book no longer holds
    struct Balance {
        std::string namae;
        std::optional<int64_t> then;  // in the backup; none when the asset is not there
        std::optional<int64_t> now;   // in the book; none when the asset is gone
    };
    std::vector<Balance> balances;  // the book's assets in its order, then those only in the backup
    std::string error;              // "" when both could be read
};
// Reads both books in Id order side by side, once. `cancel`, when set, is
// polled; a cancelled comparison has error "cancelled".
BackupDifference compareWithBackup(const std::string& book, const std::string& backup,
                                   const std::atomic<bool>* cancel = nullptr);

enum class RestoreResult { Restored, Cancelled, Failed };

// The name the book is kept under before a restore: book +
// ".before-restore-" + stamp (YYYYMMDD-HHMMSS).
std::string keptBookPath(const std::string& book, const std::string& stamp);

// Puts the backup in the book's place while the program has the book open:
// checks the backup as the start checks a copy (checkBookCopy), keeps a
// complete private copy of the book at `kept`, then copies the backup into
// the book itself with SQLite's backup API in one write transaction, and
// gives a book of an earlier version its missing indexes and history table.
// The book stays the same file, so its lock (BookLock) and the store's open
// connection stay valid; BookRestore's restoreBackup, which renames a new
// file into place, is for a book nobody has open. Until the copy completes the book is as
// it was: a failure or a cancel part-way leaves it so, removes the kept copy
// and says why in *error. `progress(done, total)` (pages) is called between
// steps; `cancel`, when set, is polled there.
RestoreResult restoreBackupInPlace(const std::string& backup, const std::string& book, const std::string& kept,
                                   std::string* error, const std::function<void(int, int)>& progress = {},
                                   const std::atomic<bool>* cancel = nullptr);

// Today's backup made now, replacing the day's backup if there is one
// (Backup.h's backupBookOnce otherwise), and where it went in *path.
BackupResult backupBookNow(const std::string& book, const std::string& dir, const std::string& day, int keep,
                           std::string* path, std::string* error);
