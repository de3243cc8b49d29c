#pragma once

#include <optional>

#include "sync/Changes.h"
#include "sync/SyncNotice.h"

// The rules for a change of an operation that does not fit the book as it
// is here, as sqlite3changeset_apply reports it. Operations are applied in
// the one order, so the operation being applied is always the later one.
enum class ConflictType {
    Data,        // the row is there but not as the change expects (Update, Delete)
    NotFound,    // the row is not there (Update, Delete)
    Conflict,    // an Insert finds a row with its Id
    Constraint,  // the book refuses the row
    ForeignKey,
};

enum class Resolution { Omit, Replace, Abort };

// What is known of the conflicting row. "User columns" are all but the Id
// and the derived column (BookTables.h), which is recomputed anyway.
struct ConflictFacts {
    ConflictType type = ConflictType::Data;
    ChangeKind change = ChangeKind::Update;
    bool userColumnsDiffer = false;   // the row differs from what the change expected, or (Insert) wants
    bool alreadyAsWanted = false;     // Update: the row already holds every user value the change sets
    bool setsUserColumns = false;     // Update: the change sets a user column at all
};

struct ConflictDecision {
    Resolution resolution = Resolution::Omit;
    bool restoreWithEdit = false;  // bring the deleted row back from its copy, with the change's values
    std::optional<NoticeKind> notice;
};

// Applying an operation:
// - the same row edited on both sides: the later edit wins, column by column
//   (an Update carries only the columns it changed, so edits of different
//   columns both stay);
// - an edit meets a delete: the edited row stays. A delete of a row edited
//   since is omitted; an edit of a row deleted since brings it back;
// - both deleted the same row, or only derived values differ: the change
//   goes through (or has nothing left to do);
// - a row the book refuses is left out, with a notice.
ConflictDecision decideApplyConflict(const ConflictFacts& facts);

// Rewinding an operation with its own effective changeset finds the book
// exactly as that operation left it, except for derived values recomputed
// since: those are taken over, anything else stops the rewind.
ConflictDecision decideRewindConflict(const ConflictFacts& facts);
