// The two report windows driven through their widgets, with real files
// written through the save dialog service and read back with poppler-utils.
#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QProcess>
#include <QScreen>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <filesystem>
#include <fstream>

#include "reports/AnnualReportViewController.h"
#include "reports/SisanReportViewController.h"
#include "reports/YosanReportViewController.h"
#include "charts/YosanChartView.h"
#include "tests/app/AppFixture.h"
#include "tests/reports/ReportExamples.h"
#include "ui/QtTranslations.h"

namespace {

// Standard output of a poppler tool run on a file.
QString poppler(const char* tool, const std::string& file, QStringList arguments = {})
{
    QProcess process;
    arguments << QString::fromStdString(file);
    if (QLatin1String(tool) == QLatin1String("pdftotext")) arguments << QStringLiteral("-");
    process.start(QString::fromLatin1(tool), arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Checks what every report PDF must be: the page size and count, both
// faces embedded, and a text layer of the real characters.
void expectPdf(const std::string& file, const char* pageSize, int pages, const std::vector<std::string>& strings)
{
    ASSERT_TRUE(std::filesystem::exists(file)) << file;
    const std::string infoText = poppler("pdfinfo", file).toStdString();
    EXPECT_NE(infoText.find(std::string("Page size:       ") + pageSize), std::string::npos) << infoText;
    EXPECT_NE(infoText.find("Pages:           " + std::to_string(pages) + "\n"), std::string::npos) << infoText;

    QStringList faces;
    for (const QString& line : poppler("pdffonts", file).split('\n', Qt::SkipEmptyParts).mid(2)) {
        faces << line.section(' ', 0, 0).section('+', 1);
        EXPECT_TRUE(line.contains(QStringLiteral(" yes yes yes "))) << line.toStdString();  // embedded subset, mapped
    }
    faces.removeDuplicates();  // cairo may split a face into several subsets
    faces.sort();
    EXPECT_EQ(faces, (QStringList{QStringLiteral("NimbusSans-Regular"), QStringLiteral("NotoSansCJKjp-Regular")}));

    const std::string text = poppler("pdftotext", file, {QStringLiteral("-layout")}).toStdString();
    for (const std::string& s : strings) EXPECT_NE(text.find(s), std::string::npos) << s << " not in\n" << text;
    // No Kangxi radicals or compatibility ideographs standing in for kanji.
    for (const char32_t c : QString::fromStdString(text).toUcs4())
        EXPECT_FALSE((c >= 0x2F00 && c <= 0x2FDF) || (c >= 0xF900 && c <= 0xFAFF)) << static_cast<uint32_t>(c);
}

// The report windows, with the clock at 15 January 2019, a Documents folder
// at home (the book's folder), and files saved in the book's folder.
class ReportWindowsTest : public AppFixture {
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        setClockTo({2019, 1, 15});
        std::filesystem::create_directory(dir + "/Documents");
    }
    void press(QWidget& window, const char* button, const std::string& answer)
    {
        savePaths.push_back(answer.empty() ? QString() : QString::fromStdString(dir + "/" + answer));
        auto* b = in<QPushButton>(&window, button);
        ASSERT_TRUE(b->isEnabled()) << button;
        QTest::mouseClick(b, Qt::LeftButton);
    }
    size_t filesInDir() const { return std::distance(std::filesystem::directory_iterator(dir), {}); }
    // What the user is told when a file of the book's folder cannot be saved.
    Message notSaved(const std::string& file, const char* reason)
    {
        return {"「" + dir + "/" + file + "」を保存できませんでした。", reason};
    }
};

}  // namespace

TEST_F(ReportWindowsTest, TheAnnualReportShowsAPickedYearWritesItAsCsvAndPdfAndSurvivesUnreadableYears)
{
    const int64_t asset = addSisan("現金", 0, 0);
    const int64_t kyuuyo = addCategory(2, "給与");
    const int64_t food = addCategory(1, "食費");
    addEntry(asset, "2019-01-25", 2, kyuuyo + 1, 300000);
    addEntry(asset, "2018-07-01", 1, food + 1, 1500);
    DataModel& dm = open();
    AnnualReportViewController window(dm);
    window.show();
    auto* years = in<QComboBox>(&window, "cmbYears");
    EXPECT_EQ(years->count(), 2);
    EXPECT_EQ(years->currentIndex(), -1);
    EXPECT_FALSE(in<QPushButton>(&window, "btnCSV")->isEnabled());
    EXPECT_FALSE(in<QPushButton>(&window, "btnPDF")->isEnabled());
    for (const char* table : {"tblItemsIn", "tblItemsOut", "tblTotals"}) {
        EXPECT_TRUE(rowsOf(&window, table).empty());
        new QAbstractItemModelTester(in<QTableView>(&window, table)->model(), &window);
    }

    years->setCurrentIndex(1);
    EXPECT_EQ(rowsOf(&window, "tblItemsIn"), Rows{"給与/その他|300,000|0|0|0|0|0|0|0|0|0|0|0|300,000"});
    EXPECT_TRUE(rowsOf(&window, "tblItemsOut").empty());
    EXPECT_EQ(rowsOf(&window, "tblTotals"), (Rows{"収　入　計|300,000|0|0|0|0|0|0|0|0|0|0|0|300,000",
                                                 "支　出　計|0|0|0|0|0|0|0|0|0|0|0|0|0",
                                                 "差　引　合　計|300,000|0|0|0|0|0|0|0|0|0|0|0|300,000"}));
    // The グラフ tab follows the pick: 2019 has income and no expense.
    EXPECT_EQ(in<QLabel>(&window, "lblExpenseEmpty")->text(), "2019年には支出の記録がありません。");
    const QAbstractItemModel* totals = in<QTableView>(&window, "tblTotals")->model();
    EXPECT_TRUE(totals->index(0, 13).data(Qt::TextAlignmentRole).value<Qt::Alignment>() & Qt::AlignRight);

    // The first dialog proposes the year's name in the documents folder, the
    // next one the folder saved to.
    std::ofstream(dir + "/annual.csv") << "an older, longer export that must go entirely";
    press(window, "btnCSV", "annual");  // the extension is added
    EXPECT_EQ(offeredTypes, (QStringList{"csv", "CSV"}));
    EXPECT_EQ(contentOf(dir + "/annual.csv"), kAnnualExample);
    press(window, "btnPDF", "annual.pdf");
    EXPECT_EQ(offeredTypes, (QStringList{"pdf", "PDF"}));
    const QString folder = QString::fromStdString(dir);
    EXPECT_EQ(proposedPaths, (QStringList{folder + "/Documents/年間レポート_2019.csv", folder + "/年間レポート_2019.pdf"}));
    expectPdf(dir + "/annual.pdf", "842 x 595 pts", 1,
              {"2019 年度", "レポート", "2019年01月15日", "給与/その他", "300,000", "1 月", "12 月", "計"});

    const size_t files = filesInDir();
    press(window, "btnCSV", "");
    press(window, "btnPDF", "");
    EXPECT_EQ(filesInDir(), files);  // cancelled: nothing written

    // A failed export is told, with the diagnostic line kept.
    testing::internal::CaptureStdout();
    press(window, "btnCSV", "missing/annual.csv");
    EXPECT_EQ(testing::internal::GetCapturedStdout().rfind("annual report csv write error \ncannot create", 0), 0u);
    press(window, "btnPDF", "missing/annual.pdf");
    EXPECT_EQ(takeMessages(), (Messages{notSaved("missing/annual.csv", "保存先のフォルダがありません。"),
                                        notSaved("missing/annual.pdf", "保存先のフォルダがありません。")}));
    EXPECT_EQ(contentOf(dir + "/annual.csv"), kAnnualExample);

    // A year that cannot be read keeps the shown year's tables but no export.
    exec("ALTER TABLE Himoku RENAME TO Gone");
    dm.readYearsFromItemsTable();  // the store's connection sees the change
    years->setCurrentIndex(0);
    EXPECT_EQ(takeMessages(), (Messages{{"error prepare select annual income of nen from item: no such table: Himoku",
                                         "stop the app"}}));
    EXPECT_EQ(rowsOf(&window, "tblItemsIn"), Rows{"給与/その他|300,000|0|0|0|0|0|0|0|0|0|0|0|300,000"});
    EXPECT_FALSE(in<QPushButton>(&window, "btnCSV")->isEnabled());
    EXPECT_FALSE(in<QPushButton>(&window, "btnPDF")->isEnabled());

    // Years that cannot be read close the window.
    exec("DROP TABLE Items");
    dm.readFromSisanTable();
    AnnualReportViewController closed(dm);
    closed.show();
    QApplication::processEvents();  // the window closes itself once its show is over
    EXPECT_FALSE(closed.isVisible());
    EXPECT_EQ(takeMessages(), (Messages{{"error prepare select distinct nen from item: no such table: Items", "stop the app"}}));
}

TEST_F(ReportWindowsTest, TheAssetReportShowsTheBalancesAndWritesThemAsCsvAndPdf)
{
    {
        SisanReportViewController empty(open());
        empty.show();
        EXPECT_EQ(in<QLabel>(&empty, "lblTotal")->text(), "0");
        press(empty, "btnSisanPDF", "empty");
        EXPECT_EQ(proposedPaths.back(), QString::fromStdString(dir) + "/Documents/資産レポート_20190115.pdf");
        expectPdf(dir + "/empty.pdf", "590 x 840 pts", 1, {"資産レポート", "2019年01月15日", "金額（円）", "0円"});
    }
    addSisan("現金", 12000, 12000);
    addSisan("普通預金", -3000, -3000);
    SisanReportViewController window(open());
    window.show();
    new QAbstractItemModelTester(in<QTableView>(&window, "tblReportSisan")->model(), &window);
    EXPECT_EQ(rowsOf(&window, "tblReportSisan"), (Rows{"現金|12,000", "普通預金|-3,000"}));
    EXPECT_EQ(in<QLabel>(&window, "lblTotal")->text(), "9,000");
    in<QTabWidget>(&window, "tabReport")->setCurrentIndex(1);  // the history is read once its tab shows
    EXPECT_EQ(in<QLabel>(&window, "lblHistoryEmpty")->text(), "記録がまだないため、資産推移はありません。");

    press(window, "btnSisanCSV", "sisan.CSV");  // an offered extension stays
    EXPECT_EQ(contentOf(dir + "/sisan.CSV"), kSisanExample);
    press(window, "btnSisanPDF", "sisan.pdf");
    expectPdf(dir + "/sisan.pdf", "590 x 840 pts", 1, {"現金", "12,000", "普通預金", "-3,000", "合", "9,000"});

    testing::internal::CaptureStdout();
    press(window, "btnSisanCSV", "missing/sisan.csv");
    EXPECT_EQ(testing::internal::GetCapturedStdout().rfind("sisan report csv write error \ncannot create", 0), 0u);
    EXPECT_EQ(takeMessages(), (Messages{notSaved("missing/sisan.csv", "保存先のフォルダがありません。")}));
}

TEST_F(ReportWindowsTest, TheReportKeysOpenEachReportModallyOnTheScreenAndQtSpeaksJapanese)
{
    const int64_t genkin = addSisan("現金", 0, 0);
    const std::string longName = "食費/とても長い名前の内訳を入れてみるとどうなるかの確認用";
    const int64_t food = addCategory(1, "食費");
    exec("UPDATE Himoku SET Namae = '" + longName + "' WHERE Id = " + std::to_string(food + 1));
    addEntry(genkin, "2025-02-10", 1, food + 1, 123456789);
    ViewController& main = start();
    for (const auto& [modifiers, expected] :
         {std::pair{Qt::KeyboardModifiers(Qt::ControlModifier), "AnnualReportViewController"},
          std::pair{Qt::ControlModifier | Qt::ShiftModifier, "SisanReportViewController"}}) {
        main.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
        QString shown;
        QRect frame, screen;
        QTimer::singleShot(0, [&] {
            QWidget* report = QApplication::activeModalWidget();
            if (!report) return;
            shown = report->objectName();
            frame = report->frameGeometry();
            screen = report->screen()->availableGeometry();
            if (shown == "AnnualReportViewController") {
                auto* years = in<QComboBox>(report, "cmbYears");
                // A long name is elided in a capped column and shown whole in
                // the tool tip; a long figure widens its column.
                QTest::keyClick(years, Qt::Key_Down);
                const auto* expenses = in<QTableView>(report, "tblItemsOut");
                const QFontMetrics metrics(expenses->font());
                const QModelIndex first = expenses->model()->index(0, 0);
                EXPECT_EQ(first.data(Qt::ToolTipRole).toString().toStdString(), longName);
                EXPECT_LT(expenses->columnWidth(0), metrics.horizontalAdvance(QString::fromStdString(longName)));
                const int margins = 8;  // the style's text margins and the grid line
                EXPECT_GE(expenses->columnWidth(2), metrics.horizontalAdvance(QStringLiteral("123,456,789")) + margins);
            }
            report->close();
        });
        pressKeys(QKeyCombination(modifiers, Qt::Key_R));
        EXPECT_EQ(shown, expected);
        EXPECT_TRUE(screen.contains(frame)) << expected;
    }

    // Qt's own dialogs and standard buttons, once its translations are in.
    EXPECT_TRUE(installQtTranslations());
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), "キャンセル");
    EXPECT_EQ(QCoreApplication::translate("QFileDialog", "%1 already exists.\nDo you want to replace it?"),
              "%1 は既に存在します。\n置き換えますか?");
}

// Household months: the window says which months it shows, the CSV's date
// field and the PDF's title name them, and the calendar months leave the
// CSV byte for byte as it was.
TEST_F(ReportWindowsTest, HouseholdMonthsAreNamedInTheAnnualReportAndCalendarMonthsLeaveItsCsvAsItWas)
{
    const int64_t asset = addSisan("現金", 0, 0);
    const int64_t kyuuyo = addCategory(2, "給与");
    addEntry(asset, "2019-01-25", 2, kyuuyo + 1, 300000);  // a Friday: the start of February's household month
    DataModel& dm = open();
    ASSERT_TRUE(dm.updateHouseholdMonthSetting({25, HolidayShift::Before, MonthNaming::ByEndMonth}));
    {
        AnnualReportViewController window(dm);
        window.show();
        auto* label = in<QLabel>(&window, "lblMonthSetting");
        EXPECT_EQ(label->text(), "月の始まり: 25日（土日祝は前営業日）");
        in<QComboBox>(&window, "cmbYears")->setCurrentIndex(0);
        const std::string note = "月の始まり: 25日（土日祝は前営業日）\u30002018年12月25日〜2019年12月24日";
        EXPECT_EQ(label->text().toStdString(), note);
        EXPECT_EQ(rowsOf(&window, "tblItemsIn"), Rows{"給与/その他|0|300,000|0|0|0|0|0|0|0|0|0|0|300,000"});
        press(window, "btnCSV", "household.csv");
        const std::string csv = contentOf(dir + "/household.csv");
        EXPECT_EQ(csv.substr(0, csv.find('\n') + 1), "2019 年度 ,\u30002019年01月15日\u3000" + note + "\n");
        EXPECT_NE(csv.find("給与/その他,0,300000,0,0,0,0,0,0,0,0,0,0,300000 \n"), std::string::npos) << csv;
        press(window, "btnPDF", "household.pdf");
        expectPdf(dir + "/household.pdf", "842 x 595 pts", 1, {"月の始まり: 25日", "2018年12月25日〜2019年12月24日"});
    }
    ASSERT_TRUE(dm.updateHouseholdMonthSetting({}));
    AnnualReportViewController window(dm);
    window.show();
    EXPECT_EQ(in<QLabel>(&window, "lblMonthSetting")->text(), "月の始まり: 1日");
    in<QComboBox>(&window, "cmbYears")->setCurrentIndex(0);
    press(window, "btnCSV", "calendar.csv");
    EXPECT_EQ(contentOf(dir + "/calendar.csv"), kAnnualExample);
}

// 予算と実績 opens on this month; a month or the whole year can be picked;
// each row shows its budget, spending, difference and share with a bar, a
// month without entries shows zeros, and the table saves as CSV and PDF.
TEST_F(ReportWindowsTest, TheBudgetReportShowsAMonthOrAYearAndWritesItAsCsvAndPdf)
{
    const int64_t asset = addSisan("現金", 0, 0);
    const int64_t food = addCategory(1, "食費", {"外食"});
    addEntry(asset, "2019-01-10", 1, food + 1, 800);
    addEntry(asset, "2019-01-12", 1, food + 2, 700);
    addEntry(asset, "2018-12-31", 1, food + 1, 100);
    DataModel& dm = open();
    ASSERT_TRUE(dm.yosanReplace(food, 1000, {}));
    ASSERT_TRUE(dm.yosanReplace(food + 2, 500, {}));
    YosanReportViewController window(dm);
    window.show();
    new QAbstractItemModelTester(in<QTableView>(&window, "tblYosanJisseki")->model(), &window);
    EXPECT_EQ(in<QLabel>(&window, "lblYosanPeriod")->text(), "2019年1月");
    EXPECT_EQ(rowsOf(&window, "tblYosanJisseki"), (Rows{"食費|1,000|1,500|-500|150.0%|", "\u3000\u3000外食|500|700|-200|140.0%|",
                                                        "合\u3000計|1,000|1,500|-500|150.0%|"}));
    auto* months = in<QComboBox>(&window, "cmbYosanTuki");
    months->setCurrentIndex(1);
    EXPECT_EQ(rowsOf(&window, "tblYosanJisseki"),
              (Rows{"食費|1,000|0|1,000|0.0%|", "\u3000\u3000外食|500|0|500|0.0%|", "合\u3000計|1,000|0|1,000|0.0%|"}));
    months->setCurrentIndex(12);
    EXPECT_EQ(in<QLabel>(&window, "lblYosanPeriod")->text(), "2019年");
    EXPECT_EQ(rowsOf(&window, "tblYosanJisseki").front(), "食費|12,000|1,500|10,500|12.5%|");
    in<QTabWidget>(&window, "tabReport")->setCurrentIndex(1);
    EXPECT_EQ(window.findChild<YosanChartView*>()->shownJisseki()[0], 1500);

    in<QPushButton>(&window, "btnYosanThisMonth")->click();
    press(window, "btnCSV", "yosan");
    EXPECT_EQ(proposedPaths.back(), QString::fromStdString(dir) + "/Documents/予算と実績_201901.csv");
    EXPECT_EQ(contentOf(dir + "/yosan.csv"), "予算と実績 2019年1月 ,\u30002019年01月15日\n"
                                              "費 目 , 予\u3000算 , 実\u3000績 , 差\u3000額 , 使用率 \n"
                                              "食費,1000,1500,-500,150.0% \n"
                                              "食費/外食,500,700,-200,140.0% \n"
                                              "合\u3000計,1000,1500,-500,150.0% \n");
    press(window, "btnPDF", "yosan.pdf");
    expectPdf(dir + "/yosan.pdf", "590 x 840 pts", 1, {"予算と実績", "2019年1月", "外食", "1,500", "-500", "150.0%"});
}
