#include "sync/OpApply.h"

#include <sqlite3.h>

#include <algorithm>

#include "store/BookTables.h"
#include "store/Changeset.h"
#include "store/History.h"
#include "store/SessionRecording.h"
#include "store/StatementCache.h"
#include "sync/Changes.h"
#include "sync/ConflictPolicy.h"
#include "sync/Repair.h"
#include "sync/Tombstones.h"

namespace {

int recordedTables(void*, const char* table) { return isRecordedTable(table); }

// A session recording every change of the operation's tables.
SessionRecording::TableFilter filterOf(OpOrigin origin)
{
    return origin == OpOrigin::Own ? recordedTables : SessionRecording::onlyBookTables;
}

// What the conflict handler saw, kept until the notices can be worded
// (wording reads names from the book, which the handler must not do).
struct RawNotice {
    NoticeKind kind;
    std::string table;
    int64_t id;
    Row row;
    Row losing;
};

struct HandlerState {
    bool rewinding = false;
    bool conflicted = false;  // the handler was called at all
    std::vector<RestoreRequest> restores;
    std::vector<RawNotice> notices;
    std::string abortedOn;  // the table of a change that stopped the apply
};

ConflictType typeOf(int conflict)
{
    switch (conflict) {
    case SQLITE_CHANGESET_DATA:
        return ConflictType::Data;
    case SQLITE_CHANGESET_NOTFOUND:
        return ConflictType::NotFound;
    case SQLITE_CHANGESET_CONFLICT:
        return ConflictType::Conflict;
    case SQLITE_CHANGESET_FOREIGN_KEY:
        return ConflictType::ForeignKey;
    default:
        return ConflictType::Constraint;
    }
}

ChangeKind kindOf(int op)
{
    if (op == SQLITE_INSERT) return ChangeKind::Insert;
    return op == SQLITE_DELETE ? ChangeKind::Delete : ChangeKind::Update;
}

Row valuesOf(sqlite3_changeset_iter* iter, int columns, int (*get)(sqlite3_changeset_iter*, int, sqlite3_value**))
{
    Row row;
    for (int c = 0; c < columns; ++c) {
        sqlite3_value* value = nullptr;
        row.push_back(get(iter, c, &value) == SQLITE_OK ? Value::of(value) : Value{});
    }
    return row;
}

// The facts of a conflict: expected is what the change expects to find
// (its old values) or, for an Insert, what it writes.
ConflictFacts factsOf(ConflictType type, ChangeKind change, const std::string& table, const Row& expected,
                      const Row& after, const Row& current, Row* losing)
{
    ConflictFacts facts;
    facts.type = type;
    facts.change = change;
    facts.alreadyAsWanted = true;
    losing->assign(current.size(), Value{});
    for (size_t c = 1; c < expected.size(); ++c) {
        if (isDerivedColumn(table, static_cast<int>(c))) continue;
        const bool sets = c < after.size() && after[c].present();
        facts.setsUserColumns = facts.setsUserColumns || sets;
        if (sets && c < current.size() && !(after[c] == current[c])) facts.alreadyAsWanted = false;
        if (!expected[c].present() || c >= current.size() || expected[c] == current[c]) continue;
        facts.userColumnsDiffer = true;
        (*losing)[c] = current[c];
    }
    return facts;
}

int onConflict(void* context, int conflict, sqlite3_changeset_iter* iter)
{
    auto* state = static_cast<HandlerState*>(context);
    state->conflicted = true;
    const char* name = nullptr;
    int columns = 0, op = 0, indirect = 0;
    if (sqlite3changeset_op(iter, &name, &columns, &op, &indirect) != SQLITE_OK) return SQLITE_CHANGESET_ABORT;
    const std::string table = name;
    const ConflictType type = typeOf(conflict);
    const ChangeKind change = kindOf(op);
    const Row before = change == ChangeKind::Insert ? Row{} : valuesOf(iter, columns, sqlite3changeset_old);
    const Row after = change == ChangeKind::Delete ? Row{} : valuesOf(iter, columns, sqlite3changeset_new);
    const bool hasCurrent = type == ConflictType::Data || type == ConflictType::Conflict;
    const Row current = hasCurrent ? valuesOf(iter, columns, sqlite3changeset_conflict) : Row{};
    Row losing;
    const ConflictFacts facts =
        factsOf(type, change, table, change == ChangeKind::Insert ? after : before, after, current, &losing);

    const ConflictDecision decision = state->rewinding ? decideRewindConflict(facts) : decideApplyConflict(facts);
    const int64_t id = (change == ChangeKind::Insert ? after : before).at(0).asInteger();
    if (decision.restoreWithEdit) state->restores.push_back({table, id, after});
    if (decision.notice) {
        // The row as it ends: what was there, with the values the change wrote.
        Row shown = hasCurrent ? current : (after.empty() ? before : after);
        if (hasCurrent && decision.resolution == Resolution::Replace)
            for (size_t c = 0; c < after.size() && c < shown.size(); ++c)
                if (after[c].present()) shown[c] = after[c];
        state->notices.push_back({*decision.notice, table, id, shown,
                                  *decision.notice == NoticeKind::BothEdited ? losing : Row{}});
    }
    switch (decision.resolution) {
    case Resolution::Replace:
        return SQLITE_CHANGESET_REPLACE;
    case Resolution::Omit:
        return SQLITE_CHANGESET_OMIT;
    case Resolution::Abort:
        state->abortedOn = table + " " + std::to_string(id);
        return SQLITE_CHANGESET_ABORT;
    }
    return SQLITE_CHANGESET_ABORT;
}

bool applyWithRules(sqlite3* db, const std::string& changeset, OpOrigin origin, HandlerState* state,
                    std::string* error)
{
    const int rc = sqlite3changeset_apply_v2(db, static_cast<int>(changeset.size()), const_cast<char*>(changeset.data()),
                                             filterOf(origin), onConflict, state, nullptr, nullptr, 0);
    if (rc == SQLITE_OK) return true;
    if (error) {
        *error = state->abortedOn.empty() ? std::string("apply: ") + sqlite3_errstr(rc) + ": " + sqlite3_errmsg(db)
                                          : "apply: the book does not fit the change of " + state->abortedOn;
    }
    return false;
}

int64_t countDeletes(const std::vector<Change>& changes)
{
    int64_t n = 0;
    for (const Change& change : changes) n += change.kind == ChangeKind::Delete;
    return n;
}

bool sessionFailed(sqlite3* db, std::string* error)
{
    if (error) *error = std::string("session: ") + sqlite3_errmsg(db);
    return false;
}

bool sqlOk(StatementCache& sql, const char* text)
{
    Statement* s = sql.get(text);
    return s && s->run();
}

// The changeset of `first` followed by `then`, as one.
bool combine(const std::string& first, const std::string& then, std::string* out)
{
    sqlite3_changegroup* group = nullptr;
    if (sqlite3changegroup_new(&group) != SQLITE_OK) return false;
    int size = 0;
    void* bytes = nullptr;
    const bool done = sqlite3changegroup_add(group, static_cast<int>(first.size()), const_cast<char*>(first.data())) ==
                          SQLITE_OK &&
                      sqlite3changegroup_add(group, static_cast<int>(then.size()), const_cast<char*>(then.data())) ==
                          SQLITE_OK &&
                      sqlite3changegroup_output(group, &size, &bytes) == SQLITE_OK;
    if (done) out->assign(static_cast<const char*>(bytes), static_cast<size_t>(size));
    sqlite3_free(bytes);
    sqlite3changegroup_delete(group);
    return done;
}

// The notices of what the conflict handler did, in words.
void wordNotices(StatementCache& sql, const OpKey& key, const HandlerState& state, AppliedOp* applied)
{
    for (const RawNotice& raw : state.notices) {
        SyncNotice n{raw.kind, key, raw.table, raw.id, noticeText(raw.kind, raw.table, raw.row),
                     describeRow(sql, raw.table, raw.row), raw.losing};
        applied->notices.push_back(std::move(n));
    }
}

// After an apply that met no conflict: what it did is exactly what it
// shipped, so only the repair step is recorded, and only when it changed
// anything. (Recording the whole apply costs more than the apply itself.)
bool finishUnopposed(StatementCache& sql, const OpKey& key, const std::string& changeset,
                     std::vector<Change> changes, OpOrigin origin, AppliedOp* applied, std::string* error)
{
    sqlite3* db = sql.db();
    {
        SessionRecording repairs(db, filterOf(origin));
        if (!repairs.started()) return sessionFailed(db, error);
        Tombstones tombstones(sql, key);
        if (!repairAfterOp(sql, key, tombstones, changes, {}, &applied->notices, error)) return false;
        if (repairs.isEmpty()) {
            applied->effective = changeset;
        } else {
            std::string repaired;
            changes.clear();
            if (!repairs.changeset(&repaired) || !combine(changeset, repaired, &applied->effective) ||
                !readChanges(applied->effective, &changes))
                return sessionFailed(db, error);
        }
    }
    if (!collectTouchedSisans(sql, changes, &applied->touchedSisans)) return sessionFailed(db, error);
    applied->deletes = countDeletes(changes);
    return true;
}

// An apply that met conflicts, recorded whole: the rules kept some changes
// out and let others replace what was there.
bool applyRecorded(StatementCache& sql, const OpKey& key, const std::string& changeset, OpOrigin origin,
                   AppliedOp* applied, std::string* error)
{
    sqlite3* db = sql.db();
    SessionRecording recording(db, filterOf(origin));
    if (!recording.started()) return sessionFailed(db, error);
    HandlerState state;
    if (!applyWithRules(db, changeset, origin, &state, error)) return false;

    std::string soFar;
    std::vector<Change> changes;
    if (!recording.changeset(&soFar) || !readChanges(soFar, &changes)) return sessionFailed(db, error);
    wordNotices(sql, key, state, applied);
    Tombstones tombstones(sql, key);
    if (!repairAfterOp(sql, key, tombstones, changes, state.restores, &applied->notices, error)) return false;

    changes.clear();
    if (!recording.changeset(&applied->effective) || !readChanges(applied->effective, &changes) ||
        !collectTouchedSisans(sql, changes, &applied->touchedSisans))
        return sessionFailed(db, error);
    applied->deletes = countDeletes(changes);
    return true;
}

}  // namespace

bool applyOp(StatementCache& sql, const OpKey& key, const std::string& changeset, OpOrigin origin, AppliedOp* applied,
             std::string* error)
{
    std::vector<Change> changes;
    if (!readChanges(changeset, &changes)) {
        if (error) *error = "apply: a damaged changeset";
        return false;
    }
    // Most operations meet no conflict: applied without a recording inside
    // a savepoint, and again with one when they do. An operation with
    // changes the filter leaves out is recorded from the start.
    const SessionRecording::TableFilter filter = filterOf(origin);
    const bool whole = std::all_of(changes.begin(), changes.end(),
                                   [&](const Change& c) { return filter(nullptr, c.table.c_str()) != 0; });
    if (whole) {
        if (!sqlOk(sql, "SAVEPOINT op")) return sessionFailed(sql.db(), error);
        HandlerState state;
        const bool applied_ = applyWithRules(sql.db(), changeset, origin, &state, error);
        if (applied_ && !state.conflicted) {
            const bool done = finishUnopposed(sql, key, changeset, std::move(changes), origin, applied, error);
            return sqlOk(sql, "RELEASE op") && done;
        }
        if (!sqlOk(sql, "ROLLBACK TO op") || !sqlOk(sql, "RELEASE op")) return sessionFailed(sql.db(), error);
        if (!applied_ && state.abortedOn.empty()) return false;
    }
    return applyRecorded(sql, key, changeset, origin, applied, error);
}

bool rewindOp(StatementCache& sql, const std::string& effective, OpOrigin origin, std::set<int64_t>* touchedSisans,
              std::string* error)
{
    std::string inverse;
    std::vector<Change> changes;
    if (!invertChangeset(effective, &inverse) || !readChanges(inverse, &changes)) {
        if (error) *error = "rewind: a damaged changeset in the history";
        return false;
    }
    HandlerState state;
    state.rewinding = true;
    return applyWithRules(sql.db(), inverse, origin, &state, error) && collectTouchedSisans(sql, changes, touchedSisans);
}
