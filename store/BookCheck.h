#pragma once

#include <string>

// What a book file is fit for, found out before the store opens it. The check
// never writes to the book: it reads the header and the table layout and
// tries, without writing, to take the write lock.
enum class BookVerdict {
    Ready,             // a book of this program that can be read and written
    Missing,           // no file, or an empty one: provision a new book
    FolderReadOnly,    // the folder cannot take the journal SQLite writes beside the book
    FileReadOnly,      // the file itself cannot be written
    Unreadable,        // the file cannot be read (permissions, an I/O error)
    Locked,            // another program holds the book's write lock
    Damaged,           // not a SQLite database, or cut short
    WrongSchema,       // a database, but its tables are not the ones this program reads
};

struct BookCheck {
    BookVerdict verdict = BookVerdict::Ready;
    std::string detail;  // what was found, for the message (a table name, SQLite's text)
};

// Checks the book at path. Costs a few page reads whatever the book's size:
// it compares the header's page count with the file size instead of running
// an integrity check. A hot journal left by a crash is rolled back by SQLite
// as part of the first read, as at any open.
BookCheck checkBook(const std::string& path);
