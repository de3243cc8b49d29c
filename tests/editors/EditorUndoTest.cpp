#include <QPushButton>

#include "editors/EditorWidgets.h"
#include "editors/PrefsHimokuViewController.h"
#include "editors/PrefsSisanViewController.h"
#include "tests/editors/EditorFixture.h"

namespace {

// 財布 (1, opening 1,000) with 外食 100, 銀行 (2, 500) with 外食 50; 食費 with
// その他 and 外食 (3), 給与.
template <typename Editor>
class EditorUndoTest : public EditorFixture<Editor> {
protected:
    void SetUp() override
    {
        EditorFixture<Editor>::SetUp();
        this->addSisan("財布", 1000, 900);
        this->addSisan("銀行", 500, 450);
        this->addCategory(1, "食費", {"外食"});
        this->addCategory(2, "給与");
        this->addEntry(1, "2024-01-01", 1, 3, 100);
        this->addEntry(2, "2024-01-02", 1, 3, 50);
    }

    // Presses keys on the editor's table, which has the focus.
    void press(const char* table, int key, Qt::KeyboardModifiers modifiers)
    {
        QTableView* list = this->template find<QTableView>(table);
        list->setFocus();
        QTest::keyClick(list, static_cast<Qt::Key>(key), modifiers);
    }
};

using SisanEditorUndoTest = EditorUndoTest<PrefsSisanViewController>;
using HimokuEditorUndoTest = EditorUndoTest<PrefsHimokuViewController>;

TEST_F(SisanEditorUndoTest, CtrlZUndoesTheEditorsOwnStepsNewestFirstAndTheRedoKeysMakeThemAgain)
{
    start();
    enterNew("rdbSisyutu", "食費/外食", "700");  // a step of the main window
    const std::string opened = dumpAll();
    openEditor();
    press("tblSisanKoumoku", Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), opened) << "a step from before the editor is not the editor's to undo";

    click("btnSisanKoumokuTuika");
    type("txtSisanKoumokuNamae", "カード");
    type("txtSisanKoumokuSyokikingaku", "300");
    click("btnSisanKoumokuOKTitle");
    const std::string added = dumpAll();
    selectRow("tblSisanKoumoku", 1);
    click("btnSisanKoumokuSakujyo");
    answers = {true};
    click("btnSisanKoumokuOKTitle");
    questions.clear();
    EXPECT_EQ(shown("tblSisanKoumoku"), (Rows{"財布|1,000", "カード|300"}));

    // Typing in a field is undone there, not in the book.
    const std::string deleted = dumpAll();
    click("btnSisanKoumokuTuika");
    type("txtSisanKoumokuNamae", "x");
    QTest::keyClick(find<QLineEdit>("txtSisanKoumokuNamae"), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(text("txtSisanKoumokuNamae"), "x");
    EXPECT_EQ(dumpAll(), deleted);

    press("tblSisanKoumoku", Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), added);
    EXPECT_EQ(boxTitle("sisanKoumokuBox"), "(hidden)");
    EXPECT_EQ(shown("tblSisanKoumoku"), (Rows{"財布|1,000", "銀行|500", "カード|300"}));
    EXPECT_EQ(selectedRow(find<QTableView>("tblSisanKoumoku")), 1) << "the asset that came back";
    press("tblSisanKoumoku", Qt::Key_Z, Qt::ControlModifier);
    press("tblSisanKoumoku", Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), opened);
    press("tblSisanKoumoku", Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), added);
    EXPECT_EQ(shown("tblSisanKoumoku"), (Rows{"財布|1,000", "銀行|500", "カード|300"}));

    click("btnSisanModalClose");
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|200", "銀行|450", "カード|300"}));
}

TEST_F(HimokuEditorUndoTest, CtrlZBringsADeletedCategoryBackWithItsEntriesAndTheWindowShowsThemOnClose)
{
    start();
    const std::string before = dumpAll();
    openEditor();
    selectRow("tblHimokuKoumoku", 0);
    click("btnHimokuSakujyo");
    answers = {true};
    click("btnHimokuKoumokuOkLabel");
    questions.clear();
    EXPECT_EQ(shown("tblHimokuKoumoku"), (Rows{"＊|給与|2", "|給与/その他|2"}));

    press("tblHimokuKoumoku", Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(shown("tblHimokuKoumoku"),
              (Rows{"＊|食費|1", "|食費/その他|1", "|食費/外食|1", "＊|給与|2", "|給与/その他|2"}));
    EXPECT_EQ(selectedRow(find<QTableView>("tblHimokuKoumoku")), 0);
    press("tblHimokuKoumoku", Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(shown("tblHimokuKoumoku").size(), 2u);
    press("tblHimokuKoumoku", Qt::Key_Z, Qt::ControlModifier);

    click("btnClose");
    EXPECT_EQ(shown("tblItem"), Rows{"2024-01-01|食費/外食||100|900"});
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|900", "銀行|450"}));
}

}  // namespace
