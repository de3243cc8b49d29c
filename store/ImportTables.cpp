#include "store/ImportTables.h"

#include "store/Transaction.h"

namespace {

const char* const kImportTables[] = {
    "CREATE TABLE IF NOT EXISTS ImportRecord (Id INTEGER PRIMARY KEY, FileName TEXT NOT NULL, FileHash TEXT NOT NULL, "
    "Layout TEXT NOT NULL, LayoutName TEXT NOT NULL, Account TEXT NOT NULL, ImportedAt TEXT NOT NULL, "
    "SisanNo INTEGER NOT NULL, RowsRead INTEGER NOT NULL, RowsImported INTEGER NOT NULL, "
    "RowsAlready INTEGER NOT NULL, RowsRefused INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS ImportOrigin (ItemId INTEGER PRIMARY KEY, ImportId INTEGER NOT NULL, "
    "SisanNo INTEGER NOT NULL, IdKey TEXT NOT NULL, ContentKey TEXT NOT NULL, Text TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS ImportCategory (Id INTEGER PRIMARY KEY, Layout TEXT NOT NULL, MatchKey TEXT NOT NULL, "
    "SyubetuNo INTEGER NOT NULL, HimokuNo INTEGER NOT NULL, UNIQUE (Layout, MatchKey, SyubetuNo))",
    "CREATE TABLE IF NOT EXISTS ImportProfile (Id INTEGER PRIMARY KEY, Namae TEXT NOT NULL UNIQUE, "
    "Mapping TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS ImportAccount (Id INTEGER PRIMARY KEY, Layout TEXT NOT NULL, Account TEXT NOT NULL, "
    "SisanNo INTEGER NOT NULL, UNIQUE (Layout, Account))",
};

}  // namespace

bool createImportTables(sqlite3* db)
{
    for (const char* sql : kImportTables)
        if (!runControlStatement(db, sql)) return false;
    return true;
}

const std::vector<TableLayout>& importBookTables()
{
    static const std::vector<TableLayout> tables{
        {"ImportRecord",
         {{"Id", "INTEGER", true},
          {"FileName", "TEXT"},
          {"FileHash", "TEXT"},
          {"Layout", "TEXT"},
          {"LayoutName", "TEXT"},
          {"Account", "TEXT"},
          {"ImportedAt", "TEXT"},
          {"SisanNo", "INTEGER"},
          {"RowsRead", "INTEGER"},
          {"RowsImported", "INTEGER"},
          {"RowsAlready", "INTEGER"},
          {"RowsRefused", "INTEGER"}}},
        {"ImportOrigin",
         {{"ItemId", "INTEGER", true},
          {"ImportId", "INTEGER"},
          {"SisanNo", "INTEGER"},
          {"IdKey", "TEXT"},
          {"ContentKey", "TEXT"},
          {"Text", "TEXT"}}},
        {"ImportCategory",
         {{"Id", "INTEGER", true}, {"Layout", "TEXT"}, {"MatchKey", "TEXT"}, {"SyubetuNo", "INTEGER"}, {"HimokuNo", "INTEGER"}}},
        {"ImportProfile", {{"Id", "INTEGER", true}, {"Namae", "TEXT"}, {"Mapping", "TEXT"}}},
        {"ImportAccount", {{"Id", "INTEGER", true}, {"Layout", "TEXT"}, {"Account", "TEXT"}, {"SisanNo", "INTEGER"}}},
    };
    return tables;
}
