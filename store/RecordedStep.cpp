#include "store/RecordedStep.h"

#define SQLITE_ENABLE_SESSION
#define SQLITE_ENABLE_PREUPDATE_HOOK
#include <sqlite3.h>

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

bool RecordedStep::commit()
{
    if (!session_) return false;
    int size = 0;
    void* bytes = nullptr;
    const int rc = sqlite3session_changeset(session_, &size, &bytes);
    if (rc != SQLITE_OK) {
        sqlite3_free(bytes);
        error_ = std::string("failure recording history: ") + sqlite3_errstr(rc);
        endRecording();
        return false;
    }
    changeset_.assign(static_cast<const char*>(bytes), static_cast<size_t>(size));
    sqlite3_free(bytes);
    endRecording();
    if (!changeset_.empty()) {
        entry_.At = historyNowMs();
        if (!summarizeChangeset(db_, changeset_, &entry_) || !insertHistoryEntry(db_, &entry_, changeset_))
            return fail("failure recording history: ");
    }
    if (!tx_.commit()) {
        entry_.Id = 0;
        return fail("failure committing a transaction: ");
    }
    return true;
}
