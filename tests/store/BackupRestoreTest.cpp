#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "store/BackupRestore.h"
#include "tests/store/StoreFixture.h"

namespace fs = std::filesystem;

namespace {

// The small book with entries on both assets, backed up on 1 November; the
// book has changed since.
class BackupRestoreTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSmallBook();
        addEntry(1, "2024-01-05", 1, 3, 1200);
        addEntry(1, "2024-01-06", 1, 2, 300);
        addEntry(2, "2024-01-07", 2, 5, 5000);
        backups = dir + "/backups";
        std::string error;
        ASSERT_EQ(backupBookOnce(path, backups, "20261101", 14, &error), BackupResult::Made) << error;
        backup = backupPath(backups, "20261101");
        beforeAll = dumpOf(backup);
        // Since then: one entry deleted, one changed, one added, an asset added.
        DataModel& dm = open();
        ASSERT_TRUE(dm.itemDelete(2));
        ASSERT_TRUE(dm.itemUpdate(1, "2024-01-05", 2024, 1, 5, 1, 1, 3, 1500, ""));
        ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2024-02-01", 2024, 2, 1, 2, 1, 3, 700, ""));
        ASSERT_TRUE(dm.sisanInsert("U", 50));
        store.reset();
    }

    // Every table of a book, the history included, as text.
    std::string dumpOf(const std::string& file)
    {
        sqlite3* saved = side;
        EXPECT_EQ(sqlite3_open(file.c_str(), &side), SQLITE_OK);
        const std::string out = dumpAll() + dump("History");
        sqlite3_close(side);
        side = saved;
        return out;
    }

    std::string backups, backup, beforeAll;
};

TEST_F(BackupRestoreTest, ABackupIsSummedAndComparedWithTheBookWithoutChangingIt)
{
    const auto bytes = [](const std::string& f) {
        std::ifstream in(f, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    const std::string unchanged = bytes(backup);
    std::string error;
    ASSERT_EQ(backupBookOnce(path, backups, "20261102", 14, &error), BackupResult::Made);
    EXPECT_EQ(listBackups(backups).front(), backups + "/Zenvora-20261102.sql");

    const BackupSummary summary = readBackupSummary(backup);
    EXPECT_EQ(summary.error, "");
    EXPECT_EQ(summary.day, "20261101");
    EXPECT_EQ(summary.bytes, static_cast<int64_t>(unchanged.size()));
    EXPECT_EQ(summary.entries, 3);
    EXPECT_EQ(summary.grandTotal, 10000 - 1200 - 300 + 5000);

    const BackupDifference diff = compareWithBackup(path, backup);
    EXPECT_EQ(diff.error, "");
    EXPECT_EQ(diff.added, 2);    // the changed entry as it is, the new one
    EXPECT_EQ(diff.removed, 2);  // the deleted one, the changed one as it was
    ASSERT_EQ(diff.balances.size(), 3u);
    EXPECT_EQ(diff.balances[0].namae, "S");
    EXPECT_EQ(*diff.balances[0].then, 8500);
    EXPECT_EQ(*diff.balances[0].now, 8500);
    EXPECT_EQ(*diff.balances[1].then, 5000);
    EXPECT_EQ(*diff.balances[1].now, 4300);
    EXPECT_EQ(diff.balances[2].namae, "U");
    EXPECT_FALSE(diff.balances[2].then.has_value());
    EXPECT_EQ(bytes(backup), unchanged);

    std::ofstream(backups + "/Zenvora-20261103.sql") << "not a book";
    EXPECT_NE(readBackupSummary(backups + "/Zenvora-20261103.sql").error, "");
}

TEST_F(BackupRestoreTest, ARestoreKeepsTheBookAsideAndPutsTheBackupInItsPlaceWhileTheStoreIsOpen)
{
    DataModel& dm = open();
    const std::string current = dumpOf(path);
    const std::string kept = keptBookPath(path, "20261123-100000");
    std::string error;
    int lastDone = 0, total = 0;
    ASSERT_EQ(restoreBackupInPlace(backup, path, kept, &error, [&](int done, int all) { lastDone = done, total = all; }),
              RestoreResult::Restored)
        << error;
    EXPECT_GT(total, 0);
    EXPECT_EQ(lastDone, total);
    EXPECT_EQ(dumpOf(path), beforeAll);
    EXPECT_EQ(dumpOf(kept), current);
    EXPECT_EQ(fs::status(kept).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);

    // The open store reads the restored book as a start would.
    ASSERT_TRUE(dm.reopenBook());
    ASSERT_EQ(dm.sisanList.size(), 2u);
    EXPECT_EQ(dm.GrandTotalSisan, 13500);
    EXPECT_EQ(dm.undoTarget(), nullptr);
    ASSERT_TRUE(dm.readFromItemsTable(1));
    EXPECT_EQ(dm.itemList.size(), 2u);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(BackupRestoreTest, AFailureOrACancelPartWayLeavesTheBookAsItWasAndKeepsNothingAside)
{
    // A book of several steps of pages, so that the copy can stop between them.
    exec("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
         "INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Syukkin,Bikou) "
         "SELECT '2024-03-01', 2024, 3, 1, 1, 1, 3, -1, i, printf('%.300c', 'x') FROM n");
    std::string error;
    std::string large;
    ASSERT_EQ(backupBookNow(path, backups, "20261101", 14, &large, &error), BackupResult::Made) << error;
    EXPECT_EQ(large, backup);
    exec("DELETE FROM Items WHERE Id > 3");
    const std::string current = dumpOf(path);
    const std::string kept = keptBookPath(path, "20261123-100000");

    std::atomic<bool> cancel{false};
    EXPECT_EQ(restoreBackupInPlace(backup, path, kept, &error, [&](int, int) { cancel = true; }, &cancel),
              RestoreResult::Cancelled);
    EXPECT_EQ(dumpOf(path), current);
    EXPECT_FALSE(fs::exists(kept));

    std::ofstream(backups + "/Zenvora-20261102.sql") << std::string(8192, 'x');
    EXPECT_EQ(restoreBackupInPlace(backups + "/Zenvora-20261102.sql", path, kept, &error), RestoreResult::Failed);
    EXPECT_NE(error.find("Zenvora-20261102.sql"), std::string::npos) << error;
    EXPECT_EQ(dumpOf(path), current);
    EXPECT_FALSE(fs::exists(kept));
}

}  // namespace
