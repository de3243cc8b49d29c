#include "store/StepApply.h"

#include <sqlite3.h>

#include <cstring>
#include <initializer_list>
#include <set>
#include <utility>
#include <vector>

#include "store/ChangesetDigest.h"
#include "store/BookTables.h"
#include "store/History.h"
#include "store/Statement.h"

namespace {

using Why = ApplyConflict::Why;

bool sameValue(sqlite3_value* a, sqlite3_value* b)
{
    const int ta = sqlite3_value_type(a);
    const int tb = sqlite3_value_type(b);
    const auto numeric = [](int t) { return t == SQLITE_INTEGER || t == SQLITE_FLOAT; };
    if (ta != tb) return numeric(ta) && numeric(tb) && sqlite3_value_double(a) == sqlite3_value_double(b);
    switch (ta) {
    case SQLITE_NULL:
        return true;
    case SQLITE_INTEGER:
        return sqlite3_value_int64(a) == sqlite3_value_int64(b);
    case SQLITE_FLOAT:
        return sqlite3_value_double(a) == sqlite3_value_double(b);
    default: {
        const int n = sqlite3_value_bytes(a);
        return n == sqlite3_value_bytes(b) && std::memcmp(sqlite3_value_blob(a), sqlite3_value_blob(b), n) == 0;
    }
    }
}

// A row found but not as the change expects it: true when it differs only
// in derived columns, whose values the program recomputes anyway.
bool onlyDerivedDiffer(sqlite3_changeset_iter* it, const char* table, int columns)
{
    for (int c = 0; c < columns; ++c) {
        sqlite3_value* expected = nullptr;
        sqlite3_value* found = nullptr;
        if (sqlite3changeset_old(it, c, &expected) != SQLITE_OK || !expected) continue;
        if (sqlite3changeset_conflict(it, c, &found) != SQLITE_OK || !found) return false;
        if (!sameValue(expected, found) && !isDerivedColumn(table, c)) return false;
    }
    return true;
}

struct Context {
    sqlite3* db;
    ApplyConflict* conflict;
};

int onConflict(void* p, int type, sqlite3_changeset_iter* it)
{
    auto* context = static_cast<Context*>(p);
    ApplyConflict& conflict = *context->conflict;
    if (type == SQLITE_CHANGESET_FOREIGN_KEY) {
        conflict.why = Why::Failed;
        conflict.detail = "FOREIGN KEY constraint failed";
        return SQLITE_CHANGESET_ABORT;
    }
    const char* table = nullptr;
    int columns = 0, op = 0, indirect = 0;
    sqlite3changeset_op(it, &table, &columns, &op, &indirect);
    if (type == SQLITE_CHANGESET_DATA && onlyDerivedDiffer(it, table, columns)) return SQLITE_CHANGESET_REPLACE;
    sqlite3_value* key = nullptr;
    if (op == SQLITE_INSERT)
        sqlite3changeset_new(it, 0, &key);
    else
        sqlite3changeset_old(it, 0, &key);
    conflict.table = table;
    conflict.key = key ? sqlite3_value_int64(key) : 0;
    switch (type) {
    case SQLITE_CHANGESET_DATA:
        conflict.why = Why::Changed;
        break;
    case SQLITE_CHANGESET_NOTFOUND:
        conflict.why = Why::Removed;
        break;
    case SQLITE_CHANGESET_CONFLICT:
        conflict.why = Why::Exists;
        break;
    default:
        // A constraint the change breaks (a NOT NULL, a trigger's refusal):
        // SQLite has retried it at the end of the apply and kept no message.
        conflict.why = Why::Failed;
        conflict.detail = "データベースがこの変更を受け付けませんでした（制約違反）。";
        break;
    }
    return SQLITE_CHANGESET_ABORT;
}

// The Id of the first row that sql finds with these parameters, or 0.
bool firstId(sqlite3* db, const char* sql, std::initializer_list<int64_t> params, int64_t* id)
{
    Statement s;
    *id = 0;
    if (!s.prepare(db, sql)) return false;
    int index = 0;
    for (int64_t p : params)
        if (s.bindInt64(++index, p) != SQLITE_OK) return false;
    switch (s.step()) {
    case Step::Row:
        *id = s.columnInt64(0);
        return true;
    case Step::Done:
        return true;
    case Step::Error:
        return false;
    }
    return false;
}

bool fail(ApplyConflict* conflict, Why why, const char* table, int64_t key, const char* usedTable = "")
{
    conflict->why = why;
    conflict->table = table;
    conflict->key = key;
    conflict->usedTable = usedTable;
    return false;
}

bool failed(sqlite3* db, ApplyConflict* conflict)
{
    conflict->why = Why::Failed;
    conflict->detail = sqlite3_errmsg(db);
    return false;
}

bool checkReferences(sqlite3* db, const ChangesetDigest& refs, ApplyConflict* conflict)
{
    int64_t found = 0;
    const struct {
        const std::set<int64_t>& ids;
        const char* table;
        const char* sql;
    } used[] = {
        {refs.usedSisans, "Sisan", "SELECT Id FROM Sisan WHERE Id = ?"},
        {refs.usedHimoku, "Himoku", "SELECT Id FROM Himoku WHERE Id = ?"},
        {refs.usedItems, "Items", "SELECT Id FROM Items WHERE Id = ?"},
    };
    for (const auto& u : used) {
        for (int64_t id : u.ids) {
            if (!firstId(db, u.sql, {id}, &found)) return failed(db, conflict);
            if (!found) return fail(conflict, Why::Missing, u.table, id);
        }
    }
    for (int64_t id : refs.goneHimoku) {
        if (!firstId(db, "SELECT Id FROM Items WHERE HimokuNo = ? LIMIT 1", {id}, &found)) return failed(db, conflict);
        if (found) return fail(conflict, Why::UsedLater, "Items", found, "Himoku");
        if (!firstId(db, "SELECT Id FROM Himoku WHERE Hno = ? AND Id <> ? LIMIT 1", {id, id}, &found))
            return failed(db, conflict);
        if (found) return fail(conflict, Why::UsedLater, "Himoku", found, "Himoku");
    }
    for (int64_t id : refs.goneSisans) {
        for (const char* sql : {"SELECT Id FROM Items WHERE SisanNo = ? LIMIT 1",
                                "SELECT Id FROM Items WHERE IdouSisanNo = ? LIMIT 1"}) {
            if (!firstId(db, sql, {id}, &found)) return failed(db, conflict);
            if (found) return fail(conflict, Why::UsedLater, "Items", found, "Sisan");
        }
    }
    for (const auto& [row, partner] : refs.goneTransfers) {
        if (!firstId(db, "SELECT Id FROM Items WHERE Id = ? AND IdouId = ?", {partner, row}, &found))
            return failed(db, conflict);
        if (found) return fail(conflict, Why::UsedLater, "Items", found, "Items");
    }
    return true;
}

}  // namespace

bool applyChangeset(sqlite3* db, const std::string& changeset, const ChangesetDigest& digest, ApplyConflict* conflict)
{
    *conflict = ApplyConflict{};
    Context context{db, conflict};
    const int rc = sqlite3changeset_apply(db, static_cast<int>(changeset.size()), const_cast<char*>(changeset.data()),
                                          nullptr, onConflict, &context);
    if (rc != SQLITE_OK) {
        if (conflict->why == Why::None) return failed(db, conflict);
        return false;
    }
    return checkReferences(db, digest, conflict);
}
