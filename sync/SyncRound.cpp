#include "sync/SyncRound.h"

#include <algorithm>
#include <map>

#include "sync/Changes.h"
#include "sync/HybridClock.h"
#include "sync/MergePlan.h"
#include "sync/OpApply.h"
#include "sync/Repair.h"
#include "sync/SyncLog.h"
#include "sync/SyncStatement.h"

namespace {

RoundProblem fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return RoundProblem::Failed;
}

// The operations to replay, by key: the rewound ones and the arrived ones.
using Pending = std::map<OpKey, LoggedOp>;

int64_t countDeletes(const std::string& changeset)
{
    std::vector<Change> changes;
    readChanges(changeset, &changes);
    return std::count_if(changes.begin(), changes.end(),
                         [](const Change& c) { return c.kind == ChangeKind::Delete; });
}

// Arrivals this book has applied already (a second scan of the same files)
// are dropped; the rest must sort after the pruned part of the log.
RoundProblem keepNew(sqlite3* db, std::vector<Op>* arrived, std::string* error)
{
    AppliedVector applied;
    OpKey horizon;
    if (!readApplied(db, &applied) || !readHorizon(db, &horizon)) return fail(error, sqliteError(db));
    std::erase_if(*arrived, [&](const Op& op) {
        const auto it = applied.find(op.meta.install);
        return it != applied.end() && op.meta.seq <= it->second;
    });
    for (const Op& op : *arrived) {
        if (op.meta.key() <= horizon) {
            if (error)
                *error = "PC " + std::to_string(op.meta.device) + " の変更 (" + std::to_string(op.meta.seq) +
                         ") はこの家計簿が残している記録より古いため、順序どおりに適用できません。"
                         "同期フォルダから家計簿を作り直してください。";
            return RoundProblem::TooOld;
        }
    }
    return RoundProblem::None;
}

}  // namespace

RoundProblem applyArrived(sqlite3* db, std::vector<Op> arrived, RoundResult* result, std::string* error)
{
    if (const RoundProblem p = keepNew(db, &arrived, error); p != RoundProblem::None) return p;
    if (arrived.empty()) return RoundProblem::None;
    const OpKey first = std::min_element(arrived.begin(), arrived.end(), [](const Op& a, const Op& b) {
                            return a.meta.key() < b.meta.key();
                        })->meta.key();

    std::vector<LoggedOp> later;
    if (!readLogAfter(db, first, &later)) return fail(error, sqliteError(db));
    std::vector<OpKey> laterKeys;
    for (const LoggedOp& op : later) laterKeys.push_back(op.meta.key());
    std::vector<OpKey> arrivedKeys;
    for (const Op& op : arrived) arrivedKeys.push_back(op.meta.key());
    const MergePlan plan = planMerge(laterKeys, arrivedKeys);

    for (auto it = later.rbegin(); it != later.rend(); ++it)
        if (!rewindOp(db, it->effective, &result->touchedSisans, error)) return RoundProblem::Failed;
    if (!deleteLogAfter(db, first)) return fail(error, sqliteError(db));

    Pending pending;
    for (LoggedOp& op : later) pending.emplace(op.meta.key(), std::move(op));
    for (Op& op : arrived) pending.emplace(op.meta.key(), LoggedOp{op.meta, std::move(op.changeset), {}, 0});
    for (const OpKey& key : plan.replay) {
        LoggedOp& op = pending.at(key);
        AppliedOp applied;
        if (!applyOp(db, key, op.shipped, &applied, error)) return RoundProblem::Failed;
        op.effective = std::move(applied.effective);
        op.deletes = applied.deletes;
        if (!appendLog(db, op)) return fail(error, sqliteError(db));
        result->touchedSisans.insert(applied.touchedSisans.begin(), applied.touchedSisans.end());
        for (SyncNotice& n : applied.notices) result->notices.push_back(std::move(n));
    }
    std::map<Uuid, OpMeta> lastOf;
    for (const Op& op : arrived)
        if (lastOf[op.meta.install].seq < op.meta.seq) lastOf[op.meta.install] = op.meta;
    for (const auto& [install, meta] : lastOf)
        if (!setApplied(db, install, meta.device, meta.seq)) return fail(error, sqliteError(db));
    if (!recomputeZankin(db, result->touchedSisans)) return fail(error, sqliteError(db));
    result->arrived += arrived.size();
    result->rewound += plan.rewind;
    result->replayed += plan.replay.size();
    return RoundProblem::None;
}

bool nextLocalMeta(sqlite3* db, const DeviceIdentity& self, int64_t wallMs, int64_t largestInFolder,
                   const std::string& label, OpMeta* meta)
{
    OpKey newest;
    AppliedVector applied;
    if (!newestKey(db, &newest) || !readApplied(db, &applied)) return false;
    meta->book = self.book;
    meta->device = self.device;
    meta->install = self.install;
    meta->seq = applied[self.install] + 1;
    meta->ts = nextTimestamp(wallMs, newest.ts, largestInFolder);
    meta->label = label;
    return true;
}

bool logLocalOp(sqlite3* db, const OpMeta& meta, const std::string& changeset)
{
    return appendLog(db, LoggedOp{meta, changeset, changeset, countDeletes(changeset)}) &&
           setApplied(db, meta.install, meta.device, meta.seq);
}

bool publishOwnOps(sqlite3* db, const SyncFolder& folder, const DeviceIdentity& self, std::string* error)
{
    std::vector<LoggedOp> own;
    if (!readLogOf(db, self.install, folder.lastOpSeq(self.install), &own)) {
        if (error) *error = sqliteError(db);
        return false;
    }
    for (const LoggedOp& op : own) {
        Op file{op.meta, op.shipped};
        file.meta.book = self.book;
        if (!folder.writeOp(file, error)) return false;
    }
    return true;
}
