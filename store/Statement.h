#pragma once

#include <cstdint>
#include <string>

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
    Step step();
    // Makes the prepared statement ready to run again with new parameters.
    void reset();
    void finalize();

    // SQLite's result codes (0 = done).
    int bindText(int index, const std::string& text);
    int bindInt(int index, int value);
    int bindInt64(int index, int64_t value);

    // Column readers of the current row; NULL reads as 0 or "".
    int64_t columnInt(int column) const;    // a 32-bit column, widened
    int64_t columnInt64(int column) const;  // a balance or a sum of amounts
    std::string columnText(int column) const;
    bool columnIsNull(int column) const;
    // A SUM column read through its decimal text, which keeps all 64 bits.
    int64_t columnSum(int column) const;

private:
    sqlite3_stmt* stmt_ = nullptr;
};
