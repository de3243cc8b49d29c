#include "tests/store/StoreFixture.h"

#include "store/MonthEndHistory.h"

namespace {

using BookTest = StoreFixture;

TEST_F(BookTest, TheStartRecomputesEveryBalanceAndCorrectsOnlyTheStaleStoredCopies)
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

    // In-memory balances lead the stored copies until they are written back;
    // a name with quotes and a semicolon is stored as it is.
    const std::string odd = "Mom's \"x'; DROP TABLE Sisan; --";
    ASSERT_TRUE(dm.sisanInsert(odd, 5000));
    EXPECT_EQ(dm.getSisanNamaeFromNo(4), odd);
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Id=4"), 5000);
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
    EXPECT_EQ(dm.getSisanNamaeFromNo(bank), "????");
    EXPECT_TRUE(takeMessages().empty());
    dm.updateSisanZankinList(bank, 5);
    EXPECT_EQ(takeMessages(), (Messages{{"error updateSisanZankinList", "information"}}));
}

TEST_F(BookTest, ABalancePastThirtyTwoBitsIsShownStoredAndReadBackExactly)
{
    const int64_t rich = addSisan("証券", 2000000000, 2000000000);
    addEntry(rich, "2024-01-01", 2, 0, 2000000000);
    DataModel& dm = open();
    const int64_t balance = 4000000000;
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan"), balance);

    ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2024-01-02", 2024, 1, 2, rich, 2, 0, INT32_MAX, ""));
    EXPECT_EQ(dm.itemList.back()->Zankin, balance + INT32_MAX);
    ASSERT_TRUE(dm.updateSisanZankinTable());
    ASSERT_TRUE(dm.sisanUpdate(rich, "O''Brien's", 2000000000, balance + INT32_MAX));
    EXPECT_EQ(open().sisanList[0]->Zankin, balance + INT32_MAX);
    EXPECT_EQ(store->sisanList[0]->Namae, "O''Brien's");
    EXPECT_EQ(store->GrandTotalSisan, balance + INT32_MAX);
    ASSERT_TRUE(store->sisanInsert("max", INT32_MAX));
    EXPECT_EQ(store->sisanList.back()->Zankin, INT32_MAX);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(BookTest, WritingBalancesBackStopsAtAFailingAssetAndKeepsTheEarlierOnes)
{
    for (const char* name : {"A", "B", "C"}) addSisan(name, 0, 0);
    DataModel& dm = open();
    for (int64_t i = 0; i < 3; ++i) dm.sisanList[i]->Zankin = 11 * (i + 1);
    armFailure("Sisan", "UPDATE", "OLD.Namae = 'B'");

    EXPECT_FALSE(dm.updateSisanZankinTable());
    EXPECT_EQ(takeMessages(), (Messages{{"failure updating sisan Zankin: boom", "information"}}));
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|A|0|11|\n2|B|0|0|\n3|C|0|0|\n");
}

constexpr int64_t S = 1, T = 2, kGaisyoku = 3, kKyuuyo = 5;

class LedgerTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSmallBook();
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
};

TEST_F(LedgerTest, TheLedgerIsReadInDateOrderWithRunningBalancesAndAnUpdateMovesOnlyPlainEntries)
{
    const int64_t out = addEntry(S, "2024-01-05", 1, kGaisyoku, 3000);
    const int64_t in = addEntry(S, "2024-01-10", 2, kKyuuyo, 500);
    DataModel& dm = open();
    dm.itemSortASC["Zankin"] = false;

    ASSERT_TRUE(dm.readFromItemsTable(S));
    EXPECT_EQ(ledger(), (Rows{"2024-01-05 1 0 3000 0 -1 | 食費/外食  3,000 7000",
                              "2024-01-10 2 500 0 0 -1 | 給与/その他 500  7500"}));
    expectPositions(dm.itemId2Idx, dm.itemIdx2Id, {out, in});
    EXPECT_TRUE(dm.itemSortASC["Zankin"]);

    // An earlier entry lands first and shifts every later balance; a row a
    // screen still holds keeps what it was read with.
    const std::shared_ptr<Items> held = dm.itemList[0];
    ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2023-12-31", 2023, 12, 31, S, 1, kGaisyoku, 1234567, "Mom's"));
    EXPECT_EQ(held->Hizuke + " " + std::to_string(held->Zankin), "2024-01-05 7000");
    EXPECT_EQ(ledger(), (Rows{"2023-12-31 1 0 1234567 0 -1 | 食費/外食  1,234,567 -1224567",
                              "2024-01-05 1 0 3000 0 -1 | 食費/外食  3,000 -1227567",
                              "2024-01-10 2 500 0 0 -1 | 給与/その他 500  -1227067"}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE Bikou='Mom''s' AND Nen=2023 AND Tuki=12 AND Hi=31 "
                     "AND Nyuukin IS NULL AND IdouSisanNo IS NULL"),
              1);

    // An update never turns an entry into a transfer; as an income of T the
    // former Syukkin stays in its column, and T's ledger is read.
    const std::string before = dumpAll();
    EXPECT_FALSE(dm.itemUpdate(out, "2024-01-05", 2024, 1, 5, S, 3, 0, 10, ""));
    EXPECT_EQ(dumpAll(), before);
    ASSERT_TRUE(dm.itemUpdate(out, "2024-03-01", 2024, 3, 1, T, 2, kKyuuyo, 700, "it's"));
    EXPECT_EQ(ledger(), (Rows{"2024-03-01 2 700 3000 0 -1 | 給与/その他 700  700"}));
    EXPECT_EQ(dm.itemList[0]->Bikou, "it's");
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(LedgerTest, UnnamedRowsShowQuestionMarksAndUnknownKindsAreToldOnceWithTheirCount)
{
    addEntry(S, "2024-01-01", 1, 999, 100);
    addEntry(S, "2024-01-02", 9, 0, 0);
    for (int kind = 5; kind <= 10; ++kind) addEntry(S, "2024-01-03", kind, 0, 7);
    DataModel& dm = open();

    ASSERT_TRUE(dm.readFromItemsTable(S));
    EXPECT_EQ(takeMessages(), (Messages{{"error in readFromItemTable IntToStr",
                                         "種別の分からない行が 7 件あります（Id 2, 3, 4, 5, 6 ほか）。"
                                         "これらの行は残高に含めていません。"}}));
    const Rows rows = ledger();
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(Rows(rows.begin(), rows.begin() + 2),
              (Rows{"2024-01-01 1 0 100 0 -1 | ????  100 9900", "2024-01-02 9 0 0 0 -1 | ????   9900"}));

    EXPECT_EQ(dm.readFromItem1Item(999), nullptr);
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_FALSE(dm.readFromItemsTable(999));
    EXPECT_EQ(takeMessages(), (Messages{{"error readFromItemTable", "stop the app"}}));
    EXPECT_TRUE(dm.itemList.empty());
}

TEST_F(LedgerTest, ATransferIsALinkedPairAndDeletionsTakeThePartnerAlong)
{
    const int64_t expense = addEntry(S, "2024-01-01", 1, kGaisyoku, 100);
    const int64_t own = addEntry(T, "2024-01-01", 1, kGaisyoku, 300);
    DataModel& dm = open();
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, S, 3, T, 2000, "移動"));

    // The source row (Id 3) is in S's ledger, linked to the destination row (Id 4).
    EXPECT_EQ(ledger()[1], "2024-02-01 3 0 2000 2 4 | T  2,000 7900");
    EXPECT_EQ(dm.sisanList[1]->Zankin, 1700);
    const auto partner = dm.readFromItem1Item(4);
    ASSERT_TRUE(partner);
    EXPECT_EQ(partner->Bikou, "移動");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE HimokuNo IS NULL"), 2);
    ASSERT_TRUE(dm.readFromItemsTable(T));
    EXPECT_EQ(ledger()[1], "2024-02-01 4 2000 0 1 3 | S 2,000  1700");
    dm.totalOfZankinFrom_sisanList();
    EXPECT_EQ(dm.GrandTotalSisan, 9600);

    ASSERT_TRUE(dm.readFromItemsTable(S));
    ASSERT_TRUE(dm.itemDeleteIdouPair(dm.itemList[1]->IdouId, dm.itemList[1]->Id));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 2);
    EXPECT_EQ(dm.sisanList[0]->Zankin, 9900);
    EXPECT_EQ(dm.sisanList[1]->Zankin, -300);
    ASSERT_TRUE(dm.itemDelete(expense));
    EXPECT_TRUE(dm.itemList.empty());
    EXPECT_EQ(dm.sisanList[0]->Zankin, 10000);

    // Removing S's entries also removes T's side of a transfer with S.
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, S, 3, T, 2000, ""));
    dm.theSisanNo = 1;
    ASSERT_TRUE(dm.itemDeleteWhereSisanNo(S));
    ASSERT_EQ(dm.itemList.size(), 1u);
    EXPECT_EQ(dm.itemList[0]->Id, own);

    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, T, 3, S, 50, ""));
    ASSERT_TRUE(dm.sisanDeleteWithItems(T));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 0);
    ASSERT_EQ(dm.sisanList.size(), 1u);
    EXPECT_EQ(dm.sisanList[0]->Id, S);
    EXPECT_TRUE(takeMessages().empty());
}

// Each row of himokuList as "Id kind name Hno Ucount".
Rows tree(const DataModel& dm)
{
    Rows rows;
    for (const auto& h : dm.himokuList)
        rows.push_back(std::to_string(h->Id) + " " + std::to_string(h->SyubetuNo) + " " + h->Namae + " " +
                       std::to_string(h->Hno) + " " + std::to_string(h->Ucount));
    return rows;
}

TEST_F(BookTest, CategoriesAndSubItemsAreAddedWithTheirIdsCountsAndOrder)
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

TEST_F(LedgerTest, CategoryRenamesAndDeletionsReachStoredRowsAndEntriesOnEveryAsset)
{
    addEntry(S, "2024-01-01", 1, kGaisyoku, 100);
    addEntry(T, "2024-01-01", 1, kGaisyoku, 200);
    const int64_t other = addEntry(S, "2024-01-02", 1, 2, 50);
    const int64_t income = addEntry(S, "2024-01-03", 2, kKyuuyo, 70);
    DataModel& dm = open();
    ASSERT_TRUE(dm.readFromItemsTable(S));

    ASSERT_TRUE(dm.updateNamaeOfHimoku(1, "Mom's", {2, 3}, {"その他", "it's"}));
    EXPECT_EQ(tree(dm), (Rows{"1 1 Mom's 1 2", "2 1 Mom's/その他 1 0", "3 1 Mom's/it's 1 0", "4 2 給与 4 1",
                              "5 2 給与/その他 4 0"}));
    EXPECT_EQ(dm.itemList[0]->strHimoku, "Mom's/it's");
    ASSERT_TRUE(dm.updateNamaeOfUtiwakeHimoku(3, "Mom's/O'Neil's"));
    EXPECT_EQ(dm.himokuList[2]->Namae, "Mom's/O'Neil's");
    EXPECT_EQ(dm.itemList[0]->strHimoku, "Mom's/O'Neil's");

    ASSERT_TRUE(dm.deleteUtiwakeHimoku(kGaisyoku, 1, 2));
    EXPECT_EQ(tree(dm), (Rows{"1 1 Mom's 1 1", "2 1 Mom's/その他 1 0", "4 2 給与 4 1", "5 2 給与/その他 4 0"}));
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

using Row = std::vector<int64_t>;
using Table = std::vector<Row>;

// A row of 13 cells: the given month cells (1-based month, amount), then the year.
Row cells(std::initializer_list<std::pair<int, int64_t>> months, int64_t year)
{
    Row row(13, 0);
    for (const auto& [month, amount] : months) row[static_cast<size_t>(month - 1)] = amount;
    row[12] = year;
    return row;
}

TEST_F(LedgerTest, AYearIsSummedPerSubItemAndMonthWithThreeSummaryRowsPastThirtyTwoBits)
{
    addEntry(S, "2024-03-02", 1, kGaisyoku, 1000);
    addEntry(S, "2024-03-20", 1, kGaisyoku, 200);
    addEntry(S, "2024-12-31", 1, kGaisyoku, 50);
    addEntry(S, "2024-01-15", 1, 2, 10);
    addEntry(S, "2024-03-25", 2, kKyuuyo, 300000);
    addEntry(S, "2024-04-01", 2, kGaisyoku, 7);    // income filed under an expense sub-item
    addEntry(S, "2024-03-03", 3, kGaisyoku, 88888);  // transfer rows count nowhere,
    addEntry(S, "2024-03-03", 4, kKyuuyo, 88888);    // even with a sub-item number
    addEntry(S, "2023-01-01", 1, kGaisyoku, 2000000000);
    addEntry(S, "2023-01-02", 1, kGaisyoku, 2000000000);
    addEntry(S, "2023-01-03", 1, 2, 2147483647);
    DataModel& dm = open();
    EXPECT_EQ(dm.annualTotalNameList, (std::vector<std::string>{"収　入　計", "支　出　計", "差　引　合　計"}));
    EXPECT_TRUE(dm.annualTotalDataList.empty());
    ASSERT_TRUE(dm.readYearsFromItemsTable());
    EXPECT_EQ(dm.yearsList, (std::vector<std::string>{"2023", "2024"}));

    ASSERT_TRUE(dm.annualInOutFromItemsTable("2024"));
    EXPECT_EQ(dm.annualOutNameList, (std::vector<std::string>{"食費/その他", "食費/外食"}));
    EXPECT_EQ(dm.annualOutDataList, (Table{cells({{1, 10}}, 10), cells({{3, 1200}, {12, 50}}, 1250)}));
    EXPECT_EQ(dm.annualInNameList, (std::vector<std::string>{"食費/外食", "給与/その他"}));
    EXPECT_EQ(dm.annualInDataList, (Table{cells({{4, 7}}, 7), cells({{3, 300000}}, 300000)}));
    EXPECT_EQ(dm.annualTotalDataList, (Table{cells({{3, 300000}, {4, 7}}, 300007),
                                              cells({{1, 10}, {3, 1200}, {12, 50}}, 1260),
                                              cells({{1, -10}, {3, 298800}, {4, 7}, {12, -50}}, 298747)}));

    // A year of expenses only replaces the income side with nothing; one
    // cell's sum past 32 bits is exact.
    ASSERT_TRUE(dm.annualInOutFromItemsTable("2023"));
    EXPECT_TRUE(dm.annualInNameList.empty() && dm.annualInDataList.empty());
    EXPECT_EQ(dm.annualOutDataList,
              (Table{cells({{1, 2147483647}}, 2147483647), cells({{1, 4000000000}}, 4000000000)}));
    EXPECT_EQ(dm.annualTotalDataList, (Table{Row(13, 0), cells({{1, 6147483647}}, 6147483647),
                                              cells({{1, -6147483647}}, -6147483647)}));
    EXPECT_TRUE(takeMessages().empty());
}

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

TEST_F(BookTest, MonthEndBalancesMatchTheLedgersAndAFailedStepKeepsTheLastHistory)
{
    const int64_t genkin = addSisan("現金", 1000, 0);
    const int64_t ginkou = addSisan("銀行", 0, 0);
    const int64_t kieta = addSisan("消えた口座", 500, 0);
    addCategory(1, "食費");
    addCategory(2, "給与");
    DataModel& dm = open();
    ASSERT_TRUE(dm.sisanHistoryFromItemsTable(2024, 4));
    EXPECT_TRUE(dm.sisanHistory.empty());

    addEntry(genkin, "2023-11-05", 1, 2, 300);
    addEntry(genkin, "2024-02-10", 2, 4, 5000);
    addEntry(ginkou, "2024-02-01", 1, 2, 2500);  // the bank goes below zero
    addEntry(kieta, "2023-10-01", 2, 4, 99999);  // gone with its asset below
    addEntry(genkin, "2024-05-01", 1, 2, 777);   // after the given month
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
    EXPECT_EQ(h.total.back(), dm.GrandTotalSisan);
    EXPECT_TRUE(takeMessages().empty());

    // Two huge amounts in one month overflow the sum while stepping.
    const std::vector<int64_t> last = h.total;
    addEntry(genkin, "2024-03-01", 2, 0, 5000000000000000000LL);
    addEntry(genkin, "2024-03-02", 2, 0, 5000000000000000000LL);
    EXPECT_FALSE(dm.sisanHistoryFromItemsTable(2024, 4));
    EXPECT_EQ(takeMessages(), (Messages{{"error step select monthly sums from item: integer overflow", "stop the app"}}));
    EXPECT_EQ(h.total, last);
}

}  // namespace
