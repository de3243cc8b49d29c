#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3_value;

// One column value copied out of SQLite (a changeset, a row read back), so
// that it outlives the iterator or statement it came from. An UPDATE in a
// changeset carries only the columns it changed: the others are Absent.
struct Value {
    enum class Type { Absent, Null, Integer, Real, Text, Blob };
    Type type = Type::Absent;
    int64_t integer = 0;
    double real = 0;
    std::string bytes;  // Text or Blob

    static Value of(sqlite3_value* value);  // nullptr gives Absent
    static Value ofInteger(int64_t v) { return {Type::Integer, v, 0, {}}; }
    bool present() const { return type != Type::Absent; }
    // The value as the store reads an integer column: NULL and absent are 0.
    int64_t asInteger() const { return type == Type::Integer ? integer : 0; }
    std::string asText() const { return type == Type::Text || type == Type::Blob ? bytes : std::string(); }

    bool operator==(const Value&) const = default;
};

using Row = std::vector<Value>;
