#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct sqlite3;
struct sqlite3_value;

// How wide an integer column of the book may be: amounts, Ids and kinds are
// exchanged with the book as 32-bit values; a stored balance is 64-bit.
enum class IntegerRange { Int32, Int64 };

// The integer a stored value holds when the program can read it: an integer
// within range, or NULL (read as 0). Text ('1,500'), a fraction or a value
// out of range gives none: read as a number it would be misread silently.
std::optional<int64_t> readableInteger(sqlite3_value* value, IntegerRange range);

// A stored value the program cannot read, and where it is.
struct BadValue {
    std::string table;
    int64_t id = 0;
    std::string column;
    std::string value;  // as stored, as text
};

// The integer columns whose values the start reads from every row: the
// assets' and categories' columns, and the entries' asset, kind and the
// amount of the column their kind uses.
// The store checks them as it reads them (DataModel::badValue); this pass
// finds the first unreadable one of a book or a backup, in the order Sisan,
// Items, Himoku. A failed read is reported in *error.
std::optional<BadValue> findBadValue(sqlite3* db, std::string* error = nullptr);
