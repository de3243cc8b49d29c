#include "sync/Snapshot.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <system_error>

namespace fs = std::filesystem;

namespace {

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

bool fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

// Copies every page of source into a new file at temp, then renames it to target.
bool copyBook(sqlite3* source, const std::string& temp, const std::string& target, std::string* error)
{
    std::error_code ec;
    fs::remove(temp, ec);
    {
        Connection copy;
        if (sqlite3_open_v2(temp.c_str(), &copy.db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK)
            return fail(error, temp + ": " + sqlite3_errmsg(copy.db));
        ::chmod(temp.c_str(), S_IRUSR | S_IWUSR);
        sqlite3_backup* backup = sqlite3_backup_init(copy.db, "main", source, "main");
        if (!backup) return fail(error, temp + ": " + sqlite3_errmsg(copy.db));
        const int rc = sqlite3_backup_step(backup, -1);
        const int finished = sqlite3_backup_finish(backup);
        if (rc != SQLITE_DONE || finished != SQLITE_OK) {
            const std::string why = temp + ": " + sqlite3_errstr(rc != SQLITE_DONE ? rc : finished);
            fs::remove(temp, ec);
            return fail(error, why);
        }
    }
    fs::rename(temp, target, ec);
    if (ec) {
        fs::remove(temp, ec);
        return fail(error, target + ": " + ec.message());
    }
    return true;
}

std::string temporaryBeside(const std::string& path)
{
    const fs::path p(path);
    return (p.parent_path() / ("." + p.filename().string() + ".tmp")).string();
}

int64_t total(const AppliedVector& applied)
{
    return std::accumulate(applied.begin(), applied.end(), int64_t{0},
                           [](int64_t sum, const auto& entry) { return sum + entry.second; });
}

}  // namespace

bool writeSnapshot(sqlite3* db, const SyncFolder& folder, const Uuid& install, std::string* error)
{
    const std::string target = folder.snapshotPath(install);
    std::error_code ec;
    fs::create_directories(fs::path(target).parent_path(), ec);
    return copyBook(db, temporaryBeside(target), target, error);
}

std::vector<SnapshotInfo> listSnapshots(const SyncFolder& folder, const Uuid& book)
{
    std::vector<SnapshotInfo> found;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(fs::path(folder.root()) / "snapshots", ec)) {
        const std::string name = entry.path().filename().string();
        const std::string suffix = ".sqlite";
        if (name.size() != 36 + suffix.size() || name.compare(36, suffix.size(), suffix) != 0) continue;
        const std::optional<Uuid> install = Uuid::parse(name.substr(0, 36));
        if (!install) continue;
        Connection snapshot;
        if (sqlite3_open_v2(entry.path().c_str(), &snapshot.db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) continue;
        std::optional<Uuid> itsBook;
        SnapshotInfo info{entry.path().string(), *install, {}};
        if (!readBookId(snapshot.db, &itsBook) || itsBook != book || !readApplied(snapshot.db, &info.applied)) continue;
        found.push_back(std::move(info));
    }
    std::stable_sort(found.begin(), found.end(), [](const SnapshotInfo& a, const SnapshotInfo& b) {
        return total(a.applied) > total(b.applied);
    });
    return found;
}

bool restoreSnapshot(const std::string& snapshot, const std::string& target, std::string* error)
{
    Connection source;
    if (sqlite3_open_v2(snapshot.c_str(), &source.db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
        return fail(error, snapshot + ": " + sqlite3_errmsg(source.db));
    return copyBook(source.db, temporaryBeside(target), target, error);
}
