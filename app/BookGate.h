#pragma once

#include <QString>
#include <string>

// Decides at start whether the book at bookPath may be opened, before the
// store touches it. A missing or empty book is provisioned; a ready one
// gains its missing indexes. A read-only, unreadable, locked or foreign book
// gets one Japanese message naming the file and saying what to do, and is
// left exactly as it was. For a damaged book the user may start a new one:
// the damaged file (and any journal beside it) is then kept, renamed to
// BOOK.damaged-YYYYMMDD-HHMMSS. True when the window may open.
bool prepareBookForStart(const std::string& bookPath);

// Said by a later start when the running program on the same book does not
// answer.
void sayBookAlreadyOpen(const std::string& bookPath);

// Where a damaged book is kept at the given time (yyyyMMdd-HHmmss).
std::string damagedBookPath(const std::string& bookPath, const QString& stamp);
