#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "store/BookTables.h"
#include "store/OpKey.h"
#include "store/Uuid.h"
#include "store/Value.h"

struct sqlite3;
class StatementCache;

// The book's own record of sync, in tables beside the three it ships (an
// older program reading the book sees those unchanged), none of them ever
// recorded as a step or shipped:
//   SyncLog      the one order: every operation applied to this book since
//                the horizon, by (Ts, Device, Seq), with its writer and the
//                History row that records it. That row's changeset is what
//                the operation did here (a rewind undoes it; an undo of the
//                step inverts it; the repair finds deleted rows in it).
//                Shipped holds what the writer shipped only where that
//                differs from it (NULL otherwise), so that each changeset is
//                kept once.
//   SyncApplied  per installation, the last sequence applied and its device.
//   SyncState    this PC's identity in the sync folder, the Ids it handed
//                out, the horizon, the newest timestamp seen in the folder.
//   SyncNotice   what the conflict rules did, for the list the household sees.
// Every function works inside the caller's transaction.

// This PC in a sync folder, as the book remembers it.
struct SyncIdentity {
    Uuid book;            // the book's id, the same on every PC
    Uuid install;         // this PC's installation in the folder
    int device = 0;       // the device number it claimed, 1..15
    std::string name;     // the PC's name as its user gave it
    std::string folder;   // the sync folder
    std::string machine;  // the machine the book was set up on: a copy of the book elsewhere must not sync as it
};

// An operation in the log.
struct LoggedOp {
    OpKey key;
    Uuid install;
    int64_t historyId = 0;
    std::string label;
    std::string shipped;    // as written to the sync folder; replayed after a rewind
    std::string effective;  // what it did here: the History row's changeset
};

using AppliedVector = std::map<Uuid, int64_t>;  // installation -> last sequence applied

// The layouts for the book check, and their creation when missing.
const std::vector<TableLayout>& syncBookTables();
bool createSyncTables(sqlite3* db);

// The identity, none when the book does not sync.
bool readSyncIdentity(sqlite3* db, std::optional<SyncIdentity>* identity);
bool writeSyncIdentity(sqlite3* db, const SyncIdentity& identity);
// The device number new rows take their Ids from; 0 when the book does not sync.
bool readSyncDevice(sqlite3* db, int* device);
// Forgets the identity and the whole record: the book no longer syncs.
bool forgetSync(sqlite3* db);

// Called by every recorded step, after its history row: when the book
// syncs, places the step in the order as this installation's next
// operation, stamped after everything applied here (HybridClock.h).
bool logLocalStep(sqlite3* db, int64_t historyId, int64_t wallMs);

// Places the operation recorded in history row historyId; shipped nullptr:
// the same as that row's changeset.
bool appendLog(StatementCache& cache, const OpKey& key, const Uuid& install, int64_t historyId,
               const std::string* shipped);
// Keeps what the operation shipped beside a history row that now records
// another effect (nullptr: the same again).
bool setShipped(StatementCache& cache, const OpKey& key, const std::string* shipped);
// The operations sorting after key, in order (all with key {}).
bool readLogAfter(sqlite3* db, const OpKey& key, std::vector<LoggedOp>* ops);
// The operations of one installation after its sequence afterSeq, in order.
bool readLogOf(sqlite3* db, const Uuid& install, int64_t afterSeq, std::vector<LoggedOp>* ops);
// The newest key applied (logged or pruned); {} when none.
bool newestKey(sqlite3* db, OpKey* key);
// The oldest history row the log still needs, 0 when none: history
// pruning keeps it and every later row.
bool oldestLoggedHistoryId(sqlite3* db, int64_t* historyId);

bool readApplied(sqlite3* db, AppliedVector* applied);
// The device number each installation wrote its operations with.
bool readAppliedDevices(sqlite3* db, std::map<Uuid, int>* devices);
bool setApplied(sqlite3* db, const Uuid& install, int device, int64_t seq);

// The newest timestamp seen in the sync folder (0: none yet): a local
// timestamp is never stamped more than a day past it.
bool readFolderTs(sqlite3* db, int64_t* ts);
bool writeFolderTs(sqlite3* db, int64_t ts);

// The newest pruned key: operations sorting before it can no longer be
// placed in the order here ({} when nothing was pruned).
bool readHorizon(sqlite3* db, OpKey* horizon);
// Takes the operations up to and including upTo out of the order and moves
// the horizon there. Their history rows stay until the history's own
// limits prune them.
bool pruneLog(sqlite3* db, const OpKey& upTo);

// The newest key up to which the log may be pruned, or {} for none: the end
// of the longest run of the oldest operations that (1) every known
// installation says it has applied, (2) for which this book holds every
// operation those installations had written when they said so, and (3)
// whose timestamp is before notAfterTs. Any operation still to arrive from a
// known installation was then written after its writer had applied them,
// sorts after them, and never needs them rewound or their deleted rows
// brought back. (3) covers a PC that is joining and not known here yet: it
// starts from what its view of the folder held, and its operations sort
// after that; the caller keeps as long a stretch as the history keeps.
struct LoggedKey {
    OpKey key;
    Uuid install;
};
OpKey prunableUpTo(const std::vector<LoggedKey>& oldestFirst, const std::map<Uuid, AppliedVector>& known,
                   const AppliedVector& here, int64_t notAfterTs);
bool readLogKeys(sqlite3* db, std::vector<LoggedKey>* oldestFirst);

// Any other value sync keeps in SyncState by name; Absent when not set.
bool readSyncState(sqlite3* db, const std::string& name, Value* value);
bool writeSyncState(sqlite3* db, const std::string& name, const Value& value);

// Statement helpers for the sync tables: an installation as stored.
std::string uuidBytes(const Uuid& id);
Uuid uuidOfBytes(const std::string& bytes);
