#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "store/Value.h"

class StatementCache;

enum class ChangeKind { Insert, Update, Delete };

// One changed row of a changeset, copied out of it: the values before the
// change (Update, Delete) and after it (Insert, Update). An Update carries
// only the Id and the columns it changed; the others are Absent.
struct Change {
    std::string table;
    ChangeKind kind = ChangeKind::Insert;
    Row before;
    Row after;

    int64_t id() const { return (kind == ChangeKind::Insert ? after : before).at(0).asInteger(); }
    // The value after the change where it carries one, else before.
    const Value& latest(size_t column) const
    {
        return column < after.size() && after[column].present() ? after[column] : before.at(column);
    }
};

// Every change of a changeset, in its order. False when it is malformed.
bool readChanges(const std::string& changeset, std::vector<Change>* changes);

// The current row of table (Sisan, Items or Himoku) with the given Id, all
// columns; empty when it is not there (or on an error, then *failed is set).
Row readRow(StatementCache& sql, const std::string& table, int64_t id, bool* failed);
bool rowExists(StatementCache& sql, const std::string& table, int64_t id, bool* failed);
// Inserts row (every column, in order) into table.
bool insertRow(StatementCache& sql, const std::string& table, const Row& row);
