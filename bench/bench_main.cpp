// Benchmark of the ledger store against the bare SQLite floor.
//
//   zenvora_bench [--entries N] [--runs R] [--keep DIR]
//
// Generates a deterministic ledger in a temporary directory, then times each
// operation through DataModel and through the floor (Floor.h), alternating
// the two, and prints the medians and their ratio.
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
#include "bench/MainWindowBench.h"
#include "bench/ReportBench.h"
#include "store/BookCheck.h"
#include "store/DataModel.h"
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
    compare("insert_entry_largest", runs,
            [&](int) { dm->itemNyuukinSyukkinInsert("2025-06-15", 2025, 6, 15, largest, 1, himoku, 1200, "bench"); },
            [&](int) { floor.insertEntry(largest, himoku); });
    compare("insert_transfer", runs,
            [&](int) { dm->itemIdouSisanInsert("2025-06-15", 2025, 6, 15, largest, 3, ledger.secondSisanId, 1200, "bench"); },
            [&](int) { floor.insertTransfer(largest, ledger.secondSisanId); });

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
                if (turn % 2 == 0) dm->readFromHimokuTable();  // the floor's deletion is news to the store
            });
    std::fprintf(stderr, "floor checksum %lld\n", static_cast<long long>(floor.checksum()));

    benchReports(*dm, dir, runs);
    benchMainWindow(*dm, largest, ledger.secondSisanId, runs, argc, argv);
    benchCharts(*dm, middleYear, runs, argc, argv);

    dm.reset();
    if (options.keepDir.empty()) std::filesystem::remove_all(dir);
    return 0;
}
