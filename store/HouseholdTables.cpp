#include "store/HouseholdTables.h"

#include "store/Transaction.h"

namespace {

const char* const kCreate[] = {
    "CREATE TABLE IF NOT EXISTS BookSettings (Id INTEGER PRIMARY KEY, Name TEXT NOT NULL UNIQUE, "
    "Value INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS CardCycles (SisanNo INTEGER PRIMARY KEY, ClosingDay INTEGER NOT NULL, "
    "WithdrawalDay INTEGER NOT NULL, MonthsAfterClosing INTEGER NOT NULL, WithdrawalShift INTEGER NOT NULL, "
    "PayingSisanNo INTEGER, FirstClosingMonth INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS CardSettlements (Id INTEGER PRIMARY KEY, SisanNo INTEGER NOT NULL, "
    "ClosingMonth INTEGER NOT NULL, ItemId INTEGER, Kingaku INTEGER NOT NULL, UNIQUE (SisanNo, ClosingMonth))",
    "CREATE TABLE IF NOT EXISTS Yosan (Id INTEGER PRIMARY KEY, HimokuNo INTEGER NOT NULL, Tuki INTEGER NOT NULL, "
    "Kingaku INTEGER NOT NULL, UNIQUE (HimokuNo, Tuki))",
};

}  // namespace

bool createHouseholdTables(sqlite3* db)
{
    for (const char* sql : kCreate)
        if (!runControlStatement(db, sql)) return false;
    return true;
}

const std::vector<TableLayout>& householdBookTables()
{
    static const std::vector<TableLayout> tables{
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
        {"Yosan", {{"Id", "INTEGER", true}, {"HimokuNo", "INTEGER"}, {"Tuki", "INTEGER"}, {"Kingaku", "INTEGER"}}},
    };
    return tables;
}
