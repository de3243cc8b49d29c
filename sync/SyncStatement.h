#pragma once

#include <cstdint>
#include <string>

#include "store/Statement.h"
#include "sync/Value.h"

struct sqlite3;
struct sqlite3_stmt;

// A prepared statement for the sync tables and for rows copied out of
// changesets: the store's Statement guard reads the three tables as the
// store does (32-bit integers and text), while sync needs 64-bit keys,
// blobs and values of any type. Finalized on every path out of a scope;
// step() tells a row, the end and an error apart like Statement's.
class SyncStatement {
public:
    SyncStatement(sqlite3* db, const std::string& sql);
    ~SyncStatement();
    SyncStatement(const SyncStatement&) = delete;
    SyncStatement& operator=(const SyncStatement&) = delete;

    bool prepared() const { return stmt_ != nullptr; }
    Step step();
    // Ready to run again with new bindings.
    void reset();

    // Binds return false on failure. Text and blobs are copied.
    bool bind(int index, const Value& value);  // Absent binds NULL
    bool bindInt64(int index, int64_t value);
    bool bindText(int index, const std::string& text);
    bool bindBlob(int index, const std::string& bytes);

    int columnCount() const;
    int64_t columnInt64(int column) const;
    std::string columnBlob(int column) const;  // a text column's bytes too
    Value column(int column) const;

    // Runs a statement that returns no rows to its end; false on an error.
    bool run();

private:
    sqlite3_stmt* stmt_ = nullptr;
};

// Runs SQL without parameters or rows (DDL, SAVEPOINT ...); false on an error.
bool execSql(sqlite3* db, const std::string& sql);
// The connection's last error, for a message.
std::string sqliteError(sqlite3* db);
