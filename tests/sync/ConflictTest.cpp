// The hard cases one by one, on two PCs sharing a folder: what each book
// holds afterwards and the one line the user sees for each case.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

#include "sync/SyncLog.h"
#include "tests/sync/SyncPc.h"

namespace fs = std::filesystem;

namespace {

class ConflictTest : public ::testing::Test {
protected:
    fs::path dir = fs::temp_directory_path() / ("zenvora-conflict-" + std::to_string(::getpid()));
    Uuid book = Uuid::generate();
    SyncPc a{(dir / "a").string(), book, "居間"};
    SyncPc b{(dir / "b").string(), book, "書斎", &a};
    int64_t lunch = 0;

    void SetUp() override
    {
        a.seedStarterRows();
        b.seedStarterRows();
        lunch = a.addEntry(1, 3, 1, 1200, "2026-11-20");
        exchange();
    }
    void TearDown() override { fs::remove_all(dir); }

    // Both PCs see everything; returns the lines each was shown.
    std::pair<std::vector<SyncNotice>, std::vector<SyncNotice>> exchange()
    {
        RoundResult ra, rb;
        std::string error;
        deliver(a, b);
        deliver(b, a);
        EXPECT_TRUE(a.sync(&ra, &error)) << error;
        EXPECT_TRUE(b.sync(&rb, &error)) << error;
        EXPECT_EQ(a.dump(), b.dump());
        EXPECT_EQ(a.brokenRules(), "");
        return {ra.notices, rb.notices};
    }

    std::string entry(SyncPc& pc, int64_t id, const std::string& columns)
    {
        const std::string sql = "SELECT " + columns + " FROM Items WHERE Id = " + std::to_string(id);
        return std::to_string(pc.scalar("SELECT count(*) FROM Items WHERE Id = " + std::to_string(id))) + ":" +
               std::to_string(pc.scalar(sql));
    }
};

TEST_F(ConflictTest, theLaterEditOfAFieldWinsAndEditsOfOtherFieldsBothStay)
{
    a.editEntry(lunch, "Amount", "1500");
    b.wallMs = a.wallMs + 5000;
    b.editEntry(lunch, "Amount", "1300");  // later by the clocks
    b.editEntry(lunch, "Nen", "2027");
    a.editEntry(lunch, "Hi", "21");
    const auto [onA, onB] = exchange();
    EXPECT_EQ(entry(a, lunch, "Syukkin"), "1:1300");
    EXPECT_EQ(entry(a, lunch, "Nen * 100 + Hi"), "1:202721");
    const std::vector<SyncNotice>& shown = onA.empty() ? onB : onA;
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "同じ支出が両方で編集されました: 新しい方を採用");
    EXPECT_EQ(shown[0].detail, "2026-11-20 現金 食費/その他 1,300円");
    EXPECT_EQ(shown[0].losing.at(11), Value::ofInteger(1500));
}

TEST_F(ConflictTest, anEntryEditedOnOnePcAndDeletedOnTheOtherIsKeptWithTheEditEitherWay)
{
    for (bool deleteFirst : {true, false}) {
        SyncPc& deleter = deleteFirst ? a : b;
        SyncPc& editor = deleteFirst ? b : a;
        const int64_t id = a.addEntry(1, 3, 1, 700, "2026-11-22");
        exchange();
        deleter.deleteEntry(id);
        editor.wallMs = deleter.wallMs + (deleteFirst ? 1000 : -1000);
        editor.editEntry(id, "Bikou", "'取っておく'");
        const auto [onA, onB] = exchange();
        EXPECT_EQ(entry(a, id, "length(Bikou)"), "1:5") << deleteFirst;
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
    const int64_t old = a.addEntry(1, gift, 1, 3000, "2026-11-01");
    exchange();
    a.deleteCategory(category);
    const int64_t fresh = b.addEntry(1, gift, 1, 5000, "2026-11-23");
    const auto [onA, onB] = exchange();
    EXPECT_EQ(entry(a, old, "1"), "0:0");
    EXPECT_EQ(entry(a, fresh, "Syukkin"), "1:5000");
    EXPECT_EQ(a.ids("SELECT Id FROM Himoku WHERE Hno = " + std::to_string(category) + " ORDER BY Id"),
              (std::vector<int64_t>{category, gift}));
    EXPECT_EQ(a.scalar("SELECT Ucount FROM Himoku WHERE Id = " + std::to_string(category)), 1);
    std::vector<std::string> lines;
    for (const SyncNotice& n : onA) lines.push_back(n.text + " " + n.detail);
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "一方で削除された内訳に他方で追加がありました: 追加された分だけで残しました 交際費/贈答",
                         "一方で削除された費目に他方で追加がありました: 追加された分だけで残しました 交際費"}));
}

TEST_F(ConflictTest, aTransferEditedOnOnePcAndDeletedOnTheOtherStaysAPair)
{
    const int64_t bank = a.addSisan("普通預金", 50000);
    const auto [moto, saki] = a.addTransfer(bank, 1, 20000, "2026-11-25");
    exchange();
    b.deleteEntry(saki);
    a.wallMs = b.wallMs + 1000;
    a.editEntry(moto, "Amount", "25000");
    exchange();
    EXPECT_EQ(entry(a, moto, "Syukkin"), "1:25000");
    EXPECT_EQ(entry(a, saki, "Nyuukin"), "1:25000");
    EXPECT_EQ(a.scalar("SELECT Zankin FROM Sisan WHERE Id = " + std::to_string(bank)), 25000);
}

TEST_F(ConflictTest, anOperationOlderThanThePrunedLogAsksForARebuildAndChangesNothing)
{
    b.wallMs = a.wallMs - 60'000;
    b.addEntry(1, 3, 1, 100, "2026-11-24");  // sorts before A's next one
    a.addEntry(1, 3, 1, 200, "2026-11-24");
    OpKey newest;
    ASSERT_TRUE(newestKey(a.db, &newest));
    ASSERT_TRUE(pruneLog(a.db, newest));
    const std::string before = a.dump();
    deliver(b, a);
    std::string error;
    EXPECT_FALSE(a.sync(nullptr, &error));
    EXPECT_NE(error.find("同期フォルダから家計簿を作り直してください"), std::string::npos) << error;
    EXPECT_EQ(a.dump(), before);
}

}  // namespace
