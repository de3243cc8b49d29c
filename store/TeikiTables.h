#pragma once

#include <vector>

#include "store/BookTables.h"

struct sqlite3;

// The tables of the recurring entries, kept in the book beside Sisan, Items
// and Himoku, whose meaning they never change. Each has a declared INTEGER
// PRIMARY KEY, so that the undo history can record it.
//
//   Teiki        one row per rule (Teiki.h): what it books and its schedule,
//                and Kakunin, the day up to which the program has looked.
//   TeikiKiroku  one row per occurrence dealt with, unique per rule and
//                scheduled day: posted (with the entry Ids), skipped, or
//                posted with another amount.
//
// Creates the tables that are missing; nothing else changes. False on a
// failure, SQLite's message then on the connection.
bool createTeikiTables(sqlite3* db);

// The two tables as the book check compares them (BookTables.h).
const std::vector<TableLayout>& teikiBookTables();
