#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "store/SyncLog.h"
#include "sync/SyncFolder.h"

// A copy of the whole book in the sync folder, so that a PC joining later
// starts from it instead of replaying years of operations. The copy holds
// the book's history and sync tables too: the operations it contains
// (SyncApplied) and the log with which the new PC can still rewind and
// place operations that arrive late.

struct SnapshotInfo {
    std::string path;
    Uuid install;           // the PC that wrote it
    AppliedVector applied;  // the operations it contains
};

// Copies the book at bookPath (SQLite's backup API, on a connection of its
// own, so it may run on a worker thread while the program goes on) to
// snapshots/<install>.sqlite, replacing this PC's previous snapshot only
// once the copy is complete. `cancel`, when set, is polled between steps.
bool writeSnapshot(const std::string& bookPath, const SyncFolder& folder, const Uuid& install, std::string* error,
                   const std::atomic<bool>* cancel = nullptr);

// The snapshots in the folder that belong to book, the one containing the
// most operations first. Files that are not readable books are skipped.
std::vector<SnapshotInfo> listSnapshots(const SyncFolder& folder, const Uuid& book);
