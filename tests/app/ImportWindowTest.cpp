// Statement import through the real window: Ctrl+I and dropped files, the
// preview driven with keys on its focused widgets, and what the book holds after.
#include <QAbstractItemModelTester>
#include <QAction>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableView>
#include <QUrl>
#include <deque>
#include <fstream>
#include <sqlite3.h>

#include "import/ImportMappingDialog.h"
#include "import/ImportPreviewDialog.h"
#include "import/StatementImporter.h"
#include "tests/app/AppFixture.h"
#include "ui/OpenFilesService.h"

namespace {

QString sample(const char* name)
{
    return QString::fromUtf8(ZENVORA_IMPORT_SAMPLES) + u'/' + QString::fromUtf8(name);
}

class ImportWindowTest : public AppFixture, private OpenFilesService {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        setOpenFilesService(this);
    }
    void TearDown() override
    {
        setOpenFilesService(nullptr);
        EXPECT_TRUE(openAnswers.empty()) << "open dialog expected but not shown";
        AppFixture::TearDown();
    }

    // Ctrl+I on the main window, the open dialog answered with these files.
    void pressCtrlI(const QStringList& files)
    {
        openAnswers.push_back(files);
        pressOnWindow(Qt::Key_I);
    }
    void pressOnWindow(Qt::Key key)
    {
        vc->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(vc.get()));
        QTest::keyClick(vc.get(), key, Qt::ControlModifier);
    }
    // Files dropped on the main window, as a file manager drops them.
    void drop(const QStringList& files)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& f : files) urls << QUrl::fromLocalFile(f);
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(vc.get(), &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(vc.get(), &dropped);
    }

    // The preview once it shows a plan, its table focused.
    ImportPreviewDialog* preview()
    {
        ImportPreviewDialog* dialog = nullptr;
        const bool shown = QTest::qWaitFor([&] { return (dialog = visiblePreview()) && table(dialog)->isEnabled(); }, 5000);
        EXPECT_TRUE(shown) << "no preview";
        if (!shown) return nullptr;
        if (!tester) tester = std::make_unique<QAbstractItemModelTester>(table(dialog)->model());
        return dialog;
    }
    ImportPreviewDialog* visiblePreview()
    {
        for (auto* d : vc->findChildren<ImportPreviewDialog*>())
            if (d->isVisible()) return d;
        return nullptr;
    }
    static QTableView* table(QWidget* dialog) { return dialog->findChild<QTableView*>("tblImportRows"); }
    static QString text(QWidget* dialog, const char* label) { return dialog->findChild<QLabel*>(label)->text(); }

    // The preview's rows: the tick, then the cells.
    static Rows previewRows(QWidget* dialog)
    {
        const QAbstractItemModel* model = table(dialog)->model();
        Rows rows;
        for (int r = 0; r < model->rowCount(); ++r) {
            QString line = model->index(r, 0).data(Qt::CheckStateRole).value<Qt::CheckState>() == Qt::Checked
                               ? QStringLiteral("☑")
                               : QStringLiteral("☐");
            for (int c = 1; c < model->columnCount(); ++c) line += u'|' + model->index(r, c).data().toString();
            rows.push_back(line.toStdString());
        }
        return rows;
    }
    // A click on a row of a dialog's table.
    static void clickRow(QWidget* dialog, int row, const char* name = "tblImportRows")
    {
        QTableView* view = dialog->findChild<QTableView*>(name);
        const QModelIndex index = view->model()->index(row, std::min(2, view->model()->columnCount() - 1));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    }
    // Picks an item of the sub-item box with the arrow keys, as a user does.
    static void choose(QWidget* dialog, const QString& item)
    {
        auto* combo = dialog->findChild<QComboBox*>("cmbImportHimoku");
        combo->setFocus();
        QTest::keyClick(combo, Qt::Key_Home);
        for (int i = 0; i < combo->count() && combo->currentText() != item; ++i) QTest::keyClick(combo, Qt::Key_Down);
        ASSERT_EQ(combo->currentText(), item);
    }
    // Chooses the asset with the arrow keys; the rows are matched again for it.
    ImportPreviewDialog* chooseSisan(QWidget* dialog, const QString& name)
    {
        auto* combo = dialog->findChild<QComboBox*>("cmbImportSisan");
        combo->setFocus();
        QTest::keyClick(combo, Qt::Key_Home);
        for (int i = 0; i < combo->count() && combo->currentText() != name; ++i) QTest::keyClick(combo, Qt::Key_Down);
        EXPECT_EQ(combo->currentText(), name);
        tester.reset();
        return preview();
    }
    static void press(QWidget* dialog, const char* button)
    {
        auto* b = dialog->findChild<QPushButton*>(button);
        ASSERT_TRUE(b->isEnabled()) << button;
        QTest::mouseClick(b, Qt::LeftButton);
    }
    // Enter on the focused table: the default button, 取り込む.
    static void enter(QWidget* dialog)
    {
        table(dialog)->setFocus();
        QTest::keyClick(table(dialog), Qt::Key_Return);
    }
    // Waits until the import has ended (the summary, if any, is then in messages).
    void waitUntilDone()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!vc->statementImporter()->busy(), 5000);
        tester.reset();
    }
    // What a table of the book shows, one row per line.
    std::string rowsOf(const std::string& sql)
    {
        sqlite3_stmt* s = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(side, sql.c_str(), -1, &s, nullptr), SQLITE_OK) << sqlite3_errmsg(side);
        std::string out;
        while (sqlite3_step(s) == SQLITE_ROW) {
            for (int c = 0; c < sqlite3_column_count(s); ++c) {
                const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(s, c));
                out += (c ? "|" : "") + std::string(t ? t : "NULL");
            }
            out += "\n";
        }
        sqlite3_finalize(s);
        return out;
    }
    // The user's earlier choice of default sub-items for a layout's rows.
    void defaults(const char* layout, int64_t expense, int64_t income)
    {
        exec("INSERT INTO ImportCategory (Layout, MatchKey, SyubetuNo, HimokuNo) VALUES ('" + std::string(layout) +
             "', '', 1, " + std::to_string(expense) + "), ('" + layout + "', '', 2, " + std::to_string(income) + ")");
    }

    std::deque<QStringList> openAnswers;
    std::unique_ptr<QAbstractItemModelTester> tester;

private:
    QStringList askOpenPaths(const QString&, const QStringList&) override
    {
        if (openAnswers.empty()) ADD_FAILURE() << "unexpected open dialog";
        if (openAnswers.empty()) return {};
        const QStringList answer = openAnswers.front();
        openAnswers.pop_front();
        return answer;
    }
};

}  // namespace

// The book's sub-items: 食費 (1) その他 2, 外食 3; 交通費 (4) その他 5;
// 給与 (6) その他 7; 臨時収入 (8) その他 9.
class ImportPreview : public ImportWindowTest {
protected:
    void SetUp() override
    {
        ImportWindowTest::SetUp();
        addCategory(1, "食費", {"外食"});
        addCategory(1, "交通費");
        addCategory(2, "給与");
        addCategory(2, "臨時収入");
    }
};

TEST_F(ImportPreview, CtrlIShowsEveryRowAndImportsTheTickedOnesWithTheCategoriesChosen)
{
    addSisan("現金", 0, 0);
    const int64_t card = addSisan("楽天カード", 0, 0);
    start();
    pressCtrlI({sample("rakuten_card_202610.csv")});
    ImportPreviewDialog* dialog = chooseSisan(preview(), "楽天カード");
    EXPECT_EQ(dialog->windowTitle(), "明細の取り込み");
    EXPECT_EQ(text(dialog, "lblImportLayout"), "「楽天カード ご利用明細 (2026年10月)」");
    // Installments and revolving purchases at their full amount; the refund as money in.
    EXPECT_EQ(previewRows(dialog),
              (Rows{"☑|2026-08-20|リボ払い商品||12,000|（未設定）|新規|",
                    "☑|2026-09-01|ｲｵﾝﾓ-ﾙﾜｶﾔﾏ||5,400|（未設定）|新規|",
                    "☑|2026-09-03|楽天ビック（ビックカメラ×楽天||30,000|（未設定）|新規|",
                    "☑|2026-09-10|ＡＭＡＺＯＮ．ＣＯ．ＪＰ|2,980||（未設定）|新規|",
                    "☑|2026-09-15|モバイルスイカ||3,000|（未設定）|振替候補|チャージ（相手: モバイルSuica）",
                    "☑|2026-09-15|モバイルスイカ||3,000|（未設定）|振替候補|チャージ（相手: モバイルSuica）"}));

    // Nothing is written while a ticked row has no category.
    enter(dialog);
    EXPECT_EQ(takeMessages(),
              (Messages{{"費目・振替先の決まっていない行が 6行あります。選んでから取り込んでください。", "information"}}));
    choose(dialog, "食費/外食");
    press(dialog, "btnImportSetRows");
    clickRow(dialog, 4);
    choose(dialog, "交通費/その他");
    press(dialog, "btnImportSetSameText");
    clickRow(dialog, 3);
    table(dialog)->setFocus();
    QTest::keyClick(table(dialog), Qt::Key_Space);  // the refund stays out
    clickRow(dialog, 1);
    choose(dialog, "食費/その他");
    press(dialog, "btnImportSetDefault");
    EXPECT_EQ(previewRows(dialog)[0], "☑|2026-08-20|リボ払い商品||12,000|食費/外食|新規|");
    EXPECT_EQ(previewRows(dialog)[2], "☑|2026-09-03|楽天ビック（ビックカメラ×楽天||30,000|食費/その他|新規|");
    EXPECT_EQ(previewRows(dialog)[3], "☐|2026-09-10|ＡＭＡＺＯＮ．ＣＯ．ＪＰ|2,980|||新規|");
    EXPECT_EQ(previewRows(dialog)[5], "☑|2026-09-15|モバイルスイカ||3,000|交通費/その他|振替候補|チャージ（相手: モバイルSuica）");
    EXPECT_EQ(text(dialog, "lblImportSummary"),
              "読み込み 6行：新規 4・取込済み 0・重複の可能性 0・振替候補 2・読めない行 0\n取り込む行 5行（収入 0円、支出 53,400円）");

    enter(dialog);
    waitUntilDone();
    EXPECT_EQ(takeMessages(), (Messages{{"「rakuten_card_202610.csv」を資産「楽天カード」に取り込みました: "
                                         "読み込み 6行・取り込み 5行・取込済み 0行・読めない行 0行",
                                         "information"}}));
    // The card is shown with its new entries selected.
    EXPECT_EQ(label("lblSisanmei"), "楽天カード");
    EXPECT_EQ(shown("tblItem"), (Rows{"2026-08-20|食費/外食||12,000|-12,000", "2026-09-01|食費/その他||5,400|-17,400",
                                      "2026-09-03|食費/その他||30,000|-47,400", "2026-09-15|交通費/その他||3,000|-50,400",
                                      "2026-09-15|交通費/その他||3,000|-53,400"}));
    EXPECT_EQ(find<QTableView>("tblItem")->selectionModel()->selectedRows().size(), 5);
    EXPECT_EQ(shown("tblSisan"), (Rows{"現金|0", "楽天カード|-53,400"}));
    // The notes keep the text as written; each entry knows its origin; the
    // choices are learned, the default is kept for the layout.
    EXPECT_EQ(rowsOf("SELECT Bikou FROM Items ORDER BY Id LIMIT 2"), "リボ払い商品\nｲｵﾝﾓ-ﾙﾜｶﾔﾏ\n");
    EXPECT_EQ(rowsOf("SELECT ContentKey, Text FROM ImportOrigin ORDER BY ItemId LIMIT 2"),
              "2026-08-20|-12000|リボ払い商品#1|リボ払い商品\n2026-09-01|-5400|イオンモールワカヤマ#1|ｲｵﾝﾓ-ﾙﾜｶﾔﾏ\n");
    EXPECT_EQ(rowsOf("SELECT Layout, MatchKey, SyubetuNo, HimokuNo FROM ImportCategory ORDER BY MatchKey"),
              "rakuten-card||1|2\n|イオンモールワカヤマ|1|2\n|モバイルスイカ|1|5\n|リボ払い商品|1|3\n|楽天ビツク(ビツクカメラ×楽天|1|2\n");
    EXPECT_EQ(rowsOf("SELECT FileName, Layout, SisanNo, RowsRead, RowsImported, RowsAlready, RowsRefused FROM ImportRecord"),
              "rakuten_card_202610.csv|rakuten-card|" + std::to_string(card) + "|6|5|0|0\n");
}

TEST_F(ImportPreview, OverlappingDownloadsDroppedTogetherAddOnlyWhatIsNewAndTheSameFileAgainIsRefused)
{
    addSisan("現金", 0, 0);
    const int64_t card = addSisan("楽天カード", 0, 0);
    defaults("rakuten-card", 2, 9);
    start();
    drop({sample("rakuten_card_202610.csv"), sample("rakuten_card_202611.csv")});
    ImportPreviewDialog* october = chooseSisan(preview(), "楽天カード");
    EXPECT_EQ(october->windowTitle(), "明細の取り込み (1/2)");
    EXPECT_EQ(previewRows(october)[3], "☑|2026-09-10|ＡＭＡＺＯＮ．ＣＯ．ＪＰ|2,980||臨時収入/その他|新規|");
    const QString first = october->windowTitle();
    enter(october);
    // The next dialog may take the closed one's address: tell them apart by title.
    QTRY_VERIFY(visiblePreview() && visiblePreview()->windowTitle() != first);
    tester.reset();
    ImportPreviewDialog* november = preview();
    EXPECT_EQ(november->windowTitle(), "明細の取り込み (2/2)");
    EXPECT_EQ(november->findChild<QComboBox*>("cmbImportSisan")->currentText(), "楽天カード");
    // The revolving and installment rows come again at their full amount:
    // already in the book. The late posting is new, the charge learned.
    const Rows rows = previewRows(november);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0], "☐|2026-08-20|リボ払い商品||12,000||取込済み|2026-08-20 支出 12,000円 食費/その他 「リボ払い商品」");
    EXPECT_EQ(rows[1].substr(0, rows[1].find("|取込済み")), "☐|2026-09-03|楽天ビック（ビックカメラ×楽天||30,000|");
    EXPECT_EQ(rows[2], "☑|2026-09-29|ｽｰﾊﾟｰﾏｰｹｯﾄ||2,200|食費/その他|新規|");
    EXPECT_EQ(rows[3], "☑|2026-10-05|モバイルスイカ||3,000|食費/その他|振替候補|チャージ（相手: モバイルSuica）");
    enter(november);
    waitUntilDone();
    EXPECT_EQ(takeMessages(),
              (Messages{{"「rakuten_card_202610.csv」を資産「楽天カード」に取り込みました: 読み込み 6行・取り込み 6行・取込済み 0行・読めない行 0行\n"
                         "「rakuten_card_202611.csv」を資産「楽天カード」に取り込みました: 読み込み 4行・取り込み 2行・取込済み 2行・読めない行 0行",
                         "information"}}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE SisanNo = " + std::to_string(card)), 8);

    // Every row of October is in the book now: no preview, nothing written.
    const std::string before = dumpAll();
    pressCtrlI({sample("rakuten_card_202610.csv")});
    waitUntilDone();
    EXPECT_EQ(takeMessages(),
              (Messages{{"「rakuten_card_202610.csv」はすでに取り込み済みです（2026-11-23 10:00:00、資産「楽天カード」、6行）。",
                         "information"}}));
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM ImportRecord"), 2);
}

TEST_F(ImportPreview, ABankStatementPairsTheCardPaymentWithTheCardsEntryAndSendsTheATMWithdrawalToCash)
{
    const int64_t bank = addSisan("三菱UFJ銀行", 100000, 100000);
    const int64_t card = addSisan("三井住友カード", 0, 0);
    const std::string cash = std::to_string(addSisan("現金", 0, 0));
    // The card's payment, typed by hand on the card as money in.
    const int64_t typed = addEntry(card, "2026-07-09", 2, 9, 35710);
    defaults("mufg", 2, 7);
    start();
    pressCtrlI({sample("mufg_eco.csv")});
    ImportPreviewDialog* dialog = preview();
    EXPECT_EQ(previewRows(dialog)[3], "☑|2026-07-10|口座振替 ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ||35,710|振替: 三井住友カード|振替候補|"
                                      "三井住友カードの 2026-07-09 収入 35,710円 臨時収入/その他 と組にします");
    EXPECT_EQ(previewRows(dialog)[4], "☑|2026-07-15|カード||10,000|振替: 現金|振替候補|ATMの引き出し");
    enter(dialog);
    waitUntilDone();
    takeMessages();
    // Both transfers as the entry panel makes them: a source row and a
    // destination row naming each other; the card's own entry became the
    // destination row, keeping its Id.
    const std::string b = std::to_string(bank);
    EXPECT_EQ(rowsOf("SELECT Hizuke, SisanNo, SyubetuNo, HimokuNo, IdouSisanNo, Nyuukin, Syukkin FROM Items "
                     "WHERE SyubetuNo IN (3, 4) ORDER BY Id"),
              "2026-07-10|" + std::to_string(card) + "|4|NULL|" + b + "|35710|NULL\n" + "2026-07-10|" + b +
                  "|3|NULL|" + std::to_string(card) + "|NULL|35710\n2026-07-15|" + b + "|3|NULL|3|NULL|10000\n" +
                  "2026-07-15|3|4|NULL|" + b + "|10000|NULL\n");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items a JOIN Items p ON p.Id = a.IdouId AND p.IdouId = a.Id"), 4);
    EXPECT_EQ(scalar("SELECT IdouId FROM Items WHERE Id = " + std::to_string(typed)),
              scalar("SELECT Id FROM Items WHERE SisanNo = " + b + " AND Syukkin = 35710"));
    EXPECT_EQ(shown("tblSisan"), (Rows{"三菱UFJ銀行|300,590", "三井住友カード|35,710", "現金|10,000"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "346,300");
}

TEST_F(ImportPreview, EveryBadFileIsSaidByNameAndNothingIsWritten)
{
    const int64_t bank = addSisan("ゆうちょ", 0, 0);
    addSisan("楽天カード", 0, 0);
    exec("INSERT INTO ImportAccount (Layout, Account, SisanNo) VALUES ('yucho', '10340-99999999', " +
         std::to_string(bank) + ")");
    const std::string unknown = dir + "/unknown.csv";
    std::ofstream(unknown) << "a,b,c\n1,2,3\n";
    start();
    const std::string before = dumpAll();
    pressCtrlI({sample("mojibake.csv"), sample("yucho.csv"), sample("bad_rows.csv"), QString::fromStdString(unknown)});

    // A file for another account than the asset took before.
    ImportPreviewDialog* yucho = preview();
    EXPECT_EQ(text(yucho, "lblImportCheck"),
              "「yucho.csv」は口座・カード番号 10340-08521821 の明細です。資産「ゆうちょ」にはこれまで 10340-99999999 "
              "の明細を取り込んでいます。別の資産を選んでください。");
    const QString yuchoTitle = yucho->windowTitle();
    enter(yucho);
    QTest::keyClick(table(yucho), Qt::Key_Escape);
    // Unreadable rows are shown with their reason and cannot be ticked.
    QTRY_VERIFY(visiblePreview() && visiblePreview()->windowTitle() != yuchoTitle);
    tester.reset();
    ImportPreviewDialog* bad = preview();
    const Rows rows = previewRows(bad);
    ASSERT_EQ(rows.size(), 6u);
    EXPECT_EQ(rows[1], "☐||存在しない日||||読めない行|「2026/02/30」は存在しない日付です");
    EXPECT_EQ(rows[4], "☐||年のない日付||||読めない行|「9/4」は日付として読めません");
    EXPECT_EQ(table(bad)->model()->flags(table(bad)->model()->index(1, 0)) & Qt::ItemIsUserCheckable, Qt::NoItemFlags);
    QTest::keyClick(table(bad), Qt::Key_Escape);
    // A layout no profile reads, whose mapping is cancelled.
    ImportMappingDialog* mapping = nullptr;
    QTRY_VERIFY((mapping = vc->findChild<ImportMappingDialog*>()) && mapping->isVisible());
    QTest::keyClick(mapping, Qt::Key_Escape);
    waitUntilDone();

    const Messages said = takeMessages();
    ASSERT_EQ(said.size(), 3u);
    EXPECT_EQ(said[0].first.substr(0, said[0].first.find("（")), "「mojibake.csv」は文字化けしています");
    EXPECT_EQ(said[0].second.substr(0, said[0].second.find("\n")), "ファイルの先頭:");
    EXPECT_EQ(said[1].first.find("「yucho.csv」は口座・カード番号 10340-08521821 の明細です。"), 0u);
    EXPECT_EQ(said[2], Message("「unknown.csv」は形式が指定されなかったため、取り込みませんでした。", "information"));
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM ImportRecord"), 0);
}

TEST_F(ImportPreview, AnUnknownLayoutIsMappedOnceKeptByItsNameAndRecognisedNextTime)
{
    addSisan("ふるさと信金", 0, 0);
    const std::string file = dir + "/shinkin.csv";
    std::ofstream(file) << "ふるさと信用金庫 入出金明細\n取扱日,摘要,お支払,お預り,残高\n"
                           "2026/10/01,ﾃﾞﾝｷﾀﾞｲ,\"8,800\",,91200\n2026/10/02,ｷﾕｳﾖ,,\"210,000\",301200\n";
    start();
    pressCtrlI({QString::fromStdString(file)});
    ImportMappingDialog* mapping = nullptr;
    QTRY_VERIFY((mapping = vc->findChild<ImportMappingDialog*>()) && mapping->isVisible());
    // The heading line is the second; the columns are found by their headings.
    clickRow(mapping, 1, "tblMappingLines");
    const auto column = [&](const char* combo) { return mapping->findChild<QComboBox*>(combo)->currentText().toStdString(); };
    EXPECT_EQ(column("cmbMappingDate"), "列1: 取扱日");
    EXPECT_EQ(column("cmbMappingText"), "列2: 摘要");
    EXPECT_EQ(column("cmbMappingOut"), "列3: お支払");
    EXPECT_EQ(column("cmbMappingIn"), "列4: お預り");
    auto* name = mapping->findChild<QLineEdit*>("txtMappingName");
    name->setFocus();
    QInputMethodEvent commit;
    commit.setCommitString(QStringLiteral("ふるさと信金 入出金明細"));
    QApplication::sendEvent(name, &commit);
    QTest::keyClick(name, Qt::Key_Return);

    ImportPreviewDialog* dialog = preview();
    EXPECT_EQ(text(dialog, "lblImportLayout"), "「ふるさと信金 入出金明細 (2026年10月)」");
    EXPECT_EQ(previewRows(dialog), (Rows{"☑|2026-10-01|ﾃﾞﾝｷﾀﾞｲ||8,800|（未設定）|新規|",
                                         "☑|2026-10-02|ｷﾕｳﾖ|210,000||（未設定）|新規|"}));
    QTest::keyClick(table(dialog), Qt::Key_Escape);
    waitUntilDone();
    EXPECT_EQ(rowsOf("SELECT Namae FROM ImportProfile"), "ふるさと信金 入出金明細\n");

    pressCtrlI({QString::fromStdString(file)});
    EXPECT_EQ(text(preview(), "lblImportLayout"), "「ふるさと信金 入出金明細 (2026年10月)」");
    QTest::keyClick(table(visiblePreview()), Qt::Key_Escape);
    waitUntilDone();
}

TEST_F(ImportPreview, ABigFileIsReadWhileTheWindowAnswersAndItsReadingCanBeCancelled)
{
    addSisan("楽天カード", 0, 0);
    const std::string file = dir + "/big.csv";
    {
        std::ofstream out(file);
        out << "\"利用日\",\"利用店名・商品名\",\"利用者\",\"支払方法\",\"利用金額\"\n";
        for (int i = 0; i < 300000; ++i) out << "\"2026/09/01\",\"ｺﾝﾋﾞﾆ " << i << "\",\"本人\",\"1回払い\",\"" << 100 + i % 900 << "\"\n";
    }
    start();
    const std::string before = dumpAll();
    pressCtrlI({QString::fromStdString(file)});
    // The progress shows while the window goes on answering; 中止 (Escape) stops the reading.
    QProgressDialog* progress = nullptr;
    QTRY_VERIFY_WITH_TIMEOUT((progress = vc->findChild<QProgressDialog*>()) && progress->isVisible(), 10000);
    EXPECT_EQ(progress->labelText(), "「big.csv」を読み込んでいます…");
    QTest::keyClick(progress, Qt::Key_Escape);
    waitUntilDone();
    EXPECT_EQ(visiblePreview(), nullptr);
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_EQ(dumpAll(), before);
}

TEST_F(ImportPreview, UndoingAnImportTakesItsEntriesAndRecordAwaySoTheSameFileImportsAgain)
{
    addSisan("楽天カード", 0, 0);
    defaults("rakuten-card", 2, 9);
    start();
    const std::string before = dumpAll();
    pressCtrlI({sample("rakuten_card_202610.csv")});
    enter(preview());
    waitUntilDone();
    takeMessages();
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 6);
    EXPECT_EQ(vc->findChild<QAction*>("mnuUndo")->text().toStdString(),
              "元に戻す「明細『rakuten_card_202610.csv』6件の取り込み」(&U)");

    // One step: the entries, their origins, the record and what was learned go.
    pressOnWindow(Qt::Key_Z);
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM ImportRecord") + scalar("SELECT COUNT(*) FROM ImportOrigin") +
                  scalar("SELECT COUNT(*) FROM ImportCategory WHERE Layout = ''"),
              0);
    EXPECT_EQ(shown("tblSisan"), Rows{"楽天カード|0"});

    // Nothing of it is left to make the file look imported.
    pressCtrlI({sample("rakuten_card_202610.csv")});
    ImportPreviewDialog* again = preview();
    for (const std::string& row : previewRows(again)) EXPECT_EQ(row.find("取込済み"), std::string::npos) << row;
    enter(again);
    waitUntilDone();
    takeMessages();
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 6);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM ImportRecord"), 1);
}

// A card's statement is held against the period its latest purchase falls in
// (here 9月1日〜9月30日, 月末締め翌月27日引落): what the statement charges
// (each row's part billed this month), and what the book holds for the period
// with the ticked rows in: the earlier entry, the purchases at their full
// amount, less the refund while it is ticked; the August row belongs to
// another period.
TEST_F(ImportPreview, ACardsStatementIsHeldAgainstItsPeriodInTheBookAndTheDifferenceShown)
{
    const int64_t bank = addSisan("普通預金", 0, 0);
    const int64_t card = addSisan("楽天カード", 0, 0);
    addEntry(card, "2026-09-20", 1, 2, 1000);
    addEntry(card, "2026-10-01", 1, 2, 500);
    exec("INSERT INTO CardCycles VALUES (" + std::to_string(card) + ", 31, 27, 1, 2, " + std::to_string(bank) +
         ", 202611)");
    defaults("rakuten-card", 2, 9);
    start();
    pressCtrlI({sample("rakuten_card_202610.csv")});
    ImportPreviewDialog* dialog = chooseSisan(preview(), "楽天カード");
    const QString counts = QStringLiteral("読み込み 6行：新規 4・取込済み 0・重複の可能性 0・振替候補 2・読めない行 0\n");
    EXPECT_EQ(text(dialog, "lblImportSummary"),
              counts + "取り込む行 6行（収入 2,980円、支出 53,400円）\n"
                       "カードの2026年9月30日締め（9月1日〜9月30日の利用・10月27日引落）: "
                       "明細の請求 23,770円、取り込み後の帳簿 39,420円、差額 -15,650円");
    clickRow(dialog, 3);
    table(dialog)->setFocus();
    QTest::keyClick(table(dialog), Qt::Key_Space);  // the refund stays out
    const QString check = QStringLiteral("カードの2026年9月30日締め（9月1日〜9月30日の利用・10月27日引落）: "
                                         "明細の請求 23,770円、取り込み後の帳簿 42,400円、差額 -18,630円");
    EXPECT_EQ(text(dialog, "lblImportSummary"), counts + "取り込む行 5行（収入 0円、支出 53,400円）\n" + check);

    enter(dialog);
    waitUntilDone();
    EXPECT_EQ(takeMessages(), (Messages{{"「rakuten_card_202610.csv」を資産「楽天カード」に取り込みました: "
                                         "読み込み 6行・取り込み 5行・取込済み 0行・読めない行 0行\n　" + check.toStdString(),
                                         "information"}}));
    EXPECT_EQ(scalar("SELECT TOTAL(Syukkin) - TOTAL(Nyuukin) FROM Items WHERE SisanNo = " + std::to_string(card) +
                     " AND Hizuke BETWEEN '2026-09-01' AND '2026-09-30'"),
              42400);
}
