// A book's life in a sync folder: set up, joined by further PCs from a
// snapshot, files the folder must refuse, a copied book, two PCs with one
// number, a PC away for longer than the history is kept, and stopping.
#include <gtest/gtest.h>

#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "store/History.h"
#include "store/ImportRecords.h"
#include "sync/AtomicWrite.h"
#include "sync/Snapshot.h"
#include "tests/sync/SyncedPc.h"

namespace fs = std::filesystem;

namespace {

constexpr int64_t kDay = int64_t{24} * 3600 * 1000;

class SyncSetupTest : public ::testing::Test {
protected:
    fs::path dir = fs::temp_directory_path() / ("zenvora-setup-" + std::to_string(::getpid()));
    SyncedPc a{(dir / "a").string(), "居間"};
    SyncedPc b{(dir / "b").string(), "書斎"};
    int64_t genkin = 0;
    int64_t food = 0;

    void SetUp() override
    {
        a.setUp();
        deliver(a, b);
        b.join();
        genkin = a.dm->sisanList.front()->Id;
        food = a.himokuId("食費/その他");
    }
    void TearDown() override { fs::remove_all(dir); }

    void exchange()
    {
        for (int turn = 0; turn < 2; ++turn) {
            deliver(a, b);
            deliver(b, a);
            EXPECT_TRUE(a.round()) << a.status().problem;
            EXPECT_TRUE(b.round()) << b.status().problem;
        }
    }
    std::string opFile(SyncedPc& writer, SyncedPc& view, int64_t seq)
    {
        return SyncFolder(view.folderPath).opPath(writer.sync->identity()->install, seq);
    }
};

TEST_F(SyncSetupTest, aThirdPcJoinsFromASnapshotCatchesUpAndKeepsItsOwnBookAside)
{
    const int64_t lunch = a.addEntry(genkin, food, 1200, "2026-11-20");
    exchange();
    std::string error;
    ASSERT_TRUE(BookSync::writeSnapshotOf(b.bookPath, b.folderPath, b.sync->identity()->install, &error)) << error;
    // After the snapshot: a later entry on B, and an edit on A whose clock is
    // behind, so that the new PC rewinds and replays past the snapshot.
    b.addEntry(genkin, food, 500, "2026-11-22");
    a.wallMs -= 3'600'000;
    a.editEntry(lunch, "Bikou", "同僚と");
    deliver(a, b);
    deliver(b, a);

    SyncedPc c((dir / "c").string(), "寝室");
    c.addSisan("へそくり", 100);  // the new PC's own book, kept aside
    deliver(a, c);
    deliver(b, c);
    EXPECT_EQ(listSnapshots(SyncFolder(c.folderPath), a.sync->identity()->book).front().install,
              b.sync->identity()->install)
        << "the snapshot holding the most operations comes first";
    c.join();
    exchange();
    deliver(a, c);
    deliver(b, c);
    ASSERT_TRUE(c.round()) << c.status().problem;
    EXPECT_EQ(c.dump(), a.dump());
    EXPECT_EQ(c.scalar("SELECT count(*) FROM Items"), 2);
    EXPECT_EQ(c.text("SELECT Bikou FROM Items WHERE Id = " + std::to_string(lunch)), "同僚と");
    EXPECT_EQ(c.brokenRules(), "");
    EXPECT_EQ(c.sync->identity()->device, 3);
    EXPECT_FALSE(c.dm->undoTarget()) << "the steps of the other PCs are not on this PC's undo list";
    EXPECT_EQ(c.scalar("SELECT count(*) FROM History WHERE Kind <> 5"), 0);

    sqlite3* kept = nullptr;
    ASSERT_EQ(sqlite3_open_v2((c.bookPath + ".before-sync").c_str(), &kept, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(kept, "SELECT count(*) FROM Sisan WHERE Namae = 'へそくり'", -1, &s, nullptr);
    ASSERT_EQ(sqlite3_step(s), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(s, 0), 1);
    sqlite3_finalize(s);
    sqlite3_close(kept);
}

// An imported statement on a syncing book: its rows take the device's Ids,
// a transfer's two rows name each other, and the other PC gets the entries
// but not the import's own record, which stays with the PC that imported.
TEST_F(SyncSetupTest, anImportedStatementSyncsWithDeviceIdsAndItsRecordStaysOnThePcThatImported)
{
    const int64_t card = a.addSisan("カード", 0);
    exchange();
    ImportBatch batch;
    batch.record = {0, "jcb.csv", "abc", "jcb", "JCB", "1234", "2026-11-23 10:00:00", card, 3, 0, 0, 0};
    batch.entries = {{"2026-11-20", 2026, 11, 20, -1200, food, 0, 0, "昼食", "k1", "c1", "昼食"},
                     {"2026-11-21", 2026, 11, 21, 5000, 0, genkin, 0, "入金", "k2", "c2", "入金"},
                     {"2026-11-22", 2026, 11, 22, -300, food, 0, 0, "", "k3", "c3", "コーヒー"}};
    a.use();
    ImportOutcome outcome;
    ASSERT_TRUE(a.dm->importStatementEntries(batch, &outcome));
    const int device = a.sync->identity()->device;
    for (const int64_t id : a.ids("SELECT Id FROM Items WHERE SisanNo = " + std::to_string(card) +
                                  " OR Bikou = '入金'"))
        EXPECT_EQ(id % 16, device) << id;
    EXPECT_EQ(a.scalar("SELECT count(*) FROM Items a JOIN Items b ON a.IdouId = b.Id AND b.IdouId = a.Id "
                       "WHERE a.Bikou = '入金'"),
              2);
    exchange();
    EXPECT_EQ(a.dump(), b.dump());
    EXPECT_EQ(b.brokenRules(), "");
    EXPECT_EQ(b.scalar("SELECT count(*) FROM ImportRecord"), 0);
    EXPECT_EQ(a.scalar("SELECT count(*) FROM ImportOrigin"), 3);
}

// Recurring entries posted on a syncing book take the device's Ids and reach
// the other PC, whose search index takes in their notes; the rules stay on
// their PC, and a PC joining from a snapshot holding them does not post them.
TEST_F(SyncSetupTest, postedRecurringEntriesSyncWhileTheirRulesAndCardsStayOnTheirPc)
{
    const int64_t bank = a.addSisan("銀行", 0);
    exchange();
    ASSERT_TRUE(b.dm->openSearchIndex());
    a.use();
    Teiki rent{0, bank, 1, food, 0, 80000, "家賃"};
    rent.Kaisi = "2026-11-01";
    rent.Hi = 25;
    Teiki saving{0, genkin, 3, 0, bank, 20000, "積立"};
    saving.Kaisi = "2026-11-01";
    saving.Hi = 25;
    ASSERT_TRUE(a.dm->teikiInsert(rent) && a.dm->teikiInsert(saving));
    const int64_t rentId = a.dm->teikiList[0]->Id, savingId = a.dm->teikiList[1]->Id;
    ASSERT_TRUE(a.dm->teikiKityou({{rentId, "2026-11-25", "2026-11-25", 80000, false},
                                   {savingId, "2026-11-25", "2026-11-25", 20000, false}},
                                  {{rentId, "2026-11-25"}, {savingId, "2026-11-25"}}));
    const int device = a.sync->identity()->device;
    const std::vector<int64_t> posted = a.ids("SELECT Id FROM Items WHERE Bikou IN ('家賃', '積立')");
    ASSERT_EQ(posted.size(), 3u);
    for (const int64_t id : posted) EXPECT_EQ(id % 16, device) << id;
    exchange();
    EXPECT_EQ(a.dump(), b.dump());
    EXPECT_EQ(b.brokenRules(), "");
    EXPECT_EQ(b.scalar("SELECT count(*) FROM Teiki"), 0) << "the rules stay on the PC they were made on";
    EXPECT_EQ(b.scalar("SELECT count(*) FROM ItemsFtsEntry e JOIN Items i ON i.Id = e.Id WHERE i.Bikou = '家賃'"), 1)
        << "the other PC's entry is in the search index";

    // A card on the first PC: its settlements are posted there alone.
    Card card;
    card.SisanNo = a.addSisan("カード", 0);
    card.PayingSisanNo = bank;
    a.use();
    ASSERT_TRUE(a.dm->cardUpdate(card, {2026, 11, 23}));
    std::string error;
    ASSERT_TRUE(BookSync::writeSnapshotOf(a.bookPath, a.folderPath, a.sync->identity()->install, &error)) << error;
    SyncedPc c((dir / "c").string(), "寝室");
    deliver(a, c);
    c.join();
    EXPECT_EQ(c.scalar("SELECT count(*) FROM Items WHERE Bikou = '家賃'"), 1);
    EXPECT_EQ(c.scalar("SELECT count(*) FROM Teiki") + c.scalar("SELECT count(*) FROM CardCycles"), 0)
        << "a joining PC never posts another PC's rules or card settlements";
}

TEST_F(SyncSetupTest, aDamagedForeignOrCopiedFileIsRefusedByNameAndNothingOfItsWriterAfterItIsApplied)
{
    for (int amount : {100, 200, 300}) b.addEntry(genkin, food, amount, "2026-11-21");
    std::string second;
    ASSERT_TRUE(readWholeFile(opFile(b, b, 2), &second, nullptr));
    deliver(b, a);
    // The sync tool cut the second file short, and made a conflict copy of
    // the first holding another change.
    std::ofstream(opFile(b, a, 2), std::ios::binary | std::ios::trunc) << second.substr(0, second.size() - 7);
    const fs::path first = opFile(b, a, 1);
    fs::copy_file(opFile(b, a, 3), first.parent_path() / "0000000001.sync-conflict-20261123-101500-ABCDEFG.op");
    RoundReport report;
    EXPECT_TRUE(a.round(&report));
    EXPECT_EQ(report.arrived, 1u);
    EXPECT_EQ(a.ids("SELECT Syukkin FROM Items ORDER BY Id"), (std::vector<int64_t>{100}));
    const std::string refusal = "同期フォルダのファイル「" + opFile(b, a, 2) +
                                "」は途中で切れています。このファイルとその PC のこれより後の変更は適用していません。";
    EXPECT_EQ(report.refusals, (std::vector<std::string>{refusal}));
    EXPECT_EQ(a.status().state, SyncStatus::State::Problem);
    EXPECT_EQ(a.status().problem, refusal);

    // The whole file arrives: the rest goes in, the problem is gone.
    std::ofstream(opFile(b, a, 2), std::ios::binary | std::ios::trunc) << second;
    EXPECT_TRUE(a.round());
    EXPECT_EQ(a.ids("SELECT Syukkin FROM Items ORDER BY Id"), (std::vector<int64_t>{100, 200, 300}));
    EXPECT_NE(a.status().state, SyncStatus::State::Problem);

    // A file of another book under B's next name is refused as well.
    b.addEntry(genkin, food, 400, "2026-11-22");
    Op foreign;
    decodeOpFile(second, b.sync->identity()->book, &foreign);
    foreign.meta.book = Uuid::generate();
    foreign.meta.seq = 4;
    std::ofstream(opFile(b, a, 4), std::ios::binary) << encodeOpFile(foreign);
    EXPECT_TRUE(a.round(&report));
    EXPECT_EQ(report.arrived, 0u);
    EXPECT_NE(a.status().problem.find("は別の家計簿のものです。"), std::string::npos) << a.status().problem;
}

TEST_F(SyncSetupTest, aCopyOfTheBookOnAnotherComputerAndTwoPcsWithOneNumberDoNotSync)
{
    // The book file copied to another computer, with its sync settings.
    BookSync copied(*b.dm, "another-machine");
    ASSERT_TRUE(copied.load());
    b.addEntry(genkin, food, 100, "2026-11-21");
    EXPECT_FALSE(copied.round().ran);
    EXPECT_FALSE(copied.publish());
    EXPECT_EQ(copied.status().problem.rfind("この家計簿は別のコンピューターで同期を設定したもののコピーです。", 0), 0u);

    // Two PCs that joined at once and took the same number: both stop.
    deliver(b, a);
    std::ofstream(fs::path(a.folderPath) / "devices" / ("2-" + Uuid::generate().text())) << "台所\n";
    a.addEntry(genkin, food, 200, "2026-11-21");
    EXPECT_FALSE(a.round());
    EXPECT_EQ(a.status().problem.rfind("PC 番号 2 を 2 台の PC", 0), 0u) << a.status().problem;
    EXPECT_EQ(a.scalar("SELECT count(*) FROM Items"), 1) << "nothing applied while the numbers clash";
}

TEST_F(SyncSetupTest, aPcAwayLongerThanTheHistoryIsKeptIsRetiredAndToldToRebuild)
{
    exchange();
    b.addEntry(genkin, food, 999, "2026-05-01");  // made offline: never reaches A
    // A goes on alone for 200 days, syncing every day.
    for (int day = 0; day < 200; day += 10) {
        a.wallMs += 10 * kDay;
        a.addEntry(genkin, food, 100 + day, "2026-11-21");
        ASSERT_TRUE(a.round()) << a.status().problem;
    }
    EXPECT_TRUE(fs::exists(fs::path(a.folderPath) / "retired" / b.sync->identity()->install.text()));
    EXPECT_GT(a.scalar("SELECT count(*) FROM History"), a.scalar("SELECT count(*) FROM SyncLog"))
        << "the order is pruned once no known PC needs it";
    deliver(b, a);
    ASSERT_TRUE(a.round());
    EXPECT_EQ(a.scalar("SELECT count(*) FROM Items WHERE Syukkin = 999"), 0);

    deliver(a, b);
    EXPECT_FALSE(b.round());
    EXPECT_EQ(b.status().problem.rfind("この PC は同期から外されています", 0), 0u) << b.status().problem;

    // B rebuilds from the folder under a new installation.
    std::string error;
    ASSERT_TRUE(b.sync->stop(&error)) << error;
    ASSERT_TRUE(BookSync::writeSnapshotOf(a.bookPath, a.folderPath, a.sync->identity()->install, &error)) << error;
    deliver(a, b);
    b.wallMs = a.wallMs;
    b.join();
    exchange();
    EXPECT_EQ(b.dump(), a.dump());
}

TEST_F(SyncSetupTest, settingUpRefusesABookInsideTheFolderOrAFolderHoldingAnotherBook)
{
    SyncedPc c((dir / "c").string(), "寝室");
    std::string error;
    EXPECT_FALSE(c.sync->setUp((dir / "c").string(), "寝室", &error));
    EXPECT_EQ(error.rfind("家計簿のファイルが同期フォルダの中にあります。", 0), 0u) << error;
    deliver(a, c);
    EXPECT_FALSE(c.sync->setUp(c.folderPath, "寝室", &error));
    EXPECT_EQ(error, "この同期フォルダにはすでに家計簿があります。ほかの PC の家計簿を使うときは"
                     "「この同期フォルダの家計簿を使う」を選んでください。");
    EXPECT_FALSE(c.sync->join(c.folderPath, "", c.bookPath + ".kept", &error));
    EXPECT_EQ(error, "この PC の名前を入れてください。");
    EXPECT_FALSE(c.sync->syncing());
}

TEST_F(SyncSetupTest, aPcThatStopsIsRetiredAndTheOthersStopWaitingForIt)
{
    b.addEntry(genkin, food, 100, "2026-11-21");
    std::string error;
    ASSERT_TRUE(b.sync->stop(&error)) << error;
    EXPECT_FALSE(b.sync->syncing());
    EXPECT_EQ(b.scalar("SELECT count(*) FROM SyncState"), 0);
    b.addEntry(genkin, food, 200, "2026-11-22");  // not shipped
    deliver(b, a);
    ASSERT_TRUE(a.round());
    EXPECT_EQ(a.ids("SELECT Syukkin FROM Items ORDER BY Id"), (std::vector<int64_t>{100}));
    a.addEntry(genkin, food, 300, "2026-11-23");
    ASSERT_TRUE(a.round());
    EXPECT_EQ(a.status().state, SyncStatus::State::Synced) << "a retired PC is not waited for";
}

}  // namespace
