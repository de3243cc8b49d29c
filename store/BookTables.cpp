#include "store/BookTables.h"

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
    static const std::vector<TableLayout> tables{
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
          {"Changeset", "BLOB"}}},
        // The household calendar's tables (HouseholdTables.h).
        {"BookSettings", {{"Id", "INTEGER", true}, {"Name", "TEXT"}, {"Value", "INTEGER"}}},
        {"CardCycles",
         {{"SisanNo", "INTEGER", true},
          {"ClosingDay", "INTEGER"},
          {"WithdrawalDay", "INTEGER"},
          {"MonthsAfterClosing", "INTEGER"},
          {"WithdrawalShift", "INTEGER"},
          {"PayingSisanNo", "INTEGER"},
          {"FirstClosingMonth", "INTEGER"}}},
        {"CardSettlements",
         {{"Id", "INTEGER", true},
          {"SisanNo", "INTEGER"},
          {"ClosingMonth", "INTEGER"},
          {"ItemId", "INTEGER"},
          {"Kingaku", "INTEGER"}}},
        {"Yosan",
         {{"Id", "INTEGER", true}, {"HimokuNo", "INTEGER"}, {"Tuki", "INTEGER"}, {"Kingaku", "INTEGER"}}},
    };
    return tables;
}
