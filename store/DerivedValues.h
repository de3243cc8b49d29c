#pragma once

#include <cstdint>
#include <set>

struct sqlite3;
class StatementCache;

// The two stored values that are derived from other rows and brought right
// after a change is applied, never merged or taken from a record.

// A category's Ucount is the number of its sub-items, and never below 1:
// the program tells a category (Ucount above 0) from a sub-item (0) by it.
// Sets it where it differs, for every category or only the listed ones
// (rows that are gone or are sub-items are skipped). True when it ran.
bool recountUcount(sqlite3* db);
bool recountUcount(StatementCache& cache, const std::set<int64_t>& categories);

// Sets each listed asset's stored balance (Zankin) to its opening amount
// plus money in minus money out of its entries; assets that are gone are
// skipped.
bool recomputeStoredZankin(sqlite3* db, const std::set<int64_t>& sisans);
