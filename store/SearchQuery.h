#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

// One word of a search, folded (TextFold.h), with what it matches besides
// the notes: the sub-items (kinds 1, 2) and the partner assets of transfers
// (kinds 3, 4) whose folded names contain it.
struct SearchWord {
    std::string folded;
    std::vector<int64_t> himokuIds;
    std::vector<int64_t> sisanIds;
};

// Which entries a search finds: every condition that is set must hold.
struct SearchCriteria {
    std::vector<SearchWord> words;           // each found in the note, category or partner
    std::optional<int64_t> kingakuMin;       // the entry's own amount, inclusive
    std::optional<int64_t> kingakuMax;
    std::string hizukeFrom, hizukeTo;        // "yyyy-MM-dd", inclusive; "" for open
    enum Kind { AnyKind = 0, Sisyutu = 1, Syuunyuu = 2, Idou = 3 } kind = AnyKind;  // Idou: both sides
    int64_t sisanId = 0;                     // 0 for every asset

    bool empty() const;
};

// A found entry: the columns the results show and the jump needs.
struct FoundItem {
    int64_t Id;
    std::string Hizuke;
    int64_t SisanNo;
    int64_t SyubetuNo;
    int64_t HimokuNo;
    int64_t IdouSisanNo;
    int64_t Nyuukin;  // 0 unless kind 2 or 4
    int64_t Syukkin;  // 0 unless kind 1 or 3
    std::string Bikou;
};

// The entries found, newest first (date, then Id), at most kMaxRows of
// them; count and sums cover all that matched.
struct FoundItems {
    static constexpr size_t kMaxRows = 100000;
    std::vector<FoundItem> rows;
    int64_t count = 0;
    int64_t nyuukinTotal = 0;
    int64_t syukkinTotal = 0;
};

// A past note offered while a note is typed, with the entry that last
// carried it: its kind, category or partner and amount fill the panel.
struct NoteSuggestion {
    std::string Bikou;  // as last typed
    int64_t uses = 0;
    bool startsWith = false;  // the note begins with the typed text
    int64_t Id = 0;           // the newest entry with this note
    int64_t SisanNo = 0;
    int64_t SyubetuNo = 0;
    int64_t HimokuNo = 0;
    int64_t IdouSisanNo = 0;
    int64_t Kingaku = 0;
};

// The statement a search runs and its text parameters, in order.
struct SearchSql {
    std::string sql;
    std::vector<std::string> texts;
};
SearchSql searchSql(const SearchCriteria& criteria);

// The FTS5 query that finds a folded word literally: one quoted phrase, so
// operators, quotes and stars in it are plain characters.
std::string ftsPhrase(const std::string& folded);

// Words shorter than this (in characters) cannot use the trigram index and
// are looked for by a scan of the distinct notes.
inline constexpr size_t kTrigramLength = 3;
size_t characterCount(const std::string& utf8);

// Searches on a read-only connection of its own, so that it can run on a
// worker thread while the store works on the main thread. Each query polls
// `cancelled` while it runs and stops early once it returns true; cancel()
// may be called from any thread to stop the query running now.
class SearchConnection {
public:
    explicit SearchConnection(std::string path);
    ~SearchConnection();
    SearchConnection(const SearchConnection&) = delete;
    SearchConnection& operator=(const SearchConnection&) = delete;

    using Cancelled = std::function<bool()>;

    // The entries matching criteria. False with *error on a failure, or with
    // *error empty when cancelled.
    bool search(const SearchCriteria& criteria, FoundItems* found, std::string* error, const Cancelled& cancelled = {});

    // Up to limit past notes containing the folded text: those that begin
    // with it first, then the most used, then the most recently entered.
    bool suggestNotes(const std::string& folded, size_t limit, std::vector<NoteSuggestion>* out, std::string* error,
                      const Cancelled& cancelled = {});

private:
    std::string path_;
    sqlite3* db_ = nullptr;
    Cancelled cancelled_;

    bool open(std::string* error);
    bool fail(std::string* error) const;
    static int progress(void* self);
};
