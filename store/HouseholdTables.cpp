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
