#include "store/RecordedStep.h"

#include <sqlite3.h>

#include "store/Statement.h"
#include "store/SyncLog.h"

namespace {

int recordTable(void*, const char* table)
{
    return isRecordedTable(table) ? 1 : 0;
}

}  // namespace

RecordedStep::RecordedStep(sqlite3* db, std::string label, HistoryKind kind, int64_t target) : db_(db), tx_(db)
{
    entry_.Label = std::move(label);
    entry_.Kind = kind;
    entry_.Target = target;
    if (!tx_.began()) {
        fail("failure beginning a transaction: ");
        return;
    }
    sqlite3_session* session = nullptr;
    if (sqlite3session_create(db_, "main", &session) != SQLITE_OK) {
        error_ = "failure recording history: cannot start the recording";
        return;
    }
    sqlite3session_table_filter(session, recordTable, nullptr);
    if (sqlite3session_attach(session, nullptr) != SQLITE_OK) {
        sqlite3session_delete(session);
        fail("failure recording history: ");
        return;
    }
    session_ = session;
}

RecordedStep::~RecordedStep()
{
    endRecording();
}

void RecordedStep::endRecording()
{
    if (session_) sqlite3session_delete(session_);
    session_ = nullptr;
}

bool RecordedStep::fail(const char* prefix)
{
    error_ = std::string(prefix) + sqlite3_errmsg(db_);
    return false;
}

std::string RecordedStep::changesSoFar() const
{
    int size = 0;
    void* bytes = nullptr;
    if (!session_ || sqlite3session_changeset(session_, &size, &bytes) != SQLITE_OK) return {};
    std::string changes(static_cast<const char*>(bytes), static_cast<size_t>(size));
    sqlite3_free(bytes);
    return changes;
}

void RecordedStep::recordAsApplied(std::string changeset)
{
    if (!session_) return;
    endRecording();
    changeset_ = std::move(changeset);
    finished_ = true;
}

const std::string& RecordedStep::finishRecording()
{
    if (finished_ || !session_) return changeset_;
    finished_ = true;
    int size = 0;
    void* bytes = nullptr;
    const int rc = sqlite3session_changeset(session_, &size, &bytes);
    if (rc == SQLITE_OK) {
        changeset_.assign(static_cast<const char*>(bytes), static_cast<size_t>(size));
    } else {
        error_ = std::string("failure recording history: ") + sqlite3_errstr(rc);
    }
    sqlite3_free(bytes);
    endRecording();
    return changeset_;
}

void RecordedStep::setSummary(std::string sisans, int64_t changes, int64_t deletes)
{
    entry_.Sisans = std::move(sisans);
    entry_.Changes = changes;
    entry_.Deletes = deletes;
    summarized_ = true;
}

bool RecordedStep::commit()
{
    if (!session_ && !finished_) return false;
    finishRecording();
    if (!error_.empty()) return false;
    if (!changeset_.empty()) {
        entry_.At = historyNowMs();
        if ((!summarized_ && !summarizeChangeset(db_, changeset_, &entry_)) ||
            !insertHistoryEntry(db_, &entry_, changeset_))
            return fail("failure recording history: ");
        // A book that syncs ships the step as this PC's next operation.
        if (!logLocalStep(db_, entry_.Id, entry_.At)) return fail("failure recording the step for sync: ");
    }
    if (!tx_.commit()) {
        entry_.Id = 0;
        return fail("failure committing a transaction: ");
    }
    return true;
}
