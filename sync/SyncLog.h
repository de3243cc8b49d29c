#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sync/OpFile.h"
#include "sync/OpKey.h"
#include "sync/Uuid.h"

struct sqlite3;

// The book's own record of sync, in tables of its own beside the three it
// ships (an older program reading the book sees those unchanged):
//   SyncLog      every operation applied to this book, in the one order
//                (OpKey), with the changeset it shipped and the changeset it
//                actually made here (the effective one: what the conflict
//                rules and the repair step kept), which rewinds it.
//   SyncApplied  per installation, the last sequence applied and its device.
//   SyncState    the book's id and the horizon: the newest key pruned.
// None of them is shipped or recorded in the book's undo history. Every
// function works inside the caller's transaction.

struct LoggedOp {
    OpMeta meta;          // book is not stored: it is the book's own id
    std::string shipped;  // as written to the sync folder; replayed after a rewind
    std::string effective;
    int64_t deletes = 0;  // rows the effective changeset deleted
};

using AppliedVector = std::map<Uuid, int64_t>;  // installation -> last sequence applied

// Creates the tables when missing; nothing else changes.
bool createSyncTables(sqlite3* db);

bool appendLog(sqlite3* db, const LoggedOp& op);
// The operations sorting after key, in order (all with key {} ).
bool readLogAfter(sqlite3* db, const OpKey& key, std::vector<LoggedOp>* ops);
// The operations of one installation after its sequence afterSeq, in order.
bool readLogOf(sqlite3* db, const Uuid& install, int64_t afterSeq, std::vector<LoggedOp>* ops);
bool deleteLogAfter(sqlite3* db, const OpKey& key);
// The newest key applied (logged or pruned); {} when none.
bool newestKey(sqlite3* db, OpKey* key);

bool readApplied(sqlite3* db, AppliedVector* applied);
// The device number each installation wrote its operations with.
bool readAppliedDevices(sqlite3* db, std::map<Uuid, int>* devices);
bool setApplied(sqlite3* db, const Uuid& install, int device, int64_t seq);

bool readBookId(sqlite3* db, std::optional<Uuid>* book);
bool writeBookId(sqlite3* db, const Uuid& book);
// The newest pruned key: operations sorting before it can no longer be
// placed in the order here ({} when nothing was pruned).
bool readHorizon(sqlite3* db, OpKey* horizon);

// Drops the rewind data of the operations up to and including upTo, and
// moves the horizon there. Operations that deleted rows keep their
// effective changeset: it holds the deleted rows that the repair step may
// still bring back.
bool pruneLog(sqlite3* db, const OpKey& upTo);

// The newest key up to which the log may be pruned, or {} for none: the end
// of the longest run of the oldest operations that (1) every known
// installation says it has applied, and (2) for which this book holds every
// operation those installations had written when they said so. Any
// operation still to arrive was then written after its writer had applied
// them, sorts after them, and never needs them rewound.
struct LoggedKey {
    OpKey key;
    Uuid install;
};
OpKey prunableUpTo(const std::vector<LoggedKey>& oldestFirst, const std::map<Uuid, AppliedVector>& known,
                   const AppliedVector& here);
bool readLogKeys(sqlite3* db, std::vector<LoggedKey>* oldestFirst);
