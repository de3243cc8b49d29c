#include "store/History.h"

#include <sqlite3.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <set>

#include "store/Changeset.h"
#include "store/Statement.h"

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
    if (std::strcmp(name, "History") == 0) return false;
    const std::string table = name;
    for (const auto& derived : derivedTables())
        if (table == derived || table.rfind(derived + "_", 0) == 0) return false;
    return true;
}

bool isDerivedColumn(const char* table, int column)
{
    return (column == 3 && std::strcmp(table, "Sisan") == 0) || (column == 4 && std::strcmp(table, "Himoku") == 0);
}

bool insertHistoryEntry(sqlite3* db, HistoryEntry* entry, const std::string& changeset)
{
    Statement s;
    if (!s.prepare(db, "INSERT INTO History (At, Kind, Target, Label, Sisans, Changes, Deletes, Changeset) "
                       "VALUES (?,?,?,?,?,?,?,?)"))
        return false;
    const bool bound = s.bindInt64(1, entry->At) == SQLITE_OK &&
                       s.bindInt64(2, static_cast<int64_t>(entry->Kind)) == SQLITE_OK &&
                       (entry->Target ? s.bindInt64(3, entry->Target) : s.bindNull(3)) == SQLITE_OK &&
                       s.bindText(4, entry->Label) == SQLITE_OK && s.bindText(5, entry->Sisans) == SQLITE_OK &&
                       s.bindInt64(6, entry->Changes) == SQLITE_OK && s.bindInt64(7, entry->Deletes) == SQLITE_OK &&
                       s.bindBlob(8, changeset) == SQLITE_OK;
    if (!bound || s.step() != Step::Done) return false;
    entry->Id = sqlite3_last_insert_rowid(db);
    return true;
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

bool pruneHistory(sqlite3* db, int64_t nowMs, const HistoryLimits& limits)
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
    if (cutoff == 0) return true;
    return s.prepare(db, "DELETE FROM History WHERE Id <= ?") && s.bindInt64(1, cutoff) == SQLITE_OK &&
           s.step() == Step::Done;
}
