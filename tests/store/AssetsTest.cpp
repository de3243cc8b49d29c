#include "tests/store/StoreFixture.h"

namespace {

using AssetsTest = StoreFixture;

TEST_F(AssetsTest, TheStartRecomputesEveryBalanceAndCorrectsOnlyTheStaleStoredCopies)
{
    // Stored copies as a crash leaves them: 現金's lags its entries, 銀行's
    // is off by itself, 財布's is right.
    const int64_t wallet = addSisan("現金", 10000, 10000);
    const int64_t bank = addSisan("銀行", 0, -300);
    const int64_t purse = addSisan("財布", 500, 700);
    addEntry(wallet, "2024-01-05", 1, 0, 3000);
    addEntry(wallet, "2024-01-06", 3, 0, 1000);  // a transfer to 銀行
    addEntry(bank, "2024-01-06", 4, 0, 1000);
    addEntry(purse, "2024-01-07", 2, 0, 200);
    addEntry(99, "2024-01-08", 2, 0, 5);  // an asset that no longer exists
    armFailure("Sisan", "UPDATE", "OLD.Namae = '財布'");  // a right copy is never rewritten
    DataModel& dm = open();
    exec("DROP TRIGGER armed_failure");

    expectPositions(dm.sisanId2Idx, dm.sisanIdx2Id, {wallet, bank, purse});
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|10000|6000|\n2|銀行|0|1000|\n3|財布|500|700|\n");
    EXPECT_EQ(dm.sisanList[0]->Zankin, 6000);
    EXPECT_EQ(dm.sisanList[1]->Zankin, 1000);
    EXPECT_EQ(dm.GrandTotalSisan, 7700);
    EXPECT_TRUE(takeMessages().empty());

    // In-memory balances lead the stored copies until they are written back.
    ASSERT_TRUE(dm.sisanInsert("カード", 5000));
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Namae='カード'"), 5000);
    EXPECT_EQ(dm.GrandTotalSisan, 12700);
    addEntry(wallet, "2024-02-01", 2, 0, 800);
    ASSERT_TRUE(dm.readFromItemsTable(wallet));
    EXPECT_EQ(dm.sisanList[0]->Zankin, 6800);
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Id=1"), 6000);
    ASSERT_TRUE(dm.updateSisanZankinTable());
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Id=1"), 6800);

    // Recomputing all catches up with entries of assets not read since.
    addEntry(bank, "2024-02-01", 2, 0, 900);
    ASSERT_TRUE(dm.recomputeAllSisanZankin());
    EXPECT_EQ(dm.sisanList[1]->Zankin, 1900);
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Id=2"), 1900);
    EXPECT_EQ(dm.GrandTotalSisan, 14400);

    ASSERT_TRUE(dm.sisanDelete(bank));
    EXPECT_EQ(dm.getSisanNamaeFromNo(wallet), "現金");
    EXPECT_EQ(dm.getSisanNamaeFromNo(bank), "????");
    EXPECT_TRUE(takeMessages().empty());
    dm.updateSisanZankinList(bank, 5);
    EXPECT_EQ(takeMessages(), (Messages{{"error updateSisanZankinList", "information"}}));
}

TEST_F(AssetsTest, ABalancePastThirtyTwoBitsIsShownStoredAndReadBackExactly)
{
    const int64_t rich = addSisan("証券", 2000000000, 2000000000);
    addEntry(rich, "2024-01-01", 2, 0, 2000000000);
    DataModel& dm = open();
    const int64_t balance = 4000000000;
    EXPECT_EQ(dm.sisanList[0]->Zankin, balance);
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan"), balance);

    ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2024-01-02", 2024, 1, 2, rich, 2, 0, INT32_MAX, ""));
    EXPECT_EQ(dm.itemList.back()->Zankin, balance + INT32_MAX);
    ASSERT_TRUE(dm.updateSisanZankinTable());
    ASSERT_TRUE(dm.sisanUpdate(rich, "証券", 2000000000, balance + INT32_MAX));
    EXPECT_EQ(open().sisanList[0]->Zankin, balance + INT32_MAX);
    EXPECT_EQ(store->GrandTotalSisan, balance + INT32_MAX);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(AssetsTest, WritingBalancesBackStopsAtAFailingAssetAndKeepsTheEarlierOnes)
{
    for (const char* name : {"A", "B", "C"}) addSisan(name, 0, 0);
    DataModel& dm = open();
    for (int64_t i = 0; i < 3; ++i) dm.sisanList[i]->Zankin = 11 * (i + 1);
    armFailure("Sisan", "UPDATE", "OLD.Namae = 'B'");

    EXPECT_FALSE(dm.updateSisanZankinTable());
    EXPECT_EQ(takeMessages(), (Messages{{"failure updating sisan Zankin: boom", "information"}}));
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|A|0|11|\n2|B|0|0|\n3|C|0|0|\n");
}

TEST_F(AssetsTest, AssetNamesWithQuotesAndSemicolonsRoundTripUnchanged)
{
    DataModel& dm = open();
    const std::vector<std::string> names{"Mom's", "O''Brien", "say \"hi\"", "x'; DROP TABLE Sisan; --"};
    for (const auto& name : names) ASSERT_TRUE(dm.sisanInsert(name, 1));
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(dm.sisanList[i]->Namae, names[i]);
        const int64_t id = dm.sisanList[i]->Id;
        ASSERT_TRUE(dm.sisanUpdate(id, names[i] + "'s", 2, 3));
        EXPECT_EQ(dm.getSisanNamaeFromNo(id), names[i] + "'s");
    }
    EXPECT_TRUE(takeMessages().empty());
}

}  // namespace
