#include "sync/FolderPlacement.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// A path made absolute and free of links and "..", as far as it exists.
fs::path settled(const std::string& path)
{
    std::error_code ec;
    fs::path p = fs::weakly_canonical(fs::absolute(path, ec), ec);
    return ec ? fs::path(path).lexically_normal() : p;
}

bool holdsSyncMarker(const fs::path& dir)
{
    std::error_code ec;
    for (const char* marker : {".stfolder", ".nextcloudsync.log", ".owncloudsync.log", ".dropbox", ".dropbox.cache",
                               ".tresorit", ".sync"})
        if (fs::exists(dir / marker, ec)) return true;
    for (const auto& entry : fs::directory_iterator(dir, ec)) {
        const std::string name = entry.path().filename().string();
        // Nextcloud's and ownCloud's journal: .sync_<hex>.db or ._sync_<hex>.db.
        if ((name.rfind(".sync_", 0) == 0 || name.rfind("._sync_", 0) == 0) && entry.path().extension() == ".db")
            return true;
    }
    return false;
}

}  // namespace

bool isInsideFolder(const std::string& path, const std::string& folder)
{
    const fs::path p = settled(path), f = settled(folder);
    auto pi = p.begin();
    for (auto fi = f.begin(); fi != f.end(); ++fi, ++pi) {
        if (fi->empty()) continue;  // a trailing separator
        if (pi == p.end() || *pi != *fi) return false;
    }
    return true;
}

std::string syncedFolderAround(const std::string& path)
{
    for (fs::path dir = settled(path).parent_path(); !dir.empty(); dir = dir.parent_path()) {
        if (holdsSyncMarker(dir)) return dir.string();
        if (dir == dir.root_path()) break;
    }
    return {};
}
