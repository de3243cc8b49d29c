#include "sync/DeviceIds.h"

#include "sync/BookTables.h"
#include "sync/SyncStatement.h"

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
    SyncStatement s(db, "SELECT max(coalesce((SELECT max(Id) FROM " + table +
                            "), 0), coalesce((SELECT Value FROM SyncState WHERE Name = ?), 0))");
    if (!s.prepared() || !s.bindText(1, handedOut) || s.step() != Step::Row) {
        *failed = true;
        return std::nullopt;
    }
    const std::optional<int64_t> id = nextDeviceId(s.columnInt64(0), device);
    SyncStatement keep(db, "INSERT OR REPLACE INTO SyncState (Name, Value) VALUES (?, ?)");
    if (id && !(keep.prepared() && keep.bindText(1, handedOut) && keep.bindInt64(2, *id) && keep.run()))
        *failed = true;
    return id;
}
