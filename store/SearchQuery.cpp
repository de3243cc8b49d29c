#include "store/SearchQuery.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>

#include "store/Items.h"
#include "store/Statement.h"

namespace {

// The columns of a found entry, in FoundItem's order, of the entry i.
const char* const kColumns =
    "SELECT i.Id, i.Hizuke, i.SisanNo, i.SyubetuNo, i.HimokuNo, i.IdouSisanNo, i.Nyuukin, i.Syukkin, i.Bikou";

// Steps between two looks at the cancel flag.
constexpr int kProgressSteps = 4000;

std::string idList(const std::vector<int64_t>& ids)
{
    std::string out;
    for (int64_t id : ids) out += (out.empty() ? "" : ",") + std::to_string(id);
    return out;
}

bool usesTrigrams(const SearchWord& word)
{
    return characterCount(word.folded) >= kTrigramLength;
}

// The Ids of the notes containing the word (one text parameter): from the
// trigram index, or for a short word from a scan of the distinct notes.
std::string notesWith(const SearchWord& word, SearchSql& out)
{
    out.texts.push_back(usesTrigrams(word) ? ftsPhrase(word.folded) : word.folded);
    return usesTrigrams(word) ? "SELECT rowid FROM ItemsFts WHERE ItemsFts MATCH ?"
                              : "SELECT Id FROM ItemsFtsNote WHERE instr(Folded, ?) > 0";
}

// The Ids of the notes containing every one of the words: the trigram index
// takes the long words in one query (all phrases must occur), the short ones
// are looked for in the notes it found, or in all notes.
std::string notesWithAll(const std::vector<const SearchWord*>& words, SearchSql& out)
{
    std::string match, scans;
    for (const SearchWord* word : words) {
        if (usesTrigrams(*word)) {
            match += (match.empty() ? "" : " AND ") + ftsPhrase(word->folded);
        } else {
            scans += (scans.empty() ? "" : " AND ") + std::string("instr(Folded, ?) > 0");
        }
    }
    const char* const fts = "SELECT rowid FROM ItemsFts WHERE ItemsFts MATCH ?";
    if (scans.empty()) {
        out.texts.push_back(match);
        return fts;
    }
    std::string sql = "SELECT Id FROM ItemsFtsNote WHERE ";
    if (!match.empty()) {
        out.texts.push_back(match);
        sql += std::string("Id IN (") + fts + ") AND ";
    }
    for (const SearchWord* word : words)
        if (!usesTrigrams(*word)) out.texts.push_back(word->folded);
    return sql + scans;
}

// The word's condition on an entry i: its note (noteIn, given the notes'
// subquery, says whether the entry carries one of them), its category or
// sub-item (expenses and incomes) or its partner asset (transfers).
template <typename NoteIn>
std::string wordCondition(const SearchWord& word, SearchSql& out, NoteIn noteIn)
{
    std::string sql = "(" + noteIn(notesWith(word, out));
    if (!word.himokuIds.empty())
        sql += " OR (i.SyubetuNo IN (1,2) AND i.HimokuNo IN (" + idList(word.himokuIds) + "))";
    if (!word.sisanIds.empty())
        sql += " OR (i.SyubetuNo IN (3,4) AND i.IdouSisanNo IN (" + idList(word.sisanIds) + "))";
    return sql + ")";
}

std::string kingakuCondition(const SearchCriteria& c)
{
    // Stored amounts are 32-bit: an open end is the end of that range.
    const std::string lo = std::to_string(c.kingakuMin.value_or(INT32_MIN));
    const std::string hi = std::to_string(c.kingakuMax.value_or(INT32_MAX));
    return "((i.SyubetuNo IN (2,4) AND i.Nyuukin BETWEEN " + lo + " AND " + hi +
           ") OR (i.SyubetuNo IN (1,3) AND i.Syukkin BETWEEN " + lo + " AND " + hi + "))";
}

const char* kindCondition(SearchCriteria::Kind kind)
{
    switch (kind) {
    case SearchCriteria::Sisyutu:
        return "i.SyubetuNo = 1";
    case SearchCriteria::Syuunyuu:
        return "i.SyubetuNo = 2";
    case SearchCriteria::Idou:
        return "i.SyubetuNo IN (3,4)";
    case SearchCriteria::AnyKind:
        break;
    }
    return nullptr;
}

}  // namespace

bool SearchCriteria::empty() const
{
    return words.empty() && !kingakuMin && !kingakuMax && hizukeFrom.empty() && hizukeTo.empty() && kind == AnyKind &&
           sisanId == 0;
}

size_t characterCount(const std::string& utf8)
{
    size_t n = 0;
    for (const char c : utf8) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return n;
}

std::string ftsPhrase(const std::string& folded)
{
    std::string out = "\"";
    for (const char c : folded) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

SearchSql searchSql(const SearchCriteria& c)
{
    // Words found in no category or asset name can match only notes: the
    // notes holding all of them are found first, and only their entries are
    // read, in one pass over the note index. The other words (and the other
    // conditions) are then checked on those entries. Without such a word
    // every condition is checked on the entries.
    std::vector<const SearchWord*> noteOnly, others;
    for (const SearchWord& word : c.words)
        (word.himokuIds.empty() && word.sisanIds.empty() ? noteOnly : others).push_back(&word);
    SearchSql out;
    out.sql = kColumns;
    std::vector<std::string> conditions;
    if (!noteOnly.empty()) {
        out.sql += " FROM ItemsFtsEntry e CROSS JOIN Items i ON i.Id = e.Id";
        conditions.push_back("e.NoteId IN (" + notesWithAll(noteOnly, out) + ")");
        for (const SearchWord* word : others)
            conditions.push_back(wordCondition(*word, out, [](const std::string& notes) {
                return "e.NoteId IN (" + notes + ")";
            }));
    } else {
        out.sql += " FROM Items i";
        for (const SearchWord* word : others)
            conditions.push_back(wordCondition(*word, out, [](const std::string& notes) {
                return "i.Id IN (SELECT Id FROM ItemsFtsEntry WHERE NoteId IN (" + notes + "))";
            }));
    }
    if (c.kingakuMin || c.kingakuMax) conditions.push_back(kingakuCondition(c));
    if (!c.hizukeFrom.empty()) {
        conditions.emplace_back("i.Hizuke >= ?");
        out.texts.push_back(c.hizukeFrom);
    }
    if (!c.hizukeTo.empty()) {
        conditions.emplace_back("i.Hizuke <= ?");
        out.texts.push_back(c.hizukeTo);
    }
    if (const char* kind = kindCondition(c.kind)) conditions.emplace_back(kind);
    if (c.sisanId != 0) conditions.push_back("i.SisanNo = " + std::to_string(c.sisanId));
    for (size_t n = 0; n < conditions.size(); ++n) out.sql += (n ? " AND " : " WHERE ") + conditions[n];
    out.sql += " ORDER BY i.Hizuke DESC, i.Id DESC";
    return out;
}

SearchConnection::SearchConnection(std::string path) : path_(std::move(path)) {}

SearchConnection::~SearchConnection()
{
    sqlite3_close(db_);
}

bool SearchConnection::fail(std::string* error) const
{
    // A query stopped by a newer one is no failure to report.
    const bool stopped = cancelled_ && cancelled_();
    if (error) *error = stopped ? std::string() : std::string(db_ ? sqlite3_errmsg(db_) : "out of memory");
    return false;
}

int SearchConnection::progress(void* self)
{
    const auto* c = static_cast<SearchConnection*>(self);
    return c->cancelled_ && c->cancelled_() ? 1 : 0;
}

bool SearchConnection::open(std::string* error)
{
    if (db_) return true;
    if (sqlite3_open_v2(path_.c_str(), &db_, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
        fail(error);
        sqlite3_close(db_);
        db_ = nullptr;
        return false;
    }
    sqlite3_busy_timeout(db_, 5000);
    sqlite3_progress_handler(db_, kProgressSteps, &SearchConnection::progress, this);
    return true;
}

bool SearchConnection::search(const SearchCriteria& criteria, FoundItems* found, std::string* error,
                              const Cancelled& cancelled)
{
    cancelled_ = cancelled;
    *found = {};
    if (!open(error)) return false;
    const SearchSql q = searchSql(criteria);
    Statement s;
    if (!s.prepare(db_, q.sql)) return fail(error);
    for (size_t i = 0; i < q.texts.size(); ++i)
        if (s.bindText(static_cast<int>(i) + 1, q.texts[i]) != SQLITE_OK) return fail(error);
    const bool read = s.eachRow([&] {
        const int64_t kind = s.columnInt(3);
        const int64_t nyuukin = isNyuukinKind(kind) ? s.columnInt(6) : 0;
        const int64_t syukkin = isSyukkinKind(kind) ? s.columnInt(7) : 0;
        ++found->count;
        found->nyuukinTotal += nyuukin;
        found->syukkinTotal += syukkin;
        if (found->rows.size() >= FoundItems::kMaxRows) return;
        found->rows.push_back({s.columnInt(0), s.columnText(1), s.columnInt(2), kind, s.columnInt(4), s.columnInt(5),
                               nyuukin, syukkin, s.columnText(8)});
    });
    if (!read) {
        *found = {};
        return fail(error);
    }
    return true;
}

bool SearchConnection::suggestNotes(const std::string& folded, size_t limit, std::vector<NoteSuggestion>* out,
                                    std::string* error, const Cancelled& cancelled)
{
    cancelled_ = cancelled;
    out->clear();
    if (folded.empty()) return true;
    if (!open(error)) return false;
    const bool trigram = characterCount(folded) >= kTrigramLength;
    Statement notes;
    // A note whose entries were all deleted stays until the next start: never offered.
    if (!notes.prepare(db_, trigram ? "SELECT Folded, Uses, LastId FROM ItemsFtsNote WHERE Uses > 0 AND Id IN "
                                      "(SELECT rowid FROM ItemsFts WHERE ItemsFts MATCH ?)"
                                    : "SELECT Folded, Uses, LastId FROM ItemsFtsNote WHERE Uses > 0 AND "
                                      "instr(Folded, ?) > 0") ||
        notes.bindText(1, trigram ? ftsPhrase(folded) : folded) != SQLITE_OK)
        return fail(error);
    std::vector<NoteSuggestion> found;
    if (!notes.eachRow([&] {
            NoteSuggestion n;
            n.startsWith = notes.columnText(0).rfind(folded, 0) == 0;
            n.uses = notes.columnInt64(1);
            n.Id = notes.columnInt64(2);
            found.push_back(std::move(n));
        }))
        return fail(error);
    const auto before = [](const NoteSuggestion& a, const NoteSuggestion& b) {
        if (a.startsWith != b.startsWith) return a.startsWith;
        if (a.uses != b.uses) return a.uses > b.uses;
        return a.Id > b.Id;
    };
    const size_t kept = std::min(limit, found.size());
    std::partial_sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(kept), found.end(), before);
    found.resize(kept);

    // The newest entry with each note gives its text as typed and the rest.
    Statement entry;
    if (!entry.prepare(db_, "SELECT Bikou, SisanNo, SyubetuNo, HimokuNo, IdouSisanNo, Nyuukin, Syukkin FROM Items "
                            "WHERE Id = ?"))
        return fail(error);
    for (NoteSuggestion& n : found) {
        entry.reset();
        entry.bindInt64(1, n.Id);
        bool seen = false;
        if (!entry.eachRow([&] {
                seen = true;
                n.Bikou = entry.columnText(0);
                n.SisanNo = entry.columnInt(1);
                n.SyubetuNo = entry.columnInt(2);
                n.HimokuNo = entry.columnInt(3);
                n.IdouSisanNo = entry.columnInt(4);
                n.Kingaku = isNyuukinKind(n.SyubetuNo) ? entry.columnInt(5) : entry.columnInt(6);
            }))
            return fail(error);
        if (seen) out->push_back(std::move(n));
    }
    return true;
}
