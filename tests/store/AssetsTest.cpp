#include "tests/store/StoreFixture.h"

namespace {

using AssetsTest = StoreFixture;

TEST_F(AssetsTest, AssetsAreReadInTableOrderAndBalancesLeadTheStoredCopyUntilWrittenBack)
{
    const int64_t wallet = addSisan("現金", 10000, 10000);
    const int64_t bank = addSisan("銀行", 0, -300);
    addEntry(wallet, "2024-01-05", 1, 0, 3000);
    DataModel& dm = open();
    expectPositions(dm.sisanId2Idx, dm.sisanIdx2Id, {wallet, bank});
    EXPECT_EQ(dm.GrandTotalSisan, 9700);

    // A new asset starts with its opening amount as balance, stored and shown.
    ASSERT_TRUE(dm.sisanInsert("財布", 5000));
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Namae='財布'"), 5000);
    EXPECT_EQ(dm.GrandTotalSisan, 14700);

    ASSERT_TRUE(dm.readFromItemsTable(wallet));
    EXPECT_EQ(dm.sisanList[0]->Zankin, 7000);
    dm.totalOfZankinFrom_sisanList();
    EXPECT_EQ(dm.GrandTotalSisan, 11700);
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Id=1"), 10000);
    ASSERT_TRUE(dm.updateSisanZankinTable());
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|10000|7000|\n2|銀行|0|-300|\n3|財布|5000|5000|\n");

    // Recomputing every balance catches up with entries of assets not read yet.
    addEntry(bank, "2024-02-01", 2, 0, 800);
    ASSERT_TRUE(dm.recomputeAllSisanZankin());
    EXPECT_EQ(dm.sisanList[1]->Zankin, 800);
    EXPECT_EQ(dm.GrandTotalSisan, 12800);

    ASSERT_TRUE(dm.sisanDelete(bank));
    EXPECT_EQ(dm.getSisanNamaeFromNo(wallet), "現金");
    EXPECT_EQ(dm.getSisanNamaeFromNo(bank), "????");
    EXPECT_TRUE(takeMessages().empty());
    dm.updateSisanZankinList(bank, 5);
    EXPECT_EQ(takeMessages(), (Messages{{"error updateSisanZankinList", "information"}}));
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
