// The real program in its own processes, on a book in a temporary
// XDG_DATA_HOME, on Qt's offscreen platform. Every wait is bounded.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <filesystem>
#include <list>

#include "app/SingleInstance.h"
#include "store/Provisioning.h"

namespace {

constexpr int kWaitMs = 15000;

class ProcessTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(temp.isValid()); }

    QProcess& launch(const QStringList& arguments = {})
    {
        QProcess& p = processes.emplace_back();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", QString::fromStdString(home));
        env.insert("QT_QPA_PLATFORM", "offscreen");
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(ZENVORA_BINARY), arguments);
        EXPECT_TRUE(p.waitForStarted(kWaitMs));
        return p;
    }
    // A program that answers a request to raise its window runs its event loop.
    static bool answers(const std::string& path) { return SingleInstance::askRunningToRaise(path, 500); }

    QTemporaryDir temp{"/tmp/zenvora-process-XXXXXX"};
    const std::string home = temp.path().toStdString();
    const std::string book = home + "/Zenvora/Zenvora.sql";
    std::list<QProcess> processes;  // killed and reaped before the folder goes
};

// --book opens and provisions that book only; a second start on it raises
// the first, and a crash leaves the lock file and the socket behind, which
// block nothing.
TEST_F(ProcessTest, AnotherBookIsOpenedOnceRaisedAgainAndFreedByACrash)
{
    const std::string other = home + "/elsewhere/家計簿 2026.sql";
    const QStringList onOther{"--book", QString::fromStdString(other)};
    QProcess& first = launch(onOther);
    QTRY_VERIFY_WITH_TIMEOUT(answers(other), kWaitMs);
    EXPECT_FALSE(answers(book));
    EXPECT_TRUE(std::filesystem::exists(other));
    EXPECT_FALSE(std::filesystem::exists(book));
    QProcess& second = launch(onOther);
    ASSERT_TRUE(second.waitForFinished(kWaitMs));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    EXPECT_EQ(first.state(), QProcess::Running);

    first.kill();
    ASSERT_TRUE(first.waitForFinished(kWaitMs));
    ASSERT_TRUE(std::filesystem::exists(other + ".lock"));
    QProcess& third = launch(onOther);
    QTRY_VERIFY_WITH_TIMEOUT(answers(other), kWaitMs);
    third.terminate();
    ASSERT_TRUE(third.waitForFinished(kWaitMs));
    EXPECT_EQ(third.exitCode(), 0) << third.readAllStandardError().toStdString();
}

TEST_F(ProcessTest, SIGTERMWithAFailingBalanceWritePrintsTheFailureAndEnds)
{
    std::string error;
    ASSERT_TRUE(provisionBook(book, &error)) << error;
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(book.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "CREATE TRIGGER fail BEFORE UPDATE ON Sisan BEGIN SELECT RAISE(ABORT, 'boom'); END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);

    QProcess& running = launch();
    QTRY_VERIFY_WITH_TIMEOUT(answers(book), kWaitMs);
    running.terminate();
    ASSERT_TRUE(running.waitForFinished(kWaitMs)) << "termination hangs";
    const std::string printed = running.readAllStandardError().toStdString();
    EXPECT_NE(printed.find("failure updating sisan Zankin: boom"), std::string::npos) << printed;
    EXPECT_NE(printed.find("Zenvora.app:failure  terminating!!"), std::string::npos) << printed;
}

}  // namespace
