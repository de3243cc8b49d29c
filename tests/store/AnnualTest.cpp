#include "tests/store/StoreFixture.h"

namespace {

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

// Asset 1; 食費 (1) with その他 (2) and 外食 (3); 給与 (4) with その他 (5).
class AnnualTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        asset = addSisan("現金", 0, 0);
        addCategory(1, "食費", {"外食"});
        addCategory(2, "給与");
    }
    int64_t asset = 0;
};

TEST_F(AnnualTest, AYearIsSummedPerSubItemAndMonthWithThreeSummaryRows)
{
    addEntry(asset, "2024-03-02", 1, 3, 1000);
    addEntry(asset, "2024-03-20", 1, 3, 200);
    addEntry(asset, "2024-12-31", 1, 3, 50);
    addEntry(asset, "2024-01-15", 1, 2, 10);
    addEntry(asset, "2024-03-25", 2, 5, 300000);
    addEntry(asset, "2024-04-01", 2, 3, 7);       // income filed under an expense sub-item
    addEntry(asset, "2023-03-02", 1, 3, 99999);   // another year
    addEntry(asset, "2024-03-03", 3, 3, 88888);   // transfer rows count nowhere,
    addEntry(asset, "2024-03-03", 4, 5, 88888);   // even with a sub-item number
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

    // A year of expenses only replaces the income side with nothing.
    ASSERT_TRUE(dm.annualInOutFromItemsTable("2023"));
    EXPECT_TRUE(dm.annualInNameList.empty() && dm.annualInDataList.empty());
    EXPECT_EQ(dm.annualTotalDataList, (Table{Row(13, 0), cells({{3, 99999}}, 99999), cells({{3, -99999}}, -99999)}));
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(AnnualTest, SumsBeyondThirtyTwoBitsInOneCellAreExact)
{
    addEntry(asset, "2024-01-01", 1, 3, 2000000000);
    addEntry(asset, "2024-01-02", 1, 3, 2000000000);
    addEntry(asset, "2024-01-03", 1, 2, 2147483647);
    DataModel& dm = open();

    ASSERT_TRUE(dm.annualInOutFromItemsTable("2024"));
    EXPECT_EQ(dm.annualOutDataList,
              (Table{cells({{1, 2147483647}}, 2147483647), cells({{1, 4000000000}}, 4000000000)}));
    EXPECT_EQ(dm.annualTotalDataList[1], cells({{1, 6147483647}}, 6147483647));
    EXPECT_EQ(dm.annualTotalDataList[2], cells({{1, -6147483647}}, -6147483647));
}

}  // namespace
