#pragma once

#include <string>

// Whether the rollback journal beside a book may be played back into it.
// SQLite plays a journal left by a crash back into whatever file now has
// the book's name; one left beside a book that was since replaced (a backup
// copied into its place) would overwrite the copy with pages of the old
// book. Nothing is read through SQLite: the check runs before any open.
enum class JournalFit {
    None,     // no journal with content, nothing to play back
    Belongs,  // a journal of this very file, left by a crash: SQLite rolls it back
    Foreign,  // a journal of another file; playing it back would damage the book
};

struct JournalCheck {
    JournalFit fit = JournalFit::None;
    std::string journal;  // the journal's path
    std::string reason;   // why it is foreign, for the message
};

// A journal is foreign when it was last written before the book file was
// created, when its page size is not the book's, or when the first page it
// keeps (the book's header before the interrupted change) carries a change
// counter the book cannot have reached from it.
JournalCheck checkHotJournal(const std::string& bookPath);
