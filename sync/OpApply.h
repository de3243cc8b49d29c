#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "sync/OpKey.h"
#include "sync/SyncNotice.h"

struct sqlite3;

// What applying one operation did here.
struct AppliedOp {
    std::string effective;  // the changeset of what it changed here, repair included
    int64_t deletes = 0;    // rows the effective changeset deleted
    std::vector<SyncNotice> notices;
    std::set<int64_t> touchedSisans;  // assets whose balance may have moved
};

// Applies an operation's shipped changeset to the book under the conflict
// rules (ConflictPolicy.h), then runs the repair step (Repair.h), while a
// session on the three tables records what actually changed. Works inside
// the caller's transaction; on failure (false, *error) the book may hold
// part of the operation and the caller rolls back. The operations applied
// before it, in the one order, must be in SyncLog (for the repair's copies
// of deleted rows), and none after it.
bool applyOp(sqlite3* db, const OpKey& key, const std::string& changeset, AppliedOp* applied, std::string* error);

// Undoes an operation applied here, with the inverse of its effective
// changeset; the book must be as that operation left it, but for derived
// values. Adds the assets whose balance may have moved. False (*error) when
// the book does not fit, which means it was changed outside the sync log.
bool rewindOp(sqlite3* db, const std::string& effective, std::set<int64_t>* touchedSisans, std::string* error);
