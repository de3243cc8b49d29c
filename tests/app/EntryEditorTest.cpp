#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

#include "tests/app/AppFixture.h"

namespace {

// Assets 財布 (opening 10,000) and 銀行 (0); 食費 with 外食, and 給与.
class EntryEditorTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        saifu = addSisan("財布", 10000, 10000);
        ginkou = addSisan("銀行", 0, 0);
        gaisyoku = addCategory(1, "食費", {"外食"}) + 2;
        kyuuyo = addCategory(2, "給与") + 1;
    }

    // The panel's state as "title|kind|combo|amount|note|list enabled".
    std::string panel()
    {
        const char* kind = find<QRadioButton>("rdbSisyutu")->isChecked()    ? "支出"
                           : find<QRadioButton>("rdbSyuunyuu")->isChecked() ? "収入"
                                                                           : "移動";
        return (find<QGroupBox>("itemDataSyubetu")->title() + "|" + kind + "|" +
                find<QComboBox>("cmbItemDataHimomku")->currentText() + "|" +
                find<QLineEdit>("txtItemDataKingaku")->text() + "|" + find<QLineEdit>("txtItemDataBikou")->text() +
                "|" + (find<QTableView>("tblItem")->isEnabled() ? "enabled" : "disabled"))
            .toStdString();
    }

    int64_t saifu = 0, ginkou = 0, gaisyoku = 0, kyuuyo = 0;
};

TEST_F(EntryEditorTest, NewEntriesAreStoredWithTheirDateFieldsAndEveryListFollows)
{
    start();
    enterNew("rdbSisyutu", "食費/外食", " 1200 ", {2018, 12, 31}, "Mom's");
    enterNew("rdbSyuunyuu", "給与/その他", "0", {2019, 12, 30});
    EXPECT_EQ(dump("Items"), "Items:\n"
                             "1|2018-12-31|2018|12|31|1|1|3|NULL|-1|NULL|1200|Mom's|\n"
                             "2|2019-12-30|2019|12|30|1|2|5|NULL|-1|0|NULL||\n");
    EXPECT_EQ(find<QDateEdit>("itemDataDatePicker")->date(), QDate(2019, 12, 30)) << "the last date stays";

    enterNew("rdbIdou", "銀行", "3000", {2019, 12, 31});
    EXPECT_EQ(shown("tblItem"), (Rows{"2018-12-31|食費/外食||1,200|8,800", "2019-12-30|給与/その他|0||8,800",
                                      "2019-12-31|銀行||3,000|5,800"}));
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|5,800", "銀行|3,000"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "8,800");
    EXPECT_FALSE(panelShown());
    EXPECT_EQ(panel(), "新規追加|支出||||enabled");
}

TEST_F(EntryEditorTest, RefusalsAndStoreFailuresKeepThePanelOpenAndStoreNothing)
{
    start();
    const std::string before = dumpAll();
    // Signs, separators, decimals, blanks inside, full-width digits and values
    // beyond 32 bits are all refused the same way.
    for (const char* text : {"-100", "1,200", "12.5", "", "12 00", "１２００", "2147483648", "99999999999999999999"}) {
        SCOPED_TRACE(text);
        click("btnNewItem");
        pickCombo("食費/外食");
        type("txtItemDataKingaku", QString::fromUtf8(text));
        type("txtItemDataBikou", "memo");
        click("btnItemDataOK");
        EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"}}));
        EXPECT_TRUE(panelShown());
        EXPECT_EQ(panel(), "新規追加|支出||||enabled");
        EXPECT_TRUE(find<QLineEdit>("txtItemDataKingaku")->styleSheet().contains("2px solid red"));
    }

    // A transfer is checked for its destination before its amount.
    click("rdbIdou");
    EXPECT_EQ(label("lblHimokuTitle"), "移動先資産");
    type("txtItemDataKingaku", "abc");
    click("btnItemDataOK");
    click("rdbIdou");
    pickCombo("財布");
    type("txtItemDataKingaku", "abc");
    click("btnItemDataOK");
    EXPECT_EQ(panel(), "新規追加|支出||||enabled");
    EXPECT_EQ(label("lblHimokuTitle"), "費目");
    click("btnItemDataOK");  // no category picked
    EXPECT_EQ(takeMessages(), (Messages{{"移動先資産を選択してください。", "information"},
                                        {"移動元と移動先が同じです。処理を中止します。", "information"},
                                        {"費目を選択してください。", "information"}}));
    EXPECT_EQ(dumpAll(), before);

    // The largest 32-bit amount and leading zeros are accepted; the red mark goes.
    enterNew("rdbSyuunyuu", "給与/その他", "2147483647");
    enterNew("rdbSisyutu", "食費/外食", "007");
    EXPECT_EQ(shown("tblItem"), (Rows{"2024-05-01|給与/その他|2,147,483,647||2,147,493,647",
                                      "2024-05-01|食費/外食||7|2,147,493,640"}));
    EXPECT_TRUE(find<QLineEdit>("txtItemDataKingaku")->styleSheet().isEmpty());

    const std::string accepted = dumpAll();
    armFailure("Items", "INSERT", "1");
    enterNew("rdbSisyutu", "食費/外食", "1200");
    EXPECT_EQ(takeMessages(), (Messages{{"failure inserting item Syukkin,Nyuukin: boom", "information"}}));
    EXPECT_TRUE(panelShown());
    EXPECT_EQ(dumpAll(), accepted);
    EXPECT_EQ(shown("tblItem").size(), 2u);
}

TEST_F(EntryEditorTest, EditingUpdatesTheLoadedEntryAndMayChangeItsKind)
{
    const int64_t in = addEntry(saifu, "2024-01-10", 2, kyuuyo, 500);
    const int64_t out = addEntry(saifu, "2024-01-20", 1, gaisyoku, 300);
    start();
    selectRow("tblItem", 0);
    pressKeys(Qt::CTRL | Qt::Key_E);
    EXPECT_EQ(panel(), "編集更新|収入|給与/その他|500||disabled");
    EXPECT_FALSE(find<QTableView>("tblSisan")->isEnabled());
    EXPECT_EQ(find<QDateEdit>("itemDataDatePicker")->date(), QDate(2024, 1, 10));
    EXPECT_TRUE(find<QRadioButton>("rdbSyuunyuu")->hasFocus());

    // Cancel leaves the data alone and gives the lists back.
    const std::string before = dumpAll();
    QTest::keyClick(find<QLineEdit>("txtItemDataKingaku"), Qt::Key_Escape);
    EXPECT_FALSE(panelShown());
    EXPECT_TRUE(find<QTableView>("tblItem")->isEnabled());
    EXPECT_EQ(dumpAll(), before);

    // A new entry after the cancelled edit starts as an expense with the
    // edit's amount and the expense category last used in this asset; Enter
    // on the focused button opens it.
    find<QPushButton>("btnNewItem")->setFocus();
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(panel(), "新規追加|支出|食費/外食|500||enabled");

    // Income turned into an expense: the amount moves to Syukkin. Enter confirms.
    selectRow("tblItem", 0);
    click("btnEditUpdateItem");
    click("rdbSisyutu");
    pickCombo("食費/外食");
    type("txtItemDataKingaku", "800");
    QTest::keyClick(find<QLineEdit>("txtItemDataKingaku"), Qt::Key_Return);
    EXPECT_EQ(scalar("SELECT Syukkin FROM Items WHERE Id=" + std::to_string(in) + " AND SyubetuNo=1 AND HimokuNo=" +
                     std::to_string(gaisyoku)),
              800);
    EXPECT_EQ(shown("tblItem"), (Rows{"2024-01-10|食費/外食||800|9,200", "2024-01-20|食費/外食||300|8,900"}));
    EXPECT_FALSE(panelShown());

    // Switching an edit to a transfer stores nothing and keeps the panel,
    // emptied, and the lists held.
    const std::string kept = dumpAll();
    selectRow("tblItem", 1);
    click("btnEditUpdateItem");
    click("rdbIdou");
    pickCombo("銀行");
    click("btnItemDataOK");
    EXPECT_EQ(dumpAll(), kept);
    EXPECT_TRUE(panelShown());
    EXPECT_EQ(panel(), "編集更新|支出||||disabled");

    // Whatever gets selected meanwhile, the edit stays with its asset and entry.
    find<QTableView>("tblSisan")->selectRow(1);
    ASSERT_EQ(label("lblSisanmei"), "銀行");
    pickCombo("食費/外食");
    type("txtItemDataKingaku", "50");
    click("btnItemDataOK");
    EXPECT_EQ(scalar("SELECT SisanNo * 1000 + Syukkin FROM Items WHERE Id=" + std::to_string(out)),
              saifu * 1000 + 50);
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|9,150", "銀行|0"}));
    EXPECT_EQ(label("lblSisanmei"), "財布");
    EXPECT_EQ(shown("tblItem").back(), "2024-01-20|食費/外食||50|9,150");
    EXPECT_FALSE(panelShown());
    EXPECT_TRUE(find<QTableView>("tblSisan")->isEnabled());
}

TEST_F(EntryEditorTest, DeletingAsksFirstAndTakesBothSidesOfATransfer)
{
    addEntry(saifu, "2024-01-10", 1, gaisyoku, 500);
    start();
    enterNew("rdbIdou", "銀行", "3000", {2024, 2, 1});
    enterNew("rdbIdou", "銀行", "4000", {2024, 3, 1});
    selectRow("tblItem", 1);
    click("btnEditUpdateItem");
    EXPECT_EQ(takeMessages(),
              (Messages{{"資産移動したデータは編集できません。必要なら、削除してから新規にデータを追加してください。",
                         "information"}}));

    // "しない" keeps everything; Ctrl+D on the focused list asks at each press.
    const std::string before = dumpAll();
    answers = {false, false, false};
    click("btnDeleteItem");
    selectRow("tblItem", 0);
    pressKeys(Qt::CTRL | Qt::Key_D);
    pressKeys(Qt::CTRL | Qt::Key_D);
    EXPECT_EQ(questions.size(), 3u);
    EXPECT_EQ(dumpAll(), before);

    // From the source side: the question names the destination.
    answers = {true};
    selectRow("tblItem", 1);
    click("btnDeleteItem");
    // From the destination side: the question names the source.
    selectRow("tblSisan", 1);
    answers = {true};
    selectRow("tblItem", 0);
    click("btnDeleteItem");
    EXPECT_EQ(questions, (Rows{"選択された行のデータと、移動先:銀行|削除する|しない",
                               "選択した行のデータを削除しますか？|削除する|しない",
                               "選択した行のデータを削除しますか？|削除する|しない",
                               "選択された行のデータと、移動先:銀行|削除する|しない",
                               "選択された行のデータと、移動元:財布|削除する|しない"}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE SyubetuNo IN (3,4)"), 0);
    EXPECT_EQ(shown("tblItem"), Rows{});
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|9,500", "銀行|0"}));

    // An expense, asked about by its own question.
    selectRow("tblSisan", 0);
    answers = {true};
    selectRow("tblItem", 0);
    QTest::keyClick(find<QTableView>("tblItem"), Qt::Key_Delete);
    EXPECT_EQ(questions.back(), "選択した行のデータを削除しますか？|削除する|しない");
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|10,000", "銀行|0"}));
}

TEST_F(EntryEditorTest, EnterAndEscapeInAPopUpActOnThePopUpOnly)
{
    start();
    const std::string before = dumpAll();
    click("btnNewItem");
    type("txtItemDataKingaku", "1200");
    auto* combo = find<QComboBox>("cmbItemDataHimomku");
    auto* picker = find<QDateEdit>("itemDataDatePicker");
    picker->setDate({2024, 5, 1});
    // Escape closes the pop-up, Enter picks in it: the category list, then the calendar.
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        combo->showPopup();
        combo->view()->setCurrentIndex(combo->model()->index(1, 0));
        QTest::keyClick(combo->view(), key);
        EXPECT_FALSE(combo->view()->isVisible());

        QTest::mouseClick(picker, Qt::LeftButton, {}, QPoint(picker->width() - 6, picker->height() / 2));
        QWidget* calendar = QApplication::activePopupWidget();
        ASSERT_NE(calendar, nullptr);
        if (calendar->focusWidget()) calendar = calendar->focusWidget();
        if (key == Qt::Key_Return) QTest::keyClick(calendar, Qt::Key_Right);
        QTest::keyClick(calendar, key);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        EXPECT_TRUE(panelShown());
    }
    EXPECT_EQ(combo->currentText(), "食費/外食");
    EXPECT_EQ(picker->date(), QDate(2024, 5, 2));
    EXPECT_EQ(dumpAll(), before);
}

}  // namespace
