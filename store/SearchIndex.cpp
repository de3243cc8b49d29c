#include "store/SearchIndex.h"

#include <sqlite3.h>

#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "store/History.h"
#include "store/Statement.h"
#include "store/TextFold.h"
#include "store/Transaction.h"

namespace {

// Everything the index is made of; it is complete when all of them exist.
const char* const kObjects[] = {"ItemsFts",          "ItemsFtsNote",      "ItemsFtsEntry",
                                "ItemsFtsEntry_NoteId", "ItemsFtsQueue",  "ItemsFtsInfo",
                                "ItemsFts_Insert",   "ItemsFts_Update",   "ItemsFts_Delete"};

const char* const kDrop[] = {
    "DROP TRIGGER IF EXISTS ItemsFts_Insert", "DROP TRIGGER IF EXISTS ItemsFts_Update",
    "DROP TRIGGER IF EXISTS ItemsFts_Delete", "DROP TABLE IF EXISTS ItemsFts",
    "DROP TABLE IF EXISTS ItemsFtsNote",      "DROP TABLE IF EXISTS ItemsFtsEntry",
    "DROP TABLE IF EXISTS ItemsFtsQueue",     "DROP TABLE IF EXISTS ItemsFtsInfo",
};

// The tables; the index of ItemsFtsEntry comes after the bulk load.
const char* const kCreate[] = {
    "CREATE TABLE ItemsFtsNote (Id INTEGER PRIMARY KEY, Folded TEXT NOT NULL UNIQUE, Uses INTEGER NOT NULL, "
    "LastId INTEGER NOT NULL)",
    "CREATE TABLE ItemsFtsEntry (Id INTEGER PRIMARY KEY, NoteId INTEGER NOT NULL)",
    "CREATE VIRTUAL TABLE ItemsFts USING fts5(Folded, tokenize='trigram', columnsize=0)",
    "CREATE TABLE ItemsFtsQueue (Id INTEGER PRIMARY KEY)",
    "CREATE TABLE ItemsFtsInfo (Id INTEGER PRIMARY KEY, Key TEXT NOT NULL UNIQUE, Value TEXT NOT NULL)",
    // Plain SQL that any SQLite runs, so that an older program's writes are
    // followed too. A new or changed note needs folding: its entry's Id is
    // queued for this program. A replaced row is an insert, so every insert
    // is queued.
    "CREATE TRIGGER ItemsFts_Insert AFTER INSERT ON Items BEGIN "
    "INSERT OR IGNORE INTO ItemsFtsQueue (Id) VALUES (new.Id); END",
    "CREATE TRIGGER ItemsFts_Update AFTER UPDATE OF Id, Bikou ON Items "
    "WHEN old.Bikou IS NOT new.Bikou OR old.Id IS NOT new.Id BEGIN "
    "INSERT OR IGNORE INTO ItemsFtsQueue (Id) VALUES (old.Id); "
    "INSERT OR IGNORE INTO ItemsFtsQueue (Id) VALUES (new.Id); END",
    // A deleted entry needs no folding: it leaves the index at once, and its
    // note counts one entry less (the newest before it when it was the newest).
    "CREATE TRIGGER ItemsFts_Delete AFTER DELETE ON Items WHEN old.Bikou <> '' BEGIN "
    "UPDATE ItemsFtsNote SET Uses = Uses - 1, LastId = CASE WHEN LastId = old.Id THEN "
    "COALESCE((SELECT MAX(e.Id) FROM ItemsFtsEntry e WHERE e.NoteId = ItemsFtsNote.Id AND e.Id < old.Id), 0) "
    "ELSE LastId END WHERE Id = (SELECT NoteId FROM ItemsFtsEntry WHERE Id = old.Id); "
    "DELETE FROM ItemsFtsEntry WHERE Id = old.Id; END",
};

// The layout of these tables and triggers: an index of another layout is
// made again.
const char* const kLayout = "2";

const char* const kCreateEntryIndex = "CREATE INDEX ItemsFtsEntry_NoteId ON ItemsFtsEntry (NoteId)";

// Build progress is reported every this many entries.
constexpr int64_t kProgressStep = 20000;

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

bool fail(std::string* error, sqlite3* db, const std::string& what)
{
    if (error) *error = what + ": " + sqlite3_errmsg(db);
    return false;
}

bool run(sqlite3* db, const char* sql, std::string* error)
{
    return runControlStatement(db, sql) || fail(error, db, sql);
}

std::optional<std::string> storedInfo(sqlite3* db, const char* key)
{
    Statement s;
    if (!s.prepare(db, "SELECT Value FROM ItemsFtsInfo WHERE Key = ?") || s.bindText(1, key) != SQLITE_OK)
        return std::nullopt;
    std::optional<std::string> value;
    if (!s.eachRow([&] { value = s.columnText(0); })) return std::nullopt;
    return value;
}

// True when every object exists and the index was built in today's layout
// with today's folding.
bool indexComplete(sqlite3* db)
{
    Statement s;
    if (!s.prepare(db, "SELECT COUNT(*) FROM sqlite_schema WHERE name = ?")) return false;
    for (const char* name : kObjects) {
        s.reset();
        s.bindText(1, name);
        if (s.step() != Step::Row || s.columnInt(0) == 0) return false;
    }
    return storedInfo(db, "fold") == textFoldVersion() && storedInfo(db, "layout") == kLayout;
}

// One distinct folded note while the index is built.
struct NoteTally {
    int64_t id;
    int64_t uses = 0;
    int64_t lastId = 0;
};

// Reads every entry with a note, folds it, and writes which note it carries;
// the distinct notes are written after. Notes repeat a lot, so each distinct
// raw note is folded once.
bool loadEntries(sqlite3* db, const IndexProgress& progress, bool* cancelled, std::string* error)
{
    Statement count;
    if (!count.prepare(db, "SELECT COUNT(*) FROM Items") || count.step() != Step::Row)
        return fail(error, db, "counting the entries");
    const int64_t total = count.columnInt64(0);
    count.finalize();

    Statement read, insert;
    if (!read.prepare(db, "SELECT Id, Bikou FROM Items WHERE Bikou <> ''"))
        return fail(error, db, "reading the notes");
    if (!insert.prepare(db, "INSERT INTO ItemsFtsEntry (Id, NoteId) VALUES (?, ?)"))
        return fail(error, db, "preparing the index");
    std::unordered_map<std::string, NoteTally> notes;    // by folded text
    std::unordered_map<std::string, NoteTally*> folded;  // raw note -> its tally
    int64_t done = 0;
    bool ok = true;
    const bool read_all = read.eachRow([&] {
        if (!ok) return;
        const int64_t id = read.columnInt64(0);
        const std::string raw = read.columnText(1);
        auto seen = folded.find(raw);
        if (seen == folded.end()) {
            const std::string f = foldText(raw);
            NoteTally* tally = nullptr;
            if (!f.empty()) {
                auto [it, added] = notes.try_emplace(f, NoteTally{static_cast<int64_t>(notes.size()) + 1});
                tally = &it->second;
            }
            if (folded.size() > 500000) folded.clear();  // bounded memory for books of unique notes
            seen = folded.emplace(raw, tally).first;
        }
        if (NoteTally* tally = seen->second) {
            ++tally->uses;
            if (id > tally->lastId) tally->lastId = id;
            insert.reset();
            insert.bindInt64(1, id);
            insert.bindInt64(2, tally->id);
            ok = insert.step() == Step::Done;
        }
        if (++done % kProgressStep == 0 && progress && !progress(done, total)) {
            *cancelled = true;
            ok = false;
        }
    });
    if (*cancelled) return false;
    if (!read_all || !ok) return fail(error, db, "indexing the notes");

    Statement note, fts;
    if (!note.prepare(db, "INSERT INTO ItemsFtsNote (Id, Folded, Uses, LastId) VALUES (?, ?, ?, ?)") ||
        !fts.prepare(db, "INSERT INTO ItemsFts (rowid, Folded) VALUES (?, ?)"))
        return fail(error, db, "preparing the notes");
    for (const auto& [text, tally] : notes) {
        note.reset();
        note.bindInt64(1, tally.id);
        note.bindText(2, text);
        note.bindInt64(3, tally.uses);
        note.bindInt64(4, tally.lastId);
        fts.reset();
        fts.bindInt64(1, tally.id);
        fts.bindText(2, text);
        if (note.step() != Step::Done || fts.step() != Step::Done) return fail(error, db, "writing the notes");
    }
    if (progress) progress(total, total);
    return true;
}

IndexBuild build(sqlite3* db, const IndexProgress& progress, std::string* error)
{
    Transaction tx(db);
    if (!tx.began()) return fail(error, db, "BEGIN"), IndexBuild::Failed;
    for (const char* sql : kDrop)
        if (!run(db, sql, error)) return IndexBuild::Failed;
    for (const char* sql : kCreate)
        if (!run(db, sql, error)) return IndexBuild::Failed;
    bool cancelled = false;
    if (!loadEntries(db, progress, &cancelled, error)) return cancelled ? IndexBuild::Cancelled : IndexBuild::Failed;
    if (!run(db, kCreateEntryIndex, error)) return IndexBuild::Failed;
    Statement info;
    if (!info.prepare(db, "INSERT INTO ItemsFtsInfo (Key, Value) VALUES ('fold', ?1), ('layout', ?2)") ||
        info.bindText(1, textFoldVersion()) != SQLITE_OK || info.bindText(2, kLayout) != SQLITE_OK ||
        info.step() != Step::Done)
        return fail(error, db, "writing the folding"), IndexBuild::Failed;
    info.finalize();
    if (!tx.commit()) return fail(error, db, "COMMIT"), IndexBuild::Failed;
    return IndexBuild::Built;
}

// The statements that bring one note's entries and counts up to date.
class QueueApplier {
public:
    explicit QueueApplier(sqlite3* db) : db_(db) {}

    bool prepare()
    {
        return findNote_.prepare(db_, "SELECT Id FROM ItemsFtsNote WHERE Folded = ?") &&
               addNote_.prepare(db_, "INSERT INTO ItemsFtsNote (Folded, Uses, LastId) VALUES (?, 0, 0)") &&
               addFts_.prepare(db_, "INSERT INTO ItemsFts (rowid, Folded) VALUES (?, ?)") &&
               dropEntry_.prepare(db_, "DELETE FROM ItemsFtsEntry WHERE Id = ?") &&
               addEntry_.prepare(db_, "INSERT INTO ItemsFtsEntry (Id, NoteId) VALUES (?, ?)");
    }

    // The entry id now carries the note with this folded text (none when
    // empty) instead of oldNote (0 for none).
    bool change(int64_t id, int64_t oldNote, const std::string& folded)
    {
        std::optional<int64_t> newNote = 0;
        if (!folded.empty()) newNote = noteOf(folded);
        if (!newNote) return false;
        if (*newNote == oldNote) return true;
        if (oldNote) {
            dropEntry_.reset();
            dropEntry_.bindInt64(1, id);
            if (dropEntry_.step() != Step::Done) return false;
            --delta_[oldNote];
        }
        if (*newNote) {
            addEntry_.reset();
            addEntry_.bindInt64(1, id);
            addEntry_.bindInt64(2, *newNote);
            if (addEntry_.step() != Step::Done) return false;
            ++delta_[*newNote];
        }
        return true;
    }

    // Counts and newest entries of the notes that changed; a note no entry
    // carries any more leaves the index.
    bool settleNotes()
    {
        Statement update, drop, dropFts;
        if (!update.prepare(db_, "UPDATE ItemsFtsNote SET Uses = Uses + ?1, LastId = "
                                 "COALESCE((SELECT MAX(Id) FROM ItemsFtsEntry WHERE NoteId = ?2), 0) "
                                 "WHERE Id = ?2 RETURNING Uses") ||
            !drop.prepare(db_, "DELETE FROM ItemsFtsNote WHERE Id = ?") ||
            !dropFts.prepare(db_, "DELETE FROM ItemsFts WHERE rowid = ?"))
            return false;
        for (const auto& [note, delta] : delta_) {
            update.reset();
            update.bindInt64(1, delta);
            update.bindInt64(2, note);
            int64_t uses = 0;
            if (!update.eachRow([&] { uses = update.columnInt64(0); })) return false;
            if (uses > 0) continue;
            for (Statement* s : {&drop, &dropFts}) {
                s->reset();
                s->bindInt64(1, note);
                if (s->step() != Step::Done) return false;
            }
        }
        return true;
    }

private:
    sqlite3* db_;
    Statement findNote_, addNote_, addFts_, dropEntry_, addEntry_;
    std::map<int64_t, int64_t> delta_;  // note Id -> change of its number of entries

    std::optional<int64_t> noteOf(const std::string& folded)
    {
        findNote_.reset();
        findNote_.bindText(1, folded);
        std::optional<int64_t> id;
        if (!findNote_.eachRow([&] { id = findNote_.columnInt64(0); })) return std::nullopt;
        if (id) return id;
        addNote_.reset();
        addNote_.bindText(1, folded);
        if (addNote_.step() != Step::Done) return std::nullopt;
        const int64_t added = sqlite3_last_insert_rowid(db_);
        addFts_.reset();
        addFts_.bindInt64(1, added);
        addFts_.bindText(2, folded);
        if (addFts_.step() != Step::Done) return std::nullopt;
        return added;
    }
};

// One queued entry: its note now (absent when the entry is gone) and the
// note the index gives it.
struct Queued {
    int64_t id;
    int64_t oldNote;
    std::string bikou;
};

bool readQueue(sqlite3* db, std::vector<Queued>& queued)
{
    Statement s;
    if (!s.prepare(db, "SELECT q.Id, COALESCE(e.NoteId, 0), i.Bikou FROM ItemsFtsQueue q "
                       "LEFT JOIN ItemsFtsEntry e ON e.Id = q.Id LEFT JOIN Items i ON i.Id = q.Id"))
        return false;
    return s.eachRow([&] { queued.push_back({s.columnInt64(0), s.columnInt64(1), s.columnText(2)}); });
}

bool applyQueued(sqlite3* db, const std::vector<Queued>& queued, std::string* error)
{
    QueueApplier applier(db);
    if (!applier.prepare()) return fail(error, db, "preparing the index update");
    std::unordered_map<std::string, std::string> folded;  // within one batch notes repeat
    for (const Queued& q : queued) {
        auto it = folded.find(q.bikou);
        if (it == folded.end()) it = folded.emplace(q.bikou, q.bikou.empty() ? std::string() : foldText(q.bikou)).first;
        if (!applier.change(q.id, q.oldNote, it->second)) return fail(error, db, "updating the index");
    }
    if (!applier.settleNotes()) return fail(error, db, "counting the notes");
    return run(db, "DELETE FROM ItemsFtsQueue", error);
}

}  // namespace

void declareSearchIndexDerived()
{
    // ItemsFts also covers the FTS5 shadow tables (ItemsFts_data, ...).
    for (const char* table : {"ItemsFts", "ItemsFtsNote", "ItemsFtsEntry", "ItemsFtsQueue", "ItemsFtsInfo"})
        declareDerivedTable(table);
}

IndexBuild ensureSearchIndex(sqlite3* db, const IndexProgress& progress, std::string* error)
{
    if (indexComplete(db)) return IndexBuild::Present;
    return build(db, progress, error);
}

IndexBuild ensureSearchIndexAt(const std::string& path, const IndexProgress& progress, std::string* error)
{
    Connection c;
    if (sqlite3_open_v2(path.c_str(), &c.db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        fail(error, c.db, "opening " + path);
        return IndexBuild::Failed;
    }
    sqlite3_busy_timeout(c.db, 5000);
    return ensureSearchIndex(c.db, progress, error);
}

bool applySearchQueue(sqlite3* db, std::string* error)
{
    std::vector<Queued> queued;
    if (!readQueue(db, queued)) return fail(error, db, "reading the index queue");
    if (queued.empty()) return true;
    if (!sqlite3_get_autocommit(db)) return applyQueued(db, queued, error);
    Transaction tx(db);
    if (!tx.began()) return fail(error, db, "BEGIN");
    // Read again inside the transaction: another program may have queued more.
    queued.clear();
    if (!readQueue(db, queued)) return fail(error, db, "reading the index queue");
    return applyQueued(db, queued, error) && (tx.commit() || fail(error, db, "COMMIT"));
}

bool dropUnusedNotes(sqlite3* db, std::string* error)
{
    Statement any;
    if (!any.prepare(db, "SELECT 1 FROM ItemsFtsNote WHERE Uses <= 0 LIMIT 1"))
        return fail(error, db, "reading the notes");
    bool found = false;
    if (!any.eachRow([&] { found = true; })) return fail(error, db, "reading the notes");
    any.finalize();
    if (!found) return true;
    Transaction tx(db);
    if (!tx.began()) return fail(error, db, "BEGIN");
    return run(db, "DELETE FROM ItemsFts WHERE rowid IN (SELECT Id FROM ItemsFtsNote WHERE Uses <= 0)", error) &&
           run(db, "DELETE FROM ItemsFtsNote WHERE Uses <= 0", error) && (tx.commit() || fail(error, db, "COMMIT"));
}
