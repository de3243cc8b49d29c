#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "store/SyncLog.h"
#include "sync/OpFile.h"
#include "sync/SyncFolder.h"
#include "sync/SyncNotice.h"

struct sqlite3;

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
    Failed,  // a database error, or a book changed outside the one order
    TooOld,  // an operation sorts before what this book has pruned: rebuild from the folder
};

// Brings operations from other PCs (read and checked from the folder) into
// the book, all inside the caller's transaction: places them in the one
// order by rewinding the later operations applied here and replaying
// everything after them (MergePlan.h, OpApply.h), records each arrival as a
// history row of its own (Synced, labelled with its PC's name from `names`)
// placed in the log, keeps what each replayed operation now does in its
// history row, records what was applied per installation, and recomputes
// the stored balances of the assets touched. `self` is this PC's
// installation, whose operations keep their changes to the book's other
// tables. On a problem the caller must roll back; *error says what happened.
RoundProblem applyArrived(sqlite3* db, const Uuid& self, std::vector<Op> arrived,
                          const std::map<Uuid, std::string>& names, RoundResult* result, std::string* error);

// Writes to the folder every operation of this installation in the log from
// sequence afterSeq on: normally the one just made, after a crash between a
// change's commit and its file also the ones before it. A change reaches
// the folder only once committed, so no PC ever applies a change this book
// rolled back. *lastSeq is the last sequence the folder now holds.
bool publishOwnOps(sqlite3* db, const SyncFolder& folder, const SyncIdentity& self, int64_t afterSeq,
                   int64_t* lastSeq, std::string* error);
