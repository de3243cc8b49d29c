#include "store/BookCheck.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <vector>

#include "store/BookTables.h"
#include "store/BookValues.h"
#include "store/HotJournal.h"

namespace {

// A short wait covers another program's brief write; a lock held longer is
// reported instead of delaying the start.
constexpr int kBusyWaitMs = 250;

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

BookCheck verdict(BookVerdict v, std::string detail = {})
{
    return {v, std::move(detail)};
}

// The effective user's access, so that a test running under seteuid sees
// what that user would see.
bool accessible(const std::string& path, int mode)
{
    return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

std::string folderOf(const std::string& path)
{
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

BookCheck fromSqlite(int rc, sqlite3* db)
{
    const std::string text = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
    switch (rc & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return verdict(BookVerdict::Locked, text);
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
        return verdict(BookVerdict::Damaged, text);
    case SQLITE_READONLY:
        return verdict(BookVerdict::FileReadOnly, text);
    default:
        return verdict(BookVerdict::Unreadable, text);
    }
}

uint32_t bigEndian(const unsigned char* bytes, int count)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

using Header = std::array<unsigned char, 100>;

std::optional<Header> readHeader(const std::string& path)
{
    Header header{};
    std::ifstream in(path, std::ios::binary);
    if (!in.read(reinterpret_cast<char*>(header.data()), header.size()) ||
        std::memcmp(header.data(), "SQLite format 3", 16) != 0)
        return std::nullopt;
    return header;
}

// The header promises a page size and, when its two change counters agree,
// a page count: a file shorter than that was cut short.
std::optional<BookCheck> checkPageCount(const std::string& path, uint64_t fileSize)
{
    const auto header = readHeader(path);
    if (!header) return verdict(BookVerdict::Damaged, "not a SQLite database");
    const Header& h = *header;
    uint32_t pageSize = bigEndian(&h[16], 2);
    if (pageSize == 1) pageSize = 65536;
    if (pageSize < 512 || pageSize > 65536 || (pageSize & (pageSize - 1)) != 0)
        return verdict(BookVerdict::Damaged, "invalid page size");
    const uint32_t pageCount = bigEndian(&h[28], 4);
    const bool countValid = pageCount != 0 && bigEndian(&h[24], 4) == bigEndian(&h[92], 4);
    const uint64_t expected = countValid ? uint64_t{pageCount} * pageSize : 0;
    if (fileSize < expected || fileSize % pageSize != 0)
        return verdict(BookVerdict::Damaged, "file holds " + std::to_string(fileSize) + " bytes, header promises " +
                                                 std::to_string(expected));
    return std::nullopt;
}

std::string textOf(sqlite3_stmt* s, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, column));
    return text ? text : "";
}

bool sameName(const std::string& a, const std::string& b)
{
    return sqlite3_stricmp(a.c_str(), b.c_str()) == 0;
}

// SQLite matches table names without regard to case.
std::string lowered(std::string name)
{
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

// Runs a statement through its rows; a failing step is the check's verdict.
template <typename OnRow>
std::optional<BookCheck> eachRow(sqlite3* db, const std::string& sql, OnRow onRow)
{
    sqlite3_stmt* s = nullptr;
    int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr);
    while (rc == SQLITE_OK || rc == SQLITE_ROW) {
        rc = sqlite3_step(s);
        if (rc == SQLITE_ROW) onRow(s);
    }
    std::optional<BookCheck> failure;
    if (rc != SQLITE_DONE) failure = fromSqlite(rc, db);
    sqlite3_finalize(s);
    return failure;
}

// What the book's own schema says of one table.
struct FoundTable {
    std::string kind;  // "table", "view", "virtual", "shadow"
    bool withoutRowid = false;
    std::vector<ColumnLayout> columns;
};

// The tables of the book by name (in lower case), with the columns of those
// the program knows.
std::optional<BookCheck> readTables(sqlite3* db, std::map<std::string, FoundTable>& found)
{
    if (auto failure = eachRow(db, "PRAGMA main.table_list", [&](sqlite3_stmt* s) {
            found[lowered(textOf(s, 1))] = FoundTable{textOf(s, 2), sqlite3_column_int(s, 4) != 0, {}};
        }))
        return failure;
    for (const auto* list : {&requiredBookTables(), &optionalBookTables()}) {
        for (const TableLayout& layout : *list) {
            const auto table = found.find(lowered(layout.name));
            if (table == found.end()) continue;
            if (auto failure = eachRow(db, "PRAGMA main.table_info(\"" + layout.name + "\")", [&](sqlite3_stmt* s) {
                    table->second.columns.push_back({textOf(s, 1), textOf(s, 2), sqlite3_column_int(s, 5) != 0});
                }))
                return failure;
        }
    }
    return std::nullopt;
}

// The affinity SQLite gives a column of this declared type: what decides
// how its values are stored and compared.
std::string affinityOf(std::string type)
{
    for (char& c : type) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    auto has = [&](const char* part) { return type.find(part) != std::string::npos; };
    if (has("INT")) return "INTEGER";
    if (has("CHAR") || has("CLOB") || has("TEXT")) return "TEXT";
    if (has("BLOB") || type.empty()) return "BLOB";
    if (has("REAL") || has("FLOA") || has("DOUB")) return "REAL";
    return "NUMERIC";
}

std::string columnList(const std::vector<ColumnLayout>& columns)
{
    std::string list;
    for (const auto& c : columns) list += (list.empty() ? "" : ",") + c.name;
    return list;
}

// A known table must be of its kind (a table, not a view), with the declared
// columns in order, of the declared types, the row id where the program
// expects it.
std::optional<BookCheck> compareTable(const TableLayout& layout, const FoundTable& found)
{
    const std::string& t = layout.name;
    if (found.kind != layout.kind)
        return verdict(BookVerdict::WrongSchema, t + " is a " + found.kind + ", not a " +
                                                         (layout.kind == "table" ? "table" : layout.kind + " table"));
    bool sameNames = found.columns.size() == layout.columns.size();
    for (size_t i = 0; sameNames && i < found.columns.size(); ++i)
        sameNames = sameName(found.columns[i].name, layout.columns[i].name);
    if (!sameNames) return verdict(BookVerdict::WrongSchema, t + "(" + columnList(found.columns) + ")");
    for (size_t i = 0; i < layout.columns.size(); ++i) {
        const ColumnLayout& want = layout.columns[i];
        const ColumnLayout& have = found.columns[i];
        const std::string column = t + "." + want.name;
        if (affinityOf(have.type) != affinityOf(want.type))
            return verdict(BookVerdict::WrongSchema, column + " is declared " + (have.type.empty() ? "without a type" : have.type) +
                                                         ", not " + want.type);
        // Only a column declared exactly INTEGER PRIMARY KEY, in a table with
        // row ids, is the row id that a new row's Id is taken from.
        const bool rowId = have.primaryKey && sameName(have.type, "INTEGER") && !found.withoutRowid;
        if (want.primaryKey && !rowId) return verdict(BookVerdict::WrongSchema, column + " is not the INTEGER PRIMARY KEY");
        if (!want.primaryKey && have.primaryKey)
            return verdict(BookVerdict::WrongSchema, column + " is part of the primary key");
    }
    return std::nullopt;
}

std::optional<BookCheck> compareTables(const std::map<std::string, FoundTable>& found)
{
    for (const auto* list : {&requiredBookTables(), &optionalBookTables()}) {
        const bool required = list == &requiredBookTables();
        for (const TableLayout& layout : *list) {
            const auto table = found.find(lowered(layout.name));
            if (table == found.end()) {
                if (required) return verdict(BookVerdict::WrongSchema, "table " + layout.name + " missing");
                continue;
            }
            if (auto wrong = compareTable(layout, table->second)) return wrong;
        }
    }
    return std::nullopt;
}

// SQLite's own check of every page, table and index (without comparing the
// indexes' content with the tables', which integrity_check adds at several
// times the cost).
std::optional<BookCheck> quickCheck(sqlite3* db)
{
    std::string first;
    if (auto failure = eachRow(db, "PRAGMA quick_check", [&](sqlite3_stmt* s) {
            if (first.empty()) first = textOf(s, 0);
        }))
        return failure;
    if (first == "ok") return std::nullopt;
    return verdict(BookVerdict::Damaged, first);
}

// Every value the start reads must be one the program can read.
BookCheck checkValues(sqlite3* db)
{
    std::string error;
    const auto bad = findBadValue(db, &error);
    if (!error.empty()) return verdict(BookVerdict::Unreadable, error);
    if (!bad) return verdict(BookVerdict::Ready);
    return verdict(BookVerdict::BadValue, bad->table + " Id " + std::to_string(bad->id) + " " + bad->column + " '" +
                                              bad->value + "'");
}

// Takes and drops the write lock: a reserved lock writes nothing, and fails
// while another connection holds it.
std::optional<BookCheck> tryWriteLock(sqlite3* db)
{
    const int rc = sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK) return fromSqlite(rc, db);
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    return std::nullopt;
}

// What the start checks of a book, and of a copy that may take its place;
// the pages of a book may be checked on their own (checkBookPages).
enum class Use { Book, BookLayout, Copy };

BookCheck checkDatabase(const std::string& path, uint64_t fileSize, Use use)
{
    // A file without SQLite's signature is never handed to SQLite, which
    // would treat a journal beside it as its own and reset it.
    if (!readHeader(path)) return verdict(BookVerdict::Damaged, "not a SQLite database");
    // Neither is a book beside a journal that is not its own: the first
    // read would play it back.
    const JournalCheck journal = checkHotJournal(path);
    if (journal.fit == JournalFit::Foreign) return verdict(BookVerdict::ForeignJournal, journal.reason);
    Connection c;
    const int flags = use == Use::Copy ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    int rc = sqlite3_open_v2(path.c_str(), &c.db, flags, nullptr);
    if (rc != SQLITE_OK) return fromSqlite(rc, c.db);
    sqlite3_busy_timeout(c.db, kBusyWaitMs);
    // SQLite's own reads come before the page count: they recover a hot
    // journal left by a crash, and tell damage and a lock apart.
    std::map<std::string, FoundTable> found;
    if (auto failure = readTables(c.db, found)) return *failure;
    if (auto damage = checkPageCount(path, fileSize)) return *damage;
    if (auto wrong = compareTables(found)) return *wrong;
    if (use != Use::BookLayout)
        if (auto damage = quickCheck(c.db)) return *damage;
    if (use == Use::Copy) return checkValues(c.db);
    if (auto locked = tryWriteLock(c.db)) return *locked;
    return verdict(BookVerdict::Ready);
}

BookCheck checkFile(const std::string& path, Use use)
{
    const std::string folder = folderOf(path);
    const bool folderWritable = ::access(folder.c_str(), F_OK) != 0 || accessible(folder, W_OK | X_OK);
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        if (errno != ENOENT) return verdict(BookVerdict::Unreadable, std::strerror(errno));
        return folderWritable ? verdict(BookVerdict::Missing) : verdict(BookVerdict::FolderReadOnly);
    }
    if (!S_ISREG(st.st_mode)) return verdict(BookVerdict::Unreadable, "not a regular file");
    if (use != Use::Copy && !folderWritable) return verdict(BookVerdict::FolderReadOnly);
    if (st.st_size == 0) return verdict(BookVerdict::Missing);
    if (!accessible(path, R_OK)) return verdict(BookVerdict::Unreadable, std::strerror(EACCES));
    if (use != Use::Copy && !accessible(path, W_OK)) return verdict(BookVerdict::FileReadOnly);
    return checkDatabase(path, static_cast<uint64_t>(st.st_size), use);
}

}  // namespace

BookCheck checkBook(const std::string& path)
{
    return checkFile(path, Use::Book);
}

BookCheck checkBookLayout(const std::string& path)
{
    return checkFile(path, Use::BookLayout);
}

BookCheck checkBookPages(const std::string& path)
{
    Connection c;
    int rc = sqlite3_open_v2(path.c_str(), &c.db, SQLITE_OPEN_READONLY, nullptr);
    if (rc != SQLITE_OK) return fromSqlite(rc, c.db);
    sqlite3_busy_timeout(c.db, kBusyWaitMs);
    if (auto damage = quickCheck(c.db)) return *damage;
    return verdict(BookVerdict::Ready);
}

BookCheck checkBookCopy(const std::string& path)
{
    return checkFile(path, Use::Copy);
}
