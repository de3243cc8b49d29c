#pragma once

#include <optional>
#include <string>

#include "store/History.h"
#include "store/SessionRecording.h"
#include "store/Transaction.h"

struct sqlite3;

// One recorded, undoable step: a write transaction whose changes are
// captured with SQLite's session extension and written, with the step's
// label, into the history table inside the same transaction, so that the
// change and its record commit or fail together.
//
// Every table is recorded except the history table and the tables declared
// derived (History.h); the session extension records only tables with a
// declared PRIMARY KEY. Use it for every operation that changes the book:
//
//     RecordedStep step(db, "…の追加");
//     if (!step.began()) ...report step.error()...
//     ...statements, returning on failure (the destructor rolls back)...
//     if (!step.commit()) ...report step.error()...
//
// DataModel::commitStep commits and also brings the undo and redo lists up
// to date; store operations use that. Messages raised while a step is open
// are delivered after it has closed, as with Transaction.
class RecordedStep {
public:
    RecordedStep(sqlite3* db, std::string label, HistoryKind kind = HistoryKind::Step, int64_t target = 0);
    ~RecordedStep();
    RecordedStep(const RecordedStep&) = delete;
    RecordedStep& operator=(const RecordedStep&) = delete;

    // False when the transaction or the recording could not start.
    bool began() const { return recording_.has_value(); }

    // For an operation that applies a known changeset (an undo applies the
    // inverse of a step's, a redo the step's again): the step records that
    // changeset as it is instead of watching the tables. Call it before
    // changing anything. Where the apply takes a change over a derived
    // column (History.h), the record keeps the changeset's values: derived
    // values are brought right after every apply, never taken from a record.
    void recordAsApplied(std::string changeset);

    // Ends the recording and returns what the step changed: nothing done
    // afterwards is recorded. commit() calls it when nobody did before.
    const std::string& finishRecording();
    // The history row's Sisans, Changes and Deletes, for a caller that has
    // read them from the changes already; otherwise commit() reads them.
    void setSummary(std::string sisans, int64_t changes, int64_t deletes);

    // Writes the history row (when anything changed) and commits. On failure
    // everything is rolled back and error() says why.
    bool commit();

    // After commit: the history row, Id 0 when the step changed nothing.
    const HistoryEntry& entry() const { return entry_; }
    // After finishRecording: what the step changed.
    const std::string& changeset() const { return changeset_; }
    // The changes recorded so far (before commit), or "" when they cannot be read.
    std::string changesSoFar() const;
    // What failed, with SQLite's message.
    const std::string& error() const { return error_; }

private:
    sqlite3* db_;
    Transaction tx_;
    std::optional<SessionRecording> recording_;  // while the step records
    HistoryEntry entry_;
    std::string changeset_;
    bool finished_ = false;
    bool summarized_ = false;
    std::string error_;

    bool fail(const char* prefix);
    void endRecording();
};
