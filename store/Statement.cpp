#include "store/Statement.h"

#include <sqlite3.h>

bool Statement::prepare(sqlite3* db, const std::string& sql)
{
    finalize();
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) == SQLITE_OK) return true;
    finalize();
    return false;
}

Step Statement::step()
{
    switch (sqlite3_step(stmt_)) {
    case SQLITE_ROW:
        return Step::Row;
    case SQLITE_DONE:
        return Step::Done;
    default:
        return Step::Error;
    }
}

bool Statement::run()
{
    Step s = step();
    while (s == Step::Row) s = step();
    return s == Step::Done;
}

void Statement::reset()
{
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
}

void Statement::finalize()
{
    sqlite3_finalize(stmt_);
    stmt_ = nullptr;
}

int Statement::bindText(int index, const std::string& text)
{
    return sqlite3_bind_text(stmt_, index, text.c_str(), -1, SQLITE_TRANSIENT);
}

int Statement::bindInt(int index, int value)
{
    return sqlite3_bind_int(stmt_, index, value);
}

int Statement::bindInt64(int index, int64_t value)
{
    return sqlite3_bind_int64(stmt_, index, value);
}

int Statement::bindBlob(int index, const std::string& bytes)
{
    return sqlite3_bind_blob64(stmt_, index, bytes.data(), bytes.size(), SQLITE_STATIC);
}

int Statement::bindNull(int index)
{
    return sqlite3_bind_null(stmt_, index);
}

int Statement::bindValue(int index, const Value& value)
{
    switch (value.type) {
    case Value::Type::Integer:
        return bindInt64(index, value.integer);
    case Value::Type::Real:
        return sqlite3_bind_double(stmt_, index, value.real);
    case Value::Type::Text:
        return sqlite3_bind_text64(stmt_, index, value.bytes.data(), value.bytes.size(), SQLITE_STATIC, SQLITE_UTF8);
    case Value::Type::Blob:
        return bindBlob(index, value.bytes);
    default:
        return bindNull(index);
    }
}

int Statement::columnCount() const
{
    return sqlite3_column_count(stmt_);
}

int64_t Statement::columnInt(int column) const
{
    return sqlite3_column_int64(stmt_, column);
}

int64_t Statement::columnInt64(int column) const
{
    return sqlite3_column_int64(stmt_, column);
}

std::optional<int64_t> Statement::columnReadable(int column, IntegerRange range) const
{
    return readableInteger(sqlite3_column_value(stmt_, column), range);
}

std::string Statement::columnText(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
    return text ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(stmt_, column))) : std::string();
}

std::string Statement::columnBlob(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(stmt_, column));
    return bytes ? std::string(bytes, static_cast<size_t>(sqlite3_column_bytes(stmt_, column))) : std::string();
}

bool Statement::columnIsNull(int column) const
{
    return sqlite3_column_type(stmt_, column) == SQLITE_NULL;
}

Value Statement::columnValue(int column) const
{
    return Value::of(sqlite3_column_value(stmt_, column));
}

int64_t Statement::columnSum(int column) const
{
    const std::string text = columnText(column);
    return text.empty() ? 0 : std::stoll(text);
}
