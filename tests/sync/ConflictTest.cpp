// The hard cases one by one, made through the store on two PCs sharing a
// folder: what each book holds afterwards, the one line the household sees
// for each case, and its 元に戻す.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

#include "store/History.h"
#include "tests/sync/SyncedPc.h"

namespace fs = std::filesystem;

namespace {

class ConflictTest : public ::testing::Test {
protected:
    fs::path dir = fs::temp_directory_path() / ("zenvora-conflict-" + std::to_string(::getpid()));
    SyncedPc a{(dir / "a").string(), "居間"};
    SyncedPc b{(dir / "b").string(), "書斎"};
    int64_t genkin = 0;
    int64_t gaisyoku = 0;  // 食費/その他
    int64_t lunch = 0;

    void SetUp() override
    {
        a.setUp();
        deliver(a, b);
        b.join();
        genkin = a.dm->sisanList.front()->Id;
        gaisyoku = a.himokuId("食費/その他");
        lunch = a.addEntry(genkin, gaisyoku, 1200, "2026-11-20");
        exchange();
    }
    void TearDown() override { fs::remove_all(dir); }

    // Both PCs see everything; returns the lines each was shown.
    std::pair<std::vector<SyncNotice>, std::vector<SyncNotice>> exchange()
    {
        RoundReport ra, rb;
        deliver(a, b);
        deliver(b, a);
        EXPECT_TRUE(a.round(&ra)) << a.status().problem;
        EXPECT_TRUE(b.round(&rb)) << b.status().problem;
        deliver(a, b);
        deliver(b, a);
        EXPECT_TRUE(a.round()) << a.status().problem;
        EXPECT_EQ(a.dump(), b.dump());
        EXPECT_EQ(a.brokenRules(), "");
        EXPECT_EQ(b.brokenRules(), "");
        return {ra.notices, rb.notices};
    }

    std::string entry(SyncedPc& pc, int64_t id, const std::string& columns)
    {
        const std::string sql = "SELECT " + columns + " FROM Items WHERE Id = " + std::to_string(id);
        return std::to_string(pc.scalar("SELECT count(*) FROM Items WHERE Id = " + std::to_string(id))) + ":" +
               pc.text(sql);
    }

    // The notices kept in the book, newest first.
    std::vector<StoredNotice> kept(SyncedPc& pc)
    {
        std::vector<StoredNotice> notices;
        pc.dm->runSyncWork([&](sqlite3* db) { return readNotices(db, &notices); });
        return notices;
    }
};

TEST_F(ConflictTest, theLaterEditOfAFieldWinsOtherFieldsMergeAndTheListCanPutTheEarlierOneBack)
{
    a.editEntry(lunch, "Amount", "1500");
    b.wallMs = a.wallMs + 5000;
    b.editEntry(lunch, "Amount", "1300");  // later by the clocks
    a.editEntry(lunch, "Bikou", "同僚と");
    const auto [onA, onB] = exchange();
    EXPECT_EQ(entry(a, lunch, "Syukkin || ' ' || Bikou"), "1:1300 同僚と");
    const std::vector<SyncNotice>& shown = onA.empty() ? onB : onA;
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "同じ支出が両方で編集されました: 新しい方を採用");
    EXPECT_EQ(shown[0].detail, "2026-11-20 現金 食費/その他 1,300円 同僚と");
    // The shown balance follows the winner on the PC whose own edit lost.
    EXPECT_EQ(a.dm->sisanList.front()->Zankin, -1300);

    // Kept once in each book, however often the operation was replayed.
    SyncedPc& loser = onA.empty() ? b : a;
    std::vector<StoredNotice> notices = kept(loser);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_EQ(notices[0].notice.losing.at(11), Value::ofInteger(1500));
    loser.use();
    ASSERT_TRUE(loser.dm->rewriteRow(notices[0].notice.table, notices[0].notice.rowId, notices[0].notice.losing,
                                     "同期の変更を元に戻す"));
    exchange();
    EXPECT_EQ(entry(a, lunch, "Syukkin || ' ' || Bikou"), "1:1500 同僚と");
}

TEST_F(ConflictTest, anEntryEditedOnOnePcAndDeletedOnTheOtherIsKeptWithTheEditEitherWay)
{
    for (bool deleteFirst : {true, false}) {
        SyncedPc& deleter = deleteFirst ? a : b;
        SyncedPc& editor = deleteFirst ? b : a;
        const int64_t id = a.addEntry(genkin, gaisyoku, 700, "2026-11-22");
        exchange();
        deleter.deleteEntry(id);
        editor.wallMs = deleter.wallMs + (deleteFirst ? 1000 : -1000);
        editor.editEntry(id, "Bikou", "取っておく");
        const auto [onA, onB] = exchange();
        EXPECT_EQ(entry(a, id, "Bikou"), "1:取っておく") << deleteFirst;
        const std::vector<SyncNotice>& shown = onA.empty() ? onB : onA;
        ASSERT_EQ(shown.size(), 1u) << deleteFirst;
        EXPECT_EQ(shown[0].kind, NoticeKind::EditKept);
        EXPECT_EQ(shown[0].text, "一方で削除された支出が他方で編集されていました: 編集された方を残しました");
    }
}

TEST_F(ConflictTest, aDeletedCategoryComesBackHoldingOnlyTheEntriesAddedMeanwhile)
{
    const int64_t category = a.addCategory(1, "交際費");
    const int64_t gift = a.addSubItem(category, "贈答");
    const int64_t old = a.addEntry(genkin, gift, 3000, "2026-11-01");
    exchange();
    a.deleteCategory(category);
    const int64_t fresh = b.addEntry(genkin, gift, 5000, "2026-11-23");
    const auto [onA, onB] = exchange();
    EXPECT_EQ(entry(a, old, "1"), "0:");
    EXPECT_EQ(entry(a, fresh, "Syukkin"), "1:5000");
    EXPECT_EQ(a.ids("SELECT Id FROM Himoku WHERE Hno = " + std::to_string(category) + " ORDER BY Id"),
              (std::vector<int64_t>{category, gift}));
    EXPECT_EQ(a.scalar("SELECT Ucount FROM Himoku WHERE Id = " + std::to_string(category)), 1);
    std::vector<std::string> lines;
    for (const SyncNotice& n : onA) lines.push_back(n.text + " " + n.detail);
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "一方で削除された内訳に他方で追加がありました: 追加された分だけで残しました 交際費/贈答",
                         "一方で削除された費目に他方で追加がありました: 追加された分だけで残しました 交際費"}));
    // The category editor and the entry list on A show it again.
    EXPECT_TRUE(a.dm->himokuId2Idx.find(gift));
}

TEST_F(ConflictTest, aTransferKeepsBothHalvesAndEveryBalanceFollows)
{
    const int64_t bank = a.addSisan("普通預金", 50000);
    exchange();
    const auto [moto, saki] = b.addTransfer(bank, genkin, 20000, "2026-11-25");
    a.deleteSisan(bank);  // before the transfer arrived: the asset comes back with it
    exchange();
    EXPECT_EQ(entry(a, moto, "IdouId"), "1:" + std::to_string(saki));
    EXPECT_EQ(entry(a, saki, "IdouId"), "1:" + std::to_string(moto));
    EXPECT_EQ(a.scalar("SELECT SyokiKingaku FROM Sisan WHERE Id = " + std::to_string(bank)), 50000);
    for (SyncedPc* pc : {&a, &b}) {
        const int64_t* position = pc->dm->sisanId2Idx.find(bank);
        ASSERT_TRUE(position) << pc->name;
        EXPECT_EQ(pc->dm->sisanList[static_cast<size_t>(*position)]->Zankin, 30000) << pc->name;
    }
}

TEST_F(ConflictTest, anUndoIsAnOperationOfItsOwnAndMeetsTheOtherPcsChangeWithAMessage)
{
    a.deleteEntry(lunch);
    exchange();
    a.undo();
    exchange();
    EXPECT_EQ(entry(b, lunch, "Syukkin"), "1:1200") << "the undo reached the other PC";
    EXPECT_FALSE(b.dm->undoTarget()) << "the other PC's steps are not on this PC's undo list";

    // B edits the entry that came back; A's redo of its deletion meets it.
    b.editEntry(lunch, "Amount", "999");
    exchange();
    a.use();
    EXPECT_FALSE(a.dm->redo());
    ASSERT_EQ(a.messages.size(), 1u);
    EXPECT_EQ(a.messages[0],
              "「食費/その他 1,200円の削除」をやり直せません。\n後の操作「書斎: 食費/その他 999円の編集」（" +
                  formatHistoryTime(a.scalar("SELECT At FROM History WHERE Label = '書斎: 食費/その他 999円の編集'")) + "）が同じデータを変更しています。\n何も変更していません。 / information");
    a.messages.clear();
    EXPECT_EQ(entry(a, lunch, "Syukkin"), "1:999");
}

}  // namespace
