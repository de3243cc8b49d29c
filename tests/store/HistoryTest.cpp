#include <sqlite3.h>

#include <functional>

#include "store/History.h"
#include "store/StepLabels.h"
#include "tests/store/StoreFixture.h"

namespace {

using Change = std::function<bool(DataModel&)>;

// The small book with entries on both assets: S (1) 外食 1,200 and その他 300
// on the 5th, a transfer of 700 to T on the 7th (rows 3 and 4), 給与 5,000 on
// the 10th; T 外食 200 on the 8th. Stored balances are right; S is shown.
class HistoryFixture : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSmallBook();
        addEntry(1, "2024-01-05", 1, 3, 1200);
        addEntry(1, "2024-01-05", 1, 2, 300);
        addEntry(1, "2024-01-07", 3, 0, 700);
        addEntry(2, "2024-01-07", 4, 0, 700);
        exec("UPDATE Items SET IdouSisanNo=2, IdouId=4 WHERE Id=3; UPDATE Items SET IdouSisanNo=1, IdouId=3 WHERE Id=4");
        addEntry(1, "2024-01-10", 2, 5, 5000);
        addEntry(2, "2024-01-08", 1, 3, 200);
        exec("UPDATE Sisan SET Zankin=12800 WHERE Id=1; UPDATE Sisan SET Zankin=500 WHERE Id=2");
        showFirst(open());
    }

    static void showFirst(DataModel& dm)
    {
        dm.theSisanNo = 0;
        ASSERT_TRUE(dm.readFromItemsTable(dm.sisanList[0]->Id));
    }

    // Everything the screens read from a store, as text.
    static std::string lists(const DataModel& dm)
    {
        std::string out = "total " + std::to_string(dm.GrandTotalSisan) + " shown " + std::to_string(dm.theSisanNo) + "\n";
        for (const auto& s : dm.sisanList)
            out += std::to_string(s->Id) + " " + s->Namae + " " + std::to_string(s->SyokiKingaku) + " " +
                   std::to_string(s->Zankin) + "\n";
        for (const auto& h : dm.himokuList)
            out += std::to_string(h->Id) + " " + h->Namae + " " + std::to_string(h->Hno) + " " +
                   std::to_string(h->Ucount) + "\n";
        for (size_t p = 0; p < dm.itemList.size(); ++p) {
            const Items& i = *dm.itemList[p];
            out += std::to_string(i.Id) + " " + i.Hizuke + " " + i.strHimoku + " " + i.strNyuukin + " " +
                   i.strSyukkin + " " + std::to_string(i.Zankin) + " at " + std::to_string(dm.itemId2Idx.at(i.Id)) +
                   "\n";
        }
        return out;
    }

    // What a store opened now shows for the same asset.
    std::string freshLists()
    {
        DataModel fresh(path);
        fresh.theSisanNo = store->theSisanNo;
        if (!fresh.sisanList.empty()) EXPECT_TRUE(fresh.readFromItemsTable(fresh.sisanList[fresh.theSisanNo]->Id));
        return lists(fresh);
    }

    int64_t historyRows() { return scalar("SELECT COUNT(*) FROM History"); }

    // Kind:Target of every history row that carries changes, oldest first.
    std::string kinds()
    {
        std::string out;
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(side, "SELECT Kind, ifnull(Target, 0), length(Changeset) FROM History ORDER BY Id", -1, &s,
                           nullptr);
        while (sqlite3_step(s) == SQLITE_ROW) {
            out += (out.empty() ? "" : " ") + std::to_string(sqlite3_column_int(s, 0)) + ":" +
                   std::to_string(sqlite3_column_int(s, 1));
            if (sqlite3_column_int(s, 2) == 0) out += "(empty)";
        }
        sqlite3_finalize(s);
        return out;
    }
};

struct Case {
    const char* name;
    Change change;
    const char* label;
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

class EveryChangeTest : public HistoryFixture, public ::testing::WithParamInterface<Case> {};

TEST_P(EveryChangeTest, IsOneStepThatUndoTakesBackAndRedoMakesAgainAlsoAfterARestart)
{
    const Case& c = GetParam();
    const std::string before = dumpAll();
    ASSERT_TRUE(c.change(*store));
    const std::string after = dumpAll();
    ASSERT_NE(after, before);
    ASSERT_EQ(historyRows(), 1);
    ASSERT_NE(store->undoTarget(), nullptr);
    EXPECT_EQ(store->undoTarget()->Label, c.label);
    EXPECT_EQ(store->redoTarget(), nullptr);

    ASSERT_TRUE(store->undo());
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(store->undoTarget(), nullptr);
    ASSERT_NE(store->redoTarget(), nullptr);
    EXPECT_EQ(store->redoTarget()->Label, c.label);
    EXPECT_EQ(lists(*store), freshLists());

    ASSERT_TRUE(store->redo());
    EXPECT_EQ(dumpAll(), after);
    EXPECT_EQ(store->undoTarget()->Label, c.label);
    EXPECT_EQ(lists(*store), freshLists());
    EXPECT_EQ(kinds(), "1:0 2:1 3:1") << "the step, its undo and its redo, each with its changes";

    // The history survives the program: the next start undoes the same step.
    DataModel& reopened = open();
    showFirst(reopened);
    ASSERT_NE(reopened.undoTarget(), nullptr);
    EXPECT_EQ(reopened.undoTarget()->Label, c.label);
    ASSERT_TRUE(reopened.undo());
    ASSERT_TRUE(reopened.updateSisanZankinTable());  // as quitting does
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(lists(reopened), freshLists());
    EXPECT_TRUE(takeMessages().empty());
}

const Case kCases[] = {
    {"AddExpense", [](DataModel& d) { return d.itemNyuukinSyukkinInsert("2024-01-06", 2024, 1, 6, 1, 1, 3, 1500, "昼"); },
     "食費/外食 1,500円の追加"},
    {"AddTransfer", [](DataModel& d) { return d.itemIdouSisanInsert("2024-01-05", 2024, 1, 5, 1, 3, 2, 2000, ""); },
     "移動 S→T 2,000円の追加"},
    {"EditEntryIntoIncome",
     [](DataModel& d) { return d.itemUpdate(1, "2024-01-12", 2024, 1, 12, 1, 2, 5, 4000, "Mom's"); },
     "給与/その他 4,000円の編集"},
    {"DeleteEntry", [](DataModel& d) { return d.itemDelete(1); }, "食費/外食 1,200円の削除"},
    {"DeleteTransfer", [](DataModel& d) { return d.itemDeleteIdouPair(4, 3); }, "移動 S→T 700円の削除"},
    {"DeleteEntriesOfAsset", [](DataModel& d) { return d.itemDeleteWhereSisanNo(2); }, "資産『T』のデータの削除"},
    {"AddAsset", [](DataModel& d) { return d.sisanInsert("U", 300); }, "資産『U』の追加"},
    {"EditAsset", [](DataModel& d) { return d.sisanUpdate(1, "財布", 3000, 3000); }, "資産『S』の編集"},
    {"DeleteAssetWithEntries", [](DataModel& d) { return d.sisanDeleteWithItems(2); }, "資産『T』の削除"},
    {"AddCategory", [](DataModel& d) { return d.insertHimokuOfHiimoku(1, "日用品"); }, "費目『日用品』の追加"},
    {"AddSubItem", [](DataModel& d) { return d.insertUtiwakeOfHimoku(1, "食費/弁当", 1, 2); },
     "内訳『食費/弁当』の追加"},
    {"RenameCategory", [](DataModel& d) { return d.updateNamaeOfHimoku(1, "食料", {2, 3}, {"その他", "外食"}); },
     "費目『食費』の名前の変更"},
    {"RenameSubItem", [](DataModel& d) { return d.updateNamaeOfUtiwakeHimoku(3, "食費/外食費"); },
     "内訳『食費/外食』の名前の変更"},
    {"DeleteSubItem", [](DataModel& d) { return d.deleteUtiwakeHimoku(3, 1, 2); }, "内訳『食費/外食』の削除"},
    {"DeleteCategory", [](DataModel& d) { return d.deleteHimokuHimoku(1, {1, 2, 3}); }, "費目『食費』の削除"},
};

INSTANTIATE_TEST_SUITE_P(Store, EveryChangeTest, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) { return info.param.name; });

}  // namespace
