#include <QComboBox>
#include <QScrollBar>
#include <QTableView>

#include "app/AppDelegate.h"
#include "tests/app/AppFixture.h"

namespace {

using MainWindowTest = AppFixture;

TEST_F(MainWindowTest, StartUpShowsTheFirstAssetWithItsNewestEntriesInView)
{
    const int64_t s = addSisan("財布", 1000000, 0);
    addSisan("銀行", 234567, 234567);
    const int64_t food = addCategory(1, "食費") + 1;
    for (int day = 1; day <= 28; ++day)
        for (int month = 1; month <= 3; ++month)
            addEntry(s, QDate(2024, month, day).toString("yyyy-MM-dd").toStdString(), 1, food, 100);
    setClockTo({2018, 12, 31}, {23, 59});
    ViewController& w = start();

    EXPECT_EQ(w.windowTitle(), "Zenvora");
    EXPECT_EQ(label("lblToday"), "2018年12月31日");
    EXPECT_EQ(label("lblSisanmei"), "財布");
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|991,600", "銀行|234,567"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "1,226,167");
    EXPECT_EQ(shown("tblItem").back(), "2024-03-28|食費/その他||100|991,600");
    const QScrollBar* bar = find<QTableView>("tblItem")->verticalScrollBar();
    EXPECT_GT(bar->maximum(), 0);
    EXPECT_EQ(bar->value(), bar->maximum());
    const QAbstractItemModel* model = find<QTableView>("tblItem")->model();
    EXPECT_EQ(model->data(model->index(0, 4), Qt::TextAlignmentRole).value<Qt::Alignment>() & Qt::AlignRight,
              Qt::AlignRight);
    EXPECT_FALSE(panelShown());
    EXPECT_EQ(find<QComboBox>("cmbItemDataHimomku")->count(), 1);
}

TEST_F(MainWindowTest, AnEmptyBookShowsNothingAndSaysWhatIsMissing)
{
    ViewController& w = start();
    EXPECT_EQ(label("lblSisanmei"), "");
    EXPECT_EQ(label("lblSisanSouGoukei"), "0");
    EXPECT_EQ(shown("tblItem"), Rows{});
    click("btnNewItem");
    click("btnEditUpdateItem");
    click("btnDeleteItem");
    EXPECT_EQ(takeMessages(),
              (Messages{{"資産がありません。先に「設定」の「資産の設定」で資産を追加してください。", "information"},
                        {"データ行を選択してから編集してください。", "information"},
                        {"データ行を選択してから削除してください。", "information"}}));
    EXPECT_FALSE(panelShown());
    w.close();
}

TEST_F(MainWindowTest, ClosingTheWindowWritesEveryBalanceOnceAndReportsAFailure)
{
    const int64_t s = addSisan("S", 1000, 0);
    const int64_t food = addCategory(1, "食費") + 1;
    addEntry(s, "2024-01-01", 1, food, 300);
    ViewController& w = start();
    AppDelegate delegate(w.DM);
    delegate.watch(&w);
    w.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&w));

    // An entry after the start changes the balance in memory only; Ctrl+Q
    // closes the window, which writes it.
    enterNew("rdbSisyutu", "食費/その他", "200");
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan"), 700);
    pressKeys(Qt::CTRL | Qt::Key_Q);
    EXPECT_FALSE(w.isVisible());
    EXPECT_EQ(scalar("SELECT Zankin FROM Sisan"), 500);
    // Quitting after the close does not write again.
    armFailure("Sisan", "UPDATE", "1");
    delegate.applicationWillTerminate();

    ViewController& again = start();
    AppDelegate second(again.DM);
    second.watch(&again);
    again.close();
    EXPECT_EQ(takeMessages(), (Messages{{"failure updating sisan Zankin: boom", "information"},
                                        {"Zenvora.app:failure  terminating!!", "information"}}));
}

}  // namespace
