#include "reports/AnnualReportViewController.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>

#include "charts/AnnualChartsView.h"
#include "household/HouseholdLabels.h"
#include "reports/AnnualReportPDFPage.h"
#include "reports/AnnualReportRows.h"
#include "reports/PdfDocument.h"
#include "reports/ReportCsv.h"
#include "reports/ReportExport.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/FitToScreen.h"
#include "ui/ListTableModel.h"
#include "ui_AnnualReportViewController.h"

namespace {

constexpr int kColumns = 14;
constexpr const char* kColumnIds[kColumns] = {"00", "01", "02", "03", "04", "05", "06",
                                              "07", "08", "09", "10", "11", "12", "13"};
constexpr int kIncomeTag = 0;
constexpr int kExpenseTag = 1;

std::map<std::string, int> columnNumbers()
{
    std::map<std::string, int> numbers;
    for (int c = 0; c < kColumns; ++c) numbers[kColumnIds[c]] = c;
    return numbers;
}

// The file name the save dialog proposes for a year's report.
QString proposedName(const std::string& year)
{
    return QStringLiteral("年間レポート_") + QString::fromStdString(year);
}

QString columnTitle(int number)
{
    if (number == 0) return QStringLiteral("名称");
    if (number == 13) return QStringLiteral("年計");
    return QString::number(number) + QStringLiteral("月");
}

}  // namespace

AnnualReportViewController::AnnualReportViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), dicColNo(columnNumbers()), ui(std::make_unique<Ui::AnnualReportViewController>())
{
    ui->setupUi(this);
    viewDidLoad();
    fitToScreen(this);
}

AnnualReportViewController::~AnnualReportViewController() = default;

std::array<QTableView*, 3> AnnualReportViewController::tables() const
{
    return {ui->tblItemsIn, ui->tblItemsOut, ui->tblTotals};
}

void AnnualReportViewController::viewDidLoad()
{
    yearsModel = new ListTableModel(
        [this] { return numberOfItems(); },
        {{"year", {}, false, [this](int r) { return QString::fromStdString(DM.yearsList[static_cast<size_t>(r)]); }}},
        {}, this);
    ui->cmbYears->setModel(yearsModel);
    const auto views = tables();
    for (size_t t = 0; t < views.size(); ++t) {
        tableModels[t] = makeTableModel(views[t]->property("tag").toInt());
        views[t]->setModel(tableModels[t]);
    }
    layOutTables();
    charts = new AnnualChartsView(DM, ui->tabCharts);
    ui->chartsLayout->addWidget(charts);
    ui->btnCSV->setEnabled(false);
    ui->btnPDF->setEnabled(false);
    showMonthSetting();
    connect(ui->cmbYears, &QComboBox::currentIndexChanged, this, &AnnualReportViewController::comboBoxSelectionDidChange);
    connect(ui->btnCSV, &QPushButton::clicked, this, &AnnualReportViewController::btnCSV);
    connect(ui->btnPDF, &QPushButton::clicked, this, &AnnualReportViewController::btnPDF);
}

ListTableModel* AnnualReportViewController::makeTableModel(int tag)
{
    std::vector<ListTableModel::Column> columns;
    for (const auto& [identifier, number] : dicColNo) {
        const std::string id = identifier;
        columns.push_back({kColumnIds[number], columnTitle(number), number > 0,
                           [this, tag, id](int row) { return cellText(tag, row, id); }});
    }
    // A name too long for its column is elided there; the row's tool tip
    // shows it whole.
    return new ListTableModel([this, tag] { return numberOfRows(tag); }, std::move(columns),
                              [this, tag](int row) { return cellText(tag, row, kColumnIds[0]); }, this);
}

void AnnualReportViewController::layOutTables()
{
    // Widths from the font (fitColumns), never from the rows' layout.
    const QFontMetrics metrics(font());
    const int rowHeight = metrics.height() + 10;
    for (QTableView* table : tables()) {
        table->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setDefaultSectionSize(rowHeight);
    }
    fitColumns();
    // The summary table shows its three rows without scrolling and scrolls
    // sideways with the two tables above it.
    QTableView* totals = ui->tblTotals;
    totals->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    totals->setFixedHeight(totals->horizontalHeader()->sizeHint().height() + 3 * rowHeight + 2 * totals->frameWidth());
    const auto views = tables();
    for (QTableView* from : views)
        for (QTableView* to : views)
            if (from != to)
                connect(from->horizontalScrollBar(), &QScrollBar::valueChanged, to->horizontalScrollBar(),
                        &QScrollBar::setValue);
}

void AnnualReportViewController::fitColumns()
{
    // The same widths for all three tables, so that their columns line up.
    const QFontMetrics metrics(font());
    // Labels: the longest, up to sixteen kanji; a longer name must not push
    // the figures out of sight.
    const int most = 16 * metrics.horizontalAdvance(QChar(0x4E00));
    int label = metrics.horizontalAdvance(QStringLiteral("差　引　合　計"));
    for (const auto* names : {&DM.annualInNameList, &DM.annualOutNameList, &DM.annualTotalNameList})
        for (const std::string& name : *names)
            label = std::max(label, metrics.horizontalAdvance(QString::fromStdString(name)));
    // Figures: a month up to 99 million and the year up to 999 million, so
    // that a year fits a 1280-pixel screen; a longer figure of the year
    // widens its columns rather than being elided. The longest figures are
    // the largest and the most negative.
    int64_t monthLow = -99999999, monthHigh = 0, yearLow = -999999999, yearHigh = 0;
    for (const auto* rows : {&DM.annualInDataList, &DM.annualOutDataList, &DM.annualTotalDataList})
        for (const auto& row : *rows)
            for (size_t c = 0; c < row.size() && c < kColumns - 1; ++c) {
                int64_t& low = c == kColumns - 2 ? yearLow : monthLow;
                int64_t& high = c == kColumns - 2 ? yearHigh : monthHigh;
                low = std::min(low, row[c]);
                high = std::max(high, row[c]);
            }
    const auto widthOf = [&](int64_t low, int64_t high) {
        return std::max(metrics.horizontalAdvance(groupedKingaku(low)), metrics.horizontalAdvance(groupedKingaku(high))) + 10;
    };
    const int month = widthOf(monthLow, monthHigh), year = widthOf(yearLow, yearHigh);
    for (QTableView* table : tables()) {
        QHeaderView* header = table->horizontalHeader();
        header->resizeSection(0, std::min(label, most) + 16);
        for (int c = 1; c < kColumns; ++c) header->resizeSection(c, c == kColumns - 1 ? year : month);
    }
}

void AnnualReportViewController::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    viewWillAppear();
}

void AnnualReportViewController::viewWillAppear()
{
    if (firstApper) return;
    firstApper = true;
    if (DM.readYearsFromItemsTable()) {
        // The combo box would pick the first year by itself: start with none.
        const QSignalBlocker quiet(ui->cmbYears);
        yearsModel->reload();
        ui->cmbYears->setCurrentIndex(-1);
        return;
    }
    // Closing from inside the show would leave a running exec() waiting.
    QMetaObject::invokeMethod(this, &QDialog::reject, Qt::QueuedConnection);
}

int AnnualReportViewController::numberOfItems() const
{
    return static_cast<int>(DM.yearsList.size());
}

int AnnualReportViewController::numberOfRows(int tag) const
{
    switch (tag) {
    case kIncomeTag:
        return static_cast<int>(std::min(DM.annualInNameList.size(), DM.annualInDataList.size()));
    case kExpenseTag:
        return static_cast<int>(std::min(DM.annualOutNameList.size(), DM.annualOutDataList.size()));
    default:
        return static_cast<int>(std::min(DM.annualTotalNameList.size(), DM.annualTotalDataList.size()));
    }
}

QString AnnualReportViewController::cellText(int tag, int row, const std::string& identifier) const
{
    const auto found = dicColNo.find(identifier);
    if (found == dicColNo.end()) return {};
    const bool in = tag == kIncomeTag, out = tag == kExpenseTag;
    const auto& names = in ? DM.annualInNameList : out ? DM.annualOutNameList : DM.annualTotalNameList;
    const auto& data = in ? DM.annualInDataList : out ? DM.annualOutDataList : DM.annualTotalDataList;
    const auto r = static_cast<size_t>(row);
    if (found->second == 0) return QString::fromStdString(names[r]);
    return groupedKingaku(data[r][static_cast<size_t>(found->second - 1)]);
}

void AnnualReportViewController::comboBoxSelectionDidChange()
{
    const int index = ui->cmbYears->currentIndex();
    if (index < 0 || index >= numberOfItems()) return;
    yearComputed = DM.annualInOutFromItemsTable(DM.yearsList[static_cast<size_t>(index)]);
    ui->btnCSV->setEnabled(yearComputed);
    ui->btnPDF->setEnabled(yearComputed);
    if (!yearComputed) return;
    for (ListTableModel* model : tableModels) model->reload();
    fitColumns();
    const std::string& year = DM.yearsList[static_cast<size_t>(index)];
    charts->showYear(year, annualMonthsNote(DM, year));
    showMonthSetting();
}

void AnnualReportViewController::showMonthSetting()
{
    const auto year = exportableYear();
    const std::string note = year ? annualMonthsNote(DM, *year) : std::string();
    ui->lblMonthSetting->setText(
        QString::fromStdString(note.empty() ? householdMonthSettingLabel(DM.householdMonths.setting()) : note));
}

std::optional<std::string> AnnualReportViewController::exportableYear() const
{
    const int index = ui->cmbYears->currentIndex();
    if (!yearComputed || index < 0 || index >= numberOfItems()) return std::nullopt;
    return DM.yearsList[static_cast<size_t>(index)];
}

void AnnualReportViewController::btnCSV()
{
    const auto year = exportableYear();
    if (!year) return;
    // Household months are named in the date field; calendar months leave it as it was.
    const std::string note = annualMonthsNote(DM, *year);
    const std::string dateField = reportDateStamp() + (note.empty() ? "" : "\u3000" + note);
    saveReportCsv(annualReportCsv(*year, dateField, DM), proposedName(*year), "annual report csv write error \n");
}

void AnnualReportViewController::btnPDF()
{
    const auto year = exportableYear();
    if (!year) return;
    PdfDocument document;
    size_t index = 0;
    for (auto& page : annualReportPages(*year, annualReportRows(DM), reportDateStamp, annualMonthsNote(DM, *year)))
        document.insertPage(std::move(page), index++);
    saveReportPdf(document, proposedName(*year));
}
