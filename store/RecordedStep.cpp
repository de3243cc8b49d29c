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
    recording_.emplace(db_, recordTable);
    if (!recording_->started()) {
        recording_.reset();
        fail("failure recording history: ");
    }
}

RecordedStep::~RecordedStep()
{
    endRecording();
}

void RecordedStep::endRecording()
{
    recording_.reset();
}

bool RecordedStep::fail(const char* prefix)
{
    error_ = std::string(prefix) + sqlite3_errmsg(db_);
    return false;
}

std::string RecordedStep::changesSoFar() const
{
    std::string changes;
    if (!recording_ || !recording_->changeset(&changes)) return {};
    return changes;
}

void RecordedStep::recordAsApplied(std::string changeset)
{
    if (!recording_) return;
    endRecording();
    changeset_ = std::move(changeset);
    finished_ = true;
}

const std::string& RecordedStep::finishRecording()
{
    if (finished_ || !recording_) return changeset_;
    finished_ = true;
    std::string why;
    if (!recording_->changeset(&changeset_, &why)) error_ = "failure recording history: " + why;
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
    if (!recording_ && !finished_) return false;
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
