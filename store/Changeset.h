#pragma once

#include <cstdint>
#include <string>

struct sqlite3_changeset_iter;
struct sqlite3_value;

// What a recorded change did to its row.
enum class RowOp { Insert, Delete, Update };

// Reads a changeset (the session extension's format) one changed row at a
// time. A row carries its values before the change (Delete, Update) and
// after it (Insert, Update); an Update carries only the key and the columns
// it changed, so the others are absent (nullptr).
class ChangesetReader {
public:
    // Reads a copy of the changeset: the argument may go away meanwhile.
    explicit ChangesetReader(std::string changeset);
    ~ChangesetReader();
    ChangesetReader(const ChangesetReader&) = delete;
    ChangesetReader& operator=(const ChangesetReader&) = delete;

    // Moves to the next changed row; false at the end, or when the changeset
    // is malformed (then ok() is false).
    bool next();
    bool ok() const;

    const char* table() const { return table_; }
    bool isTable(const char* name) const;
    RowOp op() const { return op_; }
    int columns() const { return columns_; }
    sqlite3_value* before(int column) const;
    sqlite3_value* after(int column) const;
    // The value after the change where the change carries one, else before.
    sqlite3_value* latest(int column) const;

    // A value as the store reads a column: NULL and absent read as 0 or "".
    static int64_t intOf(sqlite3_value* value);
    static std::string textOf(sqlite3_value* value);
    static bool isNull(sqlite3_value* value);  // absent or NULL

private:
    std::string bytes_;
    sqlite3_changeset_iter* iter_ = nullptr;
    int rc_ = 0;
    const char* table_ = "";
    int columns_ = 0;
    RowOp op_ = RowOp::Insert;
};

// The same changeset with every change reversed (inserts become deletes and
// the other way round, updates swap their values). False when it is malformed.
bool invertChangeset(const std::string& changeset, std::string* inverted);
