#include "sync/SyncRound.h"

#include <sqlite3.h>

#include <algorithm>
#include <map>

#include "store/DerivedValues.h"
#include "store/History.h"
#include "store/StatementCache.h"
#include "sync/MergePlan.h"
#include "sync/OpApply.h"

namespace {

RoundProblem fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return RoundProblem::Failed;
}

RoundProblem failOn(sqlite3* db, std::string* error) { return fail(error, sqlite3_errmsg(db)); }

// An operation waiting to be replayed: one rewound here, or one arrived.
struct Pending {
    LoggedOp op;
    bool logged = false;  // already in the log (rewound): its history row is updated, not added
};

// Arrivals this book has applied already (a second scan of the same files)
// are dropped; the rest must sort after the pruned part of the log.
RoundProblem keepNew(sqlite3* db, std::vector<Op>* arrived, std::string* error)
{
    AppliedVector applied;
    OpKey horizon;
    if (!readApplied(db, &applied) || !readHorizon(db, &horizon)) return failOn(db, error);
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

// The history row's label for another PC's operation: its PC, then its own label.
std::string labelOf(const Op& op, const std::map<Uuid, std::string>& names)
{
    const auto name = names.find(op.meta.install);
    const std::string pc = name != names.end() && !name->second.empty() ? name->second
                                                                         : "PC " + std::to_string(op.meta.device);
    return pc + ": " + op.meta.label;
}

// Writes what the operation did here into its history row (a new one for
// an arrival) and its place in the log.
bool record(StatementCache& sql, Pending& pending, const std::string& effective)
{
    LoggedOp& op = pending.op;
    const std::string* shipped = effective == op.shipped ? nullptr : &op.shipped;
    if (pending.logged) {
        if (effective == op.effective) return true;
        HistoryEntry entry;
        entry.Id = op.historyId;
        return summarizeChangeset(sql, effective, &entry) && updateHistoryChangeset(sql, entry, effective) &&
               setShipped(sql, op.key, shipped);
    }
    HistoryEntry entry;
    entry.At = op.key.ts;
    entry.Kind = HistoryKind::Synced;
    entry.Label = op.label;
    if (!summarizeChangeset(sql, effective, &entry) || !insertHistoryEntry(sql, &entry, effective)) return false;
    return appendLog(sql, op.key, op.install, entry.Id, shipped);
}

}  // namespace

RoundProblem applyArrived(sqlite3* db, const Uuid& self, std::vector<Op> arrived,
                          const std::map<Uuid, std::string>& names, RoundResult* result, std::string* error)
{
    if (const RoundProblem p = keepNew(db, &arrived, error); p != RoundProblem::None) return p;
    if (arrived.empty()) return RoundProblem::None;
    const OpKey first = std::min_element(arrived.begin(), arrived.end(), [](const Op& a, const Op& b) {
                            return a.meta.key() < b.meta.key();
                        })->meta.key();

    std::vector<LoggedOp> later;
    if (!readLogAfter(db, first, &later)) return failOn(db, error);
    std::vector<OpKey> laterKeys, arrivedKeys;
    for (const LoggedOp& op : later) laterKeys.push_back(op.key);
    for (const Op& op : arrived) arrivedKeys.push_back(op.meta.key());
    const MergePlan plan = planMerge(laterKeys, arrivedKeys);

    StatementCache sql(db);
    const auto originOf = [&](const Uuid& install) { return install == self ? OpOrigin::Own : OpOrigin::Other; };
    for (auto it = later.rbegin(); it != later.rend(); ++it)
        if (!rewindOp(sql, it->effective, originOf(it->install), &result->touchedSisans, error))
            return RoundProblem::Failed;

    std::map<OpKey, Pending> pending;
    for (LoggedOp& op : later) pending.emplace(op.key, Pending{std::move(op), true});
    for (Op& op : arrived) {
        LoggedOp logged{op.meta.key(), op.meta.install, 0, labelOf(op, names), std::move(op.changeset), {}};
        pending.emplace(logged.key, Pending{std::move(logged), false});
    }
    for (const OpKey& key : plan.replay) {
        Pending& next = pending.at(key);
        AppliedOp applied;
        if (!applyOp(sql, key, next.op.shipped, originOf(next.op.install), &applied, error)) return RoundProblem::Failed;
        if (!record(sql, next, applied.effective)) return failOn(db, error);
        result->touchedSisans.insert(applied.touchedSisans.begin(), applied.touchedSisans.end());
        for (SyncNotice& n : applied.notices) result->notices.push_back(std::move(n));
    }
    std::map<Uuid, OpMeta> lastOf;
    for (const Op& op : arrived)
        if (lastOf[op.meta.install].seq < op.meta.seq) lastOf[op.meta.install] = op.meta;
    for (const auto& [install, meta] : lastOf)
        if (!setApplied(db, install, meta.device, meta.seq)) return failOn(db, error);
    if (!recomputeStoredZankin(db, result->touchedSisans)) return failOn(db, error);
    result->arrived += arrived.size();
    result->rewound += plan.rewind;
    result->replayed += plan.replay.size();
    return RoundProblem::None;
}

bool publishOwnOps(sqlite3* db, const SyncFolder& folder, const SyncIdentity& self, int64_t afterSeq,
                   int64_t* lastSeq, std::string* error)
{
    std::vector<LoggedOp> own;
    if (!readLogOf(db, self.install, afterSeq, &own)) {
        if (error) *error = sqlite3_errmsg(db);
        return false;
    }
    *lastSeq = afterSeq;
    for (const LoggedOp& op : own) {
        Op file;
        file.meta.book = self.book;
        file.meta.device = static_cast<int>(op.key.device);
        file.meta.install = self.install;
        file.meta.seq = op.key.seq;
        file.meta.ts = op.key.ts;
        file.meta.label = op.label;
        file.changeset = op.shipped;
        if (!folder.writeOp(file, error)) return false;
        *lastSeq = op.key.seq;
    }
    return true;
}
