// The real program in its own processes, on Qt's offscreen platform, with
// real links, files and signals. A later start is run in this process, so
// that what it says lands in the fixture's messages. Every wait is bounded.
#include <signal.h>
#include <sqlite3.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>
#include <list>

#include "app/Application.h"
#include "app/SingleInstance.h"
#include "tests/app/AppFixture.h"

namespace fs = std::filesystem;

namespace {

constexpr int kWaitMs = 15000;

class ProcessTest : public AppFixture {
protected:
    // The program on a book, or the same run driven by keys (DrivenZenvora.cpp).
    QProcess& launch(const std::string& book, const QString& keys = {}, const char* program = ZENVORA_BINARY)
    {
        QProcess& p = processes.emplace_back();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", QString::fromStdString(dir));
        env.insert("QT_QPA_PLATFORM", "offscreen");
        p.setProcessEnvironment(env);
        QStringList arguments{"--book", QString::fromStdString(book)};
        if (!keys.isEmpty()) arguments << keys;
        p.start(QString::fromLatin1(program), arguments);
        EXPECT_TRUE(p.waitForStarted(kWaitMs));
        return p;
    }
    // Waits for a line the driven program prints.
    static bool printed(QProcess& p, const QByteArray& line)
    {
        QElapsedTimer waited;
        waited.start();
        QByteArray out;
        while (!out.contains(line) && waited.elapsed() < kWaitMs) {
            p.waitForReadyRead(100);
            out += p.readAllStandardOutput();
        }
        return out.contains(line);
    }
    static SingleInstance::Answer answer(const std::string& book)
    {
        return SingleInstance::askRunning(book, 500).answer;
    }
    static bool raised(const std::string& book) { return answer(book) == SingleInstance::Answer::Raised; }

    std::list<QProcess> processes;  // killed and reaped before the folder goes
};

// --book opens and provisions that book only; a later start on it raises
// the first, and a crash leaves a socket behind, which blocks nothing.
TEST_F(ProcessTest, AnotherBookIsOpenedOnceRaisedAgainAndFreedByACrash)
{
    const std::string other = dir + "/elsewhere/家計簿 2026.sql";
    QProcess& first = launch(other);
    QTRY_VERIFY_WITH_TIMEOUT(raised(other), kWaitMs);
    EXPECT_FALSE(raised(path));
    QProcess& second = launch(other);
    ASSERT_TRUE(second.waitForFinished(kWaitMs));
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    EXPECT_EQ(first.state(), QProcess::Running);

    first.kill();
    ASSERT_TRUE(first.waitForFinished(kWaitMs));
    QProcess& third = launch(other);
    QTRY_VERIFY_WITH_TIMEOUT(raised(other), kWaitMs);
    third.terminate();
    ASSERT_TRUE(third.waitForFinished(kWaitMs));
    EXPECT_EQ(third.exitCode(), 0) << third.readAllStandardError().toStdString();
}

// A symbolic link, a hard link in another folder, another spelling: every
// way to the same file reaches the one running program, which keeps
// answering.
TEST_F(ProcessTest, EveryPathToTheBookReachesTheOneProgramThatHoldsIt)
{
    addSmallBook();
    fs::create_directory(dir + "/other");
    fs::create_symlink(path, dir + "/other/link.sql");
    fs::create_hard_link(path, dir + "/other/hard.sql");
    QProcess& first = launch(path);
    QTRY_VERIFY_WITH_TIMEOUT(raised(path), kWaitMs);
    for (const std::string& way : {dir + "/other/link.sql", dir + "/other/hard.sql", dir + "/./Zenvora.sql"}) {
        SCOPED_TRACE(way);
        QProcess& later = launch(way);
        ASSERT_TRUE(later.waitForFinished(kWaitMs));
        EXPECT_EQ(later.exitCode(), 0) << later.readAllStandardError().toStdString();
        EXPECT_TRUE(raised(path));
    }
    EXPECT_EQ(first.state(), QProcess::Running);
    first.terminate();
    ASSERT_TRUE(first.waitForFinished(kWaitMs));
}

// A later start while the first asks about a damaged book, or while the
// first is stopped, says what is going on instead of pointing at a window
// that does not exist.
TEST_F(ProcessTest, ALaterStartSaysWhatTheFirstIsDoingOrThatItDoesNotAnswer)
{
    writeBook("not a book at all");
    QProcess& asking = launch(path);
    QTRY_COMPARE_WITH_TIMEOUT(answer(path), SingleInstance::Answer::Asking, kWaitMs);
    EXPECT_EQ(runZenvora(path), 0);
    Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].second, "その Zenvora が、家計簿について確認のメッセージを表示しています。そちらで答えてください。");
    asking.terminate();  // before the window a signal simply ends the program
    ASSERT_TRUE(asking.waitForFinished(kWaitMs));
    EXPECT_EQ(bookBytes(), "not a book at all");

    fs::remove(path);
    QProcess& running = launch(path);
    QTRY_VERIFY_WITH_TIMEOUT(raised(path), kWaitMs);
    ASSERT_EQ(::kill(static_cast<pid_t>(running.processId()), SIGSTOP), 0);
    EXPECT_EQ(runZenvora(path), 1);
    told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(QString::fromStdString(told[0].first).contains(QStringLiteral("（プロセス番号 %1）が応答しません").arg(running.processId())))
        << told[0].first;
    EXPECT_TRUE(told[0].second.starts_with("そのプログラムは一時停止しています")) << told[0].second;
    ASSERT_EQ(::kill(static_cast<pid_t>(running.processId()), SIGCONT), 0);
    EXPECT_TRUE(raised(path));
    running.terminate();
    ASSERT_TRUE(running.waitForFinished(kWaitMs));
}

// A logout ends the program whatever modal window is open: an editor, a
// message box, a report. It ends within a second, and writes the balances.
TEST_F(ProcessTest, ATerminationSignalEndsEveryOpenWindowWithinASecondAndWritesTheBalances)
{
    addSmallBook();
    addEntry(1, "2026-11-01", 1, 2, 2500);
    exec("UPDATE Sisan SET Zankin = 7500 WHERE Id = 1");
    exec("CREATE TABLE written (n); CREATE TRIGGER log AFTER UPDATE OF Zankin ON Sisan BEGIN "
         "INSERT INTO written VALUES (NEW.Id); END");
    const struct {
        const char* keys;
        const char* window;
        int signal;
    } cases[] = {
        {"Ctrl+Shift+A", "modal PrefsSisanViewController", SIGTERM},
        {"Ctrl+D", "modal QMessageBox", SIGHUP},
        {"Ctrl+R", "modal AnnualReportViewController", SIGINT},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.keys);
        exec("DELETE FROM written");
        QProcess& driven = launch(path, QString::fromLatin1(c.keys), ZENVORA_DRIVEN);
        ASSERT_TRUE(printed(driven, c.window)) << driven.readAllStandardError().toStdString();
        QElapsedTimer ending;
        ending.start();
        ASSERT_EQ(::kill(static_cast<pid_t>(driven.processId()), c.signal), 0);
        ASSERT_TRUE(driven.waitForFinished(1000)) << "still running after a second";
        EXPECT_LT(ending.elapsed(), 1000);
        EXPECT_EQ(driven.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(driven.exitCode(), 0) << driven.readAllStandardError().toStdString();
        EXPECT_EQ(scalar("SELECT COUNT(*) FROM written"), 2);
        EXPECT_EQ(dump("Sisan"), "Sisan:\n1|S|10000|7500|\n2|T|0|0|\n");
    }
}

TEST_F(ProcessTest, SIGTERMWithAFailingBalanceWritePrintsTheFailureAndEnds)
{
    addSmallBook();
    exec("CREATE TRIGGER fail BEFORE UPDATE ON Sisan BEGIN SELECT RAISE(ABORT, 'boom'); END");
    QProcess& running = launch(path);
    QTRY_VERIFY_WITH_TIMEOUT(raised(path), kWaitMs);
    running.terminate();
    ASSERT_TRUE(running.waitForFinished(kWaitMs)) << "termination hangs";
    const std::string printed = running.readAllStandardError().toStdString();
    EXPECT_NE(printed.find("failure updating sisan Zankin: boom"), std::string::npos) << printed;
    EXPECT_NE(printed.find("Zenvora.app:failure  terminating!!"), std::string::npos) << printed;
}

}  // namespace
