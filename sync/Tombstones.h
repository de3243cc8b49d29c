#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "store/OpKey.h"
#include "sync/Changes.h"

class StatementCache;

// The last copy of a deleted row, from which the repair step brings a row
// back: the deletes of the operation being applied, then those of the
// operations before it in the one order, newest first (what each did here,
// as its history row records it: a delete holds the whole row). Only what
// sorts before the operation being applied is searched, so every PC finds
// the same copy.
class Tombstones {
public:
    Tombstones(StatementCache& sql, const OpKey& op) : sql_(sql), op_(op) {}

    // The changes made so far by the operation being applied.
    void setCurrent(const std::vector<Change>* changes) { current_ = changes; }

    // The row as it was deleted last; empty when no copy is kept. False on a
    // read error.
    bool find(const std::string& table, int64_t id, Row* row);

private:
    StatementCache& sql_;
    OpKey op_;
    const std::vector<Change>* current_ = nullptr;
};
