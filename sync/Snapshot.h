#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sync/SyncFolder.h"
#include "sync/SyncLog.h"

struct sqlite3;

// A copy of the whole book in the sync folder, so that a PC joining later
// starts from it instead of replaying years of operations. The copy holds
// the book's sync tables too: the operations it contains (SyncApplied) and
// the log with which the new PC can still rewind and place operations that
// arrive late.

struct SnapshotInfo {
    std::string path;
    Uuid install;           // the PC that wrote it
    AppliedVector applied;  // the operations it contains
};

// Copies the book open on db (SQLite's backup API) to
// snapshots/<install>.sqlite, replacing this PC's previous snapshot only
// once the copy is complete. Run it outside a write transaction.
bool writeSnapshot(sqlite3* db, const SyncFolder& folder, const Uuid& install, std::string* error);

// The snapshots in the folder that belong to book, the one containing the
// most operations first. Files that are not readable books are skipped.
std::vector<SnapshotInfo> listSnapshots(const SyncFolder& folder, const Uuid& book);

// Makes a new book at target from the snapshot, private to the owner
// (0600). target appears only when complete; an existing file there is
// replaced (the caller has kept it aside).
bool restoreSnapshot(const std::string& snapshot, const std::string& target, std::string* error);
