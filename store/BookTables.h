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
};

// Sisan, Items and Himoku: every book has them, exactly so. The program
// reads them by column position, and takes Id as the row id.
const std::vector<TableLayout>& requiredBookTables();

// Tables that later features create when a book is opened: checked when
// present, absent from older books. Tables the program does not know are
// left alone.
const std::vector<TableLayout>& optionalBookTables();
