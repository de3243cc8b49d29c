#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "store/OpKey.h"
#include "sync/SyncNotice.h"

class StatementCache;

// What applying one operation did here.
struct AppliedOp {
    std::string effective;  // the changeset of what it changed here, repair included
    int64_t deletes = 0;    // rows the effective changeset deleted
    std::vector<SyncNotice> notices;
    std::set<int64_t> touchedSisans;  // assets whose balance may have moved
};

// An operation of this PC also changed the book's other recorded tables
// (an import's records, ...): those changes stay its own, applied and
// rewound with it. Another PC's operation changes only the three tables.
enum class OpOrigin { Own, Other };

// Applies an operation's shipped changeset to the book under the conflict
// rules (ConflictPolicy.h), then runs the repair step (Repair.h), while a
// session records what actually changed. Works inside the caller's
// transaction; on failure (false, *error) the book may hold part of the
// operation and the caller rolls back. The operations before it in the one
// order must be in SyncLog with what they did here (for the repair's copies
// of deleted rows).
bool applyOp(StatementCache& sql, const OpKey& key, const std::string& changeset, OpOrigin origin, AppliedOp* applied,
             std::string* error);

// Undoes an operation applied here, with the inverse of what it did here;
// the book must be as that operation left it, but for derived values. Adds
// the assets whose balance may have moved. False (*error) when the book
// does not fit, which means it was changed outside the one order.
bool rewindOp(StatementCache& sql, const std::string& effective, OpOrigin origin, std::set<int64_t>* touchedSisans,
              std::string* error);
