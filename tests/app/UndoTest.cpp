#include <QAction>
#include <QLineEdit>
#include <QTableView>

#include "tests/app/AppFixture.h"

namespace {

// Assets 財布 (1, opening 10,000) and 銀行 (2, 0); 食費 with 外食 (3); 財布 has
// 外食 1,200 and 500, 銀行 外食 300.
class UndoTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        addSisan("財布", 10000, 8300);
        addSisan("銀行", 0, -300);
        addCategory(1, "食費", {"外食"});
        addEntry(1, "2024-01-05", 1, 3, 1200);
        addEntry(1, "2024-01-06", 1, 3, 500);
        addEntry(2, "2024-01-07", 1, 3, 300);
    }

    QAction* action(const char* name) { return find<QAction>(name); }
    // The menu item's text and whether it can be chosen.
    std::string menu(const char* name)
    {
        return (action(name)->text() + (action(name)->isEnabled() ? "" : " (disabled)")).toStdString();
    }
    // Presses a key on the entry list, which has the focus.
    void press(int key, Qt::KeyboardModifiers modifiers)
    {
        QTableView* list = find<QTableView>("tblItem");
        list->setFocus();
        QTest::keyClick(list, static_cast<Qt::Key>(key), modifiers);
    }
    int currentEntryRow() { return find<QTableView>("tblItem")->currentIndex().row(); }
};

TEST_F(UndoTest, CtrlZBringsADeletedEntryBackOnItsAssetAndBothRedoKeysDeleteItAgain)
{
    start();
    EXPECT_EQ(menu("mnuUndo"), "元に戻す(&U) (disabled)");
    EXPECT_EQ(menu("mnuRedo"), "やり直す(&R) (disabled)");
    const std::string before = dumpAll();
    selectRow("tblItem", 0);
    answers = {true};
    press(Qt::Key_Delete, Qt::NoModifier);
    EXPECT_EQ(questions, Rows{"選択した行のデータを削除しますか？|削除する|しない"});
    const std::string deleted = dumpAll();
    EXPECT_EQ(menu("mnuUndo"), "元に戻す「食費/外食 1,200円の削除」(&U)");

    // Undo from another asset's list: the list of the change comes back with
    // the entry selected and its balance.
    selectRow("tblSisan", 1);
    EXPECT_EQ(label("lblSisanmei"), "銀行");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(label("lblSisanmei"), "財布");
    EXPECT_EQ(find<QTableView>("tblSisan")->currentIndex().row(), 0);
    EXPECT_EQ(shown("tblItem"), (Rows{"2024-01-05|食費/外食||1,200|8,800", "2024-01-06|食費/外食||500|8,300"}));
    EXPECT_EQ(currentEntryRow(), 0);
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|8,300", "銀行|-300"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "8,000");
    EXPECT_EQ(menu("mnuUndo"), "元に戻す(&U) (disabled)");
    EXPECT_EQ(menu("mnuRedo"), "やり直す「食費/外食 1,200円の削除」(&R)");

    press(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), deleted);
    EXPECT_EQ(shown("tblItem"), (Rows{"2024-01-06|食費/外食||500|9,500"}));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), before);
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(dumpAll(), deleted);
    EXPECT_EQ(label("lblSisanSouGoukei"), "9,200");

    // A new entry after an undo ends what could be redone.
    press(Qt::Key_Z, Qt::ControlModifier);
    enterNew("rdbSisyutu", "食費/外食", "700");
    EXPECT_EQ(menu("mnuUndo"), "元に戻す「食費/外食 700円の追加」(&U)");
    EXPECT_EQ(menu("mnuRedo"), "やり直す(&R) (disabled)");
}

TEST_F(UndoTest, AnOpenPanelIsCancelledFirstAndCtrlZInAFieldUndoesOnlyItsTyping)
{
    start();
    enterNew("rdbSisyutu", "食費/外食", "700", {2024, 2, 1});
    const std::string added = dumpAll();
    click("btnNewItem");
    type("txtItemDataKingaku", "99");
    QTest::keyClick(find<QLineEdit>("txtItemDataKingaku"), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(find<QLineEdit>("txtItemDataKingaku")->text(), "");
    EXPECT_EQ(dumpAll(), added);
    EXPECT_TRUE(panelShown());

    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(panelShown());
    EXPECT_EQ(shown("tblItem").size(), 2u);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 3);
}

TEST_F(UndoTest, AnUndoThatConflictsSaysWhyAndLeavesTheWindowAsItWas)
{
    start();
    selectRow("tblItem", 1);
    answers = {true};
    click("btnDeleteItem");
    // Another program puts a row under the same Id meanwhile.
    exec("INSERT INTO Items VALUES (2, '2024-03-01', 2024, 3, 1, 1, 1, 3, NULL, -1, NULL, 999, '')");
    const Rows list = shown("tblItem");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(takeMessages(), (Messages{{"「食費/外食 500円の削除」を元に戻せません。\n"
                                         "この操作の後で、同じデータがほかの方法で変更されています。\n"
                                         "何も変更していません。",
                                         "information"}}));
    EXPECT_EQ(shown("tblItem"), list);
    EXPECT_EQ(menu("mnuUndo"), "元に戻す「食費/外食 500円の削除」(&U)");
}

}  // namespace
