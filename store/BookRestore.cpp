#include "store/BookRestore.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "store/Backup.h"
#include "store/BookCheck.h"
#include "store/Provisioning.h"

namespace fs = std::filesystem;

namespace {

// The files SQLite may keep beside a database.
const char* const kJournals[] = {"-journal", "-wal", "-shm"};

std::string restoringPath(const std::string& book)
{
    return book + ".restoring";
}

std::string startingPath(const std::string& book)
{
    return book + ".starting";
}

bool fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

void removeWithJournals(const std::string& path)
{
    std::error_code ec;
    fs::remove(path, ec);
    for (const char* suffix : kJournals) fs::remove(path + suffix, ec);
}

// The book under the name kept, then its journals: a crash in between
// leaves the book beside its journal, as before. The book keeps its own
// name too (a hard link) until the replacement is renamed over it.
bool keepAside(const std::string& book, const std::string& kept, std::string* error)
{
    std::error_code ec;
    if (fs::exists(book, ec) && ::link(book.c_str(), kept.c_str()) != 0) {
        fs::rename(book, kept, ec);
        if (ec) return fail(error, book + ": " + ec.message());
    }
    for (const char* suffix : kJournals) {
        if (!fs::exists(book + suffix, ec)) continue;
        fs::rename(book + suffix, kept + suffix, ec);
        if (ec) return fail(error, book + suffix + ": " + ec.message());
    }
    return true;
}

// Keeps the book aside and renames the complete replacement into its place.
bool replaceWith(const std::string& replacement, const std::string& book, const std::string& kept,
                 std::string* error)
{
    if (!keepAside(book, kept, error)) {
        removeWithJournals(replacement);
        return false;
    }
    std::error_code ec;
    fs::rename(replacement, book, ec);
    if (ec) return fail(error, book + ": " + ec.message());
    return true;
}

}  // namespace

std::string newestSoundBackup(const std::string& dir)
{
    for (const std::string& backup : listBackups(dir))
        if (checkBookCopy(backup).verdict == BookVerdict::Ready) return backup;
    return {};
}

bool restoreBackup(const std::string& backup, const std::string& book, const std::string& kept, std::string* error)
{
    const std::string copy = restoringPath(book);
    removeWithJournals(copy);
    if (copyBook(backup, copy, error) != BackupResult::Made) {
        removeWithJournals(copy);
        return false;
    }
    return replaceWith(copy, book, kept, error);
}

bool startNewBook(const std::string& book, const std::string& kept, std::string* error)
{
    const std::string fresh = startingPath(book);
    removeWithJournals(fresh);
    if (!createStarterBook(fresh, error)) return false;
    return replaceWith(fresh, book, kept, error);
}

void removeReplacementLeftovers(const std::string& book)
{
    removeWithJournals(restoringPath(book));
    removeWithJournals(startingPath(book));
}
