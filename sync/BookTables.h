#pragma once

#include <string>
#include <vector>

// What sync knows of the three tables it ships: their columns in order (the
// first is the Id), and which column holds a derived value that is
// recomputed after a sync instead of being merged: an asset's stored
// balance and a category's sub-item count.
struct BookTable {
    const char* name;
    std::vector<const char*> columns;
    int derivedColumn;  // -1: none
};

enum SisanColumn { kSisanId, kSisanNamae, kSisanSyokiKingaku, kSisanZankin };
enum ItemsColumn {
    kItemsId, kItemsHizuke, kItemsNen, kItemsTuki, kItemsHi, kItemsSisanNo, kItemsSyubetuNo,
    kItemsHimokuNo, kItemsIdouSisanNo, kItemsIdouId, kItemsNyuukin, kItemsSyukkin, kItemsBikou,
};
enum HimokuColumn { kHimokuId, kHimokuSyubetuNo, kHimokuNamae, kHimokuHno, kHimokuUcount };

// Sisan, Items and Himoku, in the order a changeset is recorded.
const std::vector<BookTable>& bookTables();
// The table named name, or nullptr for any other.
const BookTable* bookTable(const std::string& name);
bool isDerivedColumn(const std::string& table, int column);
