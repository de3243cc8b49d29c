#include "tests/store/StoreFixture.h"

namespace {

using HimokuTest = StoreFixture;

// Each row of himokuList as "Id kind name Hno Ucount".
Rows tree(const DataModel& dm)
{
    Rows rows;
    for (const auto& h : dm.himokuList)
        rows.push_back(std::to_string(h->Id) + " " + std::to_string(h->SyubetuNo) + " " + h->Namae + " " +
                       std::to_string(h->Hno) + " " + std::to_string(h->Ucount));
    return rows;
}

TEST_F(HimokuTest, CategoriesAndSubItemsAreAddedWithTheirIdsCountsAndOrder)
{
    DataModel& dm = open();
    EXPECT_TRUE(dm.readFromHimokuTable());
    expectPositions(dm.himokuId2Idx, dm.himokuIdx2Id, {});

    ASSERT_TRUE(dm.insertHimokuOfHiimoku(1, "食費"));
    EXPECT_EQ(tree(dm), (Rows{"1 1 食費 1 1", "2 1 食費/その他 1 0"}));
    ASSERT_TRUE(dm.insertUtiwakeOfHimoku(1, "食費/外食", 1, 1));
    EXPECT_EQ(tree(dm), (Rows{"1 1 食費 1 2", "2 1 食費/その他 1 0", "3 1 食費/外食 1 0"}));

    // Income categories follow every expense category, whatever their ids.
    ASSERT_TRUE(dm.insertHimokuOfHiimoku(2, "給与"));
    ASSERT_TRUE(dm.insertHimokuOfHiimoku(1, "Mom's"));
    ASSERT_TRUE(dm.insertUtiwakeOfHimoku(1, "Mom's/it's", 6, 1));
    EXPECT_EQ(tree(dm), (Rows{"1 1 食費 1 2", "2 1 食費/その他 1 0", "3 1 食費/外食 1 0", "6 1 Mom's 6 2",
                              "7 1 Mom's/その他 6 0", "8 1 Mom's/it's 6 0", "4 2 給与 4 1", "5 2 給与/その他 4 0"}));
    expectPositions(dm.himokuId2Idx, dm.himokuIdx2Id, {1, 2, 3, 6, 7, 8, 4, 5});

    // Renumbering writes the row and leaves the list as it was.
    ASSERT_TRUE(dm.updateHnoOfHimoku(7, 1));
    EXPECT_EQ(scalar("SELECT Hno FROM Himoku WHERE Id=7"), 1);
    EXPECT_EQ(dm.himokuList[4]->Hno, 6);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(HimokuTest, RenamesRewriteStoredNamesAndTheShownLedger)
{
    const int64_t asset = addSisan("現金", 0, 0);
    addCategory(1, "食費", {"外食"});
    addEntry(asset, "2024-01-01", 1, 3, 100);
    DataModel& dm = open();
    ASSERT_TRUE(dm.readFromItemsTable(asset));

    ASSERT_TRUE(dm.updateNamaeOfHimoku(1, "Mom's", {2, 3}, {"その他", "it's"}));
    EXPECT_EQ(tree(dm), (Rows{"1 1 Mom's 1 2", "2 1 Mom's/その他 1 0", "3 1 Mom's/it's 1 0"}));
    EXPECT_EQ(dm.itemList[0]->strHimoku, "Mom's/it's");
    ASSERT_TRUE(dm.updateNamaeOfUtiwakeHimoku(3, "Mom's/O'Neil's"));
    EXPECT_EQ(dm.himokuList[2]->Namae, "Mom's/O'Neil's");
    EXPECT_EQ(dm.itemList[0]->strHimoku, "Mom's/O'Neil's");
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(HimokuTest, DeletionsRemoveTheRowsAndTheirEntriesOnEveryAsset)
{
    const int64_t a = addSisan("A", 1000, 1000);
    const int64_t b = addSisan("B", 0, 0);
    addCategory(1, "食費", {"外食"});
    addCategory(2, "給与");
    addEntry(a, "2024-01-01", 1, 3, 100);
    addEntry(b, "2024-01-01", 1, 3, 200);
    const int64_t other = addEntry(a, "2024-01-02", 1, 2, 50);
    const int64_t income = addEntry(a, "2024-01-03", 2, 5, 70);
    DataModel& dm = open();

    ASSERT_TRUE(dm.deleteUtiwakeHimoku(3, 1, 2));
    EXPECT_EQ(tree(dm), (Rows{"1 1 食費 1 1", "2 1 食費/その他 1 0", "4 2 給与 4 1", "5 2 給与/その他 4 0"}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE HimokuNo=3"), 0);
    ASSERT_EQ(dm.itemList.size(), 2u);
    EXPECT_EQ(dm.itemList[0]->Id, other);

    ASSERT_TRUE(dm.deleteHimokuHimoku(1, {1, 2}));
    EXPECT_EQ(tree(dm), (Rows{"4 2 給与 4 1", "5 2 給与/その他 4 0"}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 1);
    ASSERT_EQ(dm.itemList.size(), 1u);
    EXPECT_EQ(dm.itemList[0]->Id, income);
    EXPECT_TRUE(takeMessages().empty());
}

}  // namespace
