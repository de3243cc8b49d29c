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
    // The assets of a backup, as the store's dump shows them.
    std::string sisanOf(const std::string& file)
    {
        sqlite3* live = side;
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &side, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
        const std::string rows = dump("Sisan");
        sqlite3_close(side);
        side = live;
        return rows;
    }

    BackupResult backup(const std::string& day, std::string* error = nullptr)
    {
        return backupBookOnce(path, backups, day, 14, error);
    }

    std::string backups;  // set by each test: dir is known only after SetUp
};

TEST_F(BackupTest, OneCompletePrivateCopyIsMadeADay)
{
    backups = dir + "/backups";
    addSisan("現金", 100, 100);
    ASSERT_EQ(backup("20261123"), BackupResult::Made);
    const std::string first = backupPath(backups, "20261123");
    struct stat st {};
    ASSERT_EQ(::stat(first.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_EQ(sisanOf(first), dump("Sisan"));

    // Later starts of the same day leave the day's copy as it was.
    addSisan("銀行", 5, 5);
    EXPECT_EQ(backup("20261123"), BackupResult::AlreadyMade);
    EXPECT_EQ(sisanOf(first), "Sisan:\n1|現金|100|100|\n");
    ASSERT_EQ(backup("20261124"), BackupResult::Made);
    EXPECT_EQ(sisanOf(backupPath(backups, "20261124")), dump("Sisan"));
    EXPECT_EQ(std::distance(fs::directory_iterator(backups), fs::directory_iterator()), 2);
}

TEST_F(BackupTest, OnlyTheNewestFourteenBackupsStayAndOtherFilesAreLeftAlone)
{
    backups = dir + "/backups";
    fs::create_directories(backups);
    for (int day = 1; day <= 15; ++day) std::ofstream(backupPath(backups, "202601" + std::to_string(10 + day)));
    for (const char* other : {"notes.txt", "Zenvora-keep.sql", "Zenvora-20250101.sql.bak"})
        std::ofstream(backups + "/" + other);

    ASSERT_EQ(backup("20261123"), BackupResult::Made);
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(backups)) left.push_back(entry.path().filename().string());
    std::sort(left.begin(), left.end());
    std::vector<std::string> expected;
    for (int day = 3; day <= 15; ++day) expected.push_back("Zenvora-202601" + std::to_string(10 + day) + ".sql");
    expected.insert(expected.end(), {"Zenvora-20261123.sql", "Zenvora-20250101.sql.bak", "Zenvora-keep.sql",
                                     "notes.txt"});
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(left, expected);
}

TEST_F(BackupTest, AFailedOrCancelledBackupSaysWhyAndLeavesNothing)
{
    std::string error;
    backups = dir + "/occupied";
    std::ofstream(backups) << "a file where the folder should be";
    EXPECT_EQ(backup("20261123", &error), BackupResult::Failed);
    EXPECT_NE(error.find(backups), std::string::npos) << error;

    backups = dir + "/backups";
    const std::atomic<bool> cancel{true};
    EXPECT_EQ(backupBookOnce(path, backups, "20261123", 14, &error, &cancel), BackupResult::Cancelled);
    EXPECT_TRUE(fs::is_empty(backups));

    EXPECT_EQ(backupBookOnce(dir + "/missing.sql", backups, "20261123", 14, &error), BackupResult::Failed);
    EXPECT_TRUE(fs::is_empty(backups));
}

}  // namespace
