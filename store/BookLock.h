#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

// Where a book path leads: symbolic links followed to the file itself, so
// that every spelling of the same book names one file.
struct BookPath {
    std::string path;           // absolute, links resolved; the file, or where a missing one will be
    std::string danglingLink;   // set when the given path is a link to nothing ...
    std::string missingTarget;  // ... and this is the target it names
};
BookPath resolveBookPath(const std::string& given);

// A file by its identity: the same book through any link, hard or symbolic.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const FileIdentity&) const = default;
};
std::optional<FileIdentity> identityOf(const std::string& path);

// One program per book. The lock is an advisory flock() on the book file
// itself: every path to the file meets the same lock, deleting a lock file
// cannot defeat it, and the kernel drops it when the process ends, a crash
// included. flock() and SQLite's own fcntl() locks do not meet on Linux.
//
// Creating or replacing the book (a new book, a restored backup) happens
// under a short lock on the book's folder, after which the file then at the
// path is locked: two starts never both create a book, and a replaced book
// is never unlocked between its arrival and its lock.
class BookLock {
public:
    enum class State {
        Held,           // this program holds the book
        HeldElsewhere,  // another process holds it
        NoBook,         // no file yet: create it through replaceBook
        Unlockable,     // the file cannot be opened (permissions); the book check will say why
    };

    // Locks the file at bookPath (a resolved path) without waiting.
    explicit BookLock(std::string bookPath);
    ~BookLock();
    BookLock(const BookLock&) = delete;
    BookLock& operator=(const BookLock&) = delete;

    State state() const { return state_; }
    const std::string& bookPath() const { return path_; }
    // The locked file; none unless Held.
    std::optional<FileIdentity> identity() const;

    // Runs makeBook, which creates or replaces the file at the book's path,
    // under the folder lock, then locks whatever file is at the path. False
    // when makeBook failed; the state says whether the new file is held.
    bool replaceBook(const std::function<bool()>& makeBook);

    // The process holding the flock of the file at path, from /proc/locks;
    // 0 when unknown.
    static pid_t holderOf(const std::string& path);

private:
    void lockFileAtPath();
    void release();

    std::string path_;
    int fd_ = -1;
    State state_ = State::NoBook;
};
