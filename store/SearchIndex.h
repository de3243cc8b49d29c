#pragma once

#include <cstdint>
#include <functional>
#include <string>

struct sqlite3;

// The search index of the entries' notes, kept in the book beside the three
// tables and derived from them alone:
//   ItemsFtsNote   every distinct folded note (TextFold.h) with the number of
//                  entries that carry it and the Id of the newest of them;
//   ItemsFts       an FTS5 trigram index over those notes (rowid = note Id);
//   ItemsFtsEntry  which note each entry carries (entries with a note only);
//   ItemsFtsQueue  Ids of entries inserted or re-noted since the index was
//                  last brought up to date;
//   ItemsFtsInfo   the layout and the folding the index was built with.
// Plain-SQL triggers on Items keep it in step in the same transaction as the
// change, so that a change by any program, an older Zenvora included, is
// caught: a deleted entry leaves the index at once; an inserted or re-noted
// one is queued, since folding its note needs the application's Unicode
// tables, and this program applies the queue (applySearchQueue). The
// triggers never call a function of ours.
//
// All these tables, their FTS5 shadow tables and the triggers have names that
// begin with "ItemsFts".

// Declares the index's tables derived (History.h): a recorded step never
// holds a change of them, and an undo never writes them; the queue brings
// the index after the entries instead.
void declareSearchIndexDerived();

// Called while an index is built with the entries done and the entries in
// all; returning false cancels the build.
using IndexProgress = std::function<bool(int64_t done, int64_t total)>;

enum class IndexBuild { Present, Built, Cancelled, Failed };

// Makes sure the book on db has a complete search index made with the
// installed folding: when any part is missing or the folding differs, the
// index is dropped and built again from the entries, in one transaction that
// a failure or a cancel rolls back. Otherwise nothing is written. On Failed,
// *error says why.
IndexBuild ensureSearchIndex(sqlite3* db, const IndexProgress& progress, std::string* error);

// The same on the book at path, through a connection of its own.
IndexBuild ensureSearchIndexAt(const std::string& path, const IndexProgress& progress, std::string* error);

// Drops the notes no entry carries any more (the triggers leave them when
// entries are deleted; they are never offered). False (with *error) on a
// failure, which changes nothing.
bool dropUnusedNotes(sqlite3* db, std::string* error);

// Folds the notes of the queued entries into the index and empties the queue.
// Runs inside the caller's transaction when one is open, else in its own.
// Writes nothing when the queue is empty. False (with *error) on a failure;
// the queue then stays for the next try.
bool applySearchQueue(sqlite3* db, std::string* error);
