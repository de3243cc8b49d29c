#include "store/SyncLog.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>

#include "store/HybridClock.h"
#include "store/Statement.h"
#include "store/StatementCache.h"
#include "store/Transaction.h"

namespace {

const char* const kCreate[] = {
    "CREATE TABLE IF NOT EXISTS SyncLog (Ts INTEGER NOT NULL, Device INTEGER NOT NULL, Seq INTEGER NOT NULL, "
    "Install BLOB NOT NULL, HistoryId INTEGER NOT NULL, Shipped BLOB, UNIQUE (Ts, Device, Seq))",
    "CREATE INDEX IF NOT EXISTS SyncLog_Install_Seq ON SyncLog(Install, Seq)",
    "CREATE INDEX IF NOT EXISTS SyncLog_HistoryId ON SyncLog(HistoryId)",
    "CREATE TABLE IF NOT EXISTS SyncApplied (Install BLOB NOT NULL UNIQUE, Device INTEGER NOT NULL, "
    "Seq INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS SyncState (Name TEXT NOT NULL UNIQUE, Value)",
    "CREATE TABLE IF NOT EXISTS SyncNotice (Id INTEGER PRIMARY KEY, Key TEXT NOT NULL UNIQUE, At INTEGER NOT NULL, "
    "Kind INTEGER NOT NULL, TableName TEXT NOT NULL, RowId INTEGER NOT NULL, Text TEXT NOT NULL, "
    "Detail TEXT NOT NULL, Losing TEXT NOT NULL, Seen INTEGER NOT NULL, Undone INTEGER NOT NULL)",
};

bool bindKey(Statement& s, const OpKey& key)
{
    return s.bindInt64(1, key.ts) == SQLITE_OK && s.bindInt64(2, key.device) == SQLITE_OK &&
           s.bindInt64(3, key.seq) == SQLITE_OK;
}

bool setState(sqlite3* db, const char* name, const Value& value)
{
    Statement s;
    return s.prepare(db, "INSERT OR REPLACE INTO SyncState (Name, Value) VALUES (?, ?)") &&
           s.bindText(1, name) == SQLITE_OK && s.bindValue(2, value) == SQLITE_OK && s.run();
}

Value textValue(const std::string& text) { return {Value::Type::Text, 0, 0, text}; }
Value blobValue(const std::string& bytes) { return {Value::Type::Blob, 0, 0, bytes}; }

// The state's value, Absent when it is not set; false on an error.
bool readState(sqlite3* db, const char* name, Value* value)
{
    Statement s;
    if (!s.prepare(db, "SELECT Value FROM SyncState WHERE Name = ?") || s.bindText(1, name) != SQLITE_OK) return false;
    const Step step = s.step();
    *value = step == Step::Row ? s.columnValue(0) : Value{};
    return step != Step::Error;
}

// Reads every row of a prepared statement; true only when the rows ended.
template <typename OnRow>
bool eachRow(Statement& s, OnRow onRow)
{
    for (;;) {
        switch (s.step()) {
        case Step::Row:
            onRow();
            break;
        case Step::Done:
            return true;
        case Step::Error:
            return false;
        }
    }
}

// The log joined with the history rows that record its operations.
const char* const kSelectLogged =
    "SELECT l.Ts, l.Device, l.Seq, l.Install, l.HistoryId, h.Label, coalesce(l.Shipped, h.Changeset), h.Changeset "
    "FROM SyncLog AS l JOIN History AS h ON h.Id = l.HistoryId ";

bool readLogged(Statement& s, std::vector<LoggedOp>* ops)
{
    return eachRow(s, [&] {
        LoggedOp op;
        op.key = {s.columnInt64(0), s.columnInt64(1), s.columnInt64(2)};
        op.install = uuidOfBytes(s.columnBlob(3));
        op.historyId = s.columnInt64(4);
        op.label = s.columnText(5);
        op.shipped = s.columnBlob(6);
        op.effective = s.columnBlob(7);
        ops->push_back(std::move(op));
    });
}

}  // namespace

std::string uuidBytes(const Uuid& id) { return std::string(reinterpret_cast<const char*>(id.bytes.data()), 16); }

Uuid uuidOfBytes(const std::string& bytes)
{
    Uuid id;
    if (bytes.size() == 16) std::memcpy(id.bytes.data(), bytes.data(), 16);
    return id;
}

bool readSyncState(sqlite3* db, const std::string& name, Value* value) { return readState(db, name.c_str(), value); }

bool writeSyncState(sqlite3* db, const std::string& name, const Value& value)
{
    return setState(db, name.c_str(), value);
}

const std::vector<TableLayout>& syncBookTables()
{
    static const std::vector<TableLayout> tables{
        {"SyncLog",
         {{"Ts", "INTEGER"},
          {"Device", "INTEGER"},
          {"Seq", "INTEGER"},
          {"Install", "BLOB"},
          {"HistoryId", "INTEGER"},
          {"Shipped", "BLOB"}},
         "table",
         false},
        {"SyncApplied", {{"Install", "BLOB"}, {"Device", "INTEGER"}, {"Seq", "INTEGER"}}, "table", false},
        {"SyncState", {{"Name", "TEXT"}, {"Value", ""}}, "table", false},
        {"SyncNotice",
         {{"Id", "INTEGER", true},
          {"Key", "TEXT"},
          {"At", "INTEGER"},
          {"Kind", "INTEGER"},
          {"TableName", "TEXT"},
          {"RowId", "INTEGER"},
          {"Text", "TEXT"},
          {"Detail", "TEXT"},
          {"Losing", "TEXT"},
          {"Seen", "INTEGER"},
          {"Undone", "INTEGER"}},
         "table",
         false},
    };
    return tables;
}

bool createSyncTables(sqlite3* db)
{
    for (const char* sql : kCreate)
        if (!runControlStatement(db, sql)) return false;
    return true;
}

bool readSyncIdentity(sqlite3* db, std::optional<SyncIdentity>* identity)
{
    identity->reset();
    Value book, install, device, name, folder, machine;
    if (!readState(db, "BookId", &book) || !readState(db, "Install", &install) || !readState(db, "Device", &device) ||
        !readState(db, "PcName", &name) || !readState(db, "Folder", &folder) || !readState(db, "MachineId", &machine))
        return false;
    if (device.asInteger() < 1 || install.bytes.size() != 16 || book.bytes.size() != 16) return true;
    *identity = SyncIdentity{uuidOfBytes(book.bytes), uuidOfBytes(install.bytes), static_cast<int>(device.asInteger()),
                             name.asText(), folder.asText(), machine.asText()};
    return true;
}

bool writeSyncIdentity(sqlite3* db, const SyncIdentity& identity)
{
    return setState(db, "BookId", blobValue(uuidBytes(identity.book))) &&
           setState(db, "Install", blobValue(uuidBytes(identity.install))) &&
           setState(db, "Device", Value::ofInteger(identity.device)) && setState(db, "PcName", textValue(identity.name)) &&
           setState(db, "Folder", textValue(identity.folder)) && setState(db, "MachineId", textValue(identity.machine));
}

bool readSyncDevice(sqlite3* db, int* device)
{
    Value value;
    if (!readState(db, "Device", &value)) return false;
    *device = static_cast<int>(value.asInteger());
    return true;
}

bool forgetSync(sqlite3* db)
{
    for (const char* sql : {"DELETE FROM SyncLog", "DELETE FROM SyncApplied", "DELETE FROM SyncState"})
        if (!runControlStatement(db, sql)) return false;
    return true;
}

bool logLocalStep(sqlite3* db, int64_t historyId, int64_t wallMs)
{
    std::optional<SyncIdentity> self;
    if (!readSyncIdentity(db, &self)) return false;
    if (!self) return true;
    OpKey newest;
    AppliedVector applied;
    int64_t folderTs = 0;
    if (!newestKey(db, &newest) || !readApplied(db, &applied) || !readFolderTs(db, &folderTs)) return false;
    const OpKey key{nextTimestamp(wallMs, newest.ts, folderTs), self->device, applied[self->install] + 1};
    StatementCache cache(db);
    return appendLog(cache, key, self->install, historyId, nullptr) &&
           setApplied(db, self->install, self->device, key.seq);
}

bool appendLog(StatementCache& cache, const OpKey& key, const Uuid& install, int64_t historyId,
               const std::string* shipped)
{
    Statement* s = cache.get("INSERT INTO SyncLog (Ts, Device, Seq, Install, HistoryId, Shipped) VALUES (?,?,?,?,?,?)");
    const std::string installBytes = uuidBytes(install);
    return s && bindKey(*s, key) && s->bindBlob(4, installBytes) == SQLITE_OK &&
           s->bindInt64(5, historyId) == SQLITE_OK && (shipped ? s->bindBlob(6, *shipped) : s->bindNull(6)) == SQLITE_OK &&
           s->run();
}

bool setShipped(StatementCache& cache, const OpKey& key, const std::string* shipped)
{
    Statement* s = cache.get("UPDATE SyncLog SET Shipped = ?4 WHERE (Ts, Device, Seq) = (?1, ?2, ?3)");
    return s && bindKey(*s, key) && (shipped ? s->bindBlob(4, *shipped) : s->bindNull(4)) == SQLITE_OK && s->run();
}

bool readLogAfter(sqlite3* db, const OpKey& key, std::vector<LoggedOp>* ops)
{
    Statement s;
    return s.prepare(db, std::string(kSelectLogged) + "WHERE (l.Ts, l.Device, l.Seq) > (?1, ?2, ?3) "
                                                      "ORDER BY l.Ts, l.Device, l.Seq") &&
           bindKey(s, key) && readLogged(s, ops);
}

bool readLogOf(sqlite3* db, const Uuid& install, int64_t afterSeq, std::vector<LoggedOp>* ops)
{
    Statement s;
    const std::string installBytes = uuidBytes(install);
    return s.prepare(db, std::string(kSelectLogged) + "WHERE l.Install = ? AND l.Seq > ? ORDER BY l.Seq") &&
           s.bindBlob(1, installBytes) == SQLITE_OK && s.bindInt64(2, afterSeq) == SQLITE_OK && readLogged(s, ops);
}

bool newestKey(sqlite3* db, OpKey* key)
{
    if (!readHorizon(db, key)) return false;
    Statement s;
    if (!s.prepare(db, "SELECT Ts, Device, Seq FROM SyncLog ORDER BY Ts DESC, Device DESC, Seq DESC LIMIT 1"))
        return false;
    const Step step = s.step();
    if (step == Step::Row) *key = std::max(*key, OpKey{s.columnInt64(0), s.columnInt64(1), s.columnInt64(2)});
    return step != Step::Error;
}

bool oldestLoggedHistoryId(sqlite3* db, int64_t* historyId)
{
    Statement s;
    if (!s.prepare(db, "SELECT min(HistoryId) FROM SyncLog")) return false;
    const Step step = s.step();
    *historyId = step == Step::Row ? s.columnInt64(0) : 0;
    return step != Step::Error;
}

bool readApplied(sqlite3* db, AppliedVector* applied)
{
    Statement s;
    return s.prepare(db, "SELECT Install, Seq FROM SyncApplied") &&
           eachRow(s, [&] { (*applied)[uuidOfBytes(s.columnBlob(0))] = s.columnInt64(1); });
}

bool readAppliedDevices(sqlite3* db, std::map<Uuid, int>* devices)
{
    Statement s;
    return s.prepare(db, "SELECT Install, Device FROM SyncApplied") &&
           eachRow(s, [&] { (*devices)[uuidOfBytes(s.columnBlob(0))] = static_cast<int>(s.columnInt64(1)); });
}

bool setApplied(sqlite3* db, const Uuid& install, int device, int64_t seq)
{
    Statement s;
    const std::string installBytes = uuidBytes(install);
    return s.prepare(db, "INSERT OR REPLACE INTO SyncApplied (Install, Device, Seq) VALUES (?, ?, ?)") &&
           s.bindBlob(1, installBytes) == SQLITE_OK && s.bindInt64(2, device) == SQLITE_OK &&
           s.bindInt64(3, seq) == SQLITE_OK && s.run();
}

bool readFolderTs(sqlite3* db, int64_t* ts)
{
    Value value;
    if (!readState(db, "FolderTs", &value)) return false;
    *ts = value.asInteger();
    return true;
}

bool writeFolderTs(sqlite3* db, int64_t ts) { return setState(db, "FolderTs", Value::ofInteger(ts)); }

bool readHorizon(sqlite3* db, OpKey* horizon)
{
    Value ts, device, seq;
    if (!readState(db, "HorizonTs", &ts) || !readState(db, "HorizonDevice", &device) ||
        !readState(db, "HorizonSeq", &seq))
        return false;
    *horizon = {ts.asInteger(), device.asInteger(), seq.asInteger()};
    return true;
}

bool pruneLog(sqlite3* db, const OpKey& upTo)
{
    Statement drop;
    return drop.prepare(db, "DELETE FROM SyncLog WHERE (Ts, Device, Seq) <= (?1, ?2, ?3)") && bindKey(drop, upTo) &&
           drop.run() && setState(db, "HorizonTs", Value::ofInteger(upTo.ts)) &&
           setState(db, "HorizonDevice", Value::ofInteger(upTo.device)) &&
           setState(db, "HorizonSeq", Value::ofInteger(upTo.seq));
}

bool readLogKeys(sqlite3* db, std::vector<LoggedKey>* oldestFirst)
{
    Statement s;
    return s.prepare(db, "SELECT Ts, Device, Seq, Install FROM SyncLog ORDER BY Ts, Device, Seq") &&
           eachRow(s, [&] {
               oldestFirst->push_back(
                   {{s.columnInt64(0), s.columnInt64(1), s.columnInt64(2)}, uuidOfBytes(s.columnBlob(3))});
           });
}

OpKey prunableUpTo(const std::vector<LoggedKey>& oldestFirst, const std::map<Uuid, AppliedVector>& known,
                   const AppliedVector& here, int64_t notAfterTs)
{
    const auto seqIn = [](const AppliedVector& vector, const Uuid& install) {
        const auto it = vector.find(install);
        return it == vector.end() ? int64_t{0} : it->second;
    };
    // (2): every operation a known installation had written when it
    // published its vector is here; otherwise nothing is safe to prune.
    for (const auto& [install, vector] : known)
        if (seqIn(here, install) < seqIn(vector, install)) return {};
    OpKey upTo;
    for (const LoggedKey& logged : oldestFirst) {
        if (logged.key.ts >= notAfterTs) return upTo;
        for (const auto& [install, vector] : known)
            if (seqIn(vector, logged.install) < logged.key.seq) return upTo;
        upTo = logged.key;
    }
    return upTo;
}
