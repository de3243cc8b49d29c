#pragma once

#include <string>

// Putting another file in the book's place: a restored backup, or a new
// book instead of a damaged one. No connection may be open on the book
// meanwhile (the store not yet opened, or closed first); run them under
// BookLock::replaceBook, which then locks the file that arrived.

// The newest backup in dir (Backup.h's listBackups) that passes the start's
// checks (checkBookCopy), or "" when none does.
std::string newestSoundBackup(const std::string& dir);

// Puts a copy of backup in the book's place, made with SQLite's backup API
// into a new private file beside the book. Only once it is complete is the
// current book, with the journals SQLite keeps beside it, kept aside under
// the name kept (kept-journal ...), and the copy renamed into place: a
// journal left behind would be played back into the copy. A failure before
// that leaves the book as it was; the book's name never goes missing where
// the file system has hard links.
bool restoreBackup(const std::string& backup, const std::string& book, const std::string& kept, std::string* error);

// The same with a new starter book (Provisioning.h) in the book's place.
bool startNewBook(const std::string& book, const std::string& kept, std::string* error);

// Removes what a crash in the middle of one of the two left beside the book.
void removeReplacementLeftovers(const std::string& book);
