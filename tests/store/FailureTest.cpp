#include "tests/store/StoreFixture.h"

#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>

#include "store/MessageSink.h"

namespace {

using Write = std::function<bool(DataModel&)>;

using FailureTest = StoreFixture;

// A missing file reports the asset read and skips the categories; a file
// that cannot be opened at all reports the open, then the read. Out-of-range
// amounts are refused before any write is tried, so even a read-only book
// shows their own message.
TEST_F(FailureTest, MissingReadOnlyAndOutOfRangeWritesAreRefusedWithTheirMessages)
{
    const std::string missing = dir + "/missing.sql";
    DataModel absent(missing);
    EXPECT_EQ(takeMessages(), (Messages{{"error prepare selct from sisan: no such table: Sisan", "stop the app"}}));
    EXPECT_TRUE(absent.sisanList.empty() && absent.himokuList.empty());
    EXPECT_TRUE(std::filesystem::exists(missing));
    EXPECT_TRUE(absent.updateSisanZankinTable());  // nothing to write back
    DataModel unopenable(dir + "/no/such/dir/Zenvora.sql");
    EXPECT_EQ(takeMessages(),
              (Messages{{"error open database : unable to open database file", "stop the app"},
                        {"error prepare selct from sisan: unable to open database file", "stop the app"}}));

    addSmallBook();
    const int64_t entry = addEntry(1, "2024-01-01", 1, 2, 0);
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(dir.c_str(), 0755), 0);
    // Root may write any file: open as an unprivileged user so that SQLite
    // falls back to a read-only connection, as it does for everyone else.
    const bool root = ::geteuid() == 0;
    ASSERT_TRUE(!root || ::seteuid(65534) == 0);
    DataModel& dm = open();
    ASSERT_TRUE(!root || ::seteuid(0) == 0);
    ASSERT_TRUE(takeMessages().empty());
    const std::string before = dumpAll();

    const int64_t over = int64_t{INT32_MAX} + 1;
    const int64_t under = int64_t{INT32_MIN} - 1;
    const std::string readOnly = "attempt to write a readonly database";
    const std::string range = "金額の欄に不正なデータがあります";
    const std::vector<std::pair<Write, std::string>> writes{
        {[](DataModel& d) { return d.sisanInsert("C", 1); }, "failure inserting sisan : " + readOnly},
        {[](DataModel& d) { return d.updateSisanZankinTable(); }, "failure updating sisan Zankin: " + readOnly},
        {[](DataModel& d) { return d.itemIdouSisanInsert("2024-01-02", 2024, 1, 2, 1, 3, 2, 5, ""); },
         "failure inserting item Syukkin,Nyuukin: " + readOnly},
        {[](DataModel& d) { return d.insertHimokuOfHiimoku(1, "X"); }, "failure inserting himoku : " + readOnly},
        {[&](DataModel& d) { return d.sisanInsert("C", over); }, range},
        {[&](DataModel& d) { return d.itemIdouSisanInsert("2024-01-02", 2024, 1, 2, 1, 3, 2, under, ""); }, range},
        {[&](DataModel& d) { return d.itemUpdate(entry, "2024-01-02", 2024, 1, 2, 1, 1, 2, over, ""); }, range},
        {[&](DataModel& d) { return d.sisanUpdate(1, "S", over, 0); }, range},
    };
    for (const auto& [write, message] : writes) {
        SCOPED_TRACE(&write - &writes[0].first);
        EXPECT_FALSE(write(dm));
        EXPECT_EQ(takeMessages(), (Messages{{message, "information"}}));
    }
    EXPECT_EQ(dumpAll(), before);
    EXPECT_TRUE(dm.readFromSisanTable());
    EXPECT_EQ(dm.sisanList.size(), 2u);
}

// The small book with an expense of each asset under 外食 and a transfer from
// S to T whose rows are 3 (source) and 4 (destination).
struct Fault {
    const char* name;
    const char* table;
    const char* event;
    const char* when;
    Write operation;
    const char* message;
};

void PrintTo(const Fault& fault, std::ostream* os) { *os << fault.name; }

class AtomicityTest : public StoreFixture, public ::testing::WithParamInterface<Fault> {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        // A message shown while the store still holds its write lock would
        // keep every other program out of the book until it is dismissed.
        setMessageSink([this](const std::string& m, const std::string& i) {
            messages.emplace_back(m + (bookIsWritable() ? "" : " [book locked]"), i);
        });
        addSmallBook();
        addEntry(1, "2024-01-01", 1, 3, 100);
        addEntry(2, "2024-01-01", 1, 3, 200);
        addEntry(1, "2024-01-02", 3, 0, 700);
        addEntry(2, "2024-01-02", 4, 0, 700);
        exec("UPDATE Items SET IdouSisanNo=2, IdouId=4 WHERE Id=3");
        exec("UPDATE Items SET IdouSisanNo=1, IdouId=3 WHERE Id=4");
        DataModel& dm = open();
        ASSERT_TRUE(dm.readFromItemsTable(2));
        ASSERT_TRUE(dm.readFromItemsTable(1));
    }

    bool bookIsWritable()
    {
        if (sqlite3_exec(side, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK) return false;
        return sqlite3_exec(side, "ROLLBACK", nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    // Everything the screens read from the store, as text.
    std::string memory() const
    {
        std::string out;
        for (const auto& s : store->sisanList) out += s->Namae + "=" + std::to_string(s->Zankin) + ";";
        for (const auto& i : store->itemList) out += std::to_string(i->Id) + ":" + std::to_string(i->Zankin) + ";";
        for (const auto& h : store->himokuList) out += h->Namae + "/" + std::to_string(h->Ucount) + ";";
        return out;
    }
};

TEST_P(AtomicityTest, AFailurePartWayLeavesTheBookAsItWasAndTheRetrySucceeds)
{
    const Fault& fault = GetParam();
    const std::string tables = dumpAll();
    const std::string lists = memory();
    armFailure(fault.table, fault.event, fault.when);

    EXPECT_FALSE(fault.operation(*store));
    EXPECT_EQ(takeMessages(), (Messages{{std::string(fault.message) + "boom", "information"}}));
    EXPECT_EQ(dumpAll(), tables);
    EXPECT_EQ(memory(), lists);

    exec("DROP TRIGGER armed_failure");
    EXPECT_TRUE(fault.operation(*store));
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_NE(dumpAll(), tables);
}

const Fault kFaults[] = {
    {"TransferDestinationInsert", "Items", "INSERT", "NEW.SyubetuNo = 4",
     [](DataModel& d) { return d.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, 1, 3, 2, 1000, ""); },
     "failure inserting item Syukkin,Nyuukin: "},
    {"TransferLinkUpdate", "Items", "UPDATE", "1",
     [](DataModel& d) { return d.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, 1, 3, 2, 1000, ""); },
     "failure updating  移動元item: "},
    {"CategorySubItemInsert", "Himoku", "INSERT", "NEW.Ucount = 0",
     [](DataModel& d) { return d.insertHimokuOfHiimoku(1, "日用品"); }, "failure inserting himoku : "},
    {"SubItemCountUpdate", "Himoku", "UPDATE", "1",
     [](DataModel& d) { return d.insertUtiwakeOfHimoku(1, "食費/弁当", 1, 2); },
     "failure updating Ucount Of Himoku for update himokumei: "},
    {"SubItemEntriesDelete", "Items", "DELETE", "1", [](DataModel& d) { return d.deleteUtiwakeHimoku(3, 1, 2); },
     "failure delete items  from himoku: "},
    {"TransferPairSecondDelete", "Items", "DELETE", "OLD.SyubetuNo = 3",
     [](DataModel& d) { return d.itemDeleteIdouPair(4, 3); }, "failure deletin from Items: "},
    {"AssetDeleteAfterItsEntries", "Sisan", "DELETE", "1", [](DataModel& d) { return d.sisanDeleteWithItems(2); },
     "failure deletin from sisan: "},
    // A change and its record in the history commit or fail together.
    {"HistoryRecordOfAnEntry", "History", "INSERT", "1",
     [](DataModel& d) { return d.itemNyuukinSyukkinInsert("2024-02-01", 2024, 2, 1, 1, 1, 3, 500, ""); },
     "failure recording history: "},
    {"SubItemRenameOfCategoryRename", "Himoku", "UPDATE", "NEW.Ucount = 0",
     [](DataModel& d) { return d.updateNamaeOfHimoku(1, "食料", {2, 3}, {"その他", "外食"}); },
     "failure updating utiwake namae Of updated Himoku: "},
};

INSTANTIATE_TEST_SUITE_P(Store, AtomicityTest, ::testing::ValuesIn(kFaults),
                         [](const ::testing::TestParamInfo<Fault>& info) { return info.param.name; });

// Assets 現金 (1, opening 100,000) and 銀行 (2, opening 0), each with one
// expense; the stored balances are right when a case starts.
class CrashAndLockTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSisan("現金", 100000, 99000);
        addSisan("銀行", 0, -500);
        addCategory(1, "食費");
        addEntry(1, "2024-01-01", 1, 2, 1000);
        addEntry(2, "2024-01-01", 1, 2, 500);
    }
    const std::string untouched = "Sisan:\n1|現金|100000|99000|\n2|銀行|0|-500|\n";
};

TEST_F(CrashAndLockTest, AWriterKilledBeforeItsBalancesWereWrittenLeavesNothingStaleAtTheNextStart)
{
    int written[2];
    ASSERT_EQ(pipe(written), 0);
    const pid_t writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
        // The child works through its own store and is killed before it
        // ever writes the balances back.
        DataModel dm(path);
        const bool ok = dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, 1, 3, 2, 50000, "") &&
                        dm.itemNyuukinSyukkinInsert("2024-02-02", 2024, 2, 2, 2, 1, 2, 300, "") &&
                        dm.readFromItemsTable(2);
        const char flag = ok ? '1' : '0';
        if (write(written[1], &flag, 1) != 1) _exit(1);
        pause();
        _exit(0);
    }
    char flag = 0;
    ASSERT_EQ(read(written[0], &flag, 1), 1);
    ASSERT_EQ(kill(writer, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(waitpid(writer, &status, 0), writer);
    ASSERT_EQ(flag, '1');
    EXPECT_EQ(dump("Sisan"), untouched);

    DataModel& dm = open();
    EXPECT_EQ(dm.sisanList[0]->Zankin, 49000);
    EXPECT_EQ(dm.sisanList[1]->Zankin, 49200);
    EXPECT_EQ(dm.GrandTotalSisan, 98200);
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|100000|49000|\n2|銀行|0|49200|\n");
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(CrashAndLockTest, EveryReadThatMeetsALockWaitsThenFailsAndKeepsNothingOfIt)
{
    DataModel& dm = open(50);
    ASSERT_TRUE(dm.readFromItemsTable(1));
    ASSERT_TRUE(dm.readYearsFromItemsTable());
    ASSERT_TRUE(dm.annualInOutFromItemsTable("2024"));
    // What the screens show besides the two lists a failed read empties.
    const auto shown = [&dm] {
        return std::to_string(dm.sisanList.size()) + " " + std::to_string(dm.sisanList[0]->Zankin) + " " +
               std::to_string(dm.GrandTotalSisan) + " " + std::to_string(dm.himokuList.size()) + " " +
               std::to_string(dm.yearsList.size()) + " " + std::to_string(dm.annualOutDataList.size());
    };
    const std::string before = shown();
    addEntry(1, "2024-03-01", 2, 2, 7000);  // another program's entry, then its lock
    exec("BEGIN EXCLUSIVE");
    EXPECT_FALSE(dm.updateSisanZankinTable());
    EXPECT_EQ(takeMessages(), (Messages{{"failure updating sisan Zankin: database is locked", "information"}}));

    const struct {
        Write call;
        const char* message;
        const char* informative;
    } reads[] = {
        {[](DataModel& d) { return d.readFromItemsTable(1); }, "error step selct from item: ", "stop the app"},
        {[](DataModel& d) { return d.readFromItem1Item(1) != nullptr; }, "error step selct from item: ",
         "stop the app"},
        {[](DataModel& d) { return d.readYearsFromItemsTable(); }, "error step select distinct nen from item: ",
         "stop the app"},
        {[](DataModel& d) { return d.annualInOutFromItemsTable("2024"); },
         "error step select annual income of nen from item: ", "stop the app"},
        {[](DataModel& d) { return d.recomputeAllSisanZankin(); }, "error step sum of items: ", "information"},
        // The last two empty their lists.
        {[](DataModel& d) { return d.readFromHimokuTable(); }, "error step selct from himoku: ", "stop the app"},
        {[](DataModel& d) { return d.readFromSisanTable(); }, "error step selct from sisan: ", "stop the app"},
    };
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < std::size(reads); ++i) {
        SCOPED_TRACE(reads[i].message);
        EXPECT_FALSE(reads[i].call(dm));
        EXPECT_EQ(takeMessages(),
                  (Messages{{std::string(reads[i].message) + "database is locked", reads[i].informative}}));
        if (i < 5) {
            EXPECT_EQ(shown(), before);
        }
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::size(reads) * std::chrono::milliseconds(50))
        << "each statement waits for the lock before it fails";
    // A cut-short asset or category list is never shown, nor written back.
    EXPECT_TRUE(dm.sisanList.empty() && dm.himokuList.empty() && dm.itemList.empty());
    exec("COMMIT");
    EXPECT_TRUE(dm.updateSisanZankinTable());
    EXPECT_EQ(dump("Sisan"), untouched);
    EXPECT_EQ(open().sisanList[0]->Zankin, 106000);
}

// A program reading the book (an open read transaction) keeps the start's
// correction out: the start neither waits for it nor fails, and the
// correction is stored with the next change the book takes.
TEST_F(CrashAndLockTest, AReaderAtTheStartDelaysTheCorrectionToTheNextChange)
{
    exec("UPDATE Sisan SET Zankin = 0");
    const std::string stale = dump("Sisan");
    exec("BEGIN");
    ASSERT_EQ(scalar("SELECT COUNT(*) FROM Items"), 2);  // the reader's shared lock is held from here
    const auto start = std::chrono::steady_clock::now();
    DataModel& dm = open();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(DataModel::kBusyTimeoutMs));
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_TRUE(dm.zankinWritePending());
    EXPECT_EQ(dm.GrandTotalSisan, 98500);
    EXPECT_EQ(dump("Sisan"), stale);

    exec("COMMIT");
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, 1, 3, 2, 1000, ""));
    EXPECT_FALSE(dm.zankinWritePending());
    EXPECT_EQ(dump("Sisan"), untouched);  // the start's sums; the transfer's wait for the end
    EXPECT_TRUE(takeMessages().empty());
}

}  // namespace
