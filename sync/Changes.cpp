#include "sync/Changes.h"

#include <sqlite3.h>

#include "store/Changeset.h"
#include "store/StatementCache.h"

namespace {

// table is always one of the three book tables (BookTables.h), never user text.
std::string selectSql(const std::string& table, const char* what)
{
    return std::string("SELECT ") + what + " FROM \"" + table + "\" WHERE Id = ?";
}

}  // namespace

bool readChanges(const std::string& changeset, std::vector<Change>* changes)
{
    ChangesetReader reader(changeset);
    while (reader.next()) {
        Change change;
        change.table = reader.table();
        change.kind = reader.op() == RowOp::Insert   ? ChangeKind::Insert
                      : reader.op() == RowOp::Delete ? ChangeKind::Delete
                                                     : ChangeKind::Update;
        for (int c = 0; c < reader.columns(); ++c) {
            if (change.kind != ChangeKind::Insert) change.before.push_back(Value::of(reader.before(c)));
            if (change.kind != ChangeKind::Delete) change.after.push_back(Value::of(reader.after(c)));
        }
        changes->push_back(std::move(change));
    }
    return reader.ok();
}

Row readRow(StatementCache& sql, const std::string& table, int64_t id, bool* failed)
{
    Row row;
    Statement* select = sql.get(selectSql(table, "*"));
    if (!select || select->bindInt64(1, id) != SQLITE_OK) {
        *failed = true;
        return row;
    }
    const Step step = select->step();
    if (step == Step::Error) *failed = true;
    if (step != Step::Row) return row;
    for (int c = 0; c < select->columnCount(); ++c) row.push_back(select->columnValue(c));
    return row;
}

bool rowExists(StatementCache& sql, const std::string& table, int64_t id, bool* failed)
{
    Statement* select = sql.get(selectSql(table, "1"));
    if (!select || select->bindInt64(1, id) != SQLITE_OK) {
        *failed = true;
        return false;
    }
    const Step step = select->step();
    if (step == Step::Error) *failed = true;
    return step == Step::Row;
}

bool insertRow(StatementCache& sql, const std::string& table, const Row& row)
{
    std::string text = "INSERT INTO \"" + table + "\" VALUES (";
    for (size_t c = 0; c < row.size(); ++c) text += c == 0 ? "?" : ",?";
    text += ")";
    Statement* insert = sql.get(text);
    if (!insert) return false;
    for (size_t c = 0; c < row.size(); ++c)
        if (insert->bindValue(static_cast<int>(c) + 1, row[c]) != SQLITE_OK) return false;
    return insert->run();
}
