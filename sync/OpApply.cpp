#include "sync/OpApply.h"

#include <sqlite3.h>

#include "sync/BookTables.h"
#include "sync/Changes.h"
#include "sync/ConflictPolicy.h"
#include "sync/Repair.h"
#include "sync/SyncStatement.h"
#include "sync/Tombstones.h"

namespace {

// A session recording every change of the three tables while it lives.
class Recording {
public:
    explicit Recording(sqlite3* db)
    {
        if (sqlite3session_create(db, "main", &session_) != SQLITE_OK) return;
        for (const BookTable& table : bookTables()) {
            if (sqlite3session_attach(session_, table.name) != SQLITE_OK) {
                sqlite3session_delete(session_);
                session_ = nullptr;
                return;
            }
        }
    }
    ~Recording()
    {
        if (session_) sqlite3session_delete(session_);
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    bool started() const { return session_ != nullptr; }

    bool changeset(std::string* bytes) const
    {
        int size = 0;
        void* data = nullptr;
        const int rc = sqlite3session_changeset(session_, &size, &data);
        if (rc == SQLITE_OK) bytes->assign(static_cast<const char*>(data), static_cast<size_t>(size));
        sqlite3_free(data);
        return rc == SQLITE_OK;
    }

private:
    sqlite3_session* session_ = nullptr;
};

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

// Only the three tables are ever written by an operation.
int onlyBookTables(void*, const char* table) { return bookTable(table) != nullptr; }

bool applyWithRules(sqlite3* db, const std::string& changeset, HandlerState* state, std::string* error)
{
    const int rc = sqlite3changeset_apply_v2(db, static_cast<int>(changeset.size()), const_cast<char*>(changeset.data()),
                                             onlyBookTables, onConflict, state, nullptr, nullptr, 0);
    if (rc == SQLITE_OK) return true;
    if (error) {
        *error = state->abortedOn.empty() ? std::string("apply: ") + sqlite3_errstr(rc) + ": " + sqliteError(db)
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

}  // namespace

bool applyOp(sqlite3* db, const OpKey& key, const std::string& changeset, AppliedOp* applied, std::string* error)
{
    Recording recording(db);
    if (!recording.started()) {
        if (error) *error = "session: " + sqliteError(db);
        return false;
    }
    HandlerState state;
    if (!applyWithRules(db, changeset, &state, error)) return false;

    std::string soFar;
    std::vector<Change> changes;
    if (!recording.changeset(&soFar) || !readChanges(soFar, &changes)) {
        if (error) *error = "session: " + sqliteError(db);
        return false;
    }
    for (const RawNotice& raw : state.notices) {
        SyncNotice n{raw.kind, key, raw.table, raw.id, noticeText(raw.kind, raw.table, raw.row),
                     describeRow(db, raw.table, raw.row), raw.losing};
        applied->notices.push_back(std::move(n));
    }
    Tombstones tombstones(db);
    if (!repairAfterOp(db, key, tombstones, changes, state.restores, &applied->notices, error)) return false;

    changes.clear();
    if (!recording.changeset(&applied->effective) || !readChanges(applied->effective, &changes) ||
        !collectTouchedSisans(db, changes, &applied->touchedSisans)) {
        if (error) *error = "session: " + sqliteError(db);
        return false;
    }
    applied->deletes = countDeletes(changes);
    return true;
}

bool rewindOp(sqlite3* db, const std::string& effective, std::set<int64_t>* touchedSisans, std::string* error)
{
    std::string inverse;
    std::vector<Change> changes;
    if (!invertChangeset(effective, &inverse) || !readChanges(inverse, &changes)) {
        if (error) *error = "rewind: a damaged changeset in the sync log";
        return false;
    }
    HandlerState state;
    state.rewinding = true;
    return applyWithRules(db, inverse, &state, error) && collectTouchedSisans(db, changes, touchedSisans);
}
