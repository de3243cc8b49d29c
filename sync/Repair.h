#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "sync/Changes.h"
#include "store/OpKey.h"
#include "sync/SyncNotice.h"
#include "sync/Tombstones.h"

class StatementCache;

// An edit of a row that was deleted before it in the order: the row comes
// back from its last copy with the edit's values (Absent: not edited).
struct RestoreRequest {
    std::string table;
    int64_t id = 0;
    Row edit;
};

// The deterministic repair after an operation's changes, inside the same
// transaction and recording session, so that every PC does the same and a
// rewind undoes it with the operation:
// 1. rows edited after their deletion come back with the edit;
// 2. rows that now refer to a row that is gone bring it back holding only
//    them: an entry its sub-item (and the sub-item its category) or asset,
//    a transfer half its partner; a deleted transfer half whose partner
//    stayed comes back too;
// 3. the sub-item count (Ucount) of every category touched is recounted.
// Each row brought back adds a notice. False on a database error.
bool repairAfterOp(StatementCache& sql, const OpKey& op, Tombstones& tombstones, const std::vector<Change>& changes,
                   const std::vector<RestoreRequest>& restores, std::vector<SyncNotice>* notices, std::string* error);

// Adds the assets whose balance the changes may have moved, reading the
// asset of an edited entry from the book as it is right after the changes.
bool collectTouchedSisans(StatementCache& sql, const std::vector<Change>& changes, std::set<int64_t>* sisans);
