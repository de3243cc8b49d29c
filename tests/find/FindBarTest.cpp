#include <QAbstractItemModelTester>
#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QCompleter>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTableView>

#include "find/FindBar.h"
#include "tests/app/AppFixture.h"

namespace {

// 財布 and 銀行 with a few entries; the clock reads 23 November 2026.
class FindBarTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        saifu = addSisan("財布", 10000, 10000);
        ginkou = addSisan("銀行", 0, 0);
        gaisyoku = addCategory(1, "食費", {"外食"}) + 2;
        kyuuyo = addCategory(2, "給与") + 1;
        for (int i = 1; i <= 40; ++i) addEntry(saifu, "2026-01-" + std::string(i < 10 ? "0" : "") + std::to_string(i % 28 + 1), 1, gaisyoku, 100);
        exec("UPDATE Items SET Bikou='ｽｰﾊﾟｰ' WHERE Id=7");
        exec("UPDATE Items SET Bikou='Mom''s \"AND\" NEAR *' WHERE Id=8");
        lunch = note(addEntry(ginkou, "2026-11-02", 1, gaisyoku, 1200), "スーパーで弁当");
        pay = note(addEntry(ginkou, "2026-10-25", 2, kyuuyo, 250000), "給料");
        exec("INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdouSisanNo,IdouId,Syukkin,Bikou) "
             "VALUES ('2026-11-10',2026,11,10,2,3,1,-1,3000,'スーパー用の現金')");
    }

    int64_t note(int64_t id, const std::string& bikou)
    {
        exec("UPDATE Items SET Bikou='" + bikou + "' WHERE Id=" + std::to_string(id));
        return id;
    }

    FindBar* bar() { return find<FindBar>("FindBar"); }

    // Types into a field of the bar and waits for the search it starts.
    void typeAndWait(const char* field, const QString& text)
    {
        QSignalSpy searched(bar(), &FindBar::searched);
        type(field, text);
        ASSERT_TRUE(searched.wait(5000)) << field;
    }

    int64_t saifu = 0, ginkou = 0, gaisyoku = 0, kyuuyo = 0, lunch = 0, pay = 0;
};

TEST_F(FindBarTest, CtrlFFindsInEveryAssetAndEnterShowsTheEntryInItsList)
{
    start();
    EXPECT_FALSE(bar()->isVisible());
    QTest::keyClick(find<QTableView>("tblItem"), Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(bar()->isVisible());
    EXPECT_TRUE(find<QLineEdit>("txtFindWords")->hasFocus());
    QAbstractItemModelTester tester(find<QTableView>("tblFindResults")->model());

    // Half-width and long-vowel variants, newest first, with count and sums.
    typeAndWait("txtFindWords", QStringLiteral("スーパー"));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults"),
              (Rows{"2026-11-10|銀行|財布||3,000|スーパー用の現金", "2026-11-02|銀行|食費/外食||1,200|スーパーで弁当",
                    "2026-01-08|財布|食費/外食||100|ｽｰﾊﾟｰ"}));
    EXPECT_EQ(label("lblFindSummary"), "3件　収入 0　支出 4,300");

    // A second word narrows; the category's name counts as well as the note.
    typeAndWait("txtFindWords", QStringLiteral("ｽｰﾊﾟ 外食"));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults").size(), 2u);
    clickHeader("tblFindResults", "日付");  // oldest first
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults").front().substr(0, 10), "2026-01-08");

    // Enter on the result shows 財布's entry selected and in view; 編集更新 edits it.
    auto* results = find<QTableView>("tblFindResults");
    results->setFocus();
    results->setCurrentIndex(results->model()->index(0, 0));
    QTest::keyClick(results, Qt::Key_Return);
    EXPECT_EQ(label("lblSisanmei"), "財布");
    auto* tblItem = find<QTableView>("tblItem");
    EXPECT_TRUE(tblItem->hasFocus());
    const QModelIndexList selected = tblItem->selectionModel()->selectedRows();
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(shown("tblItem")[static_cast<size_t>(selected.front().row())].substr(0, 30), "2026-01-08|食費/外食||100|");
    EXPECT_TRUE(tblItem->viewport()->rect().intersects(tblItem->visualRect(selected.front())));
    QTest::keyClick(tblItem, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(find<QLineEdit>("txtItemDataBikou")->text(), "ｽｰﾊﾟｰ");
    QTest::keyClick(find<QLineEdit>("txtItemDataKingaku"), Qt::Key_Escape);

    EXPECT_FALSE(panelShown());

    // A double click on a transfer found in another asset jumps there.
    typeAndWait("txtFindWords", QStringLiteral("用の現金"));
    ASSERT_EQ(rowsOf(vc.get(), "tblFindResults").size(), 1u);
    const QPoint cell = results->visualRect(results->model()->index(0, 1)).center();
    QTest::mouseClick(results->viewport(), Qt::LeftButton, {}, cell);  // the first click of the two
    QTest::mouseDClick(results->viewport(), Qt::LeftButton, {}, cell);
    EXPECT_EQ(label("lblSisanmei"), "銀行");

    // Escape in the bar closes it and gives the focus back to the list.
    QTest::keyClick(find<QLineEdit>("txtFindWords"), Qt::Key_Escape);
    EXPECT_FALSE(bar()->isVisible());
    EXPECT_TRUE(tblItem->hasFocus());
}

TEST_F(FindBarTest, OperatorsAmountsPeriodsAndKindsAreTakenLiterallyAndTheResultsSaveAsCsv)
{
    start();
    QTest::keyClick(find<QTableView>("tblItem"), Qt::Key_F, Qt::ControlModifier);

    // Quotes and FTS operators are searched for as they are.
    typeAndWait("txtFindWords", QStringLiteral("\"AND\" NEAR"));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults"), (Rows{"2026-01-09|財布|食費/外食||100|Mom's \"AND\" NEAR *"}));
    typeAndWait("txtFindWords", QStringLiteral("*"));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults").size(), 1u);
    QSignalSpy pasted(bar(), &FindBar::searched);
    QApplication::clipboard()->setText(QString(10000, QLatin1Char('x')));
    find<QLineEdit>("txtFindWords")->selectAll();
    QTest::keyClick(find<QLineEdit>("txtFindWords"), Qt::Key_V, Qt::ControlModifier);
    ASSERT_TRUE(pasted.wait(5000));
    EXPECT_EQ(label("lblFindSummary"), "0件　収入 0　支出 0");

    // A range typed backwards is searched the right way round; full-width
    // digits and grouping are accepted; letters are refused in the bar itself.
    type("txtFindWords", QString());
    EXPECT_EQ(label("lblFindSummary"), "探す語句や条件を入力してください。");
    typeAndWait("txtFindKingakuFrom", QStringLiteral("５,０００"));
    typeAndWait("txtFindKingakuTo", QStringLiteral("1000"));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults"),
              (Rows{"2026-11-10|銀行|財布||3,000|スーパー用の現金", "2026-11-02|銀行|食費/外食||1,200|スーパーで弁当"}));
    type("txtFindKingakuTo", QStringLiteral("abc"));
    EXPECT_EQ(label("lblFindSummary"), "金額は0から2,147,483,647までの数字で入力してください。");
    EXPECT_TRUE(find<QLineEdit>("txtFindKingakuTo")->styleSheet().contains("red"));
    typeAndWait("txtFindKingakuTo", QString());
    typeAndWait("txtFindKingakuFrom", QStringLiteral("1200"));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults").size(), 1u) << "one amount: exactly that";

    // 先月 is October 2026; the kind 収入 keeps the pay only.
    type("txtFindKingakuFrom", QString());
    QSignalSpy searched(bar(), &FindBar::searched);
    find<QComboBox>("cmbFindKikan")->setCurrentText(QStringLiteral("先月"));
    ASSERT_TRUE(searched.wait(5000));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults"), (Rows{"2026-10-25|銀行|給与/その他|250,000||給料"}));
    find<QComboBox>("cmbFindKikan")->setCurrentText(QStringLiteral("今年"));
    ASSERT_TRUE(searched.wait(5000));
    find<QComboBox>("cmbFindSyubetu")->setCurrentText(QStringLiteral("振替"));
    ASSERT_TRUE(searched.wait(5000));
    EXPECT_EQ(rowsOf(vc.get(), "tblFindResults").size(), 1u);

    // The list as shown saves as CSV, notes quoted where they must be.
    find<QComboBox>("cmbFindSyubetu")->setCurrentIndex(0);
    ASSERT_TRUE(searched.wait(5000));
    typeAndWait("txtFindWords", QStringLiteral("AND"));
    savePaths.push_back(QString::fromStdString(dir + "/found"));
    click("btnFindSaveCsv");
    QFile csv(QString::fromStdString(dir + "/found.csv"));
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    EXPECT_EQ(csv.readAll().toStdString(), "日付,資産,費目・相手資産,収入,支出,備考\n"
                                           "2026-01-09,財布,食費/外食,,100,\"Mom's \"\"AND\"\" NEAR *\"\n");
}

TEST_F(FindBarTest, APastNoteFillsKindCategoryAndAmountAndEnterOnlyChoosesIt)
{
    start();
    selectRow("tblSisan", 1);  // 銀行
    click("btnNewItem");
    EXPECT_EQ(find<QComboBox>("cmbItemDataHimomku")->currentText(), "食費/外食") << "last used here";
    auto* bikou = find<QLineEdit>("txtItemDataBikou");
    bikou->setFocus();
    QCompleter* completer = bikou->completer();
    ASSERT_NE(completer, nullptr);
    QTest::keyClicks(bikou, QStringLiteral("kyu"));  // no past note: nothing offered
    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("給"));
    bikou->clear();
    QApplication::sendEvent(bikou, &commit);
    QTRY_VERIFY(completer->popup()->isVisible());
    EXPECT_EQ(completer->popup()->model()->index(0, 0).data().toString(), "給料　（給与/その他  250,000）");

    // Down and Enter in the list choose the note; the panel stays open to change it.
    QTest::keyClick(completer->popup(), Qt::Key_Down);
    QTest::keyClick(completer->popup(), Qt::Key_Return);
    EXPECT_TRUE(panelShown());
    EXPECT_EQ(bikou->text(), "給料");
    EXPECT_TRUE(find<QRadioButton>("rdbSyuunyuu")->isChecked());
    EXPECT_EQ(find<QComboBox>("cmbItemDataHimomku")->currentText(), "給与/その他");
    EXPECT_EQ(find<QLineEdit>("txtItemDataKingaku")->text(), "250000");
    type("txtItemDataKingaku", "260000");
    click("btnItemDataOK");
    EXPECT_EQ(scalar("SELECT Nyuukin FROM Items WHERE Bikou='給料' ORDER BY Id DESC LIMIT 1"), 260000);

    // A transfer repeats from its source asset, to the same partner.
    click("btnNewItem");
    bikou->setFocus();
    commit.setCommitString(QStringLiteral("用の現金"));
    QApplication::sendEvent(bikou, &commit);
    QTRY_COMPARE(completer->popup()->model()->index(0, 0).data().toString(),
                 QStringLiteral("スーパー用の現金　（財布  3,000）"));
    QTest::keyClick(completer->popup(), Qt::Key_Down);
    QTest::keyClick(completer->popup(), Qt::Key_Return);
    EXPECT_TRUE(find<QRadioButton>("rdbIdou")->isChecked());
    EXPECT_EQ(find<QComboBox>("cmbItemDataHimomku")->currentText(), "財布");
    EXPECT_EQ(find<QLineEdit>("txtItemDataKingaku")->text(), "3000");
    QTest::keyClick(bikou, Qt::Key_Escape);
    EXPECT_FALSE(panelShown());
}

}  // namespace
