#include "sync/Changes.h"

#include <sqlite3.h>

#include "sync/SyncStatement.h"

namespace {

struct Iterator {
    sqlite3_changeset_iter* iter = nullptr;
    ~Iterator() { sqlite3changeset_finalize(iter); }
};

ChangeKind kindOf(int op)
{
    if (op == SQLITE_INSERT) return ChangeKind::Insert;
    if (op == SQLITE_DELETE) return ChangeKind::Delete;
    return ChangeKind::Update;
}

// table is always one of the three book tables (BookTables.h), never user text.
std::string selectSql(const std::string& table, const char* what)
{
    return std::string("SELECT ") + what + " FROM \"" + table + "\" WHERE Id = ?";
}

}  // namespace

bool readChanges(const std::string& changeset, std::vector<Change>* changes)
{
    Iterator it;
    if (sqlite3changeset_start(&it.iter, static_cast<int>(changeset.size()), const_cast<char*>(changeset.data())) !=
        SQLITE_OK)
        return false;
    int rc;
    while ((rc = sqlite3changeset_next(it.iter)) == SQLITE_ROW) {
        const char* table = nullptr;
        int columns = 0, op = 0, indirect = 0;
        if (sqlite3changeset_op(it.iter, &table, &columns, &op, &indirect) != SQLITE_OK) return false;
        Change change;
        change.table = table;
        change.kind = kindOf(op);
        for (int c = 0; c < columns; ++c) {
            sqlite3_value* value = nullptr;
            if (change.kind != ChangeKind::Insert) {
                if (sqlite3changeset_old(it.iter, c, &value) != SQLITE_OK) return false;
                change.before.push_back(Value::of(value));
            }
            if (change.kind != ChangeKind::Delete) {
                value = nullptr;
                if (sqlite3changeset_new(it.iter, c, &value) != SQLITE_OK) return false;
                change.after.push_back(Value::of(value));
            }
        }
        changes->push_back(std::move(change));
    }
    return rc == SQLITE_DONE;
}

bool invertChangeset(const std::string& changeset, std::string* inverted)
{
    int size = 0;
    void* bytes = nullptr;
    const int rc = sqlite3changeset_invert(static_cast<int>(changeset.size()), changeset.data(), &size, &bytes);
    if (rc == SQLITE_OK) inverted->assign(static_cast<const char*>(bytes), static_cast<size_t>(size));
    sqlite3_free(bytes);
    return rc == SQLITE_OK;
}

Row readRow(sqlite3* db, const std::string& table, int64_t id, bool* failed)
{
    SyncStatement select(db, selectSql(table, "*"));
    Row row;
    if (!select.prepared() || !select.bindInt64(1, id)) {
        *failed = true;
        return row;
    }
    const Step step = select.step();
    if (step == Step::Error) *failed = true;
    if (step != Step::Row) return row;
    for (int c = 0; c < select.columnCount(); ++c) row.push_back(select.column(c));
    return row;
}

bool rowExists(sqlite3* db, const std::string& table, int64_t id, bool* failed)
{
    SyncStatement select(db, selectSql(table, "1"));
    if (!select.prepared() || !select.bindInt64(1, id)) {
        *failed = true;
        return false;
    }
    const Step step = select.step();
    if (step == Step::Error) *failed = true;
    return step == Step::Row;
}

bool insertRow(sqlite3* db, const std::string& table, const Row& row)
{
    std::string sql = "INSERT INTO \"" + table + "\" VALUES (";
    for (size_t c = 0; c < row.size(); ++c) sql += c == 0 ? "?" : ",?";
    sql += ")";
    SyncStatement insert(db, sql);
    if (!insert.prepared()) return false;
    for (size_t c = 0; c < row.size(); ++c)
        if (!insert.bind(static_cast<int>(c) + 1, row[c])) return false;
    return insert.run();
}
