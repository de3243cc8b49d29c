#include "store/BackupRestore.h"

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <system_error>

#include "store/BookCheck.h"
#include "store/Provisioning.h"
#include "store/Statement.h"

namespace fs = std::filesystem;

namespace {

constexpr int kPagesPerStep = 1024;
constexpr int kBusyRetryMs = 20;
constexpr int kBusyRetries = 500;  // about ten seconds of another program's writes
constexpr int kRowsBetweenPolls = 4096;

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

bool fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

// A backup opened so that nothing can change it: read-only, and immutable
// (no locks, no journal played back into it).
bool openUnchanged(const std::string& path, Connection& c, std::string* error)
{
    char* uri = sqlite3_mprintf("file:%s?mode=ro&immutable=1", path.c_str());
    const int rc = sqlite3_open_v2(uri, &c.db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    sqlite3_free(uri);
    if (rc == SQLITE_OK) return true;
    return fail(error, path + ": " + (c.db ? sqlite3_errmsg(c.db) : sqlite3_errstr(rc)));
}

bool openReadOnly(const std::string& path, Connection& c, std::string* error)
{
    if (sqlite3_open_v2(path.c_str(), &c.db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(c.db, kBusyRetries * kBusyRetryMs);
        return true;
    }
    return fail(error, path + ": " + sqlite3_errmsg(c.db));
}

// The SUM of what entries add to their assets' balances, as SQL.
const char* const kSignedKingaku =
    "CASE WHEN SyubetuNo IN (2,4) THEN Nyuukin WHEN SyubetuNo IN (1,3) THEN -Syukkin END";

// Every row of a prepared statement; false (with SQLite's message) when a
// step fails or onRow() asks to stop.
template <typename OnRow>
bool eachRow(sqlite3* db, Statement& s, std::string* error, OnRow onRow)
{
    for (;;) {
        switch (s.step()) {
        case Step::Row:
            if (!onRow()) return false;
            break;
        case Step::Done:
            return true;
        case Step::Error:
            return fail(error, sqlite3_errmsg(db));
        }
    }
}

// Assets in table order: Id, name and opening amount.
struct Asset {
    int64_t id;
    std::string namae;
    int64_t syokiKingaku;
};

bool readAssets(sqlite3* db, std::vector<Asset>& assets, std::string* error)
{
    Statement s;
    if (!s.prepare(db, "SELECT Id, Namae, SyokiKingaku FROM Sisan")) return fail(error, sqlite3_errmsg(db));
    return eachRow(db, s, error, [&] {
        assets.push_back({s.columnInt(0), s.columnText(1), s.columnInt(2)});
        return true;
    });
}

// One side of the comparison: a book's entries in Id order, with each
// asset's balance summed on the way.
struct Side {
    Statement rows;
    bool more = false;
    std::map<int64_t, int64_t> zankin;  // asset Id -> balance

    bool start(sqlite3* db, const std::vector<Asset>& assets, std::string* error)
    {
        for (const Asset& a : assets) zankin[a.id] = a.syokiKingaku;
        if (!rows.prepare(db, "SELECT * FROM Items ORDER BY Id")) return fail(error, sqlite3_errmsg(db));
        return next(db, error);
    }
    bool next(sqlite3* db, std::string* error)
    {
        switch (rows.step()) {
        case Step::Row:
            more = true;
            return true;
        case Step::Done:
            more = false;
            return true;
        case Step::Error:
            more = false;
            return fail(error, sqlite3_errmsg(db));
        }
        return false;
    }
    int64_t id() const { return rows.columnInt64(0); }
    void count()
    {
        const auto found = zankin.find(rows.columnInt(5));
        if (found == zankin.end()) return;  // an entry of an asset that is gone
        const int64_t kind = rows.columnInt(6);
        if (kind == 2 || kind == 4) found->second += rows.columnInt(10);
        if (kind == 1 || kind == 3) found->second -= rows.columnInt(11);
    }
};

// Whether the current rows of both sides hold the same values.
bool sameRow(const Statement& a, const Statement& b)
{
    for (int c = 1; c < 13; ++c) {
        if (a.columnIsNull(c) != b.columnIsNull(c)) return false;
        const bool text = c == 1 || c == 12;
        if (text ? a.columnText(c) != b.columnText(c) : a.columnInt64(c) != b.columnInt64(c)) return false;
    }
    return true;
}

// Copies every page of source into target with the backup API, in one
// write transaction on target; a busy step is retried. A cancel or failure
// before the end rolls target back.
RestoreResult copyPages(sqlite3* source, sqlite3* target, std::string* error,
                        const std::function<void(int, int)>& progress, const std::atomic<bool>* cancel)
{
    sqlite3_backup* backup = sqlite3_backup_init(target, "main", source, "main");
    if (!backup) {
        fail(error, sqlite3_errmsg(target));
        return RestoreResult::Failed;
    }
    int rc = SQLITE_OK;
    int retries = 0;
    while (rc == SQLITE_OK || rc == SQLITE_BUSY || rc == SQLITE_LOCKED) {
        if (cancel && cancel->load()) {
            sqlite3_backup_finish(backup);
            fail(error, "cancelled");
            return RestoreResult::Cancelled;
        }
        if (rc != SQLITE_OK) {
            if (++retries > kBusyRetries) break;
            sqlite3_sleep(kBusyRetryMs);
        }
        rc = sqlite3_backup_step(backup, kPagesPerStep);
        if (progress && (rc == SQLITE_OK || rc == SQLITE_DONE)) {
            const int total = sqlite3_backup_pagecount(backup);
            progress(total - sqlite3_backup_remaining(backup), total);
        }
    }
    const int finished = sqlite3_backup_finish(backup);
    if (rc != SQLITE_DONE) {
        fail(error, sqlite3_errstr(rc));
        return RestoreResult::Failed;
    }
    if (finished != SQLITE_OK) {
        fail(error, sqlite3_errmsg(target));
        return RestoreResult::Failed;
    }
    return RestoreResult::Restored;
}

// A complete private copy of the book at `to`, which appears under its name
// only when complete (an existing file there is replaced then).
bool copyBookTo(const std::string& book, const std::string& to, std::string* error)
{
    const std::string partial = to + ".copying";
    std::error_code ec;
    if (copyBook(book, partial, error) == BackupResult::Made) {
        fs::rename(partial, to, ec);
        if (!ec) return true;
        fail(error, to + ": " + ec.message());
    }
    fs::remove(partial, ec);
    fs::remove(partial + "-journal", ec);
    return false;
}

// The backup passes the checks a copy of a book gets at the start.
bool checkBackup(const std::string& backup, std::string* error)
{
    const BookCheck check = checkBookCopy(backup);
    if (check.verdict == BookVerdict::Ready) return true;
    return fail(error, backup + ": " + (check.detail.empty() ? "not a book of this program" : check.detail));
}

}  // namespace

BackupSummary readBackupSummary(const std::string& path)
{
    BackupSummary summary;
    const std::string file = fs::path(path).filename().string();
    summary.day = file.size() >= 16 ? file.substr(8, 8) : std::string();
    std::error_code ec;
    summary.bytes = static_cast<int64_t>(fs::file_size(path, ec));
    Connection c;
    if (!openUnchanged(path, c, &summary.error)) return summary;
    // One pass over the entries: their number, and what the listed assets'
    // entries add to the opening amounts.
    const std::string sql = std::string("SELECT (SELECT COUNT(*) FROM Items), (SELECT ifnull(SUM(SyokiKingaku), 0) "
                                        "FROM Sisan) + (SELECT ifnull(SUM(") +
                            kSignedKingaku + "), 0) FROM Items WHERE SisanNo IN (SELECT Id FROM Sisan))";
    Statement s;
    if (!s.prepare(c.db, sql)) {
        summary.error = sqlite3_errmsg(c.db);
        return summary;
    }
    eachRow(c.db, s, &summary.error, [&] {
        summary.entries = s.columnInt64(0);
        summary.grandTotal = s.columnInt64(1);
        return true;
    });
    return summary;
}

BackupDifference compareWithBackup(const std::string& book, const std::string& backup, const std::atomic<bool>* cancel)
{
    BackupDifference diff;
    Connection now, then;
    std::vector<Asset> nowAssets, thenAssets;
    Side a, b;  // the book, the backup
    if (!openReadOnly(book, now, &diff.error) || !openUnchanged(backup, then, &diff.error) ||
        !readAssets(now.db, nowAssets, &diff.error) || !readAssets(then.db, thenAssets, &diff.error) ||
        !a.start(now.db, nowAssets, &diff.error) || !b.start(then.db, thenAssets, &diff.error))
        return diff;
    // Both in Id order: an Id on one side only was added or removed; the same
    // Id with other values was changed, which counts as both.
    for (int64_t rows = 0; a.more || b.more; ++rows) {
        if (rows % kRowsBetweenPolls == 0 && cancel && cancel->load()) {
            diff.error = "cancelled";
            return diff;
        }
        const bool onlyNow = a.more && (!b.more || a.id() < b.id());
        const bool onlyThen = b.more && (!a.more || b.id() < a.id());
        const bool changed = !onlyNow && !onlyThen && !sameRow(a.rows, b.rows);
        if (onlyNow || changed) ++diff.added;
        if (onlyThen || changed) ++diff.removed;
        if (!onlyThen) a.count();
        if (!onlyNow) b.count();
        if ((!onlyThen && !a.next(now.db, &diff.error)) || (!onlyNow && !b.next(then.db, &diff.error))) return diff;
    }
    for (const Asset& asset : nowAssets) {
        BackupDifference::Balance balance{asset.namae, std::nullopt, a.zankin[asset.id]};
        if (b.zankin.count(asset.id)) balance.then = b.zankin[asset.id];
        diff.balances.push_back(balance);
    }
    for (const Asset& asset : thenAssets)
        if (!a.zankin.count(asset.id)) diff.balances.push_back({asset.namae, b.zankin[asset.id], std::nullopt});
    return diff;
}

std::string keptBookPath(const std::string& book, const std::string& stamp)
{
    return book + ".before-restore-" + stamp;
}

RestoreResult restoreBackupInPlace(const std::string& backup, const std::string& book, const std::string& kept,
                                   std::string* error, const std::function<void(int, int)>& progress,
                                   const std::atomic<bool>* cancel)
{
    if (!checkBackup(backup, error) || !copyBookTo(book, kept, error)) return RestoreResult::Failed;
    Connection source, target;
    RestoreResult result = RestoreResult::Failed;
    if (openReadOnly(backup, source, error)) {
        if (sqlite3_open_v2(book.c_str(), &target.db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK)
            result = copyPages(source.db, target.db, error, progress, cancel);
        else
            fail(error, book + ": " + sqlite3_errmsg(target.db));
    }
    std::error_code ec;
    if (result != RestoreResult::Restored) {
        fs::remove(kept, ec);  // the book is still the one it kept
        return result;
    }
    // A backup of an earlier version gets what the program adds to a book;
    // if that fails, the book kept aside goes back in its place.
    if (provisionBook(book, error)) return RestoreResult::Restored;
    Connection keptCopy, again;
    std::string ignored;
    if (openReadOnly(kept, keptCopy, &ignored) &&
        sqlite3_open_v2(book.c_str(), &again.db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
        copyPages(keptCopy.db, again.db, &ignored, {}, nullptr) == RestoreResult::Restored)
        fs::remove(kept, ec);
    return RestoreResult::Failed;
}

BackupResult backupBookNow(const std::string& book, const std::string& dir, const std::string& day, int keep,
                           std::string* path, std::string* error)
{
    const std::string target = backupPath(dir, day);
    *path = target;
    std::error_code ec;
    if (!fs::exists(target, ec)) return backupBookOnce(book, dir, day, keep, error);
    // The day's backup is replaced only by a complete new copy.
    return copyBookTo(book, target, error) ? BackupResult::Made : BackupResult::Failed;
}
