#pragma once

#include <cstdint>
#include <string>

struct sqlite3;
struct ChangesetDigest;

// Why a changeset could not be applied to the book as it is now.
struct ApplyConflict {
    enum class Why {
        None,
        Changed,    // the row was changed since
        Removed,    // the row was deleted since
        Exists,     // a row with the same key was added since
        UsedLater,  // a row it removes is used by a row added or changed since
        Missing,    // a row it writes uses a row deleted since
        Failed,     // SQLite refused a statement (a constraint, an I/O error)
    };
    Why why = Why::None;
    std::string table;     // the row that blocks it: its table and key
    int64_t key = 0;
    std::string usedTable;  // UsedLater: the table of the row it removes
    std::string detail;    // Failed: SQLite's message
};

// Applies the changeset (an undo's inverted one, a redo's), whose digest is
// given, to db inside the caller's transaction. A conflict that concerns derived columns only
// (History.h) takes the change; any other stops the apply, fills *conflict
// and returns false (the caller rolls back). Afterwards no row the
// changeset removed may still be used, and no row it wrote may use a row
// that is gone (entries, sub-items, assets, transfer partners); the first
// such row is a conflict too.
bool applyChangeset(sqlite3* db, const std::string& changeset, const ChangesetDigest& digest,
                    ApplyConflict* conflict);
