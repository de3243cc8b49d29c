#include "store/BookCheck.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <vector>

namespace {

// The columns the store reads, in the order it reads them.
struct TableLayout {
    const char* table;
    std::vector<std::string> columns;
};

const TableLayout kLayouts[] = {
    {"Sisan", {"Id", "Namae", "SyokiKingaku", "Zankin"}},
    {"Items",
     {"Id", "Hizuke", "Nen", "Tuki", "Hi", "SisanNo", "SyubetuNo", "HimokuNo", "IdouSisanNo", "IdouId", "Nyuukin",
      "Syukkin", "Bikou"}},
    {"Himoku", {"Id", "SyubetuNo", "Namae", "Hno", "Ucount"}},
};

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

// The column names of a table, in order; none when it does not exist.
std::optional<BookCheck> readColumns(sqlite3* db, const char* table, std::vector<std::string>& names)
{
    sqlite3_stmt* s = nullptr;
    const std::string sql = std::string("PRAGMA table_info(") + table + ")";
    int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr);
    while (rc == SQLITE_OK || rc == SQLITE_ROW) {
        rc = sqlite3_step(s);
        if (rc == SQLITE_ROW) names.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(s, 1)));
    }
    std::optional<BookCheck> failure;
    if (rc != SQLITE_DONE) failure = fromSqlite(rc, db);
    sqlite3_finalize(s);
    return failure;
}

bool sameName(const std::string& a, const std::string& b)
{
    return sqlite3_stricmp(a.c_str(), b.c_str()) == 0;
}

std::optional<BookCheck> compareLayout(const TableLayout& layout, const std::vector<std::string>& found)
{
    if (found.empty()) return verdict(BookVerdict::WrongSchema, std::string("table ") + layout.table + " missing");
    bool same = found.size() == layout.columns.size();
    for (size_t i = 0; same && i < found.size(); ++i) same = sameName(found[i], layout.columns[i]);
    if (same) return std::nullopt;
    std::string columns;
    for (const auto& name : found) columns += (columns.empty() ? "" : ",") + name;
    return verdict(BookVerdict::WrongSchema, std::string(layout.table) + "(" + columns + ")");
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

BookCheck checkDatabase(const std::string& path, uint64_t fileSize)
{
    // A file without SQLite's signature is never handed to SQLite, which
    // would treat a journal beside it as its own and reset it.
    if (!readHeader(path)) return verdict(BookVerdict::Damaged, "not a SQLite database");
    Connection c;
    int rc = sqlite3_open_v2(path.c_str(), &c.db, SQLITE_OPEN_READWRITE, nullptr);
    if (rc != SQLITE_OK) return fromSqlite(rc, c.db);
    sqlite3_busy_timeout(c.db, kBusyWaitMs);
    // SQLite's own reads come before the page count: they recover a hot
    // journal left by a crash, and tell damage and a lock apart.
    std::vector<std::vector<std::string>> found(std::size(kLayouts));
    for (size_t t = 0; t < std::size(kLayouts); ++t)
        if (auto failure = readColumns(c.db, kLayouts[t].table, found[t])) return *failure;
    if (auto damage = checkPageCount(path, fileSize)) return *damage;
    for (size_t t = 0; t < std::size(kLayouts); ++t)
        if (auto wrong = compareLayout(kLayouts[t], found[t])) return *wrong;
    if (auto locked = tryWriteLock(c.db)) return *locked;
    return verdict(BookVerdict::Ready);
}

}  // namespace

BookCheck checkBook(const std::string& path)
{
    const std::string folder = folderOf(path);
    const bool folderWritable = ::access(folder.c_str(), F_OK) != 0 || accessible(folder, W_OK | X_OK);
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        if (errno != ENOENT) return verdict(BookVerdict::Unreadable, std::strerror(errno));
        return folderWritable ? verdict(BookVerdict::Missing) : verdict(BookVerdict::FolderReadOnly);
    }
    if (!S_ISREG(st.st_mode)) return verdict(BookVerdict::Unreadable, "not a regular file");
    if (!folderWritable) return verdict(BookVerdict::FolderReadOnly);
    if (st.st_size == 0) return verdict(BookVerdict::Missing);
    if (!accessible(path, R_OK)) return verdict(BookVerdict::Unreadable, std::strerror(EACCES));
    if (!accessible(path, W_OK)) return verdict(BookVerdict::FileReadOnly);
    return checkDatabase(path, static_cast<uint64_t>(st.st_size));
}
