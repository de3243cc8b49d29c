#include <sqlite3.h>

#include <QSignalSpy>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "app/BookGate.h"
#include "app/DailyBackup.h"
#include "app/SingleInstance.h"
#include "tests/app/AppFixture.h"

namespace fs = std::filesystem;

namespace {

class BookGateTest : public AppFixture {
protected:
    static std::string bytesOf(const std::string& file)
    {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void write(const std::string& content)
    {
        sqlite3_close(side);
        side = nullptr;
        std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    }
    // Reopens the side connection on the book now at path.
    void reopenSide()
    {
        sqlite3_close(side);
        ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    }
};

TEST_F(BookGateTest, ARefusedBookIsNamedAndLeftByteForByte)
{
    // A foreign layout: the missing index shows that provisioning stayed away.
    exec("DROP INDEX Items_HimokuNo; ALTER TABLE Sisan ADD COLUMN Memo TEXT");
    const std::string foreign = bytesOf(path);
    EXPECT_FALSE(prepareBookForStart(path));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_TRUE(QString::fromStdString(messages[0].first).contains(QString::fromStdString(path)));
    EXPECT_NE(messages[0].first.find("家計簿の形式ではない"), std::string::npos);
    EXPECT_EQ(bytesOf(path), foreign);

    // A damaged book, and the user declines a new one.
    write("not a book at all, just words");
    answers = {false};
    EXPECT_FALSE(prepareBookForStart(path));
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_TRUE(QString::fromStdString(questions[0]).contains(QString::fromStdString(path)));
    EXPECT_TRUE(QString::fromStdString(questions[0]).endsWith("|新しい家計簿を始める|終了する"));
    EXPECT_EQ(bytesOf(path), "not a book at all, just words");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1);
}

TEST_F(BookGateTest, ANewBookReplacesADamagedOneWhichIsKeptRenamedWithItsJournal)
{
    write("damaged");
    std::ofstream(path + "-journal") << "stale journal";
    answers = {true};
    ASSERT_TRUE(prepareBookForStart(path));

    const std::string kept = path + ".damaged-20261123-100000";
    EXPECT_TRUE(QString::fromStdString(questions.at(0)).contains(QString::fromStdString(kept)));
    EXPECT_EQ(bytesOf(kept), "damaged");
    EXPECT_EQ(bytesOf(kept + "-journal"), "stale journal");
    EXPECT_FALSE(fs::exists(path + "-journal"));
    reopenSide();
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");
    EXPECT_TRUE(messages.empty());

    // An empty file is provisioned the same way, without a question.
    write("");
    ASSERT_TRUE(prepareBookForStart(path));
    reopenSide();
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");
    EXPECT_EQ(questions.size(), 1u);
}

TEST_F(BookGateTest, AHeldBookLockMeansRunningElsewhereUntilReleased)
{
    {
        SingleInstance first(path);
        EXPECT_FALSE(first.runningElsewhere());
        SingleInstance second(path);
        EXPECT_TRUE(second.runningElsewhere());
        EXPECT_FALSE(second.askRunningToRaise(100)) << "nobody listens";
    }
    EXPECT_FALSE(SingleInstance(path).runningElsewhere());
}

TEST_F(BookGateTest, AFailedDailyBackupIsReportedOnce)
{
    std::ofstream(dir + "/backups") << "a file where the folder should be";
    DailyBackup backup(path, dir + "/backups");
    QSignalSpy finished(&backup, &DailyBackup::finished);
    backup.start();
    ASSERT_TRUE(finished.wait(10000));
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_TRUE(QString::fromStdString(messages[0].first).contains(QString::fromStdString(dir + "/backups")));
}

}  // namespace
