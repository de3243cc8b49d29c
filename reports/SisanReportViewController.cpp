#include "reports/SisanReportViewController.h"

#include <QHeaderView>

#include "charts/SisanHistoryChartView.h"
#include "reports/PdfDocument.h"
#include "reports/ReportCsv.h"
#include "reports/ReportExport.h"
#include "reports/SisanReportPDFPage.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/FitToScreen.h"
#include "ui/Clock.h"
#include "ui/ListTableModel.h"
#include "ui/StoreTableModels.h"
#include "ui_SisanReportViewController.h"

namespace {

// The file name the save dialog proposes: the report of today.
QString proposedName()
{
    return QStringLiteral("資産レポート_") + fileDateStamp(currentDateTime().date());
}

}  // namespace

SisanReportViewController::SisanReportViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::SisanReportViewController>())
{
    ui->setupUi(this);
    viewDidLoad();
    fitToScreen(this);
}

SisanReportViewController::~SisanReportViewController() = default;

void SisanReportViewController::viewDidLoad()
{
    model = makeSisanTableModel(DM, this);
    ui->tblReportSisan->setModel(model);
    layOutColumns();
    // The history chart reads the book when its tab is first shown.
    ui->chartsLayout->addWidget(new SisanHistoryChartView(DM, ui->tabCharts));
    ui->lblTotal->setText(groupedKingaku(DM.GrandTotalSisan));
    connect(ui->btnSisanCSV, &QPushButton::clicked, this, &SisanReportViewController::btnSisanCSV);
    connect(ui->btnSisanPDF, &QPushButton::clicked, this, &SisanReportViewController::btnSisanPDF);
}

void SisanReportViewController::layOutColumns()
{
    const QFontMetrics metrics(font());
    QHeaderView* header = ui->tblReportSisan->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    header->setSectionResizeMode(1, QHeaderView::Fixed);
    header->resizeSection(1, metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24);
    ui->tblReportSisan->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ui->tblReportSisan->verticalHeader()->setDefaultSectionSize(metrics.height() + 10);
    QFont total = ui->lblTotal->font();
    total.setBold(true);
    ui->lblTotal->setFont(total);
}

void SisanReportViewController::btnSisanCSV()
{
    saveReportCsv(sisanReportCsv(DM, reportDateStamp()), proposedName(), "sisan report csv write error \n");
}

void SisanReportViewController::btnSisanPDF()
{
    PdfDocument document;
    size_t index = 0;
    for (auto& page : sisanReportPages(DM.sisanList, DM.GrandTotalSisan, reportDateStamp))
        document.insertPage(std::move(page), index++);
    saveReportPdf(document, proposedName());
}
