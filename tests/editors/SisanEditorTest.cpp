#include <QComboBox>
#include <QPushButton>

#include "editors/PrefsSisanViewController.h"
#include "tests/editors/EditorFixture.h"

namespace {

// 財布 (opening 1,000) and 銀行 (500), each with an expense, and a transfer
// of 300 from 財布 to 銀行 (rows 3 and 4).
class SisanEditorTest : public EditorFixture<PrefsSisanViewController> {
protected:
    void SetUp() override
    {
        EditorFixture::SetUp();
        saifu = addSisan("財布", 1000, 600);
        ginkou = addSisan("銀行", 500, 750);
        const int64_t food = addCategory(1, "食費") + 1;
        addEntry(saifu, "2024-01-01", 1, food, 100);
        addEntry(ginkou, "2024-01-02", 1, food, 50);
        addEntry(saifu, "2024-01-03", 3, 0, 300);
        addEntry(ginkou, "2024-01-03", 4, 0, 300);
        exec("UPDATE Items SET IdouSisanNo=2, IdouId=4 WHERE Id=3");
        exec("UPDATE Items SET IdouSisanNo=1, IdouId=3 WHERE Id=4");
    }

    // The box's title and its two buttons, or "(hidden)".
    QString box()
    {
        const QString title = boxTitle("sisanKoumokuBox");
        if (title == "(hidden)") return title;
        return title + "|" + find<QPushButton>("btnSisanKoumokuOKTitle")->text() + "|" +
               find<QPushButton>("btnSisanKoumokuCancelTitle")->text();
    }

    int64_t saifu = 0, ginkou = 0;
};

TEST_F(SisanEditorTest, AddEditAndDeleteReachTheBookByKeysAndTheMainWindowFollowsOnClose)
{
    start();
    selectRow("tblSisan", 1);
    click("btnNewItem");
    click("rdbIdou");
    pickCombo("財布");
    openEditor();
    EXPECT_EQ(editor->windowTitle(), "資産の設定");
    EXPECT_EQ(shown("tblSisanKoumoku"), (Rows{"財布|1,000", "銀行|500"}));
    EXPECT_TRUE(find<QTableView>("tblSisanKoumoku")->hasFocus());

    pressKeys(Qt::CTRL | Qt::Key_N);
    EXPECT_EQ(box(), "新規追加|この新規追加の実行|この新規追加取消");
    type("txtSisanKoumokuNamae", "カード");
    type("txtSisanKoumokuSyokikingaku", " 1,200 ");
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|財布|1000|600|\n2|銀行|500|750|\n3|カード|1200|1200|\n");
    EXPECT_EQ(text("txtSisanKoumokuNamae") + text("txtSisanKoumokuSyokikingaku"), "");
    EXPECT_EQ(box(), "(hidden)");

    // The edit acts on the asset it was prepared for, whatever is selected
    // when it is carried out; the stored balance restarts from the new
    // opening amount.
    selectRow("tblSisanKoumoku", 0);
    pressKeys(Qt::CTRL | Qt::Key_E);
    EXPECT_EQ(box(), "編集更新|この編集更新の実行|この編集更新取消");
    EXPECT_EQ(text("txtSisanKoumokuNamae") + "|" + text("txtSisanKoumokuSyokikingaku"), "財布|1,000");
    selectRow("tblSisanKoumoku", 2);
    type("txtSisanKoumokuSyokikingaku", "3000");
    click("btnSisanKoumokuOKTitle");
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|財布|3000|3000|\n2|銀行|500|750|\n3|カード|1200|1200|\n");
    EXPECT_TRUE(find<QTableView>("tblSisanKoumoku")->selectionModel()->selectedRows().isEmpty());

    // Deleting 銀行, the asset the main window shows, takes the partner row
    // of its transfer in 財布 along, though 財布 is selected by then; Enter
    // on the focused execute button carries it out.
    selectRow("tblSisanKoumoku", 1);
    pressKeys(Qt::CTRL | Qt::Key_D);
    EXPECT_EQ(box(), "削除|この削除の実行|この削除 取消");
    selectRow("tblSisanKoumoku", 0);
    find<QPushButton>("btnSisanKoumokuOKTitle")->setFocus();
    answers = {true};
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(questions, Rows{"この資産での支出／収入のデータも削除されます。\n 削除してもいいですか？|削除する|しない"});
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 1);
    EXPECT_EQ(scalar("SELECT Id FROM Items"), 1);
    EXPECT_EQ(shown("tblSisanKoumoku"), (Rows{"財布|3,000", "カード|1,200"}));
    EXPECT_TRUE(editor->changed());

    // The Delete key on the list prepares a delete too.
    selectRow("tblSisanKoumoku", 1);
    pressKeys(Qt::Key_Delete);
    EXPECT_EQ(box(), "削除|この削除の実行|この削除 取消");

    pressKeys(Qt::CTRL | Qt::Key_W);
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(label("lblSisanmei"), "財布");
    EXPECT_EQ(find<QTableView>("tblSisan")->selectionModel()->selectedRows().front().row(), 0);
    EXPECT_EQ(shown("tblItem"), Rows{"2024-01-01|食費/その他||100|2,900"});
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|2,900", "カード|1,200"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "4,100");
    const auto* combo = find<QComboBox>("cmbItemDataHimomku");
    EXPECT_EQ(combo->count(), 2) << "the open panel no longer offers 銀行";
    EXPECT_EQ(combo->currentText(), "財布");
}

TEST_F(SisanEditorTest, RefusedInputDeclinedDeletionAndStoreFailuresChangeNothing)
{
    addSisan("財布", 0, 0);  // a book from before names were kept apart
    openEditor();
    const std::string before = dumpAll();
    QTest::keyClick(editor.get(), Qt::Key_Escape);
    EXPECT_TRUE(editor->isVisible()) << "only the close button closes the editor";
    EXPECT_FALSE(editor->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    click("btnSisanKoumokuKousin");
    click("btnSisanKoumokuSakujyo");
    EXPECT_EQ(box(), "(hidden)");
    EXPECT_EQ(takeMessages(), (Messages{{"編集更新する資産の行データを選択してからにしてください。", "information"},
                                        {"削除する資産の行データを選択してからにしてください。", "information"}}));

    // Signs, fractions, other scripts' digits and values beyond 32 bits.
    click("btnSisanKoumokuTuika");
    for (const char* bad : {"", "abc", "-500", "1.5", "１２００", "2147483648", "12 00"}) {
        type("txtSisanKoumokuSyokikingaku", QString::fromUtf8(bad));
        click("btnSisanKoumokuOKTitle");
        EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"}})) << bad;
    }
    EXPECT_EQ(box(), "新規追加|この新規追加の実行|この新規追加取消");

    // A name another asset has is refused, also with blanks around it; so
    // is renaming to one. An asset of a doubled name keeps it through an edit.
    type("txtSisanKoumokuSyokikingaku", "0");
    for (const char* taken : {"財布", " 銀行 "}) {
        type("txtSisanKoumokuNamae", QString::fromUtf8(taken));
        click("btnSisanKoumokuOKTitle");
    }
    selectRow("tblSisanKoumoku", 0);
    click("btnSisanKoumokuKousin");
    type("txtSisanKoumokuNamae", "銀行");
    click("btnSisanKoumokuOKTitle");
    const Message taken{"同じ名前の資産がすでにあります。別の名前にしてください。", "information"};
    EXPECT_EQ(takeMessages(), (Messages{taken, taken, taken}));
    EXPECT_EQ(dumpAll(), before);
    type("txtSisanKoumokuNamae", "財布");
    type("txtSisanKoumokuSyokikingaku", "2000");
    click("btnSisanKoumokuOKTitle");
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|財布|2000|2000|\n2|銀行|500|750|\n3|財布|0|0|\n");

    // Declining the deletion hides the box; a failure half way through it
    // (at the asset row, after its entries) keeps the box and every row.
    const std::string edited = dumpAll();
    armFailure("Sisan", "DELETE", "1");
    selectRow("tblSisanKoumoku", 1);
    click("btnSisanKoumokuSakujyo");
    answers = {false, true};
    click("btnSisanKoumokuOKTitle");
    EXPECT_EQ(box(), "(hidden)");
    click("btnSisanKoumokuSakujyo");
    click("btnSisanKoumokuOKTitle");
    EXPECT_EQ(takeMessages(), (Messages{{"failure deletin from sisan: boom", "information"}}));
    EXPECT_EQ(dumpAll(), edited);
    EXPECT_EQ(box() + "|" + text("txtSisanKoumokuNamae"), "削除|この削除の実行|この削除 取消|銀行");

    // Cancel forgets the action but keeps the fields; the red mark stays
    // after an accepted amount.
    click("btnSisanKoumokuTuika");
    click("btnSisanKoumokuCancelTitle");
    EXPECT_EQ(editor->syoriNo(), PrefsSisanViewController::kNone);
    EXPECT_EQ(text("txtSisanKoumokuNamae"), "銀行");
    click("btnSisanKoumokuTuika");
    type("txtSisanKoumokuNamae", "カード");
    type("txtSisanKoumokuSyokikingaku", "0");
    click("btnSisanKoumokuOKTitle");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Sisan WHERE Namae='カード'"), 1);
    EXPECT_TRUE(find<QLineEdit>("txtSisanKoumokuSyokikingaku")->styleSheet().contains("red"));
}

// The menu opens a fresh editor each time; the window re-reads only after a change.
TEST_F(SisanEditorTest, TheMenuRunsAFreshEditorAndTheWindowFollowsItsChanges)
{
    ViewController& w = start();
    selectRow("tblSisan", 1);
    const Items* shownRow = w.DM.itemList.front().get();
    throughKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_A, [&](PrefsSisanViewController&) { click("btnSisanModalClose"); });
    EXPECT_EQ(w.DM.itemList.front().get(), shownRow);

    // The shown asset's opening amount changed: its entries and every
    // balance are computed afresh, not taken from the stored copies.
    throughKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_A, [&](PrefsSisanViewController&) {
        selectRow("tblSisanKoumoku", 1);
        click("btnSisanKoumokuKousin");
        type("txtSisanKoumokuSyokikingaku", "2000");
        click("btnSisanKoumokuOKTitle");
        click("btnSisanModalClose");
    });
    EXPECT_EQ(label("lblSisanmei"), "銀行");
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|600", "銀行|2,250"}));
    EXPECT_TRUE(shown("tblItem").back().ends_with("|2,250"));
    EXPECT_EQ(label("lblSisanSouGoukei"), "2,850");

    // Deleting every asset: the window shows its empty state.
    throughKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_A, [&](PrefsSisanViewController& e) {
        EXPECT_FALSE(e.changed()) << "a fresh editor";
        for (int left = 2; left > 0; --left) {
            selectRow("tblSisanKoumoku", 0);
            click("btnSisanKoumokuSakujyo");
            answers = {true};
            click("btnSisanKoumokuOKTitle");
        }
    });
    EXPECT_EQ(label("lblSisanmei"), "");
    EXPECT_EQ(shown("tblItem"), Rows{});
    EXPECT_EQ(label("lblSisanSouGoukei"), "0");

    // An unknown transition only says so on standard output.
    testing::internal::CaptureStdout();
    w.performSegue("showSomethingElse");
    w.performSegue("");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "prepare failed\n");
}

}  // namespace
