#include "sync/BookTables.h"

const std::vector<BookTable>& bookTables()
{
    static const std::vector<BookTable> tables = {
        {"Sisan", {"Id", "Namae", "SyokiKingaku", "Zankin"}, kSisanZankin},
        {"Items",
         {"Id", "Hizuke", "Nen", "Tuki", "Hi", "SisanNo", "SyubetuNo", "HimokuNo", "IdouSisanNo", "IdouId", "Nyuukin",
          "Syukkin", "Bikou"},
         -1},
        {"Himoku", {"Id", "SyubetuNo", "Namae", "Hno", "Ucount"}, kHimokuUcount},
    };
    return tables;
}

const BookTable* bookTable(const std::string& name)
{
    for (const BookTable& table : bookTables())
        if (name == table.name) return &table;
    return nullptr;
}

bool isDerivedColumn(const std::string& table, int column)
{
    const BookTable* t = bookTable(table);
    return t && t->derivedColumn == column;
}
