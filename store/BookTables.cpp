#include "store/BookTables.h"

#include "store/HouseholdTables.h"
#include "store/ImportTables.h"
#include "store/SyncLog.h"
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
    static const std::vector<TableLayout> tables = [] {
        std::vector<TableLayout> all{
            // The history of undoable steps (History.h).
            {"History",
             {{"Id", "INTEGER", true},
              {"At", "INTEGER"},
              {"Kind", "INTEGER"},
              {"Target", "INTEGER"},
              {"Label", "TEXT"},
              {"Sisans", "TEXT"},
              {"Changes", "INTEGER"},
              {"Deletes", "INTEGER"},
              {"Changeset", "BLOB"}},
             "table",
             false},
            // The search index of the notes (SearchIndex.h); its FTS5 shadow
            // tables belong to SQLite and are left to it.
            {"ItemsFts", {{"Folded", ""}}, "virtual"},
            {"ItemsFtsNote", {{"Id", "INTEGER", true}, {"Folded", "TEXT"}, {"Uses", "INTEGER"}, {"LastId", "INTEGER"}}},
            {"ItemsFtsEntry", {{"Id", "INTEGER", true}, {"NoteId", "INTEGER"}}},
            {"ItemsFtsQueue", {{"Id", "INTEGER", true}}},
            {"ItemsFtsInfo", {{"Id", "INTEGER", true}, {"Key", "TEXT"}, {"Value", "TEXT"}}},
        };
        // The statement import's (ImportTables.h).
        const std::vector<TableLayout>& imports = importBookTables();
        all.insert(all.end(), imports.begin(), imports.end());
        // The household calendar's (HouseholdTables.h).
        const std::vector<TableLayout>& household = householdBookTables();
        all.insert(all.end(), household.begin(), household.end());
        // The recurring entries' (TeikiTables.h).
        for (const TableLayout& t : teikiBookTables()) all.push_back(t);
        // The sync record's (SyncLog.h).
        for (const TableLayout& t : syncBookTables()) all.push_back(t);
        return all;
    }();
    return tables;
}

const TableLayout* bookTable(const std::string& name)
{
    for (const TableLayout& table : requiredBookTables())
        if (table.name == name) return &table;
    return nullptr;
}

bool isDerivedColumn(const std::string& table, int column)
{
    return (column == kSisanZankin && table == "Sisan") || (column == kHimokuUcount && table == "Himoku");
}
