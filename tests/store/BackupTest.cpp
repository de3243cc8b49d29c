#include "tests/store/StoreFixture.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "store/Backup.h"

namespace fs = std::filesystem;

namespace {

class BackupTest : public StoreFixture {
protected:
    // The assets stored in a backup.
    std::string sisanOf(const std::string& day)
    {
        sqlite3* live = side;
        EXPECT_EQ(sqlite3_open_v2(backupPath(backups(), day).c_str(), &side, SQLITE_OPEN_READONLY, nullptr),
                  SQLITE_OK);
        const std::string rows = dump("Sisan");
        sqlite3_close(side);
        side = live;
        return rows;
    }
    std::string backups() const { return dir + "/backups"; }
    BackupResult backup(const std::string& day) { return backupBookOnce(path, backups(), day, 14, &error); }
    std::string error;
};

TEST_F(BackupTest, OnePrivateCopyADayAndTheNewestFourteenStay)
{
    addSisan("現金", 100, 100);
    ASSERT_EQ(backup("20260101"), BackupResult::Made) << error;
    struct stat st {};
    ASSERT_EQ(::stat(backupPath(backups(), "20260101").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    // Later starts of the day leave its copy as it was; the next day copies afresh.
    addSisan("銀行", 5, 5);
    EXPECT_EQ(backup("20260101"), BackupResult::AlreadyMade);
    EXPECT_EQ(sisanOf("20260101"), "Sisan:\n1|現金|100|100|\n");
    for (int day = 2; day <= 15; ++day)
        ASSERT_EQ(backup("202601" + std::to_string(100 + day).substr(1)), BackupResult::Made);
    EXPECT_EQ(sisanOf("20260115"), dump("Sisan"));

    // Day 1 went; files of other names stay.
    std::ofstream(backups() + "/notes.txt");
    std::ofstream(backups() + "/Zenvora-20250101.sql.bak");
    ASSERT_EQ(backup("20260116"), BackupResult::Made);
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(backups())) left.push_back(entry.path().filename().string());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left.size(), 16u);
    EXPECT_EQ(left.front(), "Zenvora-20250101.sql.bak");
    EXPECT_EQ(left[1], "Zenvora-20260103.sql");
    EXPECT_EQ(left.back(), "notes.txt");
}

// A failing backup folder is reported by the application's test.
TEST_F(BackupTest, ACancelledOrFailedCopyLeavesNothing)
{
    const std::atomic<bool> cancel{true};
    EXPECT_EQ(backupBookOnce(path, backups(), "20261123", 14, &error, &cancel), BackupResult::Cancelled);
    EXPECT_EQ(backupBookOnce(dir + "/missing.sql", backups(), "20261123", 14, &error), BackupResult::Failed);
    EXPECT_TRUE(fs::is_empty(backups()));
}

}  // namespace
