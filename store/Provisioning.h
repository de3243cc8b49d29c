#pragma once

#include <string>

// The application's resource directory: $XDG_DATA_HOME/Zenvora, or
// ~/.local/share/Zenvora when XDG_DATA_HOME is unset or empty.
std::string resourceDirectory();

// Makes the resource directory ready for the store. When dir/Zenvora.sql is
// missing or empty it creates the directory and a new database (schema, indexes,
// owner-only permissions, a starter book) in one step: a half-made file is
// never left behind. An existing database only gains missing indexes and
// the tables of later features it has none of (the history, the import's,
// the household calendar's, the recurring entries'); no row changes. Run it
// only on a book that checkBook (BookCheck.h) found Ready or Missing.
// Returns false with a reason in *error on failure.
bool provisionResourceDirectory(const std::string& dir, std::string* error);

// The same for the book at path, creating its folder when missing.
bool provisionBook(const std::string& path, std::string* error);

// Puts a new starter book at path, replacing any file there only once the
// new one is complete.
bool createStarterBook(const std::string& path, std::string* error);

// Creates a database at path with the three tables, the indexes and the
// later features' tables (the history, the import's, the household
// calendar's, the recurring entries'), and no rows (the benchmark and the
// tests start from it).
bool createEmptyDatabase(const std::string& path, std::string* error);
