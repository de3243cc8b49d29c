#include "store/History.h"

#include <sqlite3.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <algorithm>
#include <set>

#include "store/BookTables.h"
#include "store/Changeset.h"
#include "store/ChangesetDigest.h"
#include "store/Statement.h"
#include "store/StatementCache.h"

namespace {

const char* const kCreate =
    "CREATE TABLE IF NOT EXISTS History (Id INTEGER PRIMARY KEY, At INTEGER NOT NULL, Kind INTEGER NOT NULL, "
    "Target INTEGER, Label TEXT NOT NULL, Sisans TEXT NOT NULL, Changes INTEGER NOT NULL, "
    "Deletes INTEGER NOT NULL, Changeset BLOB NOT NULL)";
const char* const kEntryColumns = "Id, At, Kind, Target, Label, Sisans, Changes, Deletes";

std::function<int64_t()>& historyClock()
{
    static std::function<int64_t()> c;
    return c;
}

std::set<std::string>& derivedTables()
{
    static std::set<std::string> tables;
    return tables;
}

// Runs a statement that returns no rows.
bool run(sqlite3* db, const std::string& sql)
{
    Statement s;
    return s.prepare(db, sql) && s.step() == Step::Done;
}

// Reads every row of a prepared statement; true only when the rows ended.
template <typename OnRow>
bool eachRow(Statement& s, OnRow onRow)
{
    for (;;) {
        switch (s.step()) {
        case Step::Row:
            if (!onRow()) return true;  // the caller has what it wanted
            break;
        case Step::Done:
            return true;
        case Step::Error:
            return false;
        }
    }
}

HistoryEntry entryOf(const Statement& s)
{
    HistoryEntry e;
    e.Id = s.columnInt64(0);
    e.At = s.columnInt64(1);
    e.Kind = static_cast<HistoryKind>(s.columnInt64(2));
    e.Target = s.columnInt64(3);
    e.Label = s.columnText(4);
    e.Sisans = s.columnText(5);
    e.Changes = s.columnInt64(6);
    e.Deletes = s.columnInt64(7);
    return e;
}

// The value of the first column of the first row; nothing read when there is none.
template <typename Read>
bool readOne(StatementCache& cache, const char* sql, int64_t id, Read read)
{
    Statement* s = cache.get(sql);
    if (!s || s->bindInt64(1, id) != SQLITE_OK) return false;
    switch (s->step()) {
    case Step::Row:
        read(*s);
        return true;
    case Step::Done:
        return true;
    case Step::Error:
        return false;
    }
    return false;
}

// The key of the changed row (every recorded table here keys on column 0).
int64_t keyOf(const ChangesetReader& r)
{
    return ChangesetReader::intOf(r.latest(0));
}

}  // namespace

bool createHistoryTable(sqlite3* db)
{
    return run(db, kCreate);
}

int64_t historyNowMs()
{
    if (historyClock()) return historyClock()();
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

void setHistoryClock(std::function<int64_t()> c)
{
    historyClock() = std::move(c);
}

std::string formatHistoryTime(int64_t ms)
{
    const std::time_t seconds = static_cast<std::time_t>(ms / 1000);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y/%m/%d %H:%M", &local);
    return text;
}

void declareDerivedTable(const std::string& name)
{
    derivedTables().insert(name);
}

bool isRecordedTable(const char* name)
{
    const std::string table = name;
    for (const TableLayout& layout : optionalBookTables())
        if (!layout.recorded && layout.name == table) return false;
    for (const auto& derived : derivedTables())
        if (table == derived || table.rfind(derived + "_", 0) == 0) return false;
    return true;
}

bool insertHistoryEntry(sqlite3* db, HistoryEntry* entry, const std::string& changeset)
{
    StatementCache cache(db);
    return insertHistoryEntry(cache, entry, changeset);
}

bool insertHistoryEntry(StatementCache& cache, HistoryEntry* entry, const std::string& changeset)
{
    Statement* s = cache.get("INSERT INTO History (At, Kind, Target, Label, Sisans, Changes, Deletes, Changeset) "
                             "VALUES (?,?,?,?,?,?,?,?)");
    if (!s) return false;
    const bool bound = s->bindInt64(1, entry->At) == SQLITE_OK &&
                       s->bindInt64(2, static_cast<int64_t>(entry->Kind)) == SQLITE_OK &&
                       (entry->Target ? s->bindInt64(3, entry->Target) : s->bindNull(3)) == SQLITE_OK &&
                       s->bindText(4, entry->Label) == SQLITE_OK && s->bindText(5, entry->Sisans) == SQLITE_OK &&
                       s->bindInt64(6, entry->Changes) == SQLITE_OK && s->bindInt64(7, entry->Deletes) == SQLITE_OK &&
                       s->bindBlob(8, changeset) == SQLITE_OK;
    if (!bound || s->step() != Step::Done) return false;
    entry->Id = sqlite3_last_insert_rowid(cache.db());
    return true;
}

bool summarizeChangeset(sqlite3* db, const std::string& changeset, HistoryEntry* entry)
{
    StatementCache cache(db);
    return summarizeChangeset(cache, changeset, entry);
}

bool summarizeChangeset(StatementCache& db, const std::string& changeset, HistoryEntry* entry)
{
    ChangesetDigest digest;
    if (!digestChangeset(changeset, 0, &digest)) return false;
    for (const auto& update : digest.updates) {
        if (update.after[0]) continue;  // its asset is in the digest already
        if (!readOne(db, "SELECT SisanNo FROM Items WHERE Id = ?", update.id,
                     [&](const Statement& s) { digest.sisanIds.insert(s.columnInt(0)); }))
            return false;
    }
    bool read = true;
    entry->Sisans = sisanNamesOf(digest, [&](int64_t id) {
        std::string name = "????";
        read = read && readOne(db, "SELECT Namae FROM Sisan WHERE Id = ?", id,
                               [&](const Statement& s) { name = s.columnText(0); });
        return name;
    });
    entry->Changes = digest.changes;
    entry->Deletes = digest.deletes;
    return read;
}

bool updateHistoryChangeset(StatementCache& cache, const HistoryEntry& entry, const std::string& changeset)
{
    Statement* s = cache.get("UPDATE History SET Sisans = ?, Changes = ?, Deletes = ?, Changeset = ? WHERE Id = ?");
    return s && s->bindText(1, entry.Sisans) == SQLITE_OK && s->bindInt64(2, entry.Changes) == SQLITE_OK &&
           s->bindInt64(3, entry.Deletes) == SQLITE_OK && s->bindBlob(4, changeset) == SQLITE_OK &&
           s->bindInt64(5, entry.Id) == SQLITE_OK && s->step() == Step::Done;
}

bool readHistoryEntry(sqlite3* db, int64_t id, HistoryEntry* entry, std::string* changeset)
{
    Statement s;
    if (!s.prepare(db, std::string("SELECT ") + kEntryColumns + ", Changeset FROM History WHERE Id = ?") ||
        s.bindInt64(1, id) != SQLITE_OK)
        return false;
    entry->Id = 0;
    return eachRow(s, [&] {
        *entry = entryOf(s);
        if (changeset) *changeset = s.columnBlob(8);
        return false;
    }) && entry->Id != 0;
}

bool readHistoryEntries(sqlite3* db, bool deletesOnly, std::vector<HistoryEntry>* entries)
{
    Statement s;
    const std::string sql = std::string("SELECT ") + kEntryColumns + " FROM History" +
                            (deletesOnly ? " WHERE Deletes > 0" : "") + " ORDER BY Id DESC";
    if (!s.prepare(db, sql)) return false;
    std::vector<HistoryEntry> read;
    if (!eachRow(s, [&] {
            read.push_back(entryOf(s));
            return true;
        }))
        return false;
    *entries = std::move(read);
    return true;
}

bool readHistoryOutline(sqlite3* db, std::vector<HistoryEntry>* entries)
{
    Statement s;
    if (!s.prepare(db, "SELECT Id, Kind, Target, Label FROM History ORDER BY Id")) return false;
    std::vector<HistoryEntry> read;
    if (!eachRow(s, [&] {
            HistoryEntry e;
            e.Id = s.columnInt64(0);
            e.Kind = static_cast<HistoryKind>(s.columnInt64(1));
            e.Target = s.columnInt64(2);
            e.Label = s.columnText(3);
            read.push_back(std::move(e));
            return true;
        }))
        return false;
    *entries = std::move(read);
    return true;
}

bool findLatestTouching(sqlite3* db, int64_t afterId, const char* table, int64_t key, HistoryEntry* found)
{
    found->Id = 0;
    Statement s;
    if (!s.prepare(db, std::string("SELECT ") + kEntryColumns + ", Changeset FROM History WHERE Id > ? ORDER BY Id DESC") ||
        s.bindInt64(1, afterId) != SQLITE_OK)
        return false;
    const bool read = eachRow(s, [&] {
        ChangesetReader r(s.columnBlob(8));
        while (r.next()) {
            if (r.isTable(table) && keyOf(r) == key) {
                *found = entryOf(s);
                return false;
            }
        }
        return true;
    });
    return read && found->Id != 0;
}

bool pruneHistory(sqlite3* db, int64_t nowMs, const HistoryLimits& limits, int64_t keepFromId)
{
    Statement s;
    if (!s.prepare(db, "SELECT Id, At, length(Changeset) FROM History ORDER BY Id DESC")) return false;
    size_t seen = 0;
    int64_t bytes = 0;
    int64_t cutoff = 0;  // rows with this Id and older go
    if (!eachRow(s, [&] {
            bytes += s.columnInt64(2);
            if (++seen <= limits.keep) return true;
            if (s.columnInt64(1) < nowMs - limits.maxAgeMs || bytes > limits.maxBytes) {
                cutoff = s.columnInt64(0);
                return false;
            }
            return true;
        }))
        return false;
    if (keepFromId > 0) cutoff = std::min(cutoff, keepFromId - 1);
    if (cutoff <= 0) return true;
    return s.prepare(db, "DELETE FROM History WHERE Id <= ?") && s.bindInt64(1, cutoff) == SQLITE_OK &&
           s.step() == Step::Done;
}
