#include "store/BookTables.h"

#include "store/TeikiTables.h"

const std::vector<TableLayout>& requiredBookTables()
{
    static const std::vector<TableLayout> tables{
        {"Sisan",
         {{"Id", "INTEGER", true}, {"Namae", "TEXT"}, {"SyokiKingaku", "INTEGER"}, {"Zankin", "INTEGER"}}},
        {"Items",
         {{"Id", "INTEGER", true},
          {"Hizuke", "TEXT"},
          {"Nen", "INTEGER"},
          {"Tuki", "INTEGER"},
          {"Hi", "INTEGER"},
          {"SisanNo", "INTEGER"},
          {"SyubetuNo", "INTEGER"},
          {"HimokuNo", "INTEGER"},
          {"IdouSisanNo", "INTEGER"},
          {"IdouId", "INTEGER"},
          {"Nyuukin", "INTEGER"},
          {"Syukkin", "INTEGER"},
          {"Bikou", "TEXT"}}},
        {"Himoku",
         {{"Id", "INTEGER", true},
          {"SyubetuNo", "INTEGER"},
          {"Namae", "TEXT"},
          {"Hno", "INTEGER"},
          {"Ucount", "INTEGER"}}},
    };
    return tables;
}

const std::vector<TableLayout>& optionalBookTables()
{
    static const std::vector<TableLayout> tables = teikiBookTables();
    return tables;
}
