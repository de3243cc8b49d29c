#pragma once

#include <string>

// Where the book lies with regard to synced folders. A file-sync tool that
// copies an open SQLite file can tear it, so the book must stay out of the
// sync folder, and is better kept out of every folder a sync tool watches.

// True when path lies inside folder (or is it), whatever links lead there.
bool isInsideFolder(const std::string& path, const std::string& folder);

// The nearest folder around path that a file-sync tool keeps (it holds the
// tool's marker: .stfolder of Syncthing, .sync_*.db or .nextcloudsync.log of
// Nextcloud and ownCloud, .dropbox of Dropbox, .tresorit, ...), or "" when
// none is found.
std::string syncedFolderAround(const std::string& path);
