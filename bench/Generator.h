#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Shape of the generated ledger.
struct LedgerShape {
    int64_t entries = 1000000;  // rows of Items, transfer rows included
    int years = 30;             // ending with lastYear
    int lastYear = 2025;
};

// What the generator made, for choosing the benchmark's targets.
struct GeneratedLedger {
    int64_t largestSisanId = 0;  // about 38% of the rows
    int64_t secondSisanId = 0;
    int64_t entriesOfLargest = 0;
};

// Writes a deterministic ledger into a new database at path (a file named
// Zenvora.sql, indexed as the application indexes it): 10 assets, 16
// categories of 5 sub-items each, entries mostly in date order with about 1
// in 20 back-dated, about 5% of the rows in transfer pairs.
bool generateLedger(const std::string& path, const LedgerShape& shape, GeneratedLedger* out, std::string* error);

// Adds `count` expenses under the given sub-items to the book at path, spread
// over the assets and the years as the generated ledger is. For one large
// category to delete and take back.
bool addEntriesUnder(const std::string& path, const LedgerShape& shape, const std::vector<int64_t>& subItems,
                     int64_t count, std::string* error);

// What the card book holds: a bank asset and a card asset drawing on it.
struct GeneratedCardBook {
    int64_t bankSisanId = 0;
    int64_t cardSisanId = 0;
    std::string today;  // the day the card's outlook is taken on ("yyyy-MM-dd")
};

// Writes a book at path with a card of `entries` purchases and refunds over
// 30 years ending with lastYear (closing on the 15th, withdrawn on the 10th
// of the next month from the bank), every period settled by a transfer
// except the last two closed ones.
bool generateCardBook(const std::string& path, int64_t entries, int lastYear, GeneratedCardBook* out,
                      std::string* error);
