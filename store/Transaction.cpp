#include "store/Transaction.h"

#include <sqlite3.h>

bool runControlStatement(sqlite3* db, const char* sql)
{
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v2(db, sql, -1, &s, nullptr) != SQLITE_OK) {
        sqlite3_finalize(s);
        return false;
    }
    const int rc = sqlite3_step(s);
    sqlite3_finalize(s);
    return rc == SQLITE_DONE;
}

Transaction::Transaction(sqlite3* db) : db_(db), open_(runControlStatement(db, "BEGIN")) {}

Transaction::~Transaction()
{
    // SQLite may already have rolled back by itself after an I/O error; a
    // failing ROLLBACK then only says there was nothing to undo.
    if (open_) runControlStatement(db_, "ROLLBACK");
}

bool Transaction::commit()
{
    if (!open_) return false;
    if (!runControlStatement(db_, "COMMIT")) return false;  // the destructor rolls back
    open_ = false;
    return true;
}
