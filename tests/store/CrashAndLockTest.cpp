#include "tests/store/StoreFixture.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>

namespace {

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

    // Balances as the screens show them, then as stored.
    std::string balances()
    {
        std::string out;
        for (const auto& s : store->sisanList) out += s->Namae + "=" + std::to_string(s->Zankin) + " ";
        return out + "total=" + std::to_string(store->GrandTotalSisan) + " | " + dump("Sisan");
    }
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
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|100000|99000|\n2|銀行|0|-500|\n");

    open();
    EXPECT_EQ(balances(), "現金=49000 銀行=49200 total=98200 | Sisan:\n1|現金|100000|49000|\n2|銀行|0|49200|\n");
    EXPECT_TRUE(takeMessages().empty());
}

struct Read {
    const char* name;
    std::function<bool(DataModel&)> call;
    const char* message;
    const char* informative;
};

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

    const std::vector<Read> reads{
        {"ledger", [](DataModel& d) { return d.readFromItemsTable(1); }, "error step selct from item: ", "stop the app"},
        {"entry", [](DataModel& d) { return d.readFromItem1Item(1) != nullptr; }, "error step selct from item: ",
         "stop the app"},
        {"years", [](DataModel& d) { return d.readYearsFromItemsTable(); }, "error step select distinct nen from item: ",
         "stop the app"},
        {"annual", [](DataModel& d) { return d.annualInOutFromItemsTable("2024"); },
         "error step select annual income of nen from item: ", "stop the app"},
        {"balances", [](DataModel& d) { return d.recomputeAllSisanZankin(); }, "error step sum of items: ",
         "information"},
        {"categories", [](DataModel& d) { return d.readFromHimokuTable(); }, "error step selct from himoku: ",
         "stop the app"},
        {"assets", [](DataModel& d) { return d.readFromSisanTable(); }, "error step selct from sisan: ",
         "stop the app"},
    };
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < reads.size(); ++i) {
        SCOPED_TRACE(reads[i].name);
        EXPECT_FALSE(reads[i].call(dm));
        EXPECT_EQ(takeMessages(),
                  (Messages{{std::string(reads[i].message) + "database is locked", reads[i].informative}}));
        if (i < 5) {  // the last two empty their lists
            EXPECT_EQ(shown(), before);
        }
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, reads.size() * std::chrono::milliseconds(50))
        << "each statement waits for the lock before it fails";
    // A cut-short asset or category list is never shown, nor written back.
    EXPECT_TRUE(dm.sisanList.empty() && dm.himokuList.empty() && dm.itemList.empty());
    exec("COMMIT");
    EXPECT_TRUE(dm.updateSisanZankinTable());
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|100000|99000|\n2|銀行|0|-500|\n");
    EXPECT_EQ(open().sisanList[0]->Zankin, 106000);
}

}  // namespace
