#include <sqlite3.h>

#include <QSignalSpy>
#include <filesystem>
#include <fstream>

#include "app/BookGate.h"
#include "app/DailyBackup.h"
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
};

TEST_F(BookGateTest, ARefusedBookIsLeftByteForByteAndADamagedOneIsKeptWhenReplaced)
{
    // A foreign layout; the dropped index shows that provisioning stayed away.
    exec("DROP INDEX Items_HimokuNo; ALTER TABLE Sisan ADD COLUMN Memo TEXT");
    const std::string foreign = bookBytes();
    EXPECT_FALSE(prepareBookForStart(path));
    const Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(named(told[0].first, path));
    EXPECT_EQ(bookBytes(), foreign);

    // A damaged book, and the user declines a new one.
    writeBook("not a book at all");
    answers = {false};
    EXPECT_FALSE(prepareBookForStart(path));
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_TRUE(named(questions[0], path));
    EXPECT_TRUE(questions[0].ends_with("|新しい家計簿を始める|終了する"));
    EXPECT_EQ(bookBytes(), "not a book at all");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);

    // Accepted, the new book replaces the damaged one, kept with its journal.
    writeBook("damaged");
    std::ofstream(path + "-journal") << "journal";
    answers = {true};
    ASSERT_TRUE(prepareBookForStart(path));
    const std::string kept = path + ".damaged-20261123-100000";
    EXPECT_TRUE(named(questions.at(1), kept));
    EXPECT_EQ(contentOf(kept) + "+" + contentOf(kept + "-journal"), "damaged+journal");
    EXPECT_FALSE(fs::exists(path + "-journal"));

    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");

    // An empty book is provisioned without a question, like a missing one.
    writeBook("");
    ASSERT_TRUE(prepareBookForStart(path));
    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");
    EXPECT_EQ(questions.size(), 2u);
}

TEST_F(BookGateTest, AFailedDailyBackupIsReportedOnce)
{
    std::ofstream(dir + "/backups") << "a file where the folder should be";
    DailyBackup backup(path, dir + "/backups");
    QSignalSpy finished(&backup, &DailyBackup::finished);
    backup.start();
    ASSERT_TRUE(finished.wait(10000));
    const Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(named(told[0].first, dir + "/backups"));
}

}  // namespace
