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

    void TearDown() override
    {
        setHistoryClock(nullptr);
        StoreFixture::TearDown();
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
        if (!fresh.sisanList.empty()) {
            EXPECT_TRUE(fresh.readFromItemsTable(fresh.sisanList[fresh.theSisanNo]->Id));
        }
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

using HistoryTest = HistoryFixture;

constexpr int64_t kNow = 1795000000000;  // 2026-11-18
constexpr int64_t kDay = 24 * 3600 * 1000;

TEST_F(HistoryTest, UndoShowsTheAssetOfTheChangeANewChangeEndsRedoAndTheHistoryListsTheRows)
{
    setHistoryClock([] { return kNow; });
    ASSERT_TRUE(store->itemDelete(6));  // T's 外食 200, while S is shown
    const int64_t deletion = store->undoTarget()->Id;
    StepFocus focus;
    ASSERT_TRUE(store->undo(&focus));
    EXPECT_EQ(store->theSisanNo, 1);
    EXPECT_EQ(focus.itemId, 6);
    ASSERT_EQ(store->itemList.size(), 2u);
    EXPECT_EQ(store->itemList[1]->Id, 6);
    ASSERT_NE(store->redoTarget(), nullptr);
    ASSERT_TRUE(store->itemNyuukinSyukkinInsert("2024-02-01", 2024, 2, 1, 2, 2, 5, 100, ""));
    EXPECT_EQ(store->redoTarget(), nullptr);
    EXPECT_EQ(store->undoTarget()->Label, "給与/その他 100円の追加");

    // Newest first; only the deletion among the deleting operations (an undo of
    // a deletion puts rows back).
    ASSERT_TRUE(store->readFromHistoryTable(false));
    ASSERT_EQ(store->historyList.size(), 3u);
    EXPECT_EQ(store->historyList[1].Label, "「食費/外食 200円の削除」を元に戻す");
    EXPECT_EQ(store->historyList[1].Kind, HistoryKind::Undo);
    EXPECT_EQ(store->historyList[1].Target, deletion);
    ASSERT_TRUE(store->readFromHistoryTable(true));
    ASSERT_EQ(store->historyList.size(), 1u);
    const HistoryEntry& shown = store->historyList[0];
    EXPECT_EQ(shown.Id, deletion);
    EXPECT_EQ(shown.At, kNow);
    EXPECT_EQ(shown.Sisans, "T");
    EXPECT_EQ(shown.Changes, 1);
    std::vector<HistoryRowView> rows;
    ASSERT_TRUE(store->readHistoryRows(deletion, rows));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].change + rows[0].kind + rows[0].hizuke + rows[0].sisan + rows[0].himoku + rows[0].syukkin,
              "削除入力2024-01-08T食費/外食200");
    // An edit shows the row before and after.
    ASSERT_TRUE(store->itemUpdate(1, "2024-01-05", 2024, 1, 5, 1, 1, 3, 1500, "夕食"));
    ASSERT_TRUE(store->readHistoryRows(store->undoTarget()->Id, rows));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].change + rows[0].syukkin + rows[0].bikou + "|" + rows[1].change + rows[1].syukkin +
                  rows[1].bikou,
              "変更前1,200|変更後1,500夕食");
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(HistoryTest, ALaterChangeThatConflictsRefusesTheRevertNamesThatStepAndChangesNothing)
{
    setHistoryClock([] { return kNow; });
    const std::string when = "（" + formatHistoryTime(kNow) + "）";
    const auto refused = [&](int64_t step, const std::string& message) {
        const std::string tables = dumpAll();
        const std::string shown = lists(*store);
        const int64_t rows = historyRows();
        EXPECT_FALSE(store->revertStep(step));
        EXPECT_EQ(takeMessages(), (Messages{{message + "\n何も変更していません。", "information"}}));
        EXPECT_EQ(dumpAll(), tables);
        EXPECT_EQ(lists(*store), shown);
        EXPECT_EQ(historyRows(), rows);
    };
    // The same row edited since.
    ASSERT_TRUE(store->itemNyuukinSyukkinInsert("2024-02-01", 2024, 2, 1, 1, 1, 3, 1200, ""));
    const int64_t added = store->undoTarget()->Id;
    ASSERT_TRUE(store->itemUpdate(7, "2024-02-01", 2024, 2, 1, 1, 1, 3, 1500, ""));
    refused(added, "「食費/外食 1,200円の追加」を取り消せません。\n後の操作「食費/外食 1,500円の編集」" + when +
                       "が同じデータを変更しています。");
    // An entry deleted, then its sub-item: the entry cannot come back alone.
    ASSERT_TRUE(store->itemDelete(2));
    const int64_t deleted = store->undoTarget()->Id;
    ASSERT_TRUE(store->deleteUtiwakeHimoku(2, 1, 2));
    refused(deleted, "「食費/その他 300円の削除」を取り消せません。\n後の操作「内訳『食費/その他』の削除」" + when +
                         "がその費目・内訳を削除しています。");
    // A sub-item added, then entries filed under it: it cannot go alone.
    ASSERT_TRUE(store->insertUtiwakeOfHimoku(2, "給与/手当", 4, 1));
    const int64_t subItem = store->undoTarget()->Id;
    ASSERT_TRUE(store->itemNyuukinSyukkinInsert("2024-02-02", 2024, 2, 2, 1, 2, 6, 800, ""));
    refused(subItem, "「内訳『給与/手当』の追加」を取り消せません。\n後の操作「給与/手当 800円の追加」" + when +
                         "がその内訳にデータを追加しています。");

    // Only derived values in the way: a count that moved since and a stored
    // balance written at quitting are brought right, not refused.
    ASSERT_TRUE(store->insertUtiwakeOfHimoku(2, "給与/賞与", 4, 2));
    ASSERT_TRUE(store->itemDelete(8));
    ASSERT_TRUE(store->revertStep(subItem));
    EXPECT_EQ(scalar("SELECT Ucount FROM Himoku WHERE Id=4"), 2);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Himoku WHERE Hno=4 AND Ucount=0"), 2);
    ASSERT_TRUE(store->sisanUpdate(2, "銀行", 100, 100));
    exec("UPDATE Sisan SET Zankin=777 WHERE Id=2");
    ASSERT_TRUE(store->undo());
    EXPECT_NE(dump("Sisan").find("\n2|T|0|500|\n"), std::string::npos) << dump("Sisan");
    EXPECT_EQ(lists(*store), freshLists());
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(HistoryTest, AFailureInsideAnUndoLeavesTheBookTheHistoryAndTheListsAsTheyWere)
{
    ASSERT_TRUE(store->deleteHimokuHimoku(1, {1, 2, 3}));
    ASSERT_TRUE(store->recomputeAllSisanZankin());
    const std::string tables = dumpAll();
    const std::string shown = lists(*store);
    const int64_t rows = historyRows();
    armFailure("Items", "INSERT", "NEW.Id = 6");  // the last entry the undo puts back
    EXPECT_FALSE(store->undo());
    EXPECT_EQ(takeMessages(), (Messages{{"「費目『食費』の削除」を元に戻せません。\nデータベースがこの変更を受け付けませんでした（制約違反）。\n何も変更していません。", "information"}}));
    EXPECT_EQ(dumpAll(), tables);
    EXPECT_EQ(lists(*store), shown);
    EXPECT_EQ(historyRows(), rows);
    EXPECT_EQ(store->undoTarget()->Label, "費目『食費』の削除");
    exec("DROP TRIGGER armed_failure");
    EXPECT_TRUE(store->undo());
    EXPECT_EQ(lists(*store), freshLists());
}

TEST_F(HistoryTest, TheStartPrunesBy180DaysAnd20MegabytesButKeepsTheNewestHundred)
{
    setHistoryClock([] { return kNow; });
    const auto addRows = [&](int count, int64_t at, int bytes) {
        exec("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) +
             ") INSERT INTO History (At, Kind, Target, Label, Sisans, Changes, Deletes, Changeset) SELECT " +
             std::to_string(at) + ", 1, NULL, 'old', '', 1, 0, zeroblob(" + std::to_string(bytes) + ") FROM n");
    };
    addRows(150, kNow - 181 * kDay, 10);
    addRows(50, kNow - 179 * kDay, 10);
    open();
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM History"), 100);
    EXPECT_EQ(scalar("SELECT MIN(Id) FROM History"), 101);

    addRows(800, kNow, 30000);  // 24 MB
    open();
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM History"), 699);  // 699 x 30,000 bytes fit in 20 MiB
    EXPECT_EQ(scalar("SELECT MIN(Id) FROM History"), 1000 - 699 + 1);
    EXPECT_TRUE(takeMessages().empty());
}

}  // namespace
