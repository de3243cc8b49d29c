#include "reports/YosanReportViewController.h"

#include <QHeaderView>
#include <QSignalBlocker>
#include <algorithm>

#include "charts/YosanChartView.h"
#include "household/HouseholdLabels.h"
#include "reports/PdfDocument.h"
#include "reports/ReportExport.h"
#include "reports/YosanReport.h"
#include "reports/YosanReportPDFPage.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/FitToScreen.h"
#include "ui/HouseholdDates.h"
#include "ui/ListTableModel.h"
#include "ui/ShareBarDelegate.h"
#include "ui_YosanReportViewController.h"

namespace {

constexpr int kBarColumn = 5;
constexpr int kWholeYear = 12;  // the month list's last choice, 年間

QString amountOrBlank(const std::optional<int64_t>& amount)
{
    return amount ? groupedKingaku(*amount) : QString();
}

}  // namespace

YosanReportViewController::YosanReportViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::YosanReportViewController>())
{
    ui->setupUi(this);
    const auto row = [this](int r) -> const YosanRow& { return rows[static_cast<size_t>(r)]; };
    model = new ListTableModel(
        [this] { return static_cast<int>(rows.size()); },
        {{"yosanHimoku", QStringLiteral("費目"), false,
          [row](int r) {
              return (row(r).level == YosanRow::Level::SubItem ? QStringLiteral("\u3000\u3000") : QString()) +
                     qText(yosanRowName(row(r)));
          }},
         {"yosan", QStringLiteral("予算"), true, [row](int r) { return amountOrBlank(row(r).yosan); }},
         {"jisseki", QStringLiteral("実績"), true, [row](int r) { return groupedKingaku(row(r).jisseki); }},
         {"sagaku", QStringLiteral("差額"), true, [row](int r) { return amountOrBlank(row(r).difference()); }},
         {"siyouritu", QStringLiteral("使用率"), true, [row](int r) { return qText(yosanShareText(row(r))); }},
         {"bar", QStringLiteral("使用状況"), false, [](int) { return QString(); }}},
        {}, this);
    ui->tblYosanJisseki->setModel(model);
    ui->tblYosanJisseki->setItemDelegateForColumn(
        kBarColumn, new ShareBarDelegate(
                        [this](int r) -> std::optional<ShareBarDelegate::Share> {
                            const YosanRow& y = rows[static_cast<size_t>(r)];
                            if (!y.yosan) return std::nullopt;
                            return ShareBarDelegate::Share{y.share().value_or(y.over() ? 1.0 : 0.0), y.over()};
                        },
                        this));
    layOutColumns();
    chart = new YosanChartView(DM, ui->tabChart);
    ui->chartLayout->addWidget(chart);
    for (int m = 1; m <= 12; ++m) ui->cmbYosanTuki->addItem(QString::number(m) + QStringLiteral("月"));
    ui->cmbYosanTuki->addItem(QStringLiteral("年間"));
    ui->lblMonthSetting->setText(qText(householdMonthSettingLabel(DM.householdMonths.setting())));
    QFont bold = ui->lblYosanPeriod->font();
    bold.setBold(true);
    ui->lblYosanPeriod->setFont(bold);
    fillYears();
    connect(ui->cmbYosanNen, &QComboBox::currentIndexChanged, this, &YosanReportViewController::periodPicked);
    connect(ui->cmbYosanTuki, &QComboBox::currentIndexChanged, this, &YosanReportViewController::periodPicked);
    connect(ui->btnYosanThisMonth, &QPushButton::clicked, this, &YosanReportViewController::btnYosanThisMonth);
    connect(ui->btnCSV, &QPushButton::clicked, this, &YosanReportViewController::btnCSV);
    connect(ui->btnPDF, &QPushButton::clicked, this, &YosanReportViewController::btnPDF);
    connect(ui->tabReport, &QTabWidget::currentChanged, this, &YosanReportViewController::showChartIfSeen);
    btnYosanThisMonth();
    fitToScreen(this);
}

YosanReportViewController::~YosanReportViewController() = default;

void YosanReportViewController::fillYears()
{
    // The household years with entries, and this one even without any.
    const int thisYear = DM.householdMonths.monthOf(householdToday()).year;
    years = {thisYear};
    if (DM.readYearsFromItemsTable())
        for (const std::string& nen : DM.yearsList) years.push_back(std::stoi(nen));
    std::sort(years.begin(), years.end());
    years.erase(std::unique(years.begin(), years.end()), years.end());
    const QSignalBlocker quiet(ui->cmbYosanNen);
    for (int year : years) ui->cmbYosanNen->addItem(QString::number(year) + QStringLiteral("年"));
}

void YosanReportViewController::layOutColumns()
{
    QTableView* table = ui->tblYosanJisseki;
    const QFontMetrics metrics(table->font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    QHeaderView* header = table->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->resizeSection(0, 14 * metrics.horizontalAdvance(QChar(0x4E00)));
    for (int c = 1; c <= 3; ++c) header->resizeSection(c, amount);
    header->resizeSection(4, metrics.horizontalAdvance(QStringLiteral("999.9%")) + 24);
    header->setSectionResizeMode(kBarColumn, QHeaderView::Stretch);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(metrics.height() + 10);
    table->setMinimumWidth(header->sectionSize(0) + 3 * amount + header->sectionSize(4) + 200);
}

void YosanReportViewController::pick(int year, int month)
{
    const auto found = std::find(years.begin(), years.end(), year);
    if (found == years.end()) return;
    {
        const QSignalBlocker quietYears(ui->cmbYosanNen);
        const QSignalBlocker quietMonths(ui->cmbYosanTuki);
        ui->cmbYosanNen->setCurrentIndex(static_cast<int>(found - years.begin()));
        ui->cmbYosanTuki->setCurrentIndex(month ? month - 1 : kWholeYear);
    }
    periodPicked();
}

void YosanReportViewController::btnYosanThisMonth()
{
    const YearMonth now = DM.householdMonths.monthOf(householdToday());
    pick(now.year, now.month);
}

void YosanReportViewController::periodPicked()
{
    const int y = ui->cmbYosanNen->currentIndex();
    const int m = ui->cmbYosanTuki->currentIndex();
    if (y < 0 || m < 0) return;
    showPeriod(years[static_cast<size_t>(y)], m == kWholeYear ? 0 : m + 1);
}

bool YosanReportViewController::showPeriod(int year, int month)
{
    std::vector<YosanRow> read;
    if (!DM.yosanJissekiOf(year, month, read)) return false;
    rows = std::move(read);
    shownYear = year;
    shownMonth = month;
    model->reload();
    ui->lblYosanPeriod->setText(periodText());
    showChartIfSeen();
    return true;
}

void YosanReportViewController::showChartIfSeen()
{
    // The year's chart reads twelve months: only when its tab is looked at.
    if (ui->tabReport->currentWidget() != ui->tabChart || chartYear == shownYear) return;
    if (chart->showYear(shownYear)) chartYear = shownYear;
}

QString YosanReportViewController::periodText() const
{
    return qText(yosanPeriodLabel(DM, shownYear, shownMonth));
}

QString YosanReportViewController::proposedName() const
{
    QString name = QStringLiteral("予算と実績_") + QString::number(shownYear);
    if (shownMonth) name += QStringLiteral("%1").arg(shownMonth, 2, 10, QLatin1Char('0'));
    return name;
}

void YosanReportViewController::btnCSV()
{
    if (!shownYear) return;
    saveReportCsv(yosanReportCsv(periodText().toStdString(), reportDateStamp(), rows), proposedName(),
                  "yosan report csv write error \n");
}

void YosanReportViewController::btnPDF()
{
    if (!shownYear) return;
    PdfDocument document;
    size_t index = 0;
    for (auto& page : yosanReportPages(periodText().toStdString(), rows, reportDateStamp))
        document.insertPage(std::move(page), index++);
    saveReportPdf(document, proposedName());
}
