#pragma once

#include <string>
#include <vector>

// The tables a book may hold, as the book check compares them with the
// book's own schema. The one place that lists them: a feature that adds a
// table of its own adds its layout to optionalBookTables().
struct ColumnLayout {
    std::string name;
    std::string type;  // declared type; compared by the affinity SQLite derives from it
    bool primaryKey = false;  // an INTEGER PRIMARY KEY: the row id
};

struct TableLayout {
    std::string name;
    std::vector<ColumnLayout> columns;  // in order
    std::string kind = "table";         // as PRAGMA table_list says: "table" or "virtual"
    // False for the book's own bookkeeping (the history, the sync record):
    // its changes are never recorded as a step, undone or shipped.
    bool recorded = true;
};

// The columns of the three tables by position, as the store reads them.
enum SisanColumn { kSisanId, kSisanNamae, kSisanSyokiKingaku, kSisanZankin };
enum ItemsColumn {
    kItemsId, kItemsHizuke, kItemsNen, kItemsTuki, kItemsHi, kItemsSisanNo, kItemsSyubetuNo,
    kItemsHimokuNo, kItemsIdouSisanNo, kItemsIdouId, kItemsNyuukin, kItemsSyukkin, kItemsBikou,
};
enum HimokuColumn { kHimokuId, kHimokuSyubetuNo, kHimokuNamae, kHimokuHno, kHimokuUcount };

// Sisan, Items and Himoku: every book has them, exactly so. The program
// reads them by column position, and takes Id as the row id.
const std::vector<TableLayout>& requiredBookTables();

// Sisan, Items or Himoku by name; nullptr for any other table.
const TableLayout* bookTable(const std::string& name);

// Columns whose values are derived from other rows and recomputed, never
// merged or taken from a record: an asset's stored balance (Sisan.Zankin)
// and a category's sub-item count (Himoku.Ucount).
bool isDerivedColumn(const std::string& table, int column);

// Tables that later features create when a book is opened: checked when
// present, absent from older books. Tables the program does not know are
// left alone.
const std::vector<TableLayout>& optionalBookTables();
