#pragma once

#include <vector>

#include "store/BookTables.h"

struct sqlite3;

// The tables of the household calendar, beside Sisan, Items and Himoku:
//   BookSettings     settings kept in the book, one row per setting
//                    (the household month: MonthStartDay, MonthStartShift,
//                    MonthNaming);
//   CardCycles       one row per asset used as a credit card: its closing
//                    and withdrawal days, the asset it is paid from, and
//                    the first period whose settlement is followed;
//   CardSettlements  the periods settled, with the transfer that did it
//                    (none when the user noted it settled without one);
//   Yosan            budgets per expense category or sub-item (HimokuNo 0:
//                    the month's total), for every month (Tuki 0) or one.
// An older book gets them, empty, when it is opened; the three tables
// keep their meaning. Every table has a declared INTEGER PRIMARY KEY, so
// that its changes can be recorded.

// Creates the tables that are missing; true when all exist afterwards.
bool createHouseholdTables(sqlite3* db);

// The four tables as the book check compares them (BookTables.h).
const std::vector<TableLayout>& householdBookTables();

// The names of the four tables, for checking that a book has them.
inline constexpr const char* kHouseholdTableNames[] = {"BookSettings", "CardCycles", "CardSettlements", "Yosan"};
