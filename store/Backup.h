#pragma once

#include <atomic>
#include <string>

enum class BackupResult { Made, AlreadyMade, Cancelled, Failed };

// The backup of `day` ("YYYYMMDD"): dir/Zenvora-YYYYMMDD.sql.
std::string backupPath(const std::string& dir, const std::string& day);

// Copies the book into backupPath(dir, day) with SQLite's online backup API,
// unless that file exists already (one backup a day). The copy is private to
// the owner (0600) and appears under its name only when complete. Then only
// the newest `keep` files named Zenvora-YYYYMMDD.sql stay in dir; other files
// there are never touched. The book is read in steps, each under a short read
// lock, so the program's own writes go on meanwhile. Safe to run on a worker
// thread: it opens its own connections. `cancel`, when set, is polled between
// steps; a cancelled copy leaves nothing behind. On failure *error says why.
BackupResult backupBookOnce(const std::string& book, const std::string& dir, const std::string& day, int keep,
                            std::string* error, const std::atomic<bool>* cancel = nullptr);
