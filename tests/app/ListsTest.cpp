#include <QAbstractItemModelTester>
#include <QTableView>

#include "app/ItemSort.h"
#include "tests/app/AppFixture.h"

namespace {

// Asset S with four entries in date order: balances 900, 1,400, 1,100, 1,300.
class ListsTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        s = addSisan("S", 1000, 0);
        t = addSisan("T", 0, 0);
        const int64_t food = addCategory(1, "食費", {"外食"}) + 1;
        const int64_t pay = addCategory(2, "給与") + 1;
        addEntry(s, "2024-01-01", 1, food, 100);
        addEntry(s, "2024-01-02", 2, pay, 500);
        addEntry(s, "2024-01-03", 1, food + 1, 300);
        addEntry(s, "2024-01-04", 2, pay, 200);
        addEntry(t, "2024-02-01", 1, food, 50);
    }

    Rows column(int c)
    {
        Rows out;
        for (const auto& row : shown("tblItem")) {
            size_t start = 0;
            for (int i = 0; i < c; ++i) start = row.find('|', start) + 1;
            out.push_back(row.substr(start, row.find('|', start) - start));
        }
        return out;
    }

    int64_t s = 0, t = 0;
};

TEST_F(ListsTest, HeaderClicksSortUntilTheNextReadAndEditsFollowTheSortedRows)
{
    start();
    QAbstractItemModelTester sisanTester(find<QTableView>("tblSisan")->model());
    QAbstractItemModelTester itemTester(find<QTableView>("tblItem")->model());

    clickHeader("tblItem", "残高");
    EXPECT_EQ(column(4), (Rows{"900", "1,100", "1,300", "1,400"}));
    clickHeader("tblItem", "残高");
    EXPECT_EQ(column(4), (Rows{"1,400", "1,300", "1,100", "900"}));
    clickHeader("tblItem", "残高");
    EXPECT_EQ(column(4), (Rows{"900", "1,100", "1,300", "1,400"}));

    clickHeader("tblItem", "費目");
    EXPECT_EQ(column(1), (Rows{"給与/その他", "給与/その他", "食費/その他", "食費/外食"}));
    clickHeader("tblSisan", "残高");  // the asset list does not sort
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|1,300", "T|-50"})) << "T's balance is recomputed at start";

    // Another asset is read in date order, and every column starts ascending again.
    clickHeader("tblItem", "支出");  // now descending next
    selectRow("tblSisan", 1);
    selectRow("tblSisan", 0);
    EXPECT_EQ(column(0), (Rows{"2024-01-01", "2024-01-02", "2024-01-03", "2024-01-04"}));
    clickHeader("tblItem", "支出");
    EXPECT_EQ(column(3), (Rows{"", "", "100", "300"}));

    // An edit after a sort changes the entry shown in the edited row, then
    // the list is read again in date order.
    clickHeader("tblItem", "日付");
    clickHeader("tblItem", "日付");  // newest first
    selectRow("tblItem", 0);
    click("btnEditUpdateItem");
    type("txtItemDataKingaku", "250");
    click("btnItemDataOK");
    EXPECT_EQ(scalar("SELECT Nyuukin FROM Items WHERE Hizuke='2024-01-04'"), 250);
    EXPECT_EQ(scalar("SELECT SUM(Nyuukin) FROM Items"), 750);
    EXPECT_EQ(column(4).back(), "1,350");
}

TEST_F(ListsTest, TextOrderComparesCanonicallyEquivalentNamesAlike)
{
    auto item = [](const char* himoku) {
        return std::make_shared<Items>(0, "", 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, "", himoku, "", "", 0);
    };
    // ガ written as カ + combining dakuten sorts where the composed ガ does: after カー.
    std::vector<std::shared_ptr<Items>> list{item("\u30AB\u3099"), item("\u30AB\u30FC"), item("\u30AD")};
    ASSERT_TRUE(sortItemList(list, "HimokuNo", true));
    EXPECT_EQ(list[0]->strHimoku, "\u30AB\u30FC");
    EXPECT_EQ(list[1]->strHimoku, "\u30AB\u3099");
    EXPECT_FALSE(sortItemList(list, "Bikou", true));
}

}  // namespace
