#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <functional>

#include "history/HistoryViewController.h"
#include "tests/app/AppFixture.h"

namespace {

// 財布 with 外食 1,200, 500 and 300 on three days; the clock reads 23 November
// 2026, 10:00, for every recorded step.
class HistoryWindowTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        addSisan("財布", 10000, 8000);
        addCategory(1, "食費", {"外食"});
        addEntry(1, "2024-01-05", 1, 3, 1200);
        addEntry(1, "2024-01-06", 1, 3, 500);
        addEntry(1, "2024-01-07", 1, 3, 300);
    }

    void deleteEntryAt(int row)
    {
        selectRow("tblItem", row);
        answers = {true};
        QTest::keyClick(find<QTableView>("tblItem"), Qt::Key_Delete);
        questions.clear();
    }

    // Presses Ctrl+H on the entry list and runs `work` in the history window
    // while it is shown modally, then closes it with Escape.
    void inHistory(const std::function<void(HistoryViewController&)>& work)
    {
        bool ran = false;
        QTimer::singleShot(0, [&] {
            auto* window = qobject_cast<HistoryViewController*>(QApplication::activeModalWidget());
            ASSERT_NE(window, nullptr) << "no history window";
            QAbstractItemModelTester steps(window->findChild<QTableView*>("tblHistory")->model());
            QAbstractItemModelTester rows(window->findChild<QTableView*>("tblHistoryRows")->model());
            work(*window);
            ran = true;
            QTest::keyClick(window, Qt::Key_Escape);
        });
        QTableView* list = find<QTableView>("tblItem");
        list->setFocus();
        QTest::keyClick(list, Qt::Key_H, Qt::ControlModifier);
        EXPECT_TRUE(ran);
    }

    static void pick(HistoryViewController& w, int row)
    {
        auto* table = w.findChild<QTableView*>("tblHistory");
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(table->model()->index(row, 0)).center());
    }
};

TEST_F(HistoryWindowTest, ListsStepsNewestFirstWithTheirRowsAndRevertsAnOlderDeletionFromTheTrash)
{
    start();
    deleteEntryAt(0);                          // 1,200
    enterNew("rdbSisyutu", "食費/外食", "700");  // 2024-05-01
    deleteEntryAt(1);                          // 300
    const std::string now = "2026/11/23 10:00|";

    inHistory([&](HistoryViewController& w) {
        EXPECT_EQ(w.windowTitle(), "履歴");
        EXPECT_EQ(rowsOf(&w, "tblHistory"),
                  (Rows{now + "食費/外食 300円の削除|財布|1", now + "食費/外食 700円の追加|財布|1",
                        now + "食費/外食 1,200円の削除|財布|1"}));
        EXPECT_EQ(rowsOf(&w, "tblHistoryRows"), Rows{"削除|入力|2024-01-07|財布|食費/外食||300|"});

        // The trash: only what deleted rows; the older deletion put back.
        QTest::mouseClick(w.findChild<QCheckBox*>("chkSakujyoNomi"), Qt::LeftButton);
        EXPECT_EQ(rowsOf(&w, "tblHistory"),
                  (Rows{now + "食費/外食 300円の削除|財布|1", now + "食費/外食 1,200円の削除|財布|1"}));
        pick(w, 1);
        EXPECT_EQ(rowsOf(&w, "tblHistoryRows"), Rows{"削除|入力|2024-01-05|財布|食費/外食||1,200|"});
        QTest::mouseClick(w.findChild<QPushButton*>("btnTorikesu"), Qt::LeftButton);
        EXPECT_EQ(w.findChild<QLabel*>("lblHistoryStatus")->text(), "「食費/外食 1,200円の削除」を取り消しました。");
        EXPECT_EQ(dump("Items"), "Items:\n"
                                 "1|2024-01-05|2024|1|5|1|1|3|NULL|-1|NULL|1200||\n"
                                 "2|2024-01-06|2024|1|6|1|1|3|NULL|-1|NULL|500||\n"
                                 "4|2024-05-01|2024|5|1|1|1|3|NULL|-1|NULL|700||\n");

        // Reverting it again meets the rows it put back: nothing changes.
        QTest::mouseClick(w.findChild<QCheckBox*>("chkSakujyoNomi"), Qt::LeftButton);
        EXPECT_EQ(rowsOf(&w, "tblHistory").front(), now + "「食費/外食 1,200円の削除」の取り消し|財布|1");
        pick(w, 3);
        QTest::mouseClick(w.findChild<QPushButton*>("btnTorikesu"), Qt::LeftButton);
        EXPECT_EQ(takeMessages(),
                  (Messages{{"「食費/外食 1,200円の削除」を取り消せません。\n後の操作「「食費/外食 1,200円の削除」の取り消し」"
                             "（2026/11/23 10:00）が同じ番号のデータを追加しています。\n何も変更していません。",
                             "information"}}));
        EXPECT_EQ(rowsOf(&w, "tblHistory").size(), 4u);
    });

    // The main window shows the entry that came back, and can undo the revert.
    EXPECT_EQ(shown("tblItem"), (Rows{"2024-01-05|食費/外食||1,200|8,800", "2024-01-06|食費/外食||500|8,300",
                                      "2024-05-01|食費/外食||700|7,600"}));
    EXPECT_EQ(find<QTableView>("tblItem")->currentIndex().row(), 0);
    EXPECT_EQ(label("lblSisanSouGoukei"), "7,600");
    EXPECT_EQ(find<QAction>("mnuUndo")->text(), "元に戻す「「食費/外食 1,200円の削除」の取り消し」(&U)");
}

}  // namespace
