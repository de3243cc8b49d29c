#include "sync/Tombstones.h"

#include "sync/SyncStatement.h"

namespace {

bool findDelete(const std::vector<Change>& changes, const std::string& table, int64_t id, Row* row)
{
    for (auto it = changes.rbegin(); it != changes.rend(); ++it) {
        if (it->kind == ChangeKind::Delete && it->table == table && it->id() == id) {
            *row = it->before;
            return true;
        }
    }
    return false;
}

}  // namespace

bool Tombstones::find(const std::string& table, int64_t id, Row* row)
{
    row->clear();
    if (current_ && findDelete(*current_, table, id, row)) return true;
    SyncStatement s(db_, "SELECT Effective FROM SyncLog WHERE Deletes > 0 ORDER BY Ts DESC, Device DESC, Seq DESC");
    if (!s.prepared()) return false;
    Step step;
    while ((step = s.step()) == Step::Row) {
        std::vector<Change> changes;
        if (!readChanges(s.columnBlob(0), &changes)) return false;
        if (findDelete(changes, table, id, row)) return true;
    }
    return step == Step::Done;
}
