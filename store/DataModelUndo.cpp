// DataModel: recorded steps, the undo and redo lists, undo, redo and revert.
#include <sqlite3.h>

#include <algorithm>

#include "store/Changeset.h"
#include "store/ChangesetDigest.h"
#include "store/DataModel.h"
#include "store/DerivedValues.h"
#include "store/FindById.h"
#include "store/RecordedStep.h"
#include "store/StepApply.h"
#include "store/StepLabels.h"

namespace {

using Why = ApplyConflict::Why;

// Moves the entry with this Id from one list to the other (newest last).
void moveBetween(std::vector<HistoryEntry>& from, std::vector<HistoryEntry>& to, int64_t id)
{
    const auto found = std::find_if(from.rbegin(), from.rend(), [id](const HistoryEntry& e) { return e.Id == id; });
    if (found == from.rend()) return;  // pruned, or not in this list
    to.push_back(*found);
    from.erase(std::next(found).base());
}

// What the blocking operation did, after "後の操作「…」が".
std::string reasonOf(const ApplyConflict& c)
{
    switch (c.why) {
    case Why::Changed:
        return "同じデータを変更しています";
    case Why::Removed:
        return "同じデータを削除しています";
    case Why::Exists:
        return "同じ番号のデータを追加しています";
    case Why::UsedLater:
        if (c.usedTable == "Sisan") return "その資産にデータを追加しています";
        if (c.usedTable == "Items") return "移動の相手のデータを変更しています";
        return c.table == "Himoku" ? "その費目に内訳を追加しています" : "その内訳にデータを追加しています";
    case Why::Missing:
        if (c.table == "Sisan") return "その資産を削除しています";
        if (c.table == "Items") return "移動の相手のデータを削除しています";
        return "その費目・内訳を削除しています";
    default:
        return {};
    }
}

}  // namespace

bool DataModel::beganOrReport(const RecordedStep& step)
{
    if (step.began()) return true;
    someMessageWithAlert(step.error());
    return false;
}

bool DataModel::commitStep(RecordedStep& step)
{
    // One pass over the changes gives the history row its summary and the
    // balances their moves; a replay has read its own changes already.
    ChangesetDigest digest;
    const bool ordinary = step.entry().Kind == HistoryKind::Step;
    if (ordinary && !step.finishRecording().empty()) {
        if (!digestChangeset(step.changeset(), 0, &digest) || !resolveUpdates(digest, 0)) {
            someMessageWithAlert("failure recording history: the changes cannot be read");
            return false;
        }
        step.setSummary(sisanNamesOf(digest), digest.changes, digest.deletes);
    }
    // Every change of Items, the applies of undo and redo included, has
    // queued its entries by the index's triggers: the index follows them
    // in the same transaction, unrecorded.
    keepSearchIndexInStep();
    if (!step.commit()) {
        someMessageWithAlert(step.error());
        return false;
    }
    noteRecorded(step.entry(), true);
    // The book takes writes again: balances a reader kept out go in now, as
    // they were before this step (its own wait for the end).
    storePendingZankin();
    if (ordinary && zankinExact) applyZankinDeltas(digest);
    if (step.entry().Id != 0 && commitListener) commitListener();
    return true;
}

void DataModel::noteRecorded(const HistoryEntry& entry, bool notify)
{
    if (entry.Id == 0) return;  // the step changed nothing
    switch (entry.Kind) {
    case HistoryKind::Step:
    case HistoryKind::Revert:
        undoStack.push_back(entry);
        redoStack.clear();  // a new change ends what could be redone
        break;
    case HistoryKind::Undo:
        moveBetween(undoStack, redoStack, entry.Target);
        break;
    case HistoryKind::Redo:
        moveBetween(redoStack, undoStack, entry.Target);
        break;
    case HistoryKind::Synced:
        break;  // another PC's operation: 元に戻す and やり直す act on this PC's own steps
    }
    if (notify && historyListener) historyListener();
}

void DataModel::loadUndoLists()
{
    undoStack.clear();
    redoStack.clear();
    std::vector<HistoryEntry> outline;
    if (!readHistoryOutline(db, &outline)) {
        someMessageWithAlert(errorText("error reading the history: "));
        return;
    }
    for (const HistoryEntry& entry : outline) noteRecorded(entry, false);
}

bool DataModel::undo(StepFocus* focus)
{
    return !undoStack.empty() && replay(undoStack.back().Id, HistoryKind::Undo, focus);
}

bool DataModel::redo(StepFocus* focus)
{
    return !redoStack.empty() && replay(redoStack.back().Id, HistoryKind::Redo, focus);
}

bool DataModel::revertStep(int64_t historyId, StepFocus* focus)
{
    return replay(historyId, HistoryKind::Revert, focus);
}

bool DataModel::replay(int64_t historyId, HistoryKind kind, StepFocus* focus)
{
    finalize();
    HistoryEntry target;
    std::string changeset;
    if (!readHistoryEntry(db, historyId, &target, &changeset)) {
        someMessageWithAlert(errorText("error reading the history: "));
        return false;
    }
    std::string applied = changeset;
    if (kind != HistoryKind::Redo && !invertChangeset(changeset, &applied)) {
        someMessageWithAlert("error reading the history: a damaged change");
        return false;
    }
    if (applied.empty()) {
        // A step left without effect here (another PC's change took its
        // place): there is nothing to take back or make again.
        if (kind == HistoryKind::Revert) return true;
        if (kind == HistoryKind::Undo) moveBetween(undoStack, redoStack, target.Id);
        if (kind == HistoryKind::Redo) moveBetween(redoStack, undoStack, target.Id);
        if (historyListener) historyListener();
        return true;
    }
    // One pass over what will be applied serves the checks, the history
    // row and the lists afterwards.
    ChangesetDigest digest;
    if (!digestChangeset(applied, itemListSisanId, &digest)) {
        someMessageWithAlert("error reading the history: a damaged change");
        return false;
    }
    const std::string label = kind == HistoryKind::Undo   ? undoStepLabel(target.Label)
                              : kind == HistoryKind::Redo ? redoStepLabel(target.Label)
                                                          : revertStepLabel(target.Label);
    // What the lists show now, for the balances and the ledger afterwards.
    const int64_t shownSisanId = this->shownSisanId();
    const bool exact = zankinExact;
    std::vector<std::pair<int64_t, int64_t>> zankinBefore;
    for (const auto& sisan : sisanList) zankinBefore.emplace_back(sisan->Id, sisan->Zankin);
    {
        RecordedStep step(db, label, kind, target.Id);
        if (!beganOrReport(step)) return false;
        step.recordAsApplied(applied);
        ApplyConflict conflict;
        if (!applyChangeset(db, applied, digest, &conflict)) {
            reportConflict(kind, target, conflict);
            return false;
        }
        // Counts the apply took over are brought right; like the balances,
        // the correction is derived and not a recorded change.
        if (digest.himokuChanged && !recountUcount(db)) {
            someMessageWithAlert(errorText("failure recounting sub-items: "));
            return false;
        }
        if (!resolveUpdates(digest, itemListSisanId)) return false;
        step.setSummary(sisanNamesOf(digest), digest.changes, digest.deletes);
        if (!commitStep(step)) return false;
    }
    // The household months, cards and budgets follow whatever the step put back.
    if (!readHouseholdTables()) return false;
    return showEffects(digest, shownSisanId, exact, zankinBefore, focus);
}

void DataModel::reportConflict(HistoryKind kind, const HistoryEntry& target, const ApplyConflict& conflict)
{
    const char* cannot = kind == HistoryKind::Undo   ? "を元に戻せません。"
                         : kind == HistoryKind::Redo ? "をやり直せません。"
                                                     : "を取り消せません。";
    std::string message = "「" + target.Label + "」" + cannot + "\n";
    if (conflict.why == Why::Failed) {
        message += conflict.detail + "\n";
    } else {
        // What blocks it is the newest later operation that changed the row:
        // for a redo another PC's (a new step of this PC empties the redo
        // list), never the undo it would take back.
        HistoryEntry blocker;
        findLatestTouching(db, target.Id, conflict.table.c_str(), conflict.key, &blocker);
        if (blocker.Kind == HistoryKind::Undo && blocker.Target == target.Id) blocker.Id = 0;
        if (blocker.Id != 0)
            message += "後の操作「" + blocker.Label + "」（" + formatHistoryTime(blocker.At) + "）が" +
                       reasonOf(conflict) + "。\n";
        else
            message += "この操作の後で、同じデータがほかの方法で変更されています。\n";
    }
    someMessageWithAlert(message + "何も変更していません。");
}

bool DataModel::readFromHistoryTable(bool deletesOnly)
{
    finalize();
    if (readHistoryEntries(db, deletesOnly, &historyList)) return true;
    someMessageWithAlert(errorText("error reading the history: "));
    return false;
}

std::string DataModel::entryLabel(const Items& item, const char* verb)
{
    if (item.SyubetuNo == kSyubetuIdouMoto)
        return idouStepLabel(getSisanNamaeFromNo(item.SisanNo), getSisanNamaeFromNo(item.IdouSisanNo), item.Syukkin,
                             verb);
    if (item.SyubetuNo == kSyubetuIdouSaki)
        return idouStepLabel(getSisanNamaeFromNo(item.IdouSisanNo), getSisanNamaeFromNo(item.SisanNo), item.Nyuukin,
                             verb);
    return entryStepLabel(getHimokuNamaeFromNo(item.HimokuNo),
                          item.SyubetuNo == kSyubetuSisyutu ? item.Syukkin : item.Nyuukin, verb);
}

std::string DataModel::entryLabel(int64_t id, const char* verb)
{
    if (const Items* listed = findById(itemList, itemId2Idx, id)) return entryLabel(*listed, verb);
    const std::shared_ptr<Items> read = readFromItem1Item(id);
    return read ? entryLabel(*read, verb) : std::string("データの") + verb;
}
