#include "sync/Repair.h"

#include <algorithm>
#include <deque>

#include <sqlite3.h>

#include "store/BookTables.h"
#include "store/DerivedValues.h"
#include "store/Items.h"
#include "store/StatementCache.h"

namespace {

bool isTransferKind(int64_t kind) { return kind == kSyubetuIdouMoto || kind == kSyubetuIdouSaki; }

class Repairer {
public:
    Repairer(StatementCache& sql, const OpKey& op, Tombstones& tombstones, std::vector<SyncNotice>* notices)
        : sql_(sql), op_(op), tombstones_(tombstones), notices_(notices)
    {
    }

    bool run(const std::vector<Change>& changes, const std::vector<RestoreRequest>& restores)
    {
        // Edits first: a transfer half brought back for its partner must
        // still get its own edit.
        for (const RestoreRequest& request : restores)
            if (!restoreEdited(request)) return false;
        for (const Change& change : changes) {
            if (change.kind == ChangeKind::Delete) {
                if (!checkDeleted(change)) return false;
            } else {
                present_.emplace_back(change.table, change.id());
            }
            if (change.table == "Himoku") noteCategoryOf(change);
        }
        while (!present_.empty()) {
            const auto [table, id] = present_.front();
            present_.pop_front();
            if (!checkPresent(table, id)) return false;
        }
        return recountUcount(sql_, categories_);
    }

private:
    StatementCache& sql_;
    OpKey op_;
    Tombstones& tombstones_;
    std::vector<SyncNotice>* notices_;
    std::deque<std::pair<std::string, int64_t>> present_;  // rows whose references are to be checked
    std::set<int64_t> categories_;                        // categories whose count is to be recounted
    bool failed_ = false;

    void notice(NoticeKind kind, const std::string& table, int64_t id, const Row& row)
    {
        SyncNotice n;
        n.kind = kind;
        n.op = op_;
        n.table = table;
        n.rowId = id;
        n.text = noticeText(kind, table, row);
        n.detail = describeRow(sql_, table, row);
        notices_->push_back(std::move(n));
    }

    // The category of a changed sub-item, or the changed row itself when it
    // is a category (an Update of its count alone carries no Hno).
    void noteCategoryOf(const Change& change)
    {
        categories_.insert(change.id());
        for (const Row* row : {&change.before, &change.after})
            if (row->size() > kHimokuHno && (*row)[kHimokuHno].present())
                categories_.insert((*row)[kHimokuHno].asInteger());
    }

    bool exists(const std::string& table, int64_t id) { return rowExists(sql_, table, id, &failed_); }

    bool updateColumns(const std::string& table, int64_t id, const Row& edit)
    {
        const TableLayout* t = bookTable(table);
        std::string text = "UPDATE " + table + " SET ";
        std::vector<const Value*> values;
        for (size_t c = 1; c < edit.size() && c < t->columns.size(); ++c) {
            if (!edit[c].present()) continue;
            text += std::string(values.empty() ? "" : ", ") + t->columns[c].name + " = ?";
            values.push_back(&edit[c]);
        }
        if (values.empty()) return true;
        Statement* update = sql_.get(text + " WHERE Id = ?");
        if (!update) return false;
        for (size_t i = 0; i < values.size(); ++i)
            if (update->bindValue(static_cast<int>(i) + 1, *values[i]) != SQLITE_OK) return false;
        return update->bindInt64(static_cast<int>(values.size()) + 1, id) == SQLITE_OK && update->run();
    }

    // What to say when a row cannot come back for want of a copy.
    struct Lost {
        NoticeKind kind;
        std::string table;  // the row the notice is about
        Row row;
    };

    // The row's last copy back in its table, with the edit's values; when no
    // copy is kept, a notice. False only on an error.
    bool bringBack(const std::string& table, int64_t id, NoticeKind kind, const Row& edit, const Lost& lost)
    {
        Row row;
        if (!tombstones_.find(table, id, &row)) return false;
        if (row.empty()) {
            notice(lost.kind, lost.table, lost.row.empty() ? id : lost.row[0].asInteger(), lost.row);
            return true;
        }
        for (size_t c = 1; c < edit.size() && c < row.size(); ++c)
            if (edit[c].present()) row[c] = edit[c];
        if (!insertRow(sql_, table, row)) return false;
        present_.emplace_back(table, id);
        if (table == "Himoku" && row.size() > kHimokuHno) categories_.insert(row[kHimokuHno].asInteger());
        notice(kind, table, id, row);
        return true;
    }

    bool restoreEdited(const RestoreRequest& request)
    {
        if (exists(request.table, request.id)) return updateColumns(request.table, request.id, request.edit);
        if (failed_) return false;
        return bringBack(request.table, request.id, NoticeKind::EditKept, request.edit,
                         {NoticeKind::EditLost, request.table, request.edit});
    }

    // The row that `referrer` refers to is there, or comes back.
    bool ensure(const std::string& table, int64_t id, NoticeKind kind, const std::string& referrerTable,
                const Row& referrer)
    {
        if (id <= 0 || exists(table, id)) return !failed_;
        if (failed_) return false;
        return bringBack(table, id, kind, {}, {NoticeKind::ParentMissing, referrerTable, referrer});
    }

    bool checkPresent(const std::string& table, int64_t id)
    {
        const Row row = readRow(sql_, table, id, &failed_);
        if (failed_) return false;
        if (row.empty()) return true;  // deleted again later in the operation
        const auto at = [&](size_t c) { return row[c].asInteger(); };
        if (table == "Himoku") {
            if (at(kHimokuHno) == id) return true;
            return ensure("Himoku", at(kHimokuHno), NoticeKind::RestoredForNew, table, row);
        }
        if (table != "Items") return true;
        if (!ensure("Sisan", at(kItemsSisanNo), NoticeKind::RestoredForNew, table, row)) return false;
        if (!isTransferKind(at(kItemsSyubetuNo)))
            return ensure("Himoku", at(kItemsHimokuNo), NoticeKind::RestoredForNew, table, row);
        return ensure("Sisan", at(kItemsIdouSisanNo), NoticeKind::RestoredForNew, table, row) &&
               ensure("Items", at(kItemsIdouId), NoticeKind::PartnerKept, table, row);
    }

    bool anyRow(const std::string& text, int64_t id, int64_t second = 0)
    {
        Statement* s = sql_.get(text);
        if (!s || s->bindInt64(1, id) != SQLITE_OK || (second && s->bindInt64(2, second) != SQLITE_OK)) {
            failed_ = true;
            return false;
        }
        const Step step = s->step();
        if (step == Step::Error) failed_ = true;
        return step == Step::Row;
    }

    // A deleted row that rows still refer to comes back.
    bool checkDeleted(const Change& change)
    {
        const int64_t id = change.id();
        const auto before = [&](size_t c) { return change.before[c].asInteger(); };
        bool needed = false;
        NoticeKind kind = NoticeKind::RestoredForNew;
        if (change.table == "Items") {
            if (!isTransferKind(before(kItemsSyubetuNo))) return true;
            const int64_t partner = before(kItemsIdouId);
            needed = anyRow("SELECT 1 FROM Items WHERE Id = ?1 AND IdouId = ?2", partner, id);
            kind = NoticeKind::PartnerKept;
        } else if (change.table == "Himoku") {
            needed = anyRow("SELECT 1 FROM Items WHERE HimokuNo = ? LIMIT 1", id) ||
                     anyRow("SELECT 1 FROM Himoku WHERE Hno = ?1 AND Id != ?1 LIMIT 1", id);
        } else if (change.table == "Sisan") {
            needed = anyRow("SELECT 1 FROM Items WHERE SisanNo = ? LIMIT 1", id) ||
                     anyRow("SELECT 1 FROM Items WHERE IdouSisanNo = ? LIMIT 1", id);
        }
        if (failed_) return false;
        if (!needed || exists(change.table, id)) return !failed_;
        return bringBack(change.table, id, kind, {}, {NoticeKind::ParentMissing, change.table, change.before});
    }
};

}  // namespace

bool repairAfterOp(StatementCache& sql, const OpKey& op, Tombstones& tombstones, const std::vector<Change>& changes,
                   const std::vector<RestoreRequest>& restores, std::vector<SyncNotice>* notices, std::string* error)
{
    tombstones.setCurrent(&changes);
    Repairer repairer(sql, op, tombstones, notices);
    const bool done = repairer.run(changes, restores);
    tombstones.setCurrent(nullptr);
    if (!done && error) *error = std::string("repair: ") + sqlite3_errmsg(sql.db());
    return done;
}

bool collectTouchedSisans(StatementCache& sql, const std::vector<Change>& changes, std::set<int64_t>* sisans)
{
    bool failed = false;
    for (const Change& change : changes) {
        if (change.table == "Sisan") {
            sisans->insert(change.id());
            continue;
        }
        if (change.table != "Items") continue;
        Row current;
        // An edit that left the asset as it was does not carry it.
        if (change.kind == ChangeKind::Update && !change.before[kItemsSisanNo].present())
            current = readRow(sql, "Items", change.id(), &failed);
        for (const Row* row : {&change.before, &change.after, static_cast<const Row*>(&current)})
            if (row->size() > kItemsSisanNo && (*row)[kItemsSisanNo].present())
                sisans->insert((*row)[kItemsSisanNo].asInteger());
    }
    return !failed;
}
