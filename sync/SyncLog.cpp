#include "sync/SyncLog.h"

#include <cstring>

#include "sync/SyncStatement.h"

namespace {

const char* const kTables[] = {
    "CREATE TABLE IF NOT EXISTS SyncLog (Ts INTEGER NOT NULL, Device INTEGER NOT NULL, Seq INTEGER NOT NULL, "
    "Install BLOB NOT NULL, Label TEXT NOT NULL, Shipped BLOB NOT NULL, Effective BLOB NOT NULL, "
    "Deletes INTEGER NOT NULL, PRIMARY KEY (Ts, Device, Seq))",
    "CREATE TABLE IF NOT EXISTS SyncApplied (Install BLOB PRIMARY KEY, Device INTEGER NOT NULL, Seq INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS SyncState (Name TEXT PRIMARY KEY, Value)",
};

const char* const kAfter = "(Ts, Device, Seq) > (?1, ?2, ?3)";

bool bindKey(SyncStatement& s, const OpKey& key)
{
    return s.bindInt64(1, key.ts) && s.bindInt64(2, key.device) && s.bindInt64(3, key.seq);
}

std::string uuidBytes(const Uuid& id) { return std::string(reinterpret_cast<const char*>(id.bytes.data()), 16); }

Uuid uuidOf(const std::string& bytes)
{
    Uuid id;
    if (bytes.size() == 16) std::memcpy(id.bytes.data(), bytes.data(), 16);
    return id;
}

bool setState(sqlite3* db, const char* name, const Value& value)
{
    SyncStatement s(db, "INSERT OR REPLACE INTO SyncState (Name, Value) VALUES (?, ?)");
    return s.prepared() && s.bindText(1, name) && s.bind(2, value) && s.run();
}

// The state's value, Absent when it is not set; false on an error.
bool readState(sqlite3* db, const char* name, Value* value)
{
    SyncStatement s(db, "SELECT Value FROM SyncState WHERE Name = ?");
    if (!s.prepared() || !s.bindText(1, name)) return false;
    const Step step = s.step();
    *value = step == Step::Row ? s.column(0) : Value{};
    return step != Step::Error;
}

const char* const kSelectLogged = "SELECT Ts, Device, Seq, Install, Label, Shipped, Effective, Deletes FROM SyncLog ";

bool readLogged(SyncStatement& s, std::vector<LoggedOp>* ops)
{
    Step step;
    while ((step = s.step()) == Step::Row) {
        LoggedOp op;
        op.meta.ts = s.columnInt64(0);
        op.meta.device = static_cast<int>(s.columnInt64(1));
        op.meta.seq = s.columnInt64(2);
        op.meta.install = uuidOf(s.columnBlob(3));
        op.meta.label = s.columnBlob(4);
        op.shipped = s.columnBlob(5);
        op.effective = s.columnBlob(6);
        op.deletes = s.columnInt64(7);
        ops->push_back(std::move(op));
    }
    return step == Step::Done;
}

}  // namespace

bool createSyncTables(sqlite3* db)
{
    for (const char* sql : kTables)
        if (!execSql(db, sql)) return false;
    return true;
}

bool appendLog(sqlite3* db, const LoggedOp& op)
{
    SyncStatement s(db,
                    "INSERT INTO SyncLog (Ts, Device, Seq, Install, Label, Shipped, Effective, Deletes) "
                    "VALUES (?,?,?,?,?,?,?,?)");
    return s.prepared() && bindKey(s, op.meta.key()) && s.bindBlob(4, uuidBytes(op.meta.install)) &&
           s.bindText(5, op.meta.label) && s.bindBlob(6, op.shipped) && s.bindBlob(7, op.effective) &&
           s.bindInt64(8, op.deletes) && s.run();
}

bool readLogAfter(sqlite3* db, const OpKey& key, std::vector<LoggedOp>* ops)
{
    SyncStatement s(db, std::string(kSelectLogged) + "WHERE " + kAfter + " ORDER BY Ts, Device, Seq");
    return s.prepared() && bindKey(s, key) && readLogged(s, ops);
}

bool readLogOf(sqlite3* db, const Uuid& install, int64_t afterSeq, std::vector<LoggedOp>* ops)
{
    SyncStatement s(db, std::string(kSelectLogged) + "WHERE Install = ? AND Seq > ? ORDER BY Seq");
    return s.prepared() && s.bindBlob(1, uuidBytes(install)) && s.bindInt64(2, afterSeq) && readLogged(s, ops);
}

bool deleteLogAfter(sqlite3* db, const OpKey& key)
{
    SyncStatement s(db, std::string("DELETE FROM SyncLog WHERE ") + kAfter);
    return s.prepared() && bindKey(s, key) && s.run();
}

bool newestKey(sqlite3* db, OpKey* key)
{
    if (!readHorizon(db, key)) return false;
    SyncStatement s(db, "SELECT Ts, Device, Seq FROM SyncLog ORDER BY Ts DESC, Device DESC, Seq DESC LIMIT 1");
    if (!s.prepared()) return false;
    const Step step = s.step();
    if (step == Step::Row) *key = std::max(*key, OpKey{s.columnInt64(0), s.columnInt64(1), s.columnInt64(2)});
    return step != Step::Error;
}

bool readApplied(sqlite3* db, AppliedVector* applied)
{
    SyncStatement s(db, "SELECT Install, Seq FROM SyncApplied");
    if (!s.prepared()) return false;
    Step step;
    while ((step = s.step()) == Step::Row) (*applied)[uuidOf(s.columnBlob(0))] = s.columnInt64(1);
    return step == Step::Done;
}

bool readAppliedDevices(sqlite3* db, std::map<Uuid, int>* devices)
{
    SyncStatement s(db, "SELECT Install, Device FROM SyncApplied");
    if (!s.prepared()) return false;
    Step step;
    while ((step = s.step()) == Step::Row) (*devices)[uuidOf(s.columnBlob(0))] = static_cast<int>(s.columnInt64(1));
    return step == Step::Done;
}

bool setApplied(sqlite3* db, const Uuid& install, int device, int64_t seq)
{
    SyncStatement s(db, "INSERT OR REPLACE INTO SyncApplied (Install, Device, Seq) VALUES (?, ?, ?)");
    return s.prepared() && s.bindBlob(1, uuidBytes(install)) && s.bindInt64(2, device) && s.bindInt64(3, seq) &&
           s.run();
}

bool readBookId(sqlite3* db, std::optional<Uuid>* book)
{
    Value value;
    if (!readState(db, "BookId", &value)) return false;
    if (value.type == Value::Type::Blob && value.bytes.size() == 16) *book = uuidOf(value.bytes);
    else book->reset();
    return true;
}

bool writeBookId(sqlite3* db, const Uuid& book)
{
    Value value;
    value.type = Value::Type::Blob;
    value.bytes = uuidBytes(book);
    return setState(db, "BookId", value);
}

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
    const char* const kUpTo = "(Ts, Device, Seq) <= (?1, ?2, ?3)";
    SyncStatement drop(db, std::string("DELETE FROM SyncLog WHERE Deletes = 0 AND ") + kUpTo);
    SyncStatement keepDeleted(db, std::string("UPDATE SyncLog SET Shipped = x'' WHERE ") + kUpTo);
    return drop.prepared() && bindKey(drop, upTo) && drop.run() && keepDeleted.prepared() &&
           bindKey(keepDeleted, upTo) && keepDeleted.run() && setState(db, "HorizonTs", Value::ofInteger(upTo.ts)) &&
           setState(db, "HorizonDevice", Value::ofInteger(upTo.device)) &&
           setState(db, "HorizonSeq", Value::ofInteger(upTo.seq));
}

bool readLogKeys(sqlite3* db, std::vector<LoggedKey>* oldestFirst)
{
    OpKey horizon;
    if (!readHorizon(db, &horizon)) return false;
    SyncStatement s(db, std::string("SELECT Ts, Device, Seq, Install FROM SyncLog WHERE ") + kAfter +
                            " ORDER BY Ts, Device, Seq");
    if (!s.prepared() || !bindKey(s, horizon)) return false;
    Step step;
    while ((step = s.step()) == Step::Row)
        oldestFirst->push_back({{s.columnInt64(0), s.columnInt64(1), s.columnInt64(2)}, uuidOf(s.columnBlob(3))});
    return step == Step::Done;
}

OpKey prunableUpTo(const std::vector<LoggedKey>& oldestFirst, const std::map<Uuid, AppliedVector>& known,
                   const AppliedVector& here)
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
        for (const auto& [install, vector] : known)
            if (seqIn(vector, logged.install) < logged.key.seq) return upTo;
        upTo = logged.key;
    }
    return upTo;
}
