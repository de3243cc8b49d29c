#pragma once

#include <vector>

#include "store/BookTables.h"

struct sqlite3;

// The tables the statement import keeps in the book beside Sisan, Items and
// Himoku, which they never change the meaning of. Each has a declared
// INTEGER PRIMARY KEY, so that the undo history can record it.
//
//   ImportRecord    one row per imported file: its name, SHA-256, layout,
//                   the account it names, the time, the asset and the counts.
//   ImportOrigin    one row per imported entry, keyed by the Items Id of the
//                   entry in the imported asset: its import, its asset, the
//                   duplicate keys it came with and its text as written.
//   ImportCategory  learned categories: the sub-item last chosen for a
//                   matching key (Layout ''), or a layout's default for rows
//                   never seen (MatchKey ''), per kind.
//   ImportProfile   the layouts the user mapped by hand: a name and the
//                   mapping as JSON.
//   ImportAccount   the asset a layout's files go to, per account or card
//                   number ('' for files that name none).
//
// Creates the tables that are missing; nothing else changes. False on a
// failure, SQLite's message then on the connection.
bool createImportTables(sqlite3* db);

// The five tables as the book check compares them (BookTables.h).
const std::vector<TableLayout>& importBookTables();
