#pragma once

#include <string>

// What a book file is fit for, found out before the store opens it. The check
// never writes to the book: it looks at a journal beside it, reads the header
// and the table layout, runs SQLite's quick_check over every page, and tries,
// without writing, to take the write lock.
enum class BookVerdict {
    Ready,             // a book of this program that can be read and written
    Missing,           // no file, or an empty one: provision a new book
    FolderReadOnly,    // the folder cannot take the journal SQLite writes beside the book
    FileReadOnly,      // the file itself cannot be written
    Unreadable,        // the file cannot be read (permissions, an I/O error)
    Locked,            // another program holds the book's write lock
    Damaged,           // not a SQLite database, cut short, or failing SQLite's quick_check
    WrongSchema,       // a database, but its tables are not the ones this program reads
    ForeignJournal,    // beside it a crash's journal of another file, which would damage it
    BadValue,          // a copy holding a value the program cannot read (BookValues.h)
};

struct BookCheck {
    BookVerdict verdict = BookVerdict::Ready;
    std::string detail;  // what was found, for the message (a table name, SQLite's text)
};

// Checks the book at path. The known tables (BookTables.h) must be tables
// with the declared columns, types and row id; the rest of the schema is
// left alone. quick_check reads every page: about a quarter of a second for
// a million entries. A hot journal left by a crash of this book is rolled
// back by SQLite as part of the first read, as at any open.
BookCheck checkBook(const std::string& path);

// checkBook in two parts, so that the slow one can run beside the store's
// first reads: everything but quick_check (the book's journal, header,
// layout and lock: a few page reads), and quick_check alone on a read-only
// connection of its own, which may run on a worker thread.
BookCheck checkBookLayout(const std::string& path);
BookCheck checkBookPages(const std::string& path);

// The same checks of a copy of a book (a backup), which is opened read-only
// and never written, not even to play back a journal. Instead of the write
// lock, every value the start reads is checked (for the book itself the
// store checks them as it reads them).
BookCheck checkBookCopy(const std::string& path);
