#include "tests/store/StoreFixture.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>

#include "store/Backup.h"
#include "store/BookCheck.h"
#include "store/Provisioning.h"

namespace fs = std::filesystem;

namespace {

using BookFileTest = StoreFixture;

mode_t modeOf(const std::string& file)
{
    struct stat st {};
    EXPECT_EQ(::stat(file.c_str(), &st), 0) << file;
    return st.st_mode & 0777;
}

const char* const kIndexCount =
    "SELECT COUNT(*) FROM sqlite_master WHERE type='index' AND name IN ('Items_SisanNo_Hizuke', "
    "'Items_Nen_SyubetuNo_HimokuNo', 'Items_HimokuNo', 'Items_IdouSisanNo')";

TEST_F(BookFileTest, AnExistingBookOnlyGainsItsMissingIndexesAndAMissingOneIsAPrivateStarterBook)
{
    // A book of an earlier version: no history, two indexes missing.
    addSmallBook();
    exec("DROP INDEX Items_HimokuNo; DROP INDEX Items_IdouSisanNo; DROP TABLE History");
    const std::string before = dumpAll();
    std::string error;
    ASSERT_TRUE(provisionResourceDirectory(dir, &error)) << error;
    EXPECT_EQ(scalar(kIndexCount), 4);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM sqlite_master WHERE name = 'History'"), 1);
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Ready);

    const std::string home = dir + "/data/Zenvora";
    error = "stale";
    ASSERT_TRUE(provisionResourceDirectory(home, &error)) << error;
    EXPECT_EQ(error, "");
    EXPECT_EQ(modeOf(home + "/Zenvora.sql"), 0600u);
    EXPECT_EQ(modeOf(home), 0700u);
    EXPECT_FALSE(fs::exists(home + "/Zenvora.sql.new"));

    path = home + "/Zenvora.sql";
    sqlite3_close(side);
    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(scalar(kIndexCount), 4);
    DataModel& dm = open();
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");

    // Every category is its own Hno, counts one sub-item and is followed by it.
    const auto& list = dm.himokuList;
    ASSERT_TRUE(!list.empty() && list.size() % 2 == 0);
    for (size_t i = 0; i < list.size(); i += 2) {
        const Himoku& c = *list[i];
        const Himoku& sub = *list[i + 1];
        EXPECT_TRUE(c.Ucount == 1 && c.Hno == c.Id && sub.Ucount == 0 && sub.Hno == c.Id &&
                    sub.SyubetuNo == c.SyubetuNo) << c.Namae;
        EXPECT_EQ(sub.Namae, c.Namae + "/その他");
    }
    EXPECT_EQ(list.front()->SyubetuNo, 1);
    EXPECT_EQ(list.back()->SyubetuNo, 2);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(BookFileTest, EveryKindOfBookGetsItsVerdictAndStaysByteForByte)
{
    exec("BEGIN");
    for (int i = 0; i < 200; ++i) addSisan(std::string(200, 'x'), i, i);  // a book of several pages
    for (int i = 0; i < 2000; ++i) addEntry(1, "2024-01-01", 1, 2, i);
    exec("COMMIT");
    const int64_t pageSize = scalar("PRAGMA page_size");
    const int64_t itemsRoot = scalar("SELECT rootpage FROM sqlite_master WHERE name = 'Items'");
    const int64_t indexRoot = scalar("SELECT rootpage FROM sqlite_master WHERE name = 'Items_SisanNo_Hizuke'");
    sqlite3_close(side);
    side = nullptr;
    const std::string book = bookBytes();
    std::string noise(8192, '\0');
    std::generate(noise.begin(), noise.end(), std::mt19937(11));
    // One page of the book overwritten, as a failing disk or a stray write leaves it.
    auto garbled = [&](int64_t page) {
        return [&, page] {
            std::string bytes = book;
            bytes.replace(static_cast<size_t>((page - 1) * pageSize), static_cast<size_t>(pageSize),
                          noise.substr(0, static_cast<size_t>(pageSize)));
            writeBook(bytes);
        };
    };
    auto reshaped = [&](const char* sql) {
        return [&, sql] {
            writeBook(book);
            ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
            exec(sql);
        };
    };
    auto withModes = [&](mode_t file, mode_t folder) {
        return [&, file, folder] {
            writeBook(book);
            ASSERT_TRUE(::chmod(path.c_str(), file) == 0 && ::chmod(dir.c_str(), folder) == 0);
        };
    };
    struct Case {
        const char* name;
        std::function<void()> make;
        BookVerdict verdict;
        bool unprivileged = false;  // root may write any file: judge as another user
    };
    const std::vector<Case> cases{
        {"the program's book", [&] { writeBook(book); }, BookVerdict::Ready},
        {"an empty file", [&] { writeBook(""); }, BookVerdict::Missing},
        {"random bytes", [&] { writeBook(noise); }, BookVerdict::Damaged},
        {"cut short", [&] { writeBook(book.substr(0, book.size() / 2)); }, BookVerdict::Damaged},
        {"a missing column",
         reshaped("ALTER TABLE Sisan RENAME TO Old; CREATE TABLE Sisan (Id INTEGER PRIMARY KEY, Namae TEXT, "
                  "SyokiKingaku INTEGER)"),
         BookVerdict::WrongSchema},
        {"an extra column", reshaped("ALTER TABLE Himoku ADD COLUMN Memo TEXT"), BookVerdict::WrongSchema},
        {"a missing table", reshaped("DROP TABLE Items"), BookVerdict::WrongSchema},
        {"a view for a table",
         reshaped("ALTER TABLE Sisan RENAME TO Old; CREATE VIEW Sisan AS SELECT * FROM Old"),
         BookVerdict::WrongSchema},
        {"an Id that is not the row id",
         reshaped("ALTER TABLE Himoku RENAME TO Old; CREATE TABLE Himoku (Id INTEGER, SyubetuNo INTEGER, "
                  "Namae TEXT, Hno INTEGER, Ucount INTEGER)"),
         BookVerdict::WrongSchema},
        {"an amount declared as text",
         reshaped("ALTER TABLE Sisan RENAME TO Old; CREATE TABLE Sisan (Id INTEGER PRIMARY KEY, Namae TEXT, "
                  "SyokiKingaku TEXT, Zankin INTEGER)"),
         BookVerdict::WrongSchema},
        {"other types of the same affinity, and tables of others",
         reshaped("ALTER TABLE Sisan RENAME TO Old; CREATE TABLE Sisan (Id integer primary key, Namae VARCHAR(40), "
                  "SyokiKingaku BIGINT, Zankin INT); CREATE VIEW Totals AS SELECT 1"),
         BookVerdict::Ready},
        {"a garbled index page", garbled(indexRoot), BookVerdict::Damaged},
        {"a garbled table page", garbled(itemsRoot), BookVerdict::Damaged},
        {"locked by another writer", reshaped("BEGIN IMMEDIATE"), BookVerdict::Locked},
        {"a read-only file", withModes(0444, 0777), BookVerdict::FileReadOnly, true},
        {"an unreadable file", withModes(0000, 0777), BookVerdict::Unreadable, true},
        {"a read-only folder", withModes(0666, 0555), BookVerdict::FolderReadOnly, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        c.make();
        const std::string before = bookBytes();
        const bool root = c.unprivileged && ::geteuid() == 0;
        ASSERT_TRUE(!root || ::seteuid(65534) == 0);
        const BookCheck check = checkBook(path);
        ASSERT_TRUE(!root || ::seteuid(0) == 0);
        EXPECT_EQ(check.verdict, c.verdict) << check.detail;
        EXPECT_EQ(bookBytes(), before);
        sqlite3_close(side);
        side = nullptr;
        ASSERT_TRUE(::chmod(path.c_str(), 0600) == 0 && ::chmod(dir.c_str(), 0700) == 0);
    }
    EXPECT_EQ(checkBook(dir + "/new/folder/Zenvora.sql").verdict, BookVerdict::Missing);
}

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

// A failing backup folder is reported by the application's test.
TEST_F(BackupTest, OnePrivateCopyADayTheNewestFourteenStayAndACancelledOrFailedCopyLeavesNothing)
{
    const std::atomic<bool> cancel{true};
    EXPECT_EQ(backupBookOnce(path, backups(), "20260101", 14, &error, &cancel), BackupResult::Cancelled);
    EXPECT_EQ(backupBookOnce(dir + "/missing.sql", backups(), "20260101", 14, &error), BackupResult::Failed);
    EXPECT_TRUE(fs::is_empty(backups()));

    addSisan("現金", 100, 100);
    ASSERT_EQ(backup("20260101"), BackupResult::Made) << error;
    EXPECT_EQ(modeOf(backupPath(backups(), "20260101")), 0600u);

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

// A clock that was once ahead left backups named after days to come, and a
// crash a copy cut short: today's backup is made and kept all the same, the
// newest by the time they were made stay, and the remains of the crash go.
TEST_F(BackupTest, TheNewestByTimeMadeStayTodaysNeverGoesAndACrashedCopyIsRemoved)
{
    fs::create_directories(backups());
    const auto now = fs::file_time_type::clock::now();
    for (int day = 1; day <= 15; ++day) {
        const std::string future = backupPath(backups(), "202712" + std::to_string(100 + day).substr(1));
        std::ofstream(future) << "made when the clock was ahead";
        fs::last_write_time(future, now - std::chrono::hours(24 * (40 - day)));
    }
    for (const char* leftover : {"Zenvora-20261122.sql.partial", "Zenvora-20261122.sql.partial-journal"})
        std::ofstream(backups() + "/" + leftover) << std::string(4096, 'x');

    ASSERT_EQ(backup("20261123"), BackupResult::Made) << error;
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(backups())) left.push_back(entry.path().filename().string());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left.size(), 14u);
    EXPECT_EQ(left.front(), "Zenvora-20261123.sql");
    EXPECT_EQ(left[1], "Zenvora-20271203.sql");  // the two made first went

    // Once today's backup exists, later starts still prune: to the newest
    // 14, never today's.
    const std::string today = backupPath(backups(), "20261123");
    fs::last_write_time(today, now - std::chrono::hours(24 * 60));
    for (const char* day : {"20261001", "20261002"}) std::ofstream(backupPath(backups(), day)) << "put back by hand";
    EXPECT_EQ(backup("20261123"), BackupResult::AlreadyMade);
    EXPECT_TRUE(fs::exists(today));
    EXPECT_FALSE(fs::exists(backupPath(backups(), "20271203")));
    EXPECT_EQ(std::distance(fs::directory_iterator(backups()), fs::directory_iterator()), 15);
}

}  // namespace
