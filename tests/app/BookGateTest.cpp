// What the start says of a book it cannot use, and what it offers for a
// damaged one.
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "app/Application.h"
#include "app/BookGate.h"
#include "store/Backup.h"
#include "store/BookCheck.h"
#include "store/BookLock.h"
#include "tests/app/AppFixture.h"

namespace fs = std::filesystem;

namespace {

class BookGateTest : public AppFixture {
protected:
    static bool named(const std::string& text, const std::string& file)
    {
        return QString::fromStdString(text).contains(QString::fromStdString(file));
    }
    static std::string contentOf(const std::string& file)
    {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    bool prepare()
    {
        BookLock lock(path);
        return prepareBookForStart(path, lock);
    }
};

TEST_F(BookGateTest, ARefusedBookIsLeftByteForByteAndADamagedOneIsKeptWhenReplaced)
{
    // A foreign layout; the dropped index shows that provisioning stayed away.
    exec("DROP INDEX Items_HimokuNo; ALTER TABLE Sisan ADD COLUMN Memo TEXT");
    const std::string foreign = bookBytes();
    EXPECT_FALSE(prepare());
    const Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(named(told[0].first, path));
    EXPECT_EQ(bookBytes(), foreign);

    // A damaged book, and the user declines a new one.
    writeBook("not a book at all");
    choices = {1};
    EXPECT_FALSE(prepare());
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_TRUE(named(questions[0], path));
    EXPECT_TRUE(questions[0].ends_with("|新しい家計簿を始める|終了する"));
    EXPECT_EQ(bookBytes(), "not a book at all");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);

    // Accepted, the new book replaces the damaged one, kept with its journal.
    writeBook("damaged");
    std::ofstream(path + "-journal") << "journal";
    choices = {0};
    ASSERT_TRUE(prepare());
    const std::string kept = path + ".damaged-20261123-100000";
    EXPECT_TRUE(named(questions.at(1), kept));
    EXPECT_EQ(contentOf(kept) + "+" + contentOf(kept + "-journal"), "damaged+journal");
    EXPECT_FALSE(fs::exists(path + "-journal"));

    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");

    // An empty book is provisioned without a question, like a missing one.
    writeBook("");
    ASSERT_TRUE(prepare());
    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");
    EXPECT_EQ(questions.size(), 2u);
}

// Damage SQLite's own check finds deep in the file: the offer names the
// newest backup that passes the same checks, and choosing it puts that
// backup in the book's place.
TEST_F(BookGateTest, ABookFailingTheCheckOfItsPagesIsOfferedTheNewestSoundBackup)
{
    addSmallBook();
    std::string error;
    ASSERT_EQ(backupBookOnce(path, dir + "/backups", "20261122", 14, &error), BackupResult::Made) << error;
    const std::string backedUp = dumpAll();
    exec("BEGIN");
    for (int i = 0; i < 500; ++i) addEntry(1, "2026-11-23", 1, 2, 100 + i);
    exec("COMMIT");
    const int64_t pageSize = scalar("PRAGMA page_size");
    const int64_t root = scalar("SELECT rootpage FROM sqlite_master WHERE name = 'Items'");
    std::string bytes = bookBytes();
    bytes.replace(static_cast<size_t>((root - 1) * pageSize), 16, std::string(16, '\xff'));
    writeBook(bytes);

    BookLock lock(path);
    ASSERT_TRUE(prepareBookForStart(path, lock));  // the layout is sound
    const BookCheck pages = checkBookPages(path);
    ASSERT_EQ(pages.verdict, BookVerdict::Damaged);
    choices = {0};
    EXPECT_EQ(acceptBookPages(pages, path, lock), PagesVerdict::Replaced);
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_TRUE(questions[0].ends_with("|バックアップに戻す|新しい家計簿を始める|終了する"));
    EXPECT_TRUE(named(questions[0], backupPath(dir + "/backups", "20261122")));
    EXPECT_EQ(contentOf(path + ".damaged-20261123-100000"), bytes);
    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(dumpAll(), backedUp);
    EXPECT_EQ(lock.identity(), identityOf(path));
    EXPECT_EQ(acceptBookPages(checkBookPages(path), path, lock), PagesVerdict::Sound);
}

// The start ends with a message that names what it found, and the book is
// left as it was: a link to nothing, a journal of another file, a figure
// the program cannot read.
TEST_F(BookGateTest, WhatTheStartCannotUseIsNamedAndLeftAlone)
{
    fs::create_symlink(dir + "/moved/Zenvora.sql", dir + "/second.sql");
    fs::create_symlink("second.sql", dir + "/link.sql");  // a chain of links, named by its end
    EXPECT_EQ(runZenvora(dir + "/link.sql"), 1);
    Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(named(told[0].first, dir + "/link.sql") && named(told[0].first, dir + "/moved/Zenvora.sql"));
    EXPECT_FALSE(fs::exists(dir + "/moved"));

    addSmallBook();
    exec("UPDATE Sisan SET SyokiKingaku = '1,500', Zankin = 7 WHERE Id = 2");
    const std::string before = bookBytes();
    EXPECT_EQ(runZenvora(path), 1);
    told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(named(told[0].first, path));
    EXPECT_TRUE(named(told[0].first, "表 Sisan、Id 2 の行の SyokiKingaku の欄：「1,500」")) << told[0].first;
    EXPECT_EQ(bookBytes(), before);

    std::ofstream(path + "-journal") << std::string("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8) << std::string(2000, '\0');
    fs::last_write_time(path + "-journal", fs::last_write_time(path) - std::chrono::hours(1));
    EXPECT_FALSE(prepare());
    told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(named(told[0].first, path + "-journal"));
    EXPECT_TRUE(named(told[0].second, "Zenvora.sql-journal を別のフォルダに移して"));
    EXPECT_EQ(bookBytes(), before);
}

}  // namespace
