// DataModel: the doors sync uses, and the lists brought up to date after
// other PCs' operations came in.
#include <sqlite3.h>

#include "store/BookTables.h"
#include "store/ChangesetDigest.h"
#include "store/DataModel.h"
#include "store/RecordedStep.h"
#include "store/SessionRecording.h"
#include "store/Transaction.h"

bool DataModel::runSyncWork(const std::function<bool(sqlite3*)>& work)
{
    finalize();
    Transaction tx(db);
    if (!beganOrReport(tx)) return false;
    return work(db) && commitOrReport(tx);
}

bool DataModel::applyOutsideChanges(const std::function<bool(sqlite3*)>& work)
{
    finalize();
    std::string net;
    {
        Transaction tx(db);
        if (!beganOrReport(tx)) return false;
        // The net effect on the three tables, for the lists.
        SessionRecording session(db, SessionRecording::onlyBookTables);
        if (!session.started()) {
            someMessageWithAlert(errorText("failure recording the changes: "));
            return false;
        }
        if (!work(db)) return false;
        // Entries from other PCs enter the search index in the same transaction.
        keepSearchIndexInStep();
        if (!session.changeset(&net)) {
            someMessageWithAlert(errorText("failure recording the changes: "));
            return false;
        }
        if (!commitOrReport(tx)) return false;
    }
    if (historyListener) historyListener();
    if (net.empty()) return true;
    // The screens follow from the net change, as after an undo, without
    // moving away from the asset the user looks at.
    const int64_t shown = shownSisanId();
    const bool exact = zankinExact;
    std::vector<std::pair<int64_t, int64_t>> zankinBefore;
    for (const auto& sisan : sisanList) zankinBefore.emplace_back(sisan->Id, sisan->Zankin);
    ChangesetDigest digest;
    if (!digestChangeset(net, itemListSisanId, &digest) || !resolveUpdates(digest, itemListSisanId)) {
        someMessageWithAlert("failure reading the changes: the changes cannot be read");
        return false;
    }
    return showEffects(digest, shown, exact, zankinBefore, nullptr, false);
}

bool DataModel::rewriteRow(const std::string& table, int64_t id, const Row& values, const std::string& label)
{
    const TableLayout* layout = bookTable(table);
    if (!layout || !allFitInt32({id})) return false;
    std::string sql;
    std::vector<const Value*> bound;
    for (size_t c = 1; c < values.size() && c < layout->columns.size(); ++c) {
        if (!values[c].present()) continue;
        sql += (sql.empty() ? "" : ", ") + layout->columns[c].name + " = ?";
        bound.push_back(&values[c]);
    }
    if (bound.empty()) return true;
    {
        RecordedStep step(db, label);
        if (!beganOrReport(step)) return false;
        if (!prepare("UPDATE " + table + " SET " + sql + " WHERE Id = " + std::to_string(id),
                     "error prepare update: ", "information"))
            return false;
        bool done = true;
        for (size_t i = 0; i < bound.size() && done; ++i)
            done = stmt.bindValue(static_cast<int>(i) + 1, *bound[i]) == SQLITE_OK;
        done = done && stepDone("failure updating: ");
        finalize();
        if (!done || !commitStep(step)) return false;
    }
    // A rare action: every list is read again and every balance summed.
    return readFromSisanTable() && readFromHimokuTable() && recomputeAllSisanZankin() && rereadShownItems();
}
