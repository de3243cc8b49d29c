#include <sqlite3.h>

#include "tests/store/StoreFixture.h"

namespace {

// The balance of an asset at the end of a month as its ledger read shows it:
// the running balance of its last row dated up to that month, else the
// opening amount.
int64_t ledgerZankinAt(DataModel& dm, int64_t sisanId, int64_t month)
{
    EXPECT_TRUE(dm.readFromItemsTable(sisanId));
    int64_t zankin = dm.sisanList[static_cast<size_t>(dm.sisanId2Idx.at(sisanId))]->SyokiKingaku;
    for (const auto& item : dm.itemList)
        if (monthNumber(item->Nen, item->Tuki) <= month) zankin = item->Zankin;
    return zankin;
}

class HistoryTest : public StoreFixture {};

TEST_F(HistoryTest, MonthEndBalancesMatchTheLedgersUpToTheGivenMonth)
{
    const int64_t genkin = addSisan("現金", 1000, 0);
    const int64_t ginkou = addSisan("銀行", 0, 0);
    const int64_t kieta = addSisan("消えた口座", 500, 0);
    addCategory(1, "食費");
    addCategory(2, "給与");
    addEntry(genkin, "2023-11-05", 1, 2, 300);
    addEntry(genkin, "2024-02-10", 2, 4, 5000);
    addEntry(ginkou, "2024-02-01", 1, 2, 2500);   // the bank goes below zero
    addEntry(kieta, "2023-10-01", 2, 4, 99999);   // gone with its asset below
    addEntry(genkin, "2024-05-01", 1, 2, 777);    // after the given month
    DataModel& dm = open();
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-01-15", 2024, 1, 15, genkin, 3, ginkou, 400, ""));
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-01-20", 2024, 1, 20, kieta, 3, genkin, 50, ""));
    ASSERT_TRUE(dm.sisanDeleteWithItems(kieta));

    ASSERT_TRUE(dm.sisanHistoryFromItemsTable(2024, 4));
    const MonthEndHistory& h = dm.sisanHistory;
    EXPECT_EQ(h.sisanIds, (std::vector<int64_t>{genkin, ginkou}));
    ASSERT_EQ(h.months(), 6u);  // 2023-11 to 2024-04
    EXPECT_EQ(h.nenOf(0), 2023);
    EXPECT_EQ(h.tukiOf(0), 11);
    EXPECT_EQ(h.tukiOf(5), 4);
    EXPECT_EQ(h.total, (std::vector<int64_t>{700, 700, 700, 3200, 3200, 3200}));  // the transfer moves nothing
    for (size_t r = 0; r < h.sisanIds.size(); ++r)
        for (size_t c = 0; c < h.months(); ++c)
            EXPECT_EQ(h.zankin[r][c], ledgerZankinAt(dm, h.sisanIds[r], h.firstMonth + static_cast<int64_t>(c)))
                << r << "," << c;
    EXPECT_EQ(h.zankin[1][3], -2100);

    // At the month of the last entry the total is the grand total.
    ASSERT_TRUE(dm.sisanHistoryFromItemsTable(2024, 5));
    ASSERT_TRUE(dm.recomputeAllSisanZankin());
    EXPECT_EQ(dm.sisanHistory.total.back(), dm.GrandTotalSisan);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(HistoryTest, NoEntriesGiveNoMonthsAndAFailedStepKeepsTheLastHistory)
{
    const int64_t genkin = addSisan("現金", 1000, 0);
    DataModel& dm = open();
    ASSERT_TRUE(dm.sisanHistoryFromItemsTable(2024, 4));
    EXPECT_TRUE(dm.sisanHistory.empty());

    addEntry(genkin, "2024-04-01", 2, 0, 10);
    ASSERT_TRUE(dm.sisanHistoryFromItemsTable(2024, 4));
    EXPECT_EQ(dm.sisanHistory.total, (std::vector<int64_t>{1010}));

    // Two huge amounts in one month overflow the sum while stepping.
    addEntry(genkin, "2024-03-01", 2, 0, 5000000000000000000LL);
    addEntry(genkin, "2024-03-02", 2, 0, 5000000000000000000LL);
    EXPECT_FALSE(dm.sisanHistoryFromItemsTable(2024, 4));
    EXPECT_EQ(takeMessages(), (Messages{{"error step select monthly sums from item: integer overflow", "stop the app"}}));
    EXPECT_EQ(dm.sisanHistory.total, (std::vector<int64_t>{1010}));
}

}  // namespace
