#pragma once

#include <string>

#include "store/History.h"
#include "store/Transaction.h"

struct sqlite3;
struct sqlite3_session;

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
    bool began() const { return session_ != nullptr; }

    // Writes the history row (when anything changed) and commits. On failure
    // everything is rolled back and error() says why.
    bool commit();

    // After commit: the history row, Id 0 when the step changed nothing.
    const HistoryEntry& entry() const { return entry_; }
    // After commit: what the step changed.
    const std::string& changeset() const { return changeset_; }
    // The changes recorded so far (before commit), or "" when they cannot be read.
    std::string changesSoFar() const;
    // What failed, with SQLite's message.
    const std::string& error() const { return error_; }

private:
    sqlite3* db_;
    Transaction tx_;
    sqlite3_session* session_ = nullptr;
    HistoryEntry entry_;
    std::string changeset_;
    std::string error_;

    bool fail(const char* prefix);
    void endRecording();
};
