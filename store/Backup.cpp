#include "store/Backup.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <cstring>
#include <filesystem>
#include <regex>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kPagesPerStep = 1024;
constexpr int kBusyRetryMs = 20;
constexpr int kBusyRetries = 500;  // about ten seconds of another program's writes

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

BackupResult fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return BackupResult::Failed;
}

// Creates the file owner-only before SQLite opens it, so that the copy of
// the book is never readable by others, not even while it is written.
bool createPrivateFile(const std::string& path, std::string* error)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        if (error) *error = path + ": " + std::strerror(errno);
        return false;
    }
    ::fchmod(fd, S_IRUSR | S_IWUSR);
    ::close(fd);
    return true;
}

// Copies every page; a busy step (another program writing) is retried.
BackupResult copyPages(sqlite3* source, sqlite3* target, std::string* error, const std::atomic<bool>* cancel)
{
    sqlite3_backup* backup = sqlite3_backup_init(target, "main", source, "main");
    if (!backup) return fail(error, sqlite3_errmsg(target));
    int rc = SQLITE_OK;
    int retries = 0;
    while (rc == SQLITE_OK || rc == SQLITE_BUSY || rc == SQLITE_LOCKED) {
        if (cancel && cancel->load()) {
            sqlite3_backup_finish(backup);
            return BackupResult::Cancelled;
        }
        if (rc != SQLITE_OK) {
            if (++retries > kBusyRetries) break;
            sqlite3_sleep(kBusyRetryMs);
        }
        rc = sqlite3_backup_step(backup, kPagesPerStep);
    }
    const int finished = sqlite3_backup_finish(backup);
    if (rc != SQLITE_DONE) return fail(error, sqlite3_errstr(rc));
    if (finished != SQLITE_OK) return fail(error, sqlite3_errmsg(target));
    return BackupResult::Made;
}

}  // namespace

BackupResult copyBook(const std::string& book, const std::string& partial, std::string* error,
                      const std::atomic<bool>* cancel)
{
    Connection source, target;
    if (sqlite3_open_v2(book.c_str(), &source.db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
        return fail(error, book + ": " + sqlite3_errmsg(source.db));
    if (!createPrivateFile(partial, error)) return BackupResult::Failed;
    if (sqlite3_open_v2(partial.c_str(), &target.db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
        return fail(error, partial + ": " + sqlite3_errmsg(target.db));
    return copyPages(source.db, target.db, error, cancel);
}

namespace {

const std::regex& backupName()
{
    static const std::regex name(R"(Zenvora-\d{8}\.sql)");
    return name;
}

// A copy a crash cut short: its file and the journal SQLite kept beside it.
void removeLeftovers(const std::string& dir)
{
    static const std::regex leftover(R"(Zenvora-\d{8}\.sql\.partial(-journal)?)");
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(dir, ec))
        if (std::regex_match(entry.path().filename().string(), leftover)) fs::remove(entry.path(), ec);
}

// Removes the oldest backups beyond `keep`, never `made`.
void keepNewest(const std::string& dir, int keep, const std::string& made)
{
    const std::vector<std::string> backups = listBackups(dir);
    std::error_code ec;
    for (size_t i = static_cast<size_t>(keep); i < backups.size(); ++i)
        if (backups[i] != made) fs::remove(backups[i], ec);
}

}  // namespace

std::string backupPath(const std::string& dir, const std::string& day)
{
    return dir + "/Zenvora-" + day + ".sql";
}

std::vector<std::string> listBackups(const std::string& dir)
{
    std::vector<std::pair<fs::file_time_type, std::string>> found;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(dir, ec)) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_regular_file(ec) || !std::regex_match(name, backupName())) continue;
        const auto made = entry.last_write_time(ec);
        if (!ec) found.emplace_back(made, entry.path().string());
    }
    std::sort(found.begin(), found.end(), std::greater<>());
    std::vector<std::string> paths;
    for (auto& [made, path] : found) paths.push_back(std::move(path));
    return paths;
}

BackupResult backupBookOnce(const std::string& book, const std::string& dir, const std::string& day, int keep,
                            std::string* error, const std::atomic<bool>* cancel)
{
    const std::string target = backupPath(dir, day);
    std::error_code ec;
    if (fs::exists(target, ec)) {
        keepNewest(dir, keep, target);
        return BackupResult::AlreadyMade;
    }
    if (fs::create_directories(dir, ec)) fs::permissions(dir, fs::perms::owner_all, ec);
    if (ec) return fail(error, dir + ": " + ec.message());
    removeLeftovers(dir);

    const std::string partial = target + ".partial";
    const BackupResult copied = copyBook(book, partial, error, cancel);
    if (copied != BackupResult::Made) {
        fs::remove(partial, ec);
        return copied;
    }
    fs::rename(partial, target, ec);
    if (ec) {
        const std::string why = target + ": " + ec.message();
        fs::remove(partial, ec);
        return fail(error, why);
    }
    keepNewest(dir, keep, target);
    return BackupResult::Made;
}
