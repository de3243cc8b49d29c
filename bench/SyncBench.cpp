#include "bench/SyncBench.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <random>

#include "bench/Compare.h"
#include "bench/Floor.h"
#include "store/Backup.h"
#include "store/Changeset.h"
#include "store/DataModel.h"
#include "store/History.h"
#include "store/Provisioning.h"
#include "store/SyncLog.h"
#include "sync/AtomicWrite.h"
#include "sync/BookSync.h"

namespace fs = std::filesystem;

namespace {

constexpr int kMostArrivals = 10000;
constexpr int kLocal = 100;
constexpr int64_t kStartMs = 1'790'000'000'000;

void check(bool ok, const char* what)
{
    if (ok) return;
    std::fprintf(stderr, "sync benchmark: %s failed\n", what);
    std::exit(1);
}

void copy(const std::string& from, const std::string& to)
{
    std::error_code ec;
    fs::remove(to, ec);
    std::string error;
    check(copyBook(from, to, &error) == BackupResult::Made, "copying the book");
}

int64_t positionOf(const DataModel& dm, int64_t sisanId)
{
    const int64_t* p = dm.sisanId2Idx.find(sisanId);
    return p ? *p : 0;
}

// A PC's operations through the store, as a household makes them: entries
// added, edited and deleted, transfers, assets and categories added and
// renamed. The ledgers shown are the small ones the operations use.
class Household {
public:
    Household(DataModel& dm, unsigned seed) : dm_(dm), random_(seed) {}

    void prepare(const std::string& prefix)
    {
        check(dm_.sisanInsert(prefix + "財布", 20000) && dm_.sisanInsert(prefix + "口座", 100000), "adding assets");
        wallet_ = dm_.sisanList[dm_.sisanList.size() - 2]->Id;
        account_ = dm_.sisanList.back()->Id;
        dm_.theSisanNo = positionOf(dm_, wallet_);
        for (const auto& h : dm_.himokuList)
            if (h->Ucount == 0) subItems_.push_back(h->Id);
    }

    // The entries both PCs may touch.
    std::vector<int64_t>& shared() { return entries_; }

    void addEntry()
    {
        const int64_t himoku = subItems_[pick(subItems_.size())];
        const int64_t kind = dm_.himokuList[static_cast<size_t>(*dm_.himokuId2Idx.find(himoku))]->SyubetuNo;
        check(dm_.itemNyuukinSyukkinInsert("2025-06-15", 2025, 6, 15, wallet_, kind, himoku, 100 + pick(9000), "b"),
              "adding an entry");
        entries_.push_back(dm_.itemList.empty() ? 0 : newestEntry());
    }

    void step(int roll)
    {
        if (roll < 40 || entries_.size() < 20) return addEntry();
        if (roll < 50) {
            check(dm_.itemIdouSisanInsert("2025-06-16", 2025, 6, 16, wallet_, 3, account_, 500 + pick(5000), ""),
                  "adding a transfer");
            dm_.theSisanNo = positionOf(dm_, wallet_);
            dm_.readFromItemsTable(wallet_);
            return;
        }
        const size_t at = pick(entries_.size());
        const std::shared_ptr<Items> e = dm_.readFromItem1Item(entries_[at]);
        if (!e) {
            entries_.erase(entries_.begin() + static_cast<long>(at));
            return addEntry();
        }
        const int64_t kingaku = e->SyubetuNo == 1 ? e->Syukkin : e->Nyuukin;
        if (roll < 62) {
            check(dm_.itemUpdate(e->Id, e->Hizuke, e->Nen, e->Tuki, e->Hi, e->SisanNo, e->SyubetuNo, e->HimokuNo,
                                 1 + pick(20000), e->Bikou),
                  "editing an amount");
        } else if (roll < 72) {
            check(dm_.itemUpdate(e->Id, e->Hizuke, e->Nen, e->Tuki, e->Hi, e->SisanNo, e->SyubetuNo, e->HimokuNo,
                                 kingaku, "メモ" + std::to_string(roll)),
                  "editing a note");
        } else if (roll < 77) {
            check(dm_.itemUpdate(e->Id, "2025-07-0" + std::to_string(1 + pick(9)), 2025, 7, 1, e->SisanNo,
                                 e->SyubetuNo, e->HimokuNo, kingaku, e->Bikou),
                  "editing a date");
        } else if (roll < 87) {
            check(dm_.itemDelete(e->Id), "deleting an entry");
            entries_.erase(entries_.begin() + static_cast<long>(at));
        } else if (roll < 92) {
            const Sisan& s = *dm_.sisanList[static_cast<size_t>(positionOf(dm_, account_))];
            check(dm_.sisanUpdate(account_, s.Namae + "+", s.SyokiKingaku, s.Zankin), "renaming an asset");
        } else if (roll < 95) {
            const auto& category = *dm_.himokuList[static_cast<size_t>(*dm_.himokuId2Idx.find(
                dm_.himokuList[static_cast<size_t>(*dm_.himokuId2Idx.find(subItems_[0]))]->Hno))];
            check(dm_.insertUtiwakeOfHimoku(category.SyubetuNo, category.Namae + "/内訳" + std::to_string(roll),
                                            category.Id, category.Ucount),
                  "adding a sub-item");
        } else {
            addEntry();
        }
    }

private:
    DataModel& dm_;
    std::mt19937 random_;
    int64_t wallet_ = 0, account_ = 0;
    std::vector<int64_t> subItems_, entries_;

    size_t pick(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }
    int64_t newestEntry() const
    {
        int64_t newest = 0;
        for (const auto& item : dm_.itemList) newest = std::max(newest, item->Id);
        return newest;
    }
};

// The floor's work: the same changesets with the bare session API, in one
// transaction: the local operations undone newest first, then every
// operation in the one order, each kept as a row of the history with its
// changeset, as the book keeps every operation it applies (the floor of the
// import does the same).
struct FloorPlan {
    std::vector<std::string> inverses;
    std::vector<std::string> inOrder;
};

int keepGoing(void*, int conflict, sqlite3_changeset_iter*)
{
    return conflict == SQLITE_CHANGESET_DATA || conflict == SQLITE_CHANGESET_CONFLICT ? SQLITE_CHANGESET_REPLACE
                                                                                       : SQLITE_CHANGESET_OMIT;
}

void applyFloor(const std::string& path, const FloorPlan& plan)
{
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_stmt* history = nullptr;
    sqlite3_prepare_v2(db,
                       "INSERT INTO History (At, Kind, Target, Label, Sisans, Changes, Deletes, Changeset) "
                       "VALUES (0, 5, NULL, '', '', 0, 0, ?)",
                       -1, &history, nullptr);
    for (const std::string& cs : plan.inverses)
        sqlite3changeset_apply(db, static_cast<int>(cs.size()), const_cast<char*>(cs.data()), nullptr, keepGoing,
                               nullptr);
    for (const std::string& cs : plan.inOrder) {
        sqlite3changeset_apply(db, static_cast<int>(cs.size()), const_cast<char*>(cs.data()), nullptr, keepGoing,
                               nullptr);
        sqlite3_bind_blob(history, 1, cs.data(), static_cast<int>(cs.size()), SQLITE_STATIC);
        check(sqlite3_step(history) == SQLITE_DONE, "the floor's history row");
        sqlite3_reset(history);
    }
    sqlite3_finalize(history);
    check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK, "the floor's commit");
    sqlite3_close(db);
}

// Every operation of the book at path in the one order, and the local ones' effects.
FloorPlan readPlan(const std::string& path, const std::string& folder, const Uuid& book, const Uuid& local,
                   size_t* bytes)
{
    FloorPlan plan;
    std::map<OpKey, std::string> all;
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    std::vector<LoggedOp> logged;
    check(readLogAfter(db, {}, &logged), "reading the log");
    sqlite3_close(db);
    for (auto it = logged.rbegin(); it != logged.rend(); ++it) {
        if (!(it->install == local)) continue;
        std::string inverse;
        invertChangeset(it->effective, &inverse);
        plan.inverses.push_back(inverse);
        all[it->key] = it->shipped;
    }
    *bytes = 0;
    for (const auto& dirEntry : fs::recursive_directory_iterator(fs::path(folder) / "ops")) {
        if (!dirEntry.is_regular_file() || dirEntry.path().extension() != ".op") continue;
        std::string file;
        readWholeFile(dirEntry.path().string(), &file, nullptr);
        Op op;
        if (decodeOpFile(file, book, &op) != OpFileProblem::None || op.meta.install == local) continue;
        *bytes += op.changeset.size();
        all[op.meta.key()] = op.changeset;
    }
    for (auto& [key, cs] : all) plan.inOrder.push_back(std::move(cs));
    return plan;
}

// insert_entry_largest_synced: insert_entry_largest on a book that syncs,
// each entry written to a sync folder on disk as it is committed (its
// device Id, its place in the order, its operation file), against the same
// floor as insert_entry_largest.
void benchSyncedInsert(const std::string& path, const std::string& dir, const GeneratedLedger& ledger, int runs)
{
    const std::string book = dir + "/sync-insert.sql", folder = dir + "/sync-insert-folder";
    copy(path, book);
    std::string error;
    {
        DataModel dm(book);
        BookSync sync(dm);
        check(sync.load() && sync.setUp(folder, "居間", &error), "setting up sync");
        dm.setCommitListener([&] { sync.publish(); });
        dm.theSisanNo = positionOf(dm, ledger.largestSisanId);
        check(dm.readFromItemsTable(ledger.largestSisanId), "reading the largest ledger");
        int64_t himoku = 0;
        for (const auto& h : dm.himokuList)
            if (h->SyubetuNo == 1 && h->Ucount == 0 && himoku == 0) himoku = h->Id;
        Floor floor(book);
        compare("insert_entry_largest_synced", runs,
                [&](int) {
                    check(dm.itemNyuukinSyukkinInsert("2025-06-15", 2025, 6, 15, ledger.largestSisanId, 1, himoku,
                                                      1200, "bench"),
                          "adding an entry");
                },
                [&](int) { floor.insertEntry(ledger.largestSisanId, himoku); });
    }
    fs::remove(book);
    fs::remove_all(folder);
}

}  // namespace

void benchSync(const std::string& path, const std::string& dir, const GeneratedLedger& ledger, int64_t entries,
               int runs)
{
    benchSyncedInsert(path, dir, ledger, runs);
    // A small ledger (the smoke run) gets as many operations as entries.
    const int kArrivals = static_cast<int>(std::min<int64_t>(kMostArrivals, entries));
    // The other PC's book and the folder live in memory: the benchmark times
    // this PC's round, not how the other PC came by its operations.
    const fs::path shm = (fs::is_directory("/dev/shm") ? fs::path("/dev/shm") : fs::path(dir)) /
                         ("zenvora-bench-sync-" + std::to_string(::getpid()));
    fs::remove_all(shm);
    fs::create_directories(shm);
    const std::string folder = (shm / "folder").string();
    const std::string aPath = dir + "/sync-a.sql", bPath = (shm / "b.sql").string(), s0 = dir + "/sync-s0.sql";
    std::string error;
    copy(path, aPath);

    setHistoryClock([] { return kStartMs; });
    Uuid localInstall, book;
    {
        DataModel a(aPath);
        BookSync syncA(a);
        check(syncA.load() && syncA.setUp(folder, "居間", &error), "setting up sync");
        a.setCommitListener([&] { syncA.publish(); });
        Household shared(a, 1);
        shared.prepare("共有");
        for (int i = 0; i < 200; ++i) shared.addEntry();
        check(BookSync::writeSnapshotOf(aPath, folder, syncA.identity()->install, &error), "the snapshot");
        localInstall = syncA.identity()->install;
        book = syncA.identity()->book;

        // The other PC joins and makes its operations, stamped from the start on.
        check(createStarterBook(bPath, &error), "the other PC's book");
        {
            DataModel b(bPath);
            BookSync syncB(b);
            check(syncB.load() && syncB.join(folder, "書斎", bPath + ".kept", &error), "joining");
            b.setCommitListener([&] { syncB.publish(); });
            Household other(b, 2);
            other.prepare("書斎");
            other.shared() = shared.shared();
            std::mt19937 rolls(3);
            int64_t clock = kStartMs + 1000;
            setHistoryClock([&] { return clock; });
            while (syncB.status().pendingChanges < kArrivals) {
                other.step(std::uniform_int_distribution<int>(0, 99)(rolls));
                clock += 1000;
            }
        }
        // This PC's own operations, stamped in the middle of the other's:
        // the round rewinds and replays them.
        int64_t clock = kStartMs + int64_t{1000} * kArrivals / 2;
        setHistoryClock([&] { return clock; });
        std::mt19937 rolls(4);
        for (int i = 0; i < kLocal; ++i) {
            shared.step(std::uniform_int_distribution<int>(40, 99)(rolls));
            clock += 1000;
        }
    }
    copy(aPath, s0);

    size_t bytes = 0;
    const FloorPlan plan = readPlan(s0, folder, book, localInstall, &bytes);
    const std::string storePath = dir + "/sync-run.sql", floorPath = dir + "/sync-floor.sql";
    std::unique_ptr<DataModel> dm;
    std::unique_ptr<BookSync> sync;
    RoundReport report;
    setHistoryClock([&] { return kStartMs + int64_t{1000} * (kArrivals + 10); });
    const Medians ms = compare("sync_apply_10k", std::min(runs, 3),
            [&](int) { report = sync->round(); },
            [&](int) { applyFloor(floorPath, plan); },
            [&](int turn) {
                sync.reset();
                dm.reset();
                if (turn % 2 == 1) return copy(s0, floorPath);
                copy(s0, storePath);
                // The round's own record names the book it runs on.
                dm = std::make_unique<DataModel>(storePath);
                dm->theSisanNo = positionOf(*dm, ledger.largestSisanId);
                dm->readFromItemsTable(ledger.largestSisanId);
                sync = std::make_unique<BookSync>(*dm);
                check(sync->load(), "loading the identity");
            });
    check(report.arrived >= static_cast<size_t>(kArrivals), "applying every operation");
    const size_t ops = plan.inOrder.size();
    std::printf("bench sync_apply_10k operations=%zu rewound=%d store_us_per_op=%.1f floor_us_per_op=%.1f "
                "bytes_per_op=%.1f\n",
                ops, kLocal, 1000 * ms.storeMs / static_cast<double>(ops), 1000 * ms.floorMs / static_cast<double>(ops),
                static_cast<double>(bytes) / static_cast<double>(ops - kLocal));
    sync.reset();
    dm.reset();
    setHistoryClock(nullptr);
    for (const std::string& file : {aPath, s0, storePath, floorPath}) fs::remove(file);
    fs::remove_all(shm);
}
