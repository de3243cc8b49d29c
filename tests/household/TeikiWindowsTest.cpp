// The recurring entries' windows, driven by the keys a user presses.
#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QTimer>
#include <functional>

#include "household/PrefsTeikiViewController.h"
#include "household/TeikiKityouViewController.h"
#include "tests/app/AppFixture.h"

namespace {

// The book of addSmallBook (S, T; 食費/その他 2, 食費/外食 3, 給与/その他 5);
// the clock reads Monday 23 November 2026, 勤労感謝の日.
class TeikiWindowsTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        addSmallBook();
    }

    // A monthly rule on the day, last looked at on `kakunin`.
    void addRule(int64_t sisan, int64_t kind, int64_t partner, int64_t kingaku, const std::string& bikou, int day,
                 int shift, const std::string& kakunin = "2026-10-31")
    {
        exec("INSERT INTO Teiki (SisanNo,SyubetuNo,HimokuNo,IdouSisanNo,Kingaku,Bikou,Tani,Kankaku,Hi,Tuki,Youbi,"
             "Kaisi,Syuuryou,Kaisuu,Kyuujitu,Kakunin) VALUES (" +
             std::to_string(sisan) + "," + std::to_string(kind) + "," + std::to_string(kind == 3 ? 0 : partner) +
             "," + std::to_string(kind == 3 ? partner : 0) + "," + std::to_string(kingaku) + ",'" + bikou +
             "',0,1," + std::to_string(day) + ",1,0,'2026-01-01','',0," + std::to_string(shift) + ",'" + kakunin +
             "')");
    }

    // Runs `work` on the window of type T once it shows modally, then closes
    // it if `work` did not; `ran` says whether it came.
    template <typename T>
    void whenShownModally(std::function<void(T&)> work)
    {
        ran = false;
        auto* poll = new QTimer(qApp);
        QElapsedTimer waited;
        waited.start();
        QObject::connect(poll, &QTimer::timeout, [this, poll, work, waited] {
            auto* modal = qobject_cast<T*>(QApplication::activeModalWidget());
            if (!modal && waited.elapsed() > 5000) poll->deleteLater();  // it never came: `ran` says so
            if (!modal) return;
            poll->stop();
            ran = true;
            // Keys reach it once one of its widgets has the focus, as for a user.
            EXPECT_TRUE(QTest::qWaitFor([modal] {
                const QWidget* focused = QApplication::focusWidget();
                return focused && focused->window() == modal;
            }));
            QAbstractItemModelTester tester(modal->template findChild<QTableView*>()->model());
            work(*modal);
            if (modal->isVisible()) modal->done(QDialog::Rejected);
            poll->deleteLater();  // not before: the loops `work` runs would delete this very call
        });
        poll->start(10);
    }

    // True when no window of type T shows within a moment.
    template <typename T>
    bool noneShows()
    {
        QTest::qWait(100);
        return !qobject_cast<T*>(QApplication::activeModalWidget());
    }

    // Types text key by key into whatever has the focus, as a user does: the
    // first key opens a cell's editor, the others go to that editor.
    void typeKeys(const QString& text)
    {
        for (const QChar c : text) QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
    }

    // Enter in a cell's editor; the editor hands its text over once it has closed.
    void confirmCell()
    {
        pressKeys(Qt::Key_Return);
        QCoreApplication::processEvents();
    }

    QString boxShown() { return find<QGroupBox>("teikiBox")->isVisible() ? find<QGroupBox>("teikiBox")->title() : ""; }

    bool ran = false;
};

TEST_F(TeikiWindowsTest, RulesAreAddedEditedAndDeletedByKeysAndABrokenOneShowsButNeverPosts)
{
    addRule(9, 1, 2, 500, "消えた資産", 5, 0);  // its asset is gone
    start();
    EXPECT_TRUE(noneShows<TeikiKityouViewController>()) << "a broken rule is never due";

    whenShownModally<PrefsTeikiViewController>([this](PrefsTeikiViewController& prefs) {
        EXPECT_EQ(prefs.windowTitle(), "定期的な支出入");
        EXPECT_EQ(shown("tblTeiki"),
                  Rows{"（削除された資産）|支出|食費/その他（消えた資産）|500|毎月5日|使えません: 資産が削除されています"});
        EXPECT_EQ(find<QTableView>("tblTeiki")->model()->index(0, 0).data(Qt::ForegroundRole).value<QColor>(),
                  QColor(0xc0, 0x00, 0x00));

        // A new rule: the shown asset, income, 給与/その他, on the last day of
        // each month or the business day before.
        pressKeys(Qt::CTRL | Qt::Key_N);
        EXPECT_EQ(boxShown(), "新規追加");
        EXPECT_EQ(find<QComboBox>("cmbTeikiSisan")->currentText(), "S");
        click("rdbTeikiSyuunyuu");
        find<QComboBox>("cmbTeikiHimoku")->setFocus();
        pressKeys(Qt::Key_Down);
        EXPECT_EQ(find<QComboBox>("cmbTeikiHimoku")->currentText(), "給与/その他");
        type("txtTeikiBikou", "給料");
        find<QComboBox>("cmbTeikiHi")->setFocus();
        pressKeys(Qt::Key_End);
        find<QComboBox>("cmbTeikiKyuujitu")->setFocus();
        pressKeys(Qt::Key_Down);
        EXPECT_EQ(find<QLabel>("lblTeikiNittei")->text(), "毎月末日（土日祝は前営業日）\n次回: 2026年11月30日");

        // An amount the entry panel refuses is refused here too.
        for (const char* bad : {"1,200", "-5", "", "2147483648"}) {
            type("txtTeikiKingaku", bad);
            pressKeys(Qt::Key_Return);
            EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"}})) << bad;
        }
        EXPECT_FALSE(find<QLineEdit>("txtTeikiKingaku")->styleSheet().isEmpty());
        EXPECT_EQ(scalar("SELECT count(*) FROM Teiki"), 1);
        type("txtTeikiKingaku", "250000");
        pressKeys(Qt::Key_Return);
        EXPECT_EQ(boxShown(), "");
        EXPECT_EQ(shown("tblTeiki")[1],
                  "S|収入|給与/その他（給料）|250,000|毎月末日（土日祝は前営業日）|2026-11-30（月）");
        EXPECT_EQ(shown("tblTeikiYotei"), Rows{"2026-11-30（月）|S|給与/その他（給料）|250,000||260,000"});
        // Made today, it looks from today on.
        EXPECT_EQ(dump("Teiki").substr(dump("Teiki").find("\n2|")),
                  "\n2|1|2|5|0|250000|給料|0|1|31|11|1|2026-11-23||0|1|2026-11-22|\n");

        // An edit of the amount keeps what is due; a new day looks from tomorrow on.
        pressKeys(Qt::CTRL | Qt::Key_E);
        EXPECT_EQ(boxShown(), "編集");
        EXPECT_EQ(find<QLineEdit>("txtTeikiKingaku")->text(), "250000");
        type("txtTeikiKingaku", "260000");
        pressKeys(Qt::Key_Return);
        EXPECT_EQ(scalar("SELECT Kingaku FROM Teiki WHERE Id=2"), 260000);
        EXPECT_EQ(scalar("SELECT Kakunin = '2026-11-22' FROM Teiki WHERE Id=2"), 1);
        pressKeys(Qt::CTRL | Qt::Key_E);
        find<QComboBox>("cmbTeikiHi")->setFocus();
        pressKeys(Qt::Key_Home);
        pressKeys(Qt::Key_Return);
        EXPECT_EQ(scalar("SELECT Hi = 1 AND Kakunin = '2026-11-23' FROM Teiki WHERE Id=2"), 1);

        // A schedule that cannot be is said in plain Japanese; Escape closes the box.
        pressKeys(Qt::CTRL | Qt::Key_N);
        find<QComboBox>("cmbTeikiHimoku")->setFocus();
        pressKeys(Qt::Key_Down);
        type("txtTeikiKingaku", "100");
        find<QComboBox>("cmbTeikiOwari")->setFocus();
        pressKeys(Qt::Key_Down);
        find<QDateEdit>("dateTeikiSyuuryou")->setDate({2026, 1, 1});
        pressKeys(Qt::Key_Return);
        EXPECT_EQ(takeMessages(), (Messages{{"終了日は開始日以降の日にしてください。", "information"}}));
        pressKeys(Qt::Key_Escape);
        EXPECT_EQ(boxShown(), "");
        EXPECT_TRUE(prefs.isVisible());
        EXPECT_EQ(scalar("SELECT count(*) FROM Teiki"), 2);

        // Delete on the list asks, then deletes the rule with its record.
        EXPECT_TRUE(find<QTableView>("tblTeiki")->hasFocus());
        answers = {true};
        pressKeys(Qt::Key_Delete);
        EXPECT_EQ(questions, Rows{"定期的な支出入「給与/その他（給料）　260,000円　毎月1日（土日祝は前営業日）」を削除しますか？\n"
                                  "記帳済みの入力は残ります。|削除する|しない"});
        EXPECT_EQ(scalar("SELECT count(*) FROM Teiki"), 1);
        // Ctrl+Z brings it back into the list, Ctrl+Y deletes it again.
        pressKeys(Qt::CTRL | Qt::Key_Z);
        EXPECT_EQ(shown("tblTeiki").size(), 2u);
        EXPECT_EQ(shown("tblTeiki")[1],
                  "S|収入|給与/その他（給料）|260,000|毎月1日（土日祝は前営業日）|2026-12-01（火）");
        pressKeys(Qt::CTRL | Qt::Key_Y);
        EXPECT_EQ(shown("tblTeiki").size(), 1u);
        EXPECT_EQ(scalar("SELECT count(*) FROM Teiki"), 1);
        pressKeys(Qt::Key_Escape);
        EXPECT_FALSE(prefs.isVisible());
    });
    vc->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(vc.get()));
    pressKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_T);
    EXPECT_TRUE(ran);
    EXPECT_TRUE(noneShows<TeikiKityouViewController>());
}

TEST_F(TeikiWindowsTest, DueOccurrencesAreOfferedAtTheStartPostedOnceAndLeftOrSkippedAsChosen)
{
    addRule(1, 3, 2, 20000, "積立", 1, 0);       // 1 November, a Sunday
    addRule(1, 1, 3, 5000, "外食", 10, 0);       // 10 November
    addRule(1, 2, 5, 300000, "給料", 23, 1);     // 23 November, a holiday: the 20th before it
    whenShownModally<TeikiKityouViewController>([this](TeikiKityouViewController&) {
        EXPECT_EQ(shown("tblTeikiKityou"), (Rows{"2026-11-01（日）|S|移動|→ T（積立）|20,000",
                                                 "2026-11-10（火）|S|支出|食費/外食（外食）|5,000",
                                                 "2026-11-20（金）|S|収入|給与/その他（給料）|300,000"}));
        // Uncheck the second with Space, type another amount over the third.
        pressKeys(Qt::Key_Down);
        pressKeys(Qt::Key_Space);
        pressKeys(Qt::Key_Down);
        for (int column = 0; column < 4; ++column) pressKeys(Qt::Key_Right);
        typeKeys("310000");
        confirmCell();
        EXPECT_EQ(shown("tblTeikiKityou")[2], "2026-11-20（金）|S|収入|給与/その他（給料）|310,000");
        // Tab to the choice for the unchecked ones: skip them for good.
        pressKeys(Qt::Key_Tab);
        pressKeys(Qt::Key_Down);
        EXPECT_TRUE(find<QRadioButton>("rdbTeikiMiokuru")->isChecked());
        pressKeys(Qt::Key_Return);
    });
    start();
    QTRY_VERIFY(ran);
    EXPECT_EQ(dump("Items"), "Items:\n"
                             "1|2026-11-01|2026|11|1|1|3|NULL|2|2|NULL|20000|積立|\n"
                             "2|2026-11-01|2026|11|1|2|4|NULL|1|1|20000|NULL|積立|\n"
                             "3|2026-11-20|2026|11|20|1|2|5|NULL|-1|310000|NULL|給料|\n");
    EXPECT_EQ(dump("TeikiKiroku"), "TeikiKiroku:\n"
                                   "1|1|2026-11-01|2026-11-01|1|1|2|20000|\n"
                                   "2|2|2026-11-10||2|0|0|0|\n"
                                   "3|3|2026-11-23|2026-11-20|3|3|0|310000|\n");
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|300,000", "T|20,000"}));
    EXPECT_EQ(shown("tblItem").back(), "2026-11-20|給与/その他|310,000||300,000");

    // The posting is one step: Ctrl+Z takes all of it back, Ctrl+Y makes it again.
    EXPECT_EQ(find<QAction>("mnuUndo")->text(), "元に戻す「定期的な支出入 2件の記帳・1件の見送り」(&U)");
    vc->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(vc.get()));
    find<QTableView>("tblItem")->setFocus();
    pressKeys(Qt::CTRL | Qt::Key_Z);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items") + scalar("SELECT count(*) FROM TeikiKiroku"), 0);
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|10,000", "T|0"}));
    EXPECT_TRUE(shown("tblItem").empty());
    pressKeys(Qt::CTRL | Qt::Key_Y);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items"), 3);
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|300,000", "T|20,000"}));

    // After a restart nothing is due again.
    start();
    EXPECT_TRUE(noneShows<TeikiKityouViewController>());

    // On 1 December the transfer comes due: あとで leaves it for next time.
    setClockTo({2026, 12, 1});
    whenShownModally<TeikiKityouViewController>([this](TeikiKityouViewController&) {
        EXPECT_EQ(shown("tblTeikiKityou"), Rows{"2026-12-01（火）|S|移動|→ T（積立）|20,000"});
        pressKeys(Qt::Key_Escape);
    });
    vc->todayChanged();
    EXPECT_TRUE(ran);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items"), 3);

    // The next start offers it again; an amount that is no amount is refused.
    whenShownModally<TeikiKityouViewController>([this](TeikiKityouViewController& kityou) {
        for (int column = 0; column < 4; ++column) pressKeys(Qt::Key_Right);
        typeKeys("12a");
        confirmCell();
        pressKeys(Qt::Key_Return);
        EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"}}));
        EXPECT_TRUE(kityou.isVisible());
        typeKeys("25000");
        confirmCell();
        pressKeys(Qt::Key_Return);
        EXPECT_FALSE(kityou.isVisible());
    });
    start();
    QTRY_VERIFY(ran);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items WHERE Hizuke='2026-12-01' AND Syukkin=25000"), 1);
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|275,000", "T|45,000"}));
}

}  // namespace
