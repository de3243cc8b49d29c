#include "sync/Tombstones.h"

#include <sqlite3.h>

#include "store/StatementCache.h"

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
    Statement* s = sql_.get(
        "SELECT h.Changeset FROM SyncLog AS l JOIN History AS h ON h.Id = l.HistoryId "
        "WHERE h.Deletes > 0 AND (l.Ts, l.Device, l.Seq) < (?1, ?2, ?3) ORDER BY l.Ts DESC, l.Device DESC, l.Seq DESC");
    if (!s || s->bindInt64(1, op_.ts) != SQLITE_OK || s->bindInt64(2, op_.device) != SQLITE_OK ||
        s->bindInt64(3, op_.seq) != SQLITE_OK)
        return false;
    for (;;) {
        switch (s->step()) {
        case Step::Row: {
            std::vector<Change> changes;
            if (!readChanges(s->columnBlob(0), &changes)) return false;
            if (findDelete(changes, table, id, row)) return true;
            break;
        }
        case Step::Done:
            return true;
        case Step::Error:
            return false;
        }
    }
}
