#include "store/DeviceIds.h"

#include <sqlite3.h>

#include "store/BookTables.h"
#include "store/Statement.h"
#include "store/SyncLog.h"

std::optional<int64_t> nextDeviceId(int64_t maxId, int device)
{
    if (device < 1 || device > kMaxDevice || maxId < 0) return std::nullopt;
    const int64_t id = 16 * (maxId / 16 + 1) + device;
    if (id > kMaxRowId) return std::nullopt;
    return id;
}

std::optional<int64_t> nextDeviceIdIn(sqlite3* db, const std::string& table, int device, bool* failed)
{
    if (!bookTable(table)) {
        *failed = true;
        return std::nullopt;
    }
    const std::string handedOut = "LastId." + table;
    // max(Id) of a rowid table is one step down its b-tree.
    Statement s;
    if (!s.prepare(db, "SELECT max(coalesce((SELECT max(Id) FROM " + table +
                           "), 0), coalesce((SELECT Value FROM SyncState WHERE Name = ?), 0))") ||
        s.bindText(1, handedOut) != SQLITE_OK || s.step() != Step::Row) {
        *failed = true;
        return std::nullopt;
    }
    const std::optional<int64_t> id = nextDeviceId(s.columnInt64(0), device);
    Statement keep;
    if (id && !(keep.prepare(db, "INSERT OR REPLACE INTO SyncState (Name, Value) VALUES (?, ?)") &&
                keep.bindText(1, handedOut) == SQLITE_OK && keep.bindInt64(2, *id) == SQLITE_OK && keep.run()))
        *failed = true;
    return id;
}

NewRowId newRowId(sqlite3* db, const std::string& table, int64_t* id)
{
    *id = 0;
    int device = 0;
    if (!readSyncDevice(db, &device)) return NewRowId::Failed;
    if (device == 0) return NewRowId::BySqlite;
    bool failed = false;
    const std::optional<int64_t> next = nextDeviceIdIn(db, table, device, &failed);
    if (failed) return NewRowId::Failed;
    if (!next) return NewRowId::Exhausted;
    *id = *next;
    return NewRowId::Assigned;
}
