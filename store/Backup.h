#pragma once

#include <atomic>
#include <string>
#include <vector>

enum class BackupResult { Made, AlreadyMade, Cancelled, Failed };

// The backup of `day` ("YYYYMMDD"): dir/Zenvora-YYYYMMDD.sql.
std::string backupPath(const std::string& dir, const std::string& day);

// Copies the database at `from` into a new private file (0600) at `to` with
// SQLite's online backup API, reading `from` in steps under short read
// locks. `to` must not be in use; on failure it may be left half-written.
BackupResult copyBook(const std::string& from, const std::string& to, std::string* error,
                      const std::atomic<bool>* cancel = nullptr);

// The backups in dir (files named Zenvora-YYYYMMDD.sql), newest first by the
// time they were made (their modification time), not by the day in their
// name: a clock that was once ahead leaves names in the future.
std::vector<std::string> listBackups(const std::string& dir);

// Copies the book into backupPath(dir, day) with SQLite's online backup API,
// unless that file exists already (one backup a day). The copy is private to
// the owner (0600) and appears under its name only when complete; what a
// crash left of an earlier copy (a .partial file and its journal) is removed
// first. Then only the newest `keep` backups stay in dir (listBackups), and
// never the day's own one goes; other files there are never touched. The
// book is read in steps, each under a short read lock, so the program's own
// writes go on meanwhile. Safe to run on a worker thread: it opens its own
// connections. `cancel`, when set, is polled between steps; a cancelled copy
// leaves nothing behind. On failure *error says why.
BackupResult backupBookOnce(const std::string& book, const std::string& dir, const std::string& day, int keep,
                            std::string* error, const std::atomic<bool>* cancel = nullptr);
