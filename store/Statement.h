#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "store/BookValues.h"
#include "store/Value.h"

struct sqlite3;
struct sqlite3_stmt;

// What one step of a statement gave: a result row, the end of the rows, or
// an error (SQLite's message is then on the connection). An error is never
// the end of the rows: a read that meets one has failed.
enum class Step { Row, Done, Error };

// The store's statement in use. prepare() finalizes the previous statement
// first and the destructor finalizes the last one, so no path out of an
// operation leaves a statement open. Not copyable.
class Statement {
public:
    Statement() = default;
    ~Statement() { finalize(); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // True when sql (whole text) was prepared on db.
    bool prepare(sqlite3* db, const std::string& sql);
    bool prepared() const { return stmt_ != nullptr; }
    Step step();
    // Steps a statement that returns no rows to its end; false on an error.
    bool run();
    // Steps through every row, calling onRow() at each; true when the rows
    // ended, false when a step failed.
    template <typename OnRow>
    bool eachRow(OnRow onRow);
    // Rewinds the statement to run it again with new bindings.
    void reset();
    void finalize();

    // SQLite's result codes (0 = done). A bound blob is not copied: its
    // bytes must stay as they are until the statement has been stepped.
    int bindText(int index, const std::string& text);
    int bindInt(int index, int value);
    int bindInt64(int index, int64_t value);
    int bindBlob(int index, const std::string& bytes);
    int bindNull(int index);
    // Any value copied out of SQLite: Absent and Null bind NULL. Text and
    // blobs are bound without a copy, like bindBlob.
    int bindValue(int index, const Value& value);

    int columnCount() const;
    // Column readers of the current row; NULL reads as 0 or "". Integers
    // are read whole: a value beyond 32 bits is never wrapped round.
    int64_t columnInt(int column) const;
    int64_t columnInt64(int column) const;  // a balance or a sum of amounts
    // The column's integer when the program can read it (BookValues.h):
    // none for text, a fraction or a value out of range.
    std::optional<int64_t> columnReadable(int column, IntegerRange range) const;
    std::string columnText(int column) const;
    std::string columnBlob(int column) const;
    bool columnIsNull(int column) const;
    // The column as it is stored, whatever its type.
    Value columnValue(int column) const;
    // A SUM column read through its decimal text, which keeps all 64 bits.
    int64_t columnSum(int column) const;

private:
    sqlite3_stmt* stmt_ = nullptr;
};

template <typename OnRow>
bool Statement::eachRow(OnRow onRow)
{
    for (;;) {
        switch (step()) {
        case Step::Row:
            onRow();
            break;
        case Step::Done:
            return true;
        case Step::Error:
            return false;
        }
    }
}
