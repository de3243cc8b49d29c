// zenvora --import in its own process, without a display: the lines it
// prints, what it writes, and what it refuses.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "app/SingleInstance.h"
#include "store/Provisioning.h"

namespace {

constexpr int kWaitMs = 15000;

QString sample(const char* name)
{
    return QString::fromUtf8(ZENVORA_IMPORT_SAMPLES) + u'/' + QString::fromUtf8(name);
}

struct Outcome {
    int exitCode = -1;
    std::string out, err;
};

class ImportCommandTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(temp.isValid());
        std::string error;
        ASSERT_TRUE(provisionBook(book, &error)) << error;
        // The starter book's 食費/その他 (2) and 臨時収入/その他 (26) as the card's defaults.
        exec("INSERT INTO Sisan (Namae, SyokiKingaku, Zankin) VALUES ('楽天カード', 0, 0);"
             "INSERT INTO ImportCategory (Layout, MatchKey, SyubetuNo, HimokuNo) VALUES "
             "('rakuten-card', '', 1, 2), ('rakuten-card', '', 2, 26)");
    }

    // The command with these arguments after --book, on a machine without a display.
    Outcome zenvora(const QStringList& arguments)
    {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) env.remove(name);
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(ZENVORA_BINARY), QStringList{"--book", QString::fromStdString(book)} + arguments);
        EXPECT_TRUE(p.waitForFinished(kWaitMs));
        return {p.exitCode(), p.readAllStandardOutput().toStdString(), p.readAllStandardError().toStdString()};
    }
    void exec(const std::string& sql)
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(book.c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
        sqlite3_close(db);
    }
    int64_t scalar(const std::string& sql)
    {
        sqlite3* db = nullptr;
        sqlite3_stmt* s = nullptr;
        EXPECT_EQ(sqlite3_open(book.c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr), SQLITE_OK);
        const int64_t value = sqlite3_step(s) == SQLITE_ROW ? sqlite3_column_int64(s, 0) : -1;
        sqlite3_finalize(s);
        sqlite3_close(db);
        return value;
    }

    QTemporaryDir temp{"/tmp/zenvora-import-XXXXXX"};
    const std::string book = temp.path().toStdString() + "/家計簿.sql";
};

std::string line(const QString& file, const char* counts)
{
    return "import " + file.toStdString() + " " + counts + "\n";
}

}  // namespace

TEST_F(ImportCommandTest, PrintsALinePerFileWritesOnlyWithoutDryRunAndRefusesWhatItMust)
{
    const QString october = sample("rakuten_card_202610.csv");
    const QString garbled = sample("mojibake.csv");
    const QStringList both{"--import", october, garbled, "--asset", "楽天カード"};

    // A garbled file is refused (non-zero exit) and the other file goes on;
    // --dry-run writes nothing. Transfer candidates wait for --accept-candidates.
    Outcome dry = zenvora(both + QStringList{"--dry-run"});
    EXPECT_EQ(dry.exitCode, 1);
    EXPECT_EQ(dry.out, line(october, "layout=rakuten-card read=6 imported=4 already=0 possible_duplicates=0 transfers=2 "
                                     "refused=0 income=2980 expense=47400") +
                           line(garbled, "layout=- read=0 imported=0 already=0 possible_duplicates=0 transfers=0 refused=0 "
                                         "income=0 expense=0"));
    EXPECT_EQ(dry.err.find("「mojibake.csv」は文字化けしています"), 0u) << dry.err;
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 0);

    Outcome real = zenvora({"--import", october, "--asset", "楽天カード", "--accept-candidates"});
    EXPECT_EQ(real.exitCode, 0) << real.err;
    EXPECT_EQ(real.out, line(october, "layout=rakuten-card read=6 imported=6 already=0 possible_duplicates=0 transfers=2 "
                                      "refused=0 income=2980 expense=53400"));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 6);
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan WHERE Namae = '楽天カード'"), -50420);

    // The same file again adds nothing and is refused as imported already.
    Outcome again = zenvora({"--import", october, "--asset", "楽天カード"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_EQ(again.out, line(october, "layout=rakuten-card read=6 imported=0 already=6 possible_duplicates=0 transfers=0 "
                                       "refused=0 income=0 expense=0"));
    EXPECT_NE(again.err.find("「rakuten_card_202610.csv」はすでに取り込み済みです"), std::string::npos) << again.err;

    // Unreadable rows are listed with their reason; the readable ones come in.
    const QString bad = sample("bad_rows.csv");
    Outcome rows = zenvora({"--import", bad, "--asset", "楽天カード"});
    EXPECT_EQ(rows.exitCode, 0) << rows.err;
    const std::string refused = "refused " + bad.toStdString();
    EXPECT_EQ(rows.out, line(bad, "layout=rakuten-card read=6 imported=2 already=0 possible_duplicates=0 transfers=0 "
                                  "refused=4 income=0 expense=1780") +
                            refused + " line=3 reason=「2026/02/30」は存在しない日付です\n" + refused +
                            " line=4 reason=「1,2x0」は金額として読めません\n" + refused +
                            " line=5 reason=「12.50」は円未満の端数がある金額です\n" + refused +
                            " line=6 reason=「9/4」は日付として読めません\n");

    Outcome nowhere = zenvora({"--import", october, "--asset", "財布"});
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_EQ(nowhere.err, "資産「財布」は家計簿にありません（資産: 現金、楽天カード）。\n");
}

TEST_F(ImportCommandTest, RefusesWhileTheWindowHasTheBookOpen)
{
    QProcess window;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    window.setProcessEnvironment(env);
    window.start(QStringLiteral(ZENVORA_BINARY), {"--book", QString::fromStdString(book)});
    ASSERT_TRUE(window.waitForStarted(kWaitMs));
    QTRY_VERIFY_WITH_TIMEOUT(SingleInstance::askRunning(book, 500).answer == SingleInstance::Answer::Raised, kWaitMs);

    Outcome refused = zenvora({"--import", sample("rakuten_card_202610.csv"), "--asset", "楽天カード"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find("この家計簿は Zenvora のウィンドウで開かれています"), std::string::npos) << refused.err;
    window.terminate();
    ASSERT_TRUE(window.waitForFinished(kWaitMs));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 0);
}

// For a card, a line holds the statement against its period (月末締め翌月27日
// 引落, here September's): the rows' billed parts (23,770) against the period's
// ticked rows at full amount less the refund; the August purchase and the
// transfer candidates left out.
TEST_F(ImportCommandTest, ACardsStatementIsHeldAgainstItsPeriod)
{
    exec("INSERT INTO CardCycles VALUES ((SELECT Id FROM Sisan WHERE Namae = '楽天カード'), 31, 27, 1, 2, 1, 202611)");
    const QString october = sample("rakuten_card_202610.csv");
    Outcome dry = zenvora({"--import", october, "--asset", "楽天カード", "--dry-run"});
    EXPECT_EQ(dry.exitCode, 0) << dry.err;
    EXPECT_EQ(dry.out, line(october, "layout=rakuten-card read=6 imported=4 already=0 possible_duplicates=0 transfers=2 "
                                     "refused=0 income=2980 expense=47400") +
                           "card " + october.toStdString() +
                           " closing=2026-09-30 withdrawal=2026-10-27 statement=23770 book=32420 difference=-8650\n");
}
