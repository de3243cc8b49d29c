#include "sync/SyncStatement.h"

#include <sqlite3.h>

SyncStatement::SyncStatement(sqlite3* db, const std::string& sql)
{
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) {
        sqlite3_finalize(stmt_);
        stmt_ = nullptr;
    }
}

SyncStatement::~SyncStatement() { sqlite3_finalize(stmt_); }

Step SyncStatement::step()
{
    if (!stmt_) return Step::Error;
    switch (sqlite3_step(stmt_)) {
    case SQLITE_ROW:
        return Step::Row;
    case SQLITE_DONE:
        return Step::Done;
    default:
        return Step::Error;
    }
}

void SyncStatement::reset()
{
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
}

bool SyncStatement::bind(int index, const Value& value)
{
    switch (value.type) {
    case Value::Type::Integer:
        return bindInt64(index, value.integer);
    case Value::Type::Real:
        return sqlite3_bind_double(stmt_, index, value.real) == SQLITE_OK;
    case Value::Type::Text:
        return bindText(index, value.bytes);
    case Value::Type::Blob:
        return bindBlob(index, value.bytes);
    default:
        return sqlite3_bind_null(stmt_, index) == SQLITE_OK;
    }
}

bool SyncStatement::bindInt64(int index, int64_t value)
{
    return sqlite3_bind_int64(stmt_, index, value) == SQLITE_OK;
}

bool SyncStatement::bindText(int index, const std::string& text)
{
    return sqlite3_bind_text64(stmt_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) == SQLITE_OK;
}

bool SyncStatement::bindBlob(int index, const std::string& bytes)
{
    return sqlite3_bind_blob64(stmt_, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT) == SQLITE_OK;
}

int SyncStatement::columnCount() const { return sqlite3_column_count(stmt_); }

int64_t SyncStatement::columnInt64(int column) const { return sqlite3_column_int64(stmt_, column); }

std::string SyncStatement::columnBlob(int column) const
{
    const auto* data = static_cast<const char*>(sqlite3_column_blob(stmt_, column));
    return data ? std::string(data, static_cast<size_t>(sqlite3_column_bytes(stmt_, column))) : std::string();
}

Value SyncStatement::column(int column) const { return Value::of(sqlite3_column_value(stmt_, column)); }

bool SyncStatement::run()
{
    Step s = step();
    while (s == Step::Row) s = step();
    return s == Step::Done;
}

bool execSql(sqlite3* db, const std::string& sql)
{
    SyncStatement statement(db, sql);
    return statement.prepared() && statement.run();
}

std::string sqliteError(sqlite3* db) { return sqlite3_errmsg(db); }
