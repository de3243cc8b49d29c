// Benchmark of the ledger store against the bare SQLite floor.
//
//   zenvora_bench [--entries N] [--runs R] [--keep DIR]
//
// Generates a deterministic ledger in a temporary directory, then times each
// operation through DataModel and through the floor (Floor.h), alternating
// the two, and prints the medians and their ratio.
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "bench/ChartsBench.h"
#include "bench/Compare.h"
#include "bench/Floor.h"
#include "bench/Generator.h"
#include "bench/HouseholdBench.h"
#include "bench/ImportBench.h"
#include "bench/MainWindowBench.h"
#include "bench/ReportBench.h"
#include "bench/SearchBench.h"
#include "bench/SyncBench.h"
#include "find/TextFolding.h"
#include "store/BookCheck.h"
#include "store/Changeset.h"
#include "store/DataModel.h"
#include "store/History.h"
#include "store/MessageSink.h"

namespace {

struct Options {
    LedgerShape shape;
    int runs = 7;
    std::string keepDir;
};

// A field of /proc/self/status in kB.
long statusKb(const char* field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(field, 0) == 0) return std::atol(line.c_str() + std::strlen(field));
    return 0;
}

void resetPeakRss()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

Options parse(int argc, char** argv)
{
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--entries" && hasValue) {
            o.shape.entries = std::atoll(argv[++i]);
        } else if (arg == "--runs" && hasValue) {
            o.runs = std::max(1, std::atoi(argv[++i]));
        } else if (arg == "--keep" && hasValue) {
            o.keepDir = argv[++i];
        } else {
            std::fprintf(stderr, "usage: %s [--entries N] [--runs R] [--keep DIR]\n", argv[0]);
            std::exit(2);
        }
    }
    return o;
}

// Sub-items that hold entries, for one deletion per run.
std::vector<std::shared_ptr<Himoku>> expenseSubItems(const DataModel& dm)
{
    std::vector<std::shared_ptr<Himoku>> out;
    for (const auto& h : dm.himokuList)
        if (h->SyubetuNo == 1 && h->Ucount == 0) out.push_back(h);
    return out;
}

// The first column of the first row, on a connection of its own.
int64_t query(const std::string& path, const std::string& sql)
{
    sqlite3* db = nullptr;
    sqlite3_stmt* s = nullptr;
    int64_t value = 0;
    if (sqlite3_open(path.c_str(), &db) == SQLITE_OK && sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr) == SQLITE_OK &&
        sqlite3_step(s) == SQLITE_ROW)
        value = sqlite3_column_int64(s, 0);
    sqlite3_finalize(s);
    sqlite3_close(db);
    return value;
}

int64_t lastHistoryId(const std::string& path)
{
    return query(path, "SELECT ifnull(MAX(Id), 0) FROM History");
}

// Changeset bytes per changed row over the history rows after `after`.
double historyBytesPerChange(const std::string& path, int64_t after)
{
    const std::string range = " FROM History WHERE Id > " + std::to_string(after);
    const int64_t changes = query(path, "SELECT SUM(Changes)" + range);
    return changes ? static_cast<double>(query(path, "SELECT SUM(length(Changeset))" + range)) / changes : 0;
}

// The newest step's changeset, inverted.
std::string newestStepInverted(const std::string& path)
{
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    HistoryEntry entry;
    std::string changeset, inverted;
    readHistoryEntry(db, lastHistoryId(path), &entry, &changeset);
    sqlite3_close(db);
    invertChangeset(changeset, &inverted);
    return inverted;
}

// A new expense category of five sub-items with `entries` expenses spread
// over every asset and year; returns its rows' Ids, the category's first.
std::vector<int64_t> addLargeCategory(DataModel& dm, const std::string& path, const LedgerShape& shape,
                                      int64_t entries)
{
    const std::string name = "大きな費目";
    dm.insertHimokuOfHiimoku(1, name);
    int64_t category = 0;
    for (const auto& h : dm.himokuList)
        if (h->Namae == name) category = h->Id;
    for (const char* sub : {"一", "二", "三", "四"}) {
        const auto& row = dm.himokuList[static_cast<size_t>(dm.himokuId2Idx.at(category))];
        dm.insertUtiwakeOfHimoku(1, name + "/" + sub, category, row->Ucount);
    }
    std::vector<int64_t> rows, subItems;
    for (const auto& h : dm.himokuList) {
        if (h->Hno != category) continue;
        rows.push_back(h->Id);
        if (h->Ucount == 0) subItems.push_back(h->Id);
    }
    std::string error;
    if (!addEntriesUnder(path, shape, subItems, entries, &error)) {
        std::fprintf(stderr, "cannot add the category's entries: %s\n", error.c_str());
        std::exit(1);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

}  // namespace

int main(int argc, char** argv)
{
    const Options options = parse(argc, argv);
    std::string dir = options.keepDir;
    if (dir.empty()) {
        char pattern[] = "/tmp/zenvora-bench-XXXXXX";
        if (!mkdtemp(pattern)) return 1;
        dir = pattern;
    }
    std::filesystem::create_directories(dir);
    const std::string path = dir + "/Zenvora.sql";
    std::filesystem::remove(path);
    installTextFold();
    setMessageSink([](const std::string& m, const std::string& i) {
        std::fprintf(stderr, "store message: %s (%s)\n", m.c_str(), i.c_str());
    });

    GeneratedLedger ledger;
    std::string error;
    bool generated = false;
    const double generateMs = millisOf([&] { generated = generateLedger(path, options.shape, &ledger, &error); });
    if (!generated) {
        std::fprintf(stderr, "cannot generate the ledger: %s\n", error.c_str());
        return 1;
    }
    std::printf("generated %lld entries (%lld in the largest asset) in %.0f ms at %s\n",
                static_cast<long long>(options.shape.entries), static_cast<long long>(ledger.entriesOfLargest),
                generateMs, path.c_str());

    benchIndexBuild(path);
    auto dm = std::make_unique<DataModel>(path);
    Floor floor(path);
    const int64_t largest = ledger.largestSisanId;

    // Memory first, while the heap has not yet held a large ledger.
    {
        const long before = statusKb("VmRSS:");
        resetPeakRss();
        dm->readFromItemsTable(largest);
        const long peak = statusKb("VmHWM:");
        const double perEntry = 1024.0 * static_cast<double>(peak - before) / static_cast<double>(dm->itemList.size());
        std::printf("bench memory item_bytes_per_entry=%.1f\n", perEntry);
        dm->itemList.clear();
    }

    const int runs = options.runs;
    compare("startup_recompute_1m", runs, [&](int) { DataModel opened(path); }, [&](int) { floor.startupRecompute(); });
    compare("book_check_1m", runs, [&](int) { checkBook(path); }, [&](int) { floor.quickCheck(); });
    compare("read_ledger_largest", runs, [&](int) { dm->readFromItemsTable(largest); },
            [&](int) { floor.readLedger(largest); });
    compare("read_years", runs, [&](int) { dm->readYearsFromItemsTable(); }, [&](int) { floor.readYears(); });
    const int middleYear = options.shape.lastYear - options.shape.years / 2;
    compare("annual_year", runs, [&](int) { dm->annualInOutFromItemsTable(std::to_string(middleYear)); },
            [&](int) { floor.annualYear(middleYear); });
    benchHousehold(*dm, floor, middleYear, dir, runs);
    compare("networth_history", runs,
            [&](int) { dm->sisanHistoryFromItemsTable(options.shape.lastYear, 12); },
            [&](int) { floor.monthlySums(); });

    dm->theSisanNo = dm->sisanId2Idx.at(largest);
    const int64_t himoku = expenseSubItems(*dm).front()->Id;
    benchSearch(*dm, floor, runs);

    // Every store write below is a recorded step: its changeset goes into
    // the history table in the same transaction. The floor's writes fire the
    // search index's triggers too; their queue is applied before each of the
    // store's turns, so that the store's step folds only its own changes.
    const auto catchUp = [&](int turn) {
        if (turn % 2 == 0) dm->refreshSearchIndex();
    };
    const int64_t beforeInserts = lastHistoryId(path);
    compare("insert_entry_largest", runs,
            [&](int) { dm->itemNyuukinSyukkinInsert("2025-06-15", 2025, 6, 15, largest, 1, himoku, 1200, "bench"); },
            [&](int) { floor.insertEntry(largest, himoku); }, catchUp);
    const double insertBytes = historyBytesPerChange(path, beforeInserts);
    const int64_t beforeTransfers = lastHistoryId(path);
    compare("insert_transfer", runs,
            [&](int) { dm->itemIdouSisanInsert("2025-06-15", 2025, 6, 15, largest, 3, ledger.secondSisanId, 1200, "bench"); },
            [&](int) { floor.insertTransfer(largest, ledger.secondSisanId); }, catchUp);
    const double transferBytes = historyBytesPerChange(path, beforeTransfers);
    const int64_t beforeDeletes = lastHistoryId(path);

    // Each run deletes another sub-item; store and floor take turns along
    // the list so that both see sub-items of the same size.
    const auto victims = expenseSubItems(*dm);
    const int deleteRuns = std::min<int>(runs, static_cast<int>(victims.size()) / 2);
    compare("delete_subitem", deleteRuns,
            [&](int r) {
                const auto& v = victims[2 * r];
                const auto& category = dm->himokuList[dm->himokuId2Idx.at(v->Hno)];
                dm->deleteUtiwakeHimoku(v->Id, v->Hno, category->Ucount);
            },
            [&](int r) {
                const auto& v = victims[2 * r + 1];
                const auto& category = dm->himokuList[dm->himokuId2Idx.at(v->Hno)];
                floor.deleteSubItem(v->Id, v->Hno, category->Ucount, largest);
            },
            [&](int turn) {
                if (turn % 2 != 0) return;
                dm->readFromHimokuTable();  // the floor's deletion is news to the store
                dm->refreshSearchIndex();
            });
    std::printf("bench history bytes_per_entry_change insert=%.1f transfer=%.1f delete_subitem=%.1f\n", insertBytes,
                transferBytes, historyBytesPerChange(path, beforeDeletes));

    // Undo of deleting a category with its 10,000 entries, as pressed in the
    // main window after the category editor closed (which recomputes the
    // balances), the largest asset shown. Timed: DataModel::undo, from reading
    // the step out of the history to the patched ledger; the floor applies
    // the same inverted changeset with the bare session API.
    const std::vector<int64_t> category = addLargeCategory(*dm, path, options.shape, 10000);
    std::string inverted;
    compare("undo_delete_category", runs, [&](int) { dm->undo(); },
            [&](int) { floor.applyChangeset(inverted); },
            [&](int turn) {
                dm->readFromHimokuTable();
                dm->deleteHimokuHimoku(category.front(), category);
                dm->recomputeAllSisanZankin();
                if (turn % 2 == 1) inverted = newestStepInverted(path);
            });
    std::fprintf(stderr, "floor checksum %lld\n", static_cast<long long>(floor.checksum()));

    benchReports(*dm, dir, runs);
    benchMainWindow(*dm, largest, ledger.secondSisanId, runs, argc, argv);
    benchCharts(*dm, middleYear, runs, argc, argv);
    benchImport(*dm, path, dir, largest, runs);
    benchSync(path, dir, ledger, options.shape.entries, runs);

    dm.reset();
    if (options.keepDir.empty()) std::filesystem::remove_all(dir);
    return 0;
}
