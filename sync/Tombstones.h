#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sync/Changes.h"

struct sqlite3;

// The last copy of a deleted row, from which the repair step brings a row
// back: the deletes of the operation being applied, then those of the
// operations applied before it, newest first (SyncLog's effective
// changesets; a delete changeset holds the whole row). Only operations that
// sort before the one being applied are in the log then, so every PC finds
// the same copy.
class Tombstones {
public:
    explicit Tombstones(sqlite3* db) : db_(db) {}

    // The changes made so far by the operation being applied.
    void setCurrent(const std::vector<Change>* changes) { current_ = changes; }

    // The row as it was deleted last; empty when no copy is kept. False on a
    // read error.
    bool find(const std::string& table, int64_t id, Row* row);

private:
    sqlite3* db_;
    const std::vector<Change>* current_ = nullptr;
};
