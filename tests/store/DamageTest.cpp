// Damage the start must catch before anything is shown or written: values
// the program would misread, a journal that is not the book's own, and the
// way back through a daily backup.
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "store/Backup.h"
#include "store/BookCheck.h"
#include "store/BookRestore.h"
#include "store/HotJournal.h"
#include "tests/store/StoreFixture.h"

namespace fs = std::filesystem;

namespace {

class DamageTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSmallBook();
        addEntry(1, "2024-01-01", 1, 2, 300);
        addEntry(2, "2024-01-02", 2, 5, 700);
    }

    // Kills a program in the middle of a change of the database at file,
    // after SQLite wrote part of it: the file is left with a hot journal.
    // With pageOne, the change touched the header page too, so that the
    // journal keeps the header as it was.
    void crashInAChange(const std::string& file, bool pageOne)
    {
        sqlite3_close(side);
        side = nullptr;
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            sqlite3* db = nullptr;
            sqlite3_open(file.c_str(), &db);
            // A cache of a few pages spills the change into the file before it commits.
            std::string sql = "PRAGMA cache_size = 2; BEGIN; ";
            if (pageOne) sql += "PRAGMA user_version = 7; ";
            sql += "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) "
                   "INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdouId,Syukkin,Bikou) "
                   "SELECT '2025-01-01',2025,1,1,1,1,-1,i,printf('%.200c','x') FROM n;";
            const char flag = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK ? '1' : '0';
            if (write(ready[1], &flag, 1) != 1) _exit(1);
            pause();
            _exit(0);
        }
        char flag = 0;
        ASSERT_EQ(read(ready[0], &flag, 1), 1);
        ASSERT_EQ(kill(writer, SIGKILL), 0);
        ASSERT_EQ(waitpid(writer, nullptr, 0), writer);
        ASSERT_EQ(flag, '1');
        ASSERT_GT(fs::file_size(file + "-journal"), 0u);
        ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    }
    void copyFile(const std::string& from, const std::string& to)
    {
        fs::copy_file(from, to, fs::copy_options::overwrite_existing);
    }
    std::string dumpOf(const std::string& file)
    {
        sqlite3* book = side;
        EXPECT_EQ(sqlite3_open(file.c_str(), &side), SQLITE_OK);
        const std::string rows = dumpAll();
        sqlite3_close(side);
        side = book;
        return rows;
    }
};

// Figures another tool wrote are never misread and never written back: the
// start names the first one it cannot read, and a backup holding one is not
// offered.
TEST_F(DamageTest, AFigureTheProgramCannotReadIsNamedAndNothingIsWritten)
{
    exec("UPDATE Sisan SET Zankin = 1 WHERE Id = 2");  // stale: the start would correct it
    const struct {
        const char* sql;
        const char* fix;
        BadValue bad;
    } cases[] = {
        {"UPDATE Sisan SET SyokiKingaku = 3000000000 WHERE Id = 2", "UPDATE Sisan SET SyokiKingaku = 0 WHERE Id = 2",
         {"Sisan", 2, "SyokiKingaku", "3000000000"}},
        {"UPDATE Items SET Syukkin = 4294967396 WHERE Id = 1", "UPDATE Items SET Syukkin = 300 WHERE Id = 1",
         {"Items", 1, "Syukkin", "4294967396"}},
        {"UPDATE Items SET Nyuukin = '1,500' WHERE Id = 2", "UPDATE Items SET Nyuukin = 700 WHERE Id = 2",
         {"Items", 2, "Nyuukin", "1,500"}},
        {"UPDATE Himoku SET Ucount = 2.5 WHERE Id = 1", "UPDATE Himoku SET Ucount = 2 WHERE Id = 1",
         {"Himoku", 1, "Ucount", "2.5"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sql);
        exec(c.sql);
        const std::string before = dumpAll();
        DataModel& dm = open();
        ASSERT_TRUE(dm.badValue());
        const BadValue& bad = *dm.badValue();
        EXPECT_EQ(bad.table + " " + std::to_string(bad.id) + " " + bad.column + " " + bad.value,
                  c.bad.table + " " + std::to_string(c.bad.id) + " " + c.bad.column + " " + c.bad.value);
        EXPECT_FALSE(dm.zankinWritePending());
        store.reset();
        EXPECT_EQ(dumpAll(), before);
        EXPECT_EQ(checkBookCopy(path).verdict, BookVerdict::BadValue);
        exec(c.fix);
    }
    EXPECT_TRUE(takeMessages().empty());
    // 64-bit balances are the program's own, and a value left in the amount
    // column an entry's kind does not use is never read: neither is refused.
    exec("UPDATE Sisan SET Zankin = 5000000000 WHERE Id = 1; UPDATE Items SET Nyuukin = 'old' WHERE Id = 1");
    EXPECT_FALSE(open().badValue());
    EXPECT_EQ(checkBookCopy(path).verdict, BookVerdict::Ready);
}

// SQLite plays a crash's journal back into the file that has the book's
// name: its own journal repairs the book, another file's would damage it.
TEST_F(DamageTest, OnlyTheBooksOwnJournalIsPlayedBack)
{
    const std::string before = dumpAll();
    const std::string copy = dir + "/copy.sql";
    copyFile(path, copy);

    crashInAChange(path, false);
    EXPECT_EQ(checkHotJournal(path).fit, JournalFit::Belongs);
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Ready);
    EXPECT_FALSE(fs::exists(path + "-journal"));
    EXPECT_EQ(dumpAll(), before);

    // The README's restore after such a crash: the book moved aside, a copy
    // put in its place, the journal forgotten beside it.
    crashInAChange(path, false);
    sqlite3_close(side);
    side = nullptr;
    fs::rename(path, dir + "/aside.sql");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // a file system clock tick
    copyFile(copy, path);
    const std::string copied = bookBytes();
    const BookCheck moved = checkBook(path);
    EXPECT_EQ(moved.verdict, BookVerdict::ForeignJournal) << moved.detail;
    EXPECT_EQ(bookBytes(), copied);
    EXPECT_TRUE(fs::exists(path + "-journal"));

    // A copy written over the book in place keeps the file, but not the
    // header the journal was kept for.
    fs::remove(path + "-journal");
    for (int change = 0; change < 3; ++change) {
        ASSERT_EQ(sqlite3_open(copy.c_str(), &side), SQLITE_OK);
        exec("UPDATE Sisan SET Zankin = Zankin + 1");
        sqlite3_close(side);
        side = nullptr;
    }
    crashInAChange(copy, true);
    fs::rename(copy + "-journal", path + "-journal");
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::ForeignJournal);
    EXPECT_EQ(bookBytes(), copied);
}

// A damaged book can be replaced by the newest backup that passes the same
// checks; the book goes aside with its journal, which never reaches the copy.
TEST_F(DamageTest, TheNewestSoundBackupTakesTheBooksPlaceAndTheBookIsKeptWithItsJournal)
{
    const std::string backups = dir + "/backups";
    std::string error;
    ASSERT_EQ(backupBookOnce(path, backups, "20261120", 14, &error), BackupResult::Made) << error;
    const std::string sound = dumpAll();
    exec("UPDATE Items SET Syukkin = 'abc'");
    ASSERT_EQ(backupBookOnce(path, backups, "20261121", 14, &error), BackupResult::Made) << error;
    exec("UPDATE Items SET Syukkin = 300");
    ASSERT_EQ(backupBookOnce(path, backups, "20261122", 14, &error), BackupResult::Made) << error;
    {
        std::fstream newest(backupPath(backups, "20261122"), std::ios::in | std::ios::out | std::ios::binary);
        newest.seekp(4096);  // the first table's page
        newest << std::string(4096, '!');
    }
    EXPECT_EQ(newestSoundBackup(backups), backupPath(backups, "20261120"));
    EXPECT_EQ(newestSoundBackup(dir + "/none"), "");

    crashInAChange(path, true);
    const std::string crashed = bookBytes();
    const std::string kept = path + ".damaged-20261123-100000";
    ASSERT_TRUE(restoreBackup(backupPath(backups, "20261120"), path, kept, &error)) << error;
    EXPECT_FALSE(fs::exists(path + "-journal"));
    EXPECT_FALSE(fs::exists(path + ".restoring"));
    EXPECT_EQ(dumpOf(path), sound);
    std::ifstream keptFile(kept, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(keptFile), {}), crashed);
    EXPECT_TRUE(fs::exists(kept + "-journal"));

    // A failed copy leaves the book and everything beside it as they were.
    const std::string restored = bookBytes();
    EXPECT_FALSE(restoreBackup(dir + "/missing.sql", path, path + ".other", &error));
    EXPECT_EQ(bookBytes(), restored);
    EXPECT_FALSE(fs::exists(path + ".other") || fs::exists(path + ".restoring"));
    EXPECT_TRUE(takeMessages().empty());
}

}  // namespace
