// The real program in its own processes, on a book in a temporary
// XDG_DATA_HOME, on Qt's offscreen platform. Every wait is bounded.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QLocalSocket>
#include <QProcess>
#include <QTest>
#include <filesystem>
#include <memory>

#include "app/SingleInstance.h"
#include "store/Provisioning.h"

namespace {

constexpr int kStartMs = 15000;
constexpr int kEndMs = 10000;

class ProcessTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/zenvora-process-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        home = pattern;
        book = home + "/Zenvora/Zenvora.sql";
    }
    void TearDown() override
    {
        for (auto& p : processes) {
            p->kill();
            p->waitForFinished(kEndMs);
        }
        processes.clear();
        std::filesystem::remove_all(home);
    }

    QProcess& launch()
    {
        auto p = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", QString::fromStdString(home));
        env.insert("QT_QPA_PLATFORM", "offscreen");
        p->setProcessEnvironment(env);
        p->start(QStringLiteral(ZENVORA_BINARY), {});
        EXPECT_TRUE(p->waitForStarted(kStartMs));
        processes.push_back(std::move(p));
        return *processes.back();
    }

    // True once a running program on the book answered a request to raise
    // its window: its event loop runs.
    bool answers()
    {
        QLocalSocket socket;
        socket.connectToServer(SingleInstance::serverName(book));
        if (!socket.waitForConnected(1000)) return false;
        socket.write("raise\n");
        socket.flush();
        while (!socket.canReadLine())
            if (!socket.waitForReadyRead(kEndMs)) return false;
        return socket.readLine() == "raised\n";
    }

    std::string home, book;
    std::vector<std::unique_ptr<QProcess>> processes;
};

TEST_F(ProcessTest, ASecondStartOnTheBookRaisesTheFirstAndACrashLeavesNoStaleLock)
{
    QProcess& first = launch();
    QTRY_VERIFY_WITH_TIMEOUT(answers(), kStartMs);

    QProcess& second = launch();
    ASSERT_TRUE(second.waitForFinished(kEndMs));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    EXPECT_EQ(first.state(), QProcess::Running);

    // A crash leaves the lock file and the socket behind: neither blocks.
    first.kill();
    ASSERT_TRUE(first.waitForFinished(kEndMs));
    ASSERT_TRUE(std::filesystem::exists(book + ".lock"));
    QProcess& third = launch();
    QTRY_VERIFY_WITH_TIMEOUT(answers(), kStartMs);
    third.terminate();
    ASSERT_TRUE(third.waitForFinished(kEndMs));
    EXPECT_EQ(third.exitCode(), 0);
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
    QTRY_VERIFY_WITH_TIMEOUT(answers(), kStartMs);
    running.terminate();
    ASSERT_TRUE(running.waitForFinished(kEndMs)) << "termination hangs";
    const QString stderrText = QString::fromUtf8(running.readAllStandardError());
    EXPECT_TRUE(stderrText.contains("failure updating sisan Zankin: boom")) << stderrText.toStdString();
    EXPECT_TRUE(stderrText.contains("Zenvora.app:failure  terminating!!")) << stderrText.toStdString();
}

}  // namespace
