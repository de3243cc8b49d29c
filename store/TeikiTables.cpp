#include "store/TeikiTables.h"

#include "store/Transaction.h"

namespace {

const char* const kTeikiTables[] = {
    "CREATE TABLE IF NOT EXISTS Teiki (Id INTEGER PRIMARY KEY, SisanNo INTEGER NOT NULL, "
    "SyubetuNo INTEGER NOT NULL, HimokuNo INTEGER NOT NULL, IdouSisanNo INTEGER NOT NULL, "
    "Kingaku INTEGER NOT NULL, Bikou TEXT NOT NULL, Tani INTEGER NOT NULL, Kankaku INTEGER NOT NULL, "
    "Hi INTEGER NOT NULL, Tuki INTEGER NOT NULL, Youbi INTEGER NOT NULL, Kaisi TEXT NOT NULL, "
    "Syuuryou TEXT NOT NULL, Kaisuu INTEGER NOT NULL, Kyuujitu INTEGER NOT NULL, Kakunin TEXT NOT NULL)",
    // The unique key is what makes an occurrence impossible to post twice.
    "CREATE TABLE IF NOT EXISTS TeikiKiroku (Id INTEGER PRIMARY KEY, TeikiNo INTEGER NOT NULL, "
    "Yotei TEXT NOT NULL, Hizuke TEXT NOT NULL, Jyoutai INTEGER NOT NULL, ItemId INTEGER NOT NULL, "
    "IdouId INTEGER NOT NULL, Kingaku INTEGER NOT NULL, UNIQUE (TeikiNo, Yotei))",
};

}  // namespace

bool createTeikiTables(sqlite3* db)
{
    for (const char* sql : kTeikiTables)
        if (!runControlStatement(db, sql)) return false;
    return true;
}

const std::vector<TableLayout>& teikiBookTables()
{
    static const std::vector<TableLayout> tables{
        {"Teiki",
         {{"Id", "INTEGER", true},
          {"SisanNo", "INTEGER"},
          {"SyubetuNo", "INTEGER"},
          {"HimokuNo", "INTEGER"},
          {"IdouSisanNo", "INTEGER"},
          {"Kingaku", "INTEGER"},
          {"Bikou", "TEXT"},
          {"Tani", "INTEGER"},
          {"Kankaku", "INTEGER"},
          {"Hi", "INTEGER"},
          {"Tuki", "INTEGER"},
          {"Youbi", "INTEGER"},
          {"Kaisi", "TEXT"},
          {"Syuuryou", "TEXT"},
          {"Kaisuu", "INTEGER"},
          {"Kyuujitu", "INTEGER"},
          {"Kakunin", "TEXT"}}},
        {"TeikiKiroku",
         {{"Id", "INTEGER", true},
          {"TeikiNo", "INTEGER"},
          {"Yotei", "TEXT"},
          {"Hizuke", "TEXT"},
          {"Jyoutai", "INTEGER"},
          {"ItemId", "INTEGER"},
          {"IdouId", "INTEGER"},
          {"Kingaku", "INTEGER"}}},
    };
    return tables;
}
