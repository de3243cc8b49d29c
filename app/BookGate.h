#pragma once

#include <QString>
#include <string>

#include "app/SingleInstance.h"

class BookLock;
struct BookCheck;
struct BadValue;
struct BookPath;

// Decides at start whether the store may open the book at bookPath
// (resolved, and locked by `lock` unless it is missing), from everything but
// the pages' check (checkBookLayout). A missing or empty book is
// provisioned. A read-only, unreadable, locked or foreign book, or one beside
// a journal that is not its own, gets one Japanese message naming the file
// and saying what to do, and is left exactly as it was. For a damaged book
// the user may restore the newest sound daily backup or start a new book;
// the damaged file (and any journal beside it) is then kept, renamed to
// BOOK.damaged-YYYYMMDD-HHMMSS. True when the store may open the book; false
// also when another program took the book meanwhile (the lock then says so).
bool prepareBookForStart(const std::string& bookPath, BookLock& lock);

// The verdict of the pages' check (checkBookPages), which runs beside the
// store's first reads. A sound book gains its missing indexes; a damaged one
// gets the same offer as above; any other failure its message.
enum class PagesVerdict {
    Sound,     // the book may be used
    Replaced,  // a backup or a new book took its place: check that one
    Refused,   // the program ends
};
PagesVerdict acceptBookPages(const BookCheck& pages, const std::string& bookPath, BookLock& lock);

// Where a damaged book is kept at the given time (yyyyMMdd-HHmmss).
std::string damagedBookPath(const std::string& bookPath, const QString& stamp);

// The backups of the book at bookPath: the folder "backups" beside it.
std::string backupFolderOf(const std::string& bookPath);

// What a later start says when the book is held by another program, after
// asking it to show its window; nothing when it did. The exit code.
int sayBookAlreadyOpen(const std::string& bookPath, const SingleInstance::Reply& reply);

// A book given as a symbolic link to a file that does not exist.
void sayDanglingLink(const BookPath& path);

// A book holding a value the program cannot read (DataModel::badValue).
void sayUnreadableValue(const std::string& bookPath, const BadValue& bad);

// The start could not store corrected balances: another program reads the book.
void sayBookIsBeingRead(const std::string& bookPath);
