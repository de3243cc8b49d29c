#include "sync/Snapshot.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <system_error>

#include "store/Backup.h"

namespace fs = std::filesystem;

namespace {

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

int64_t total(const AppliedVector& applied)
{
    return std::accumulate(applied.begin(), applied.end(), int64_t{0},
                           [](int64_t sum, const auto& entry) { return sum + entry.second; });
}

}  // namespace

bool writeSnapshot(const std::string& bookPath, const SyncFolder& folder, const Uuid& install, std::string* error,
                   const std::atomic<bool>* cancel)
{
    const fs::path target = folder.snapshotPath(install);
    // A name no reader of the folder takes for a snapshot until it is complete.
    const fs::path temp = target.parent_path() / ("." + target.filename().string() + ".tmp");
    std::error_code ec;
    fs::create_directories(target.parent_path(), ec);
    fs::remove(temp, ec);
    if (copyBook(bookPath, temp.string(), error, cancel) != BackupResult::Made) {
        fs::remove(temp, ec);
        fs::remove(temp.string() + "-journal", ec);
        return false;
    }
    fs::rename(temp, target, ec);
    if (!ec) return true;
    fs::remove(temp, ec);
    if (error) *error = target.string() + ": " + ec.message();
    return false;
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
        std::optional<SyncIdentity> writer;
        SnapshotInfo info{entry.path().string(), *install, {}};
        if (!readSyncIdentity(snapshot.db, &writer) || !writer || writer->book != book ||
            !readApplied(snapshot.db, &info.applied))
            continue;
        found.push_back(std::move(info));
    }
    std::stable_sort(found.begin(), found.end(), [](const SnapshotInfo& a, const SnapshotInfo& b) {
        return total(a.applied) > total(b.applied);
    });
    return found;
}
