#include <sqlite3.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <filesystem>
#include <fstream>
#include <functional>

#include "app/BookGate.h"
#include "history/RestoreViewController.h"
#include "store/BackupRestore.h"
#include "tests/app/AppFixture.h"

namespace fs = std::filesystem;

namespace {

// 財布 with 外食 1,200 and 500, backed up on 20 November; a damaged file
// among the backups of the 21st. The clock reads 23 November 2026, 10:00.
class RestoreWindowTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        addSisan("財布", 10000, 8300);
        addCategory(1, "食費", {"外食"});
        addEntry(1, "2024-01-05", 1, 3, 1200);
        addEntry(1, "2024-01-06", 1, 3, 500);
        backups = backupFolderOf(path);
        std::string error;
        ASSERT_EQ(backupBookOnce(path, backups, "20261120", 14, &error), BackupResult::Made) << error;
        std::ofstream(backups + "/Zenvora-20261121.sql") << std::string(4096, 'x');
    }

    // Opens the ファイル menu with Alt+F on the main window and presses the
    // item's letter; then the window has the keys again, on its entry list.
    void fromFileMenu(Qt::Key letter)
    {
        takeKeys();
        QTest::keyClick(vc.get(), Qt::Key_F, Qt::AltModifier);
        ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }, 2000))
            << "the ファイル menu did not open";
        QTest::keyClick(QApplication::activePopupWidget(), letter);
        takeKeys();
    }

    // The offscreen platform leaves the closed menu as the active window.
    void takeKeys()
    {
        vc->activateWindow();
        ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == vc.get(); }, 2000));
        find<QTableView>("tblItem")->setFocus();
    }

    std::string backups;
};

TEST_F(RestoreWindowTest, TheDialogListsTheBackupsComparesOneAndRestoresItIntoTheOpenWindow)
{
    start();
    selectRow("tblItem", 1);
    answers = {true};
    click("btnDeleteItem");
    questions.clear();
    enterNew("rdbSisyutu", "食費/外食", "2000");
    const std::string before = dumpAll() + dump("History");

    bool ran = false;
    QTimer::singleShot(0, [&] {
        auto* w = qobject_cast<RestoreViewController*>(QApplication::activeModalWidget());
        ASSERT_NE(w, nullptr) << "no restore dialog";
        QAbstractItemModelTester backupsTester(w->findChild<QTableView*>("tblBackups")->model());
        QAbstractItemModelTester differenceTester(w->findChild<QTableView*>("tblDifference")->model());
        ASSERT_TRUE(QTest::qWaitFor([w] { return w->idle(); }, 10000));
        const Rows listed = rowsOf(w, "tblBackups");
        ASSERT_EQ(listed.size(), 2u);
        EXPECT_EQ(listed[0].substr(0, listed[0].find('|')), "2026年11月21日");
        EXPECT_NE(listed[0].find("|読めません: "), std::string::npos) << listed[0];
        EXPECT_EQ(listed[1].substr(listed[1].find('|', listed[1].find('|') + 1)), "|2|8,300|");
        EXPECT_FALSE(w->findChild<QPushButton*>("btnRestore")->isEnabled()) << "a damaged backup cannot be chosen";

        auto* list = w->findChild<QTableView*>("tblBackups");
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Down);
        ASSERT_TRUE(QTest::qWaitFor([w] { return w->idle(); }, 10000));
        EXPECT_EQ(w->findChild<QLabel*>("lblDifference")->text(),
                  "この日から追加された入力 1 件、削除された入力 1 件（変更された入力は両方に数えます）");
        EXPECT_EQ(rowsOf(w, "tblDifference"), Rows{"財布|8,300|6,800|-1,500"});
        answers = {true};
        QTest::mouseClick(w->findChild<QPushButton*>("btnRestore"), Qt::LeftButton);
        ran = true;
    });
    fromFileMenu(Qt::Key_R);
    ASSERT_TRUE(ran);

    const std::string kept = path + ".before-restore-20261123-100000";
    EXPECT_EQ(questions, Rows{"2026年11月20日のバックアップに戻しますか？\n今の帳簿は次の名前で残します:\n" + kept +
                              "|戻す|やめる"});
    EXPECT_EQ(takeMessages(),
              (Messages{{"バックアップに戻しました。元の帳簿は次の名前で残してあります:\n" + kept, "information"}}));
    EXPECT_EQ(shown("tblItem"), (Rows{"2024-01-05|食費/外食||1,200|8,800", "2024-01-06|食費/外食||500|8,300"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "8,300");
    EXPECT_EQ(find<QAction>("mnuUndo")->text(), "元に戻す(&U)");
    sqlite3_close(side);
    ASSERT_EQ(sqlite3_open(kept.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(dumpAll() + dump("History"), before);
}

TEST_F(RestoreWindowTest, BackUpNowMakesTodaysBackupAgainAndSaysWhereItWent)
{
    start();
    const std::string today = backups + "/Zenvora-20261123.sql";
    fromFileMenu(Qt::Key_B);
    EXPECT_EQ(takeMessages(), (Messages{{"今日のバックアップを作りました。\n" + today, "information"}}));
    ASSERT_TRUE(fs::exists(today));
    enterNew("rdbSisyutu", "食費/外食", "2000");
    fromFileMenu(Qt::Key_B);
    EXPECT_EQ(takeMessages(), (Messages{{"今日のバックアップを作りました。\n" + today, "information"}}));
    EXPECT_EQ(readBackupSummary(today).entries, 3) << "the day's backup is replaced";
}

}  // namespace
