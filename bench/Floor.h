#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct sqlite3;

// The floor of the benchmark: the bare SQLite C API running the statements
// the store runs and reading the same columns, with nothing kept in memory.
class Floor {
public:
    explicit Floor(const std::string& path);
    ~Floor();

    void startupRecompute();  // open + assets + categories + every balance summed
    void quickCheck();        // open + PRAGMA quick_check
    void readLedger(int64_t sisanId);                   // one asset's entries
    void readYears();
    void annualYear(int nen);                           // both grouped statements
    void monthlySums();                                 // the grouped read of the asset history
    void insertEntry(int64_t sisanId, int64_t himokuId);  // insert + re-read
    void insertTransfer(int64_t from, int64_t to);      // pair + link + both re-reads
    void deleteSubItem(int64_t id, int64_t hno, int64_t ucount, int64_t shownSisanId);
    // The session extension applying a changeset in one transaction.
    void applyChangeset(const std::string& changeset);
    // The sums per kind, sub-item and range of consecutive date ranges (the
    // first days of each, then the last day of the last) over the listed
    // assets' entries: household months and budgets.
    void rangeSums(const std::string& sisanIds, const std::vector<std::string>& firstDays, const std::string& lastDay,
                   bool withIncome);
    // A card's settled closing months from `fromMonth` (yyyymm) on, then what
    // each of the periods (first and last day) comes to.
    void cardPeriods(int64_t sisanId, int64_t fromMonth, const std::vector<std::pair<std::string, std::string>>& periods);
    // A search: the statement with its text parameters, every column read.
    void readFound(const std::string& sql, const std::vector<std::string>& texts);

    int64_t checksum() const { return sink_; }

private:
    sqlite3* db_ = nullptr;
    std::string path_;
    int64_t sink_ = 0;  // keeps the column reads from being optimised away

    // Steps through every row reading each column, as text where its bit is set.
    void readAll(const std::string& sql, uint32_t textColumns);
    void write(const std::string& sql);
    void insertItem(const char* sql, int64_t sisan, int64_t kind, int64_t partner, int64_t idouId);
};
