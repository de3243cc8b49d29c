#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "sync/OpFile.h"
#include "sync/SyncFolder.h"
#include "sync/SyncNotice.h"

struct sqlite3;

// This PC in a sync folder: its installation, the device number it claimed,
// and the book both belong to.
struct DeviceIdentity {
    Uuid book;
    Uuid install;
    int device = 0;
};

// What bringing operations into the book did.
struct RoundResult {
    size_t arrived = 0;   // operations new to this book
    size_t rewound = 0;   // operations of this book undone to place them
    size_t replayed = 0;  // operations applied, the rewound ones again included
    std::vector<SyncNotice> notices;
    std::set<int64_t> touchedSisans;  // assets whose balance was recomputed
};

enum class RoundProblem {
    None,
    Failed,  // a database error, or a book changed outside the sync log
    TooOld,  // an operation sorts before what this book has pruned: rebuild from the folder
};

// Brings operations from other PCs (read and checked from the folder) into
// the book, all inside the caller's transaction: places them in the one
// order by rewinding the later operations applied here and replaying
// everything after them (MergePlan.h, OpApply.h), logs each with its
// effective changeset, records what was applied per installation, and
// recomputes the balances of the assets touched. On a problem the caller
// must roll back; *error says what happened.
RoundProblem applyArrived(sqlite3* db, std::vector<Op> arrived, RoundResult* result, std::string* error);

// The header of the next local operation: the next sequence of this
// installation and a timestamp sorting after everything applied
// (HybridClock.h), wall clock clamped by the newest timestamp in the folder.
bool nextLocalMeta(sqlite3* db, const DeviceIdentity& self, int64_t wallMs, int64_t largestInFolder,
                   const std::string& label, OpMeta* meta);

// Logs an operation this PC has just made (its changeset, recorded while
// the change was made, is both shipped and effective), inside the
// transaction of the change itself. meta comes from nextLocalMeta.
bool logLocalOp(sqlite3* db, const OpMeta& meta, const std::string& changeset);

// Writes to the folder every operation of this installation in the log that
// the folder does not hold yet: normally the one just made, after a crash
// between a change's commit and its file also the ones before it. A change
// reaches the folder only once committed, so no PC ever applies a change
// this book rolled back.
bool publishOwnOps(sqlite3* db, const SyncFolder& folder, const DeviceIdentity& self, std::string* error);
