#include "tests/store/StoreFixture.h"

namespace {

// Assets S (opening 10,000) and T (0); 食費 with 外食, and 給与.
class ItemsTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        s = addSisan("S", 10000, 10000);
        t = addSisan("T", 0, 0);
        gaisyoku = addCategory(1, "食費", {"外食"}) + 2;
        kyuuyo = addCategory(2, "給与") + 1;
    }

    // itemList as "date kind in out partner-asset link | label in out balance".
    std::vector<std::string> ledger() const
    {
        std::vector<std::string> rows;
        for (const auto& i : store->itemList)
            rows.push_back(i->Hizuke + " " + std::to_string(i->SyubetuNo) + " " + std::to_string(i->Nyuukin) + " " +
                           std::to_string(i->Syukkin) + " " + std::to_string(i->IdouSisanNo) + " " +
                           std::to_string(i->IdouId) + " | " + i->strHimoku + " " + i->strNyuukin + " " +
                           i->strSyukkin + " " + std::to_string(i->Zankin));
        return rows;
    }

    int64_t s = 0, t = 0, gaisyoku = 0, kyuuyo = 0;
};

TEST_F(ItemsTest, TheLedgerIsReadInDateOrderWithRunningBalancesAndDisplayTexts)
{
    const int64_t out = addEntry(s, "2024-01-05", 1, gaisyoku, 3000);
    const int64_t in = addEntry(s, "2024-01-10", 2, kyuuyo, 500);
    DataModel& dm = open();
    dm.itemSortASC["Zankin"] = false;

    ASSERT_TRUE(dm.readFromItemsTable(s));
    EXPECT_EQ(ledger(), (Rows{"2024-01-05 1 0 3000 0 -1 | 食費/外食  3,000 7000",
                              "2024-01-10 2 500 0 0 -1 | 給与/その他 500  7500"}));
    EXPECT_EQ(dm.sisanList[0]->Zankin, 7500);
    expectPositions(dm.itemId2Idx, dm.itemIdx2Id, {out, in});
    EXPECT_TRUE(dm.itemSortASC["Zankin"]);

    // An earlier entry lands first and shifts every later balance; a row a
    // screen still holds keeps what it was read with.
    const std::shared_ptr<Items> held = dm.itemList[0];
    ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2023-12-31", 2023, 12, 31, s, 1, gaisyoku, 1234567, "Mom's"));
    EXPECT_EQ(held->Hizuke + " " + std::to_string(held->Zankin), "2024-01-05 7000");
    EXPECT_EQ(ledger(), (Rows{"2023-12-31 1 0 1234567 0 -1 | 食費/外食  1,234,567 -1224567",
                              "2024-01-05 1 0 3000 0 -1 | 食費/外食  3,000 -1227567",
                              "2024-01-10 2 500 0 0 -1 | 給与/その他 500  -1227067"}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE Bikou='Mom''s' AND Nen=2023 AND Tuki=12 AND Hi=31 "
                     "AND Nyuukin IS NULL AND IdouSisanNo IS NULL"),
              1);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(ItemsTest, UnnamedRowsShowQuestionMarksAndUnknownIdsAreReported)
{
    addEntry(s, "2024-01-01", 1, 999, 100);
    addEntry(s, "2024-01-02", 9, 0, 0);
    DataModel& dm = open();

    ASSERT_TRUE(dm.readFromItemsTable(s));
    EXPECT_EQ(takeMessages(), (Messages{{"error in readFromItemTable IntToStr", "information"}}));
    EXPECT_EQ(ledger(), (Rows{"2024-01-01 1 0 100 0 -1 | ????  100 9900", "2024-01-02 9 0 0 0 -1 | ????   9900"}));

    EXPECT_EQ(dm.readFromItem1Item(999), nullptr);
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_FALSE(dm.readFromItemsTable(999));
    EXPECT_EQ(takeMessages(), (Messages{{"error readFromItemTable", "stop the app"}}));
    EXPECT_TRUE(dm.itemList.empty());
}

TEST_F(ItemsTest, ATransferIsALinkedPairThatMovesMoneyBetweenBothBalances)
{
    DataModel& dm = open();
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, s, 3, t, 2000, "移動"));

    // The source row (Id 1) is in S's ledger, linked to the destination row (Id 2).
    EXPECT_EQ(ledger(), (Rows{"2024-02-01 3 0 2000 2 2 | T  2,000 8000"}));
    EXPECT_EQ(dm.sisanList[1]->Zankin, 2000);
    const auto partner = dm.readFromItem1Item(2);
    ASSERT_TRUE(partner);
    EXPECT_EQ(partner->Bikou, "移動");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE HimokuNo IS NULL"), 2);
    ASSERT_TRUE(dm.readFromItemsTable(t));
    EXPECT_EQ(ledger(), (Rows{"2024-02-01 4 2000 0 1 1 | S 2,000  2000"}));
    dm.totalOfZankinFrom_sisanList();
    EXPECT_EQ(dm.GrandTotalSisan, 10000);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(ItemsTest, AnUpdateRewritesOnlyExpensesAndIncomesAndReadsTheGivenAsset)
{
    const int64_t id = addEntry(s, "2024-01-05", 1, gaisyoku, 3000);
    DataModel& dm = open();
    const std::string before = dumpAll();
    EXPECT_FALSE(dm.itemUpdate(id, "2024-01-05", 2024, 1, 5, s, 3, 0, 10, ""));
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_EQ(dumpAll(), before);

    // Now an income of T; the former Syukkin stays in its column.
    ASSERT_TRUE(dm.itemUpdate(id, "2024-03-01", 2024, 3, 1, t, 2, kyuuyo, 700, "it's"));
    EXPECT_EQ(ledger(), (Rows{"2024-03-01 2 700 3000 0 -1 | 給与/その他 700  700"}));
    EXPECT_EQ(dm.itemList[0]->Bikou, "it's");
}

TEST_F(ItemsTest, DeletionsTakeTransferPartnersAlongAndRefreshTheBalances)
{
    const int64_t expense = addEntry(s, "2024-01-01", 1, gaisyoku, 100);
    const int64_t own = addEntry(t, "2024-01-01", 1, gaisyoku, 300);
    DataModel& dm = open();
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, s, 3, t, 2000, ""));
    ASSERT_TRUE(dm.itemDeleteIdouPair(dm.itemList[1]->IdouId, dm.itemList[1]->Id));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 2);
    EXPECT_EQ(dm.sisanList[0]->Zankin, 9900);
    EXPECT_EQ(dm.sisanList[1]->Zankin, -300);
    ASSERT_TRUE(dm.itemDelete(expense));
    EXPECT_TRUE(dm.itemList.empty());
    EXPECT_EQ(dm.sisanList[0]->Zankin, 10000);

    // Removing S's entries also removes T's side of a transfer with S.
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, s, 3, t, 2000, ""));
    dm.theSisanNo = 1;
    ASSERT_TRUE(dm.itemDeleteWhereSisanNo(s));
    ASSERT_EQ(dm.itemList.size(), 1u);
    EXPECT_EQ(dm.itemList[0]->Id, own);

    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, t, 3, s, 50, ""));
    ASSERT_TRUE(dm.sisanDeleteWithItems(t));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 0);
    ASSERT_EQ(dm.sisanList.size(), 1u);
    EXPECT_EQ(dm.sisanList[0]->Id, s);
    EXPECT_TRUE(takeMessages().empty());
}

}  // namespace
