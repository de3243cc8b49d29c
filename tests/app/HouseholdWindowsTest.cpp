// The household calendar in the windows: the month setting and the budgets
// from the 設定 menu, the month's budget under the asset list, a card's
// withdrawals and their settlement, and the card box of the asset editor.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>
#include <deque>
#include <functional>

#include "editors/PrefsSisanViewController.h"
#include "household/CardSettlementDialog.h"
#include "household/HouseholdSettingsViewController.h"
#include "household/TeikiKityouViewController.h"
#include "household/YosanViewController.h"
#include "tests/editors/EditorFixture.h"

namespace {

const char* const kRefusedDay =
    "月の始まりは1日から28日までの日にしてください。29日から31日は、その日がない月があるため選べません。";

class HouseholdWindowsTest : public AppFixture {
protected:
    void TearDown() override
    {
        answering.stop();
        EXPECT_TRUE(settlementAnswers.empty()) << "settlements expected but not offered";
        AppFixture::TearDown();
    }

    // Presses keys in the main window and runs `work` on the modal window
    // they open, closing it afterwards if `work` did not.
    template <typename Window>
    void throughKeys(QKeyCombination keys, const std::function<void(Window&)>& work)
    {
        vc->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(vc.get()));
        bool shown = false;
        QTimer::singleShot(0, [&] {
            auto* modal = qobject_cast<Window*>(QApplication::activeModalWidget());
            ASSERT_NE(modal, nullptr) << "no modal window";
            // Keys and the focus reach it, as they do for a user.
            modal->activateWindow();
            QTRY_COMPARE(QApplication::activeWindow(), modal);
            shown = true;
            work(*modal);
            if (modal->isVisible()) modal->done(0);
        });
        pressKeys(keys);
        EXPECT_TRUE(shown);
    }

    // Answers the settlement offers as they come, in order; the text of each
    // offer is kept in `offers`.
    void answerSettlements(std::deque<std::function<void(CardSettlementDialog&)>> answers)
    {
        settlementAnswers = std::move(answers);
        answering.callOnTimeout([this] {
            auto* dialog = qobject_cast<CardSettlementDialog*>(QApplication::activeModalWidget());
            if (!dialog || !dialog->isVisible() || busy) return;
            busy = true;
            offers.push_back(in<QLabel>(dialog, "lblSettlementText")->text().toStdString());
            if (settlementAnswers.empty()) {
                ADD_FAILURE() << "unexpected offer " << offers.back();
                dialog->reject();
            } else {
                auto answer = std::move(settlementAnswers.front());
                settlementAnswers.pop_front();
                answer(*dialog);
            }
            busy = false;
        });
        answering.start(10);
    }

    Rows offers;

private:
    QTimer answering;
    std::deque<std::function<void(CardSettlementDialog&)>> settlementAnswers;
    bool busy = false;
};

// Typed as a user types: the field's text replaced, then the key.
void typeInto(QLineEdit* field, const QString& text, Qt::Key key = Qt::Key_Return)
{
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
    QTest::keyClick(field, key);
}

}  // namespace

// 家計の設定 refuses the 29th and keeps the 25th; the month's budget under
// the asset list follows the household month; 予算 takes amounts typed with
// commas, refuses others with a red field, and keeps a month of its own.
TEST_F(HouseholdWindowsTest, TheSettingsKeysSetTheMonthsAndTheBudgetsTheMainWindowFollows)
{
    addSmallBook();
    addEntry(1, "2026-11-20", 1, 2, 12000);
    addEntry(1, "2026-11-25", 1, 3, 3000);  // past the 25th: December's household month
    start();
    EXPECT_EQ(label("lblYosanMonth"), "2026年11月");
    EXPECT_EQ(label("lblYosanSummary"), "支出 15,000円\n予算は 設定 → 予算… で決められます");
    EXPECT_FALSE(find<QProgressBar>("prgYosan")->isVisible());

    throughKeys<HouseholdSettingsViewController>(Qt::CTRL | Qt::SHIFT | Qt::Key_K, [&](HouseholdSettingsViewController& w) {
        auto* day = in<QSpinBox>(&w, "spnMonthStartDay");
        day->selectAll();
        QTest::keyClicks(day, "29");
        EXPECT_EQ(in<QLabel>(&w, "lblMonthPreview")->text(), kRefusedDay);
        QTest::keyClick(day, Qt::Key_Return);
        EXPECT_TRUE(w.isVisible());
        day->selectAll();
        QTest::keyClicks(day, "25");
        auto* shift = in<QComboBox>(&w, "cmbMonthStartShift");
        shift->setFocus();
        QTest::keyClick(shift, Qt::Key_Down);  // 土日祝は前営業日
        EXPECT_EQ(in<QLabel>(&w, "lblMonthPreview")->text(), "今月は 2026年11月分（10月23日〜11月24日）");
        QTest::keyClick(shift, Qt::Key_Return);
        EXPECT_FALSE(w.isVisible());
    });
    EXPECT_EQ(takeMessages(), (Messages{{kRefusedDay, "information"}}));
    EXPECT_EQ(vc->DM.householdMonths.setting(),
              (HouseholdMonthSetting{25, HolidayShift::Before, MonthNaming::ByEndMonth}));
    EXPECT_EQ(label("lblYosanMonth"), "2026年11月分（10月23日〜11月24日）");

    throughKeys<YosanViewController>(Qt::CTRL | Qt::SHIFT | Qt::Key_B, [&](YosanViewController& w) {
        auto* table = in<QTableView>(&w, "tblYosan");
        table->setFocus();
        table->selectRow(1);
        QTest::keyClick(table, Qt::Key_Return);  // on to the row's amount
        auto* amount = in<QLineEdit>(&w, "txtYosanKingaku");
        EXPECT_TRUE(amount->hasFocus());
        typeInto(amount, "-500");
        EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"}}));
        EXPECT_TRUE(amount->styleSheet().contains("red"));
        typeInto(amount, "20,000");
        typeInto(in<QLineEdit>(&w, "txtYosanTuki12"), "30000");
        EXPECT_EQ(rowsOf(&w, "tblYosan")[1], "食費|20,000|12月 30,000");
        QTest::keyClick(table, Qt::Key_W, Qt::ControlModifier);
    });
    EXPECT_EQ(vc->DM.yosanOf(1, 11), 20000);
    EXPECT_EQ(vc->DM.yosanOf(1, 12), 30000);
    EXPECT_EQ(label("lblYosanSummary"), "支出 12,000円 ／ 予算 20,000円\n残り 8,000円（使用率 60.0%）");
    EXPECT_EQ(find<QProgressBar>("prgYosan")->value(), 600);
}

// A card closing on the 15th, withdrawn on the 10th of the month after from
// S: at the start the two withdrawals past are offered in turn; one is
// recorded with the amount of its statement, one put off until the next
// day. The card shows what is due, next and open; S shows its balance after
// the withdrawals to come. Nothing recorded is ever offered again.
TEST_F(HouseholdWindowsTest, DueSettlementsAreOfferedRecordedOnceAndTheCardAndBankShowWhatIsComing)
{
    addSmallBook();
    const int64_t card = addSisan("カード", 0, 0);
    addEntry(card, "2026-09-01", 1, 2, 3000);
    addEntry(card, "2026-10-01", 1, 3, 5000);
    addEntry(card, "2026-11-01", 1, 2, 700);
    addEntry(card, "2026-11-20", 1, 2, 100);
    exec("INSERT INTO CardCycles VALUES (3, 15, 10, 1, 2, 1, 202609)");
    answerSettlements({[](CardSettlementDialog& d) { typeInto(in<QLineEdit>(&d, "txtSettlementKingaku"), "2,900"); },
                       [](CardSettlementDialog& d) { QTest::keyClick(&d, Qt::Key_Escape); }});
    start();
    QTRY_COMPARE(offers.size(), 2u);
    EXPECT_EQ(offers[0], "カードの引落日 2026年10月13日（火） になりました。8月16日〜9月15日に使った分の引落を、Sからの振替と"
                         "して記録しますか？明細の金額と違うときは、金額を直してから記録してください。");
    EXPECT_EQ(scalar("SELECT count(*) FROM Items WHERE Hizuke = '2026-10-13' AND Nyuukin = 2900 AND SisanNo = 3"), 1);
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|7,100|1,400", "T|0|", "カード|-5,900|"}));

    selectRow("tblSisan", 2);
    EXPECT_EQ(label("lblCardInfo"), "15日締め・翌月10日引落（土日祝は翌営業日）\u3000引落口座: S\n"
                                    "未精算の引落: 2026年11月10日（火）\u30005,000円（9月16日〜10月15日分）\n"
                                    "次回の引落: 2026年12月10日（木）\u3000700円（10月16日〜11月15日分）\n"
                                    "利用中: 11月16日〜12月15日\u3000100円");

    // Put off, the October withdrawal comes again the next day; noted as
    // recorded already, it is gone for good.
    answerSettlements({[](CardSettlementDialog& d) { QTest::mouseClick(in<QPushButton>(&d, "btnSettlementMark"), Qt::LeftButton); }});
    setClockTo({2026, 11, 24});
    vc->todayChanged();
    QTRY_COMPARE(offers.size(), 3u);
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|7,100|6,400", "T|0|", "カード|-5,900|"}));
    start();  // a new run of the program offers nothing
    QTest::qWait(50);
    EXPECT_EQ(offers.size(), 3u);
}

// A card's withdrawal and a recurring entry both due at the start: each
// window comes on its own, the second once the first has closed.
TEST_F(HouseholdWindowsTest, ADueSettlementAndDueRecurringEntriesComeOneAfterTheOther)
{
    addSmallBook();
    const int64_t card = addSisan("カード", 0, 0);
    addEntry(card, "2026-10-01", 1, 2, 5000);
    exec("INSERT INTO CardCycles VALUES (3, 15, 10, 1, 2, 1, 202610)");
    exec("INSERT INTO Teiki (SisanNo,SyubetuNo,HimokuNo,IdouSisanNo,Kingaku,Bikou,Tani,Kankaku,Hi,Tuki,Youbi,Kaisi,"
         "Syuuryou,Kaisuu,Kyuujitu,Kakunin) VALUES (1,1,3,0,5000,'外食',0,1,10,1,0,'2026-01-01','',0,0,'2026-10-31')");
    const auto visible = [this]<typename T>(T*) {
        for (T* w : vc->findChildren<T*>())
            if (w->isVisible()) return true;
        return false;
    };
    answerSettlements({[&](CardSettlementDialog& d) {
        EXPECT_FALSE(visible(static_cast<TeikiKityouViewController*>(nullptr)));
        QTest::mouseClick(in<QPushButton>(&d, "btnSettlementMark"), Qt::LeftButton);
    }});
    int postings = 0;
    QTimer teiki;
    teiki.callOnTimeout([&] {
        auto* kityou = qobject_cast<TeikiKityouViewController*>(QApplication::activeModalWidget());
        if (!kityou || !kityou->isVisible()) return;
        ++postings;
        EXPECT_FALSE(visible(static_cast<CardSettlementDialog*>(nullptr)));
        kityou->reject();
    });
    teiki.start(10);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(offers.size(), 1u, 5000);
    QTRY_COMPARE_WITH_TIMEOUT(postings, 1, 5000);
    teiki.stop();
    EXPECT_EQ(scalar("SELECT count(*) FROM CardSettlements WHERE SisanNo = 3 AND ClosingMonth = 202610"), 1);
}

using CardBoxTest = EditorFixture<PrefsSisanViewController>;

// The card box marks an asset as a card, which needs a paying asset; when
// that asset is deleted, the box asks for another.
TEST_F(CardBoxTest, AnAssetBecomesACardAndADeletedPayingAssetAsksForAnother)
{
    addSmallBook();
    addSisan("カード", 0, 0);
    openEditor();
    selectRow("tblSisanKoumoku", 2);
    pressKeys(Qt::CTRL | Qt::Key_K);
    ASSERT_EQ(boxTitle("cardBox"), "カードのカード設定");
    EXPECT_EQ(boxTitle("sisanKoumokuBox"), "(hidden)");
    auto* use = find<QCheckBox>("chkCardUse");
    EXPECT_FALSE(use->isChecked());
    QTest::mouseClick(use, Qt::LeftButton, {}, QPoint(8, use->height() / 2));
    auto* paying = find<QComboBox>("cmbCardPayingSisan");
    EXPECT_EQ(paying->count(), 2);  // S and T, never the card itself
    EXPECT_EQ(find<QLabel>("lblCardCycle")->text(),
              "月末締め・翌月27日引落（土日祝は翌営業日）\n次の引落: 2026年11月27日（金）（10月1日〜10月31日分）");
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(takeMessages(), (Messages{{"引落口座を選んでください。", "information"}}));
    paying->setCurrentIndex(paying->findText("S"));
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(boxTitle("cardBox"), "(hidden)");
    ASSERT_NE(editor->DM.cardOf(3), nullptr);
    EXPECT_EQ(editor->DM.cardOf(3)->PayingSisanNo, 1);
    EXPECT_TRUE(editor->changed());

    selectRow("tblSisanKoumoku", 0);
    pressKeys(Qt::CTRL | Qt::Key_D);
    answers = {true};
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(takeMessages(), (Messages{{"「カード」の引落口座が削除されました。別の引落口座を選んでください。", "information"}}));
    EXPECT_EQ(boxTitle("cardBox"), "カードのカード設定");
    EXPECT_EQ(paying->currentIndex(), -1);
    EXPECT_TRUE(paying->styleSheet().contains("red"));
    EXPECT_TRUE(paying->hasFocus());
    paying->setCurrentIndex(paying->findText("T"));
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(editor->DM.cardOf(3)->PayingSisanNo, 2);
}
