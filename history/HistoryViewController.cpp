#include "history/HistoryViewController.h"

#include <QDateTime>
#include <QHeaderView>
#include <QItemSelectionModel>

#include "ui/AmountText.h"
#include "ui/ListTableModel.h"
#include "ui_HistoryViewController.h"

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

ListTableModel* makeHistoryModel(const DataModel& dm, QObject* parent)
{
    const auto entry = [&dm](int r) -> const HistoryEntry& { return dm.historyList[static_cast<size_t>(r)]; };
    return new ListTableModel(
        [&dm] { return static_cast<int>(dm.historyList.size()); },
        {{"At", QStringLiteral("日時"), false,
          [entry](int r) {
              return QDateTime::fromMSecsSinceEpoch(entry(r).At).toString(QStringLiteral("yyyy/MM/dd HH:mm"));
          }},
         {"Label", QStringLiteral("操作"), false, [entry](int r) { return q(entry(r).Label); }},
         {"Sisans", QStringLiteral("資産"), false, [entry](int r) { return q(entry(r).Sisans); }},
         {"Changes", QStringLiteral("行数"), true,
          [entry](int r) { return groupedKingaku(entry(r).Changes); }}},
        [entry](int r) { return q(entry(r).Label); }, parent);
}

ListTableModel* makeRowsModel(const std::vector<HistoryRowView>& rows, QObject* parent)
{
    const auto row = [&rows](int r) -> const HistoryRowView& { return rows[static_cast<size_t>(r)]; };
    return new ListTableModel(
        [&rows] { return static_cast<int>(rows.size()); },
        {{"change", QStringLiteral("変更"), false, [row](int r) { return q(row(r).change); }},
         {"kind", QStringLiteral("種類"), false, [row](int r) { return q(row(r).kind); }},
         {"Hizuke", QStringLiteral("日付"), false, [row](int r) { return q(row(r).hizuke); }},
         {"sisan", QStringLiteral("資産"), false, [row](int r) { return q(row(r).sisan); }},
         {"himoku", QStringLiteral("費目・相手"), false, [row](int r) { return q(row(r).himoku); }},
         {"Nyuukin", QStringLiteral("入金"), true, [row](int r) { return q(row(r).nyuukin); }},
         {"Syukkin", QStringLiteral("出金"), true, [row](int r) { return q(row(r).syukkin); }},
         {"Bikou", QStringLiteral("備考"), false, [row](int r) { return q(row(r).bikou); }}},
        {}, parent);
}

}  // namespace

HistoryViewController::HistoryViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::HistoryViewController>())
{
    ui->setupUi(this);
    historyModel = makeHistoryModel(DM, this);
    rowsModel = makeRowsModel(rows, this);
    ui->tblHistory->setModel(historyModel);
    ui->tblHistoryRows->setModel(rowsModel);
    layOutColumns();
    wireActions();
    reloadHistory();
    ui->tblHistory->setFocus();
}

HistoryViewController::~HistoryViewController() = default;

void HistoryViewController::layOutColumns()
{
    // Widths from the font, never from the rows.
    const QFontMetrics metrics(font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    QHeaderView* history = ui->tblHistory->horizontalHeader();
    history->resizeSection(0, metrics.horizontalAdvance(QStringLiteral("0000/00/00 00:00")) + 24);
    history->setSectionResizeMode(1, QHeaderView::Stretch);
    history->resizeSection(2, metrics.horizontalAdvance(QStringLiteral("普通預金、クレジットカード")) + 24);
    history->resizeSection(3, metrics.horizontalAdvance(QStringLiteral("行数 000,000")));
    QHeaderView* changed = ui->tblHistoryRows->horizontalHeader();
    changed->resizeSection(0, metrics.horizontalAdvance(QStringLiteral("変更前")) + 24);
    changed->resizeSection(1, metrics.horizontalAdvance(QStringLiteral("種類")) + 24);
    changed->resizeSection(2, metrics.horizontalAdvance(QStringLiteral("0000-00-00")) + 24);
    changed->resizeSection(3, metrics.horizontalAdvance(QStringLiteral("クレジットカード")) + 24);
    changed->resizeSection(4, metrics.horizontalAdvance(QStringLiteral("水道光熱費/その他")) + 24);
    changed->resizeSection(5, amount);
    changed->resizeSection(6, amount);
    changed->setStretchLastSection(true);
    for (QTableView* table : {ui->tblHistory, ui->tblHistoryRows}) {
        table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setDefaultSectionSize(metrics.height() + 10);
    }
    ui->historySplitter->setStretchFactor(0, 3);
    ui->historySplitter->setStretchFactor(1, 2);
}

void HistoryViewController::wireActions()
{
    connect(ui->tblHistory->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { historySelected(current.row()); });
    connect(ui->chkSakujyoNomi, &QCheckBox::toggled, this, &HistoryViewController::reloadHistory);
    connect(ui->btnTorikesu, &QPushButton::clicked, this, &HistoryViewController::btnTorikesu);
    connect(ui->btnClose, &QPushButton::clicked, this, &QDialog::accept);
}

void HistoryViewController::reloadHistory()
{
    DM.readFromHistoryTable(ui->chkSakujyoNomi->isChecked());
    historyModel->reload();
    if (DM.historyList.empty()) {
        historySelected(-1);
        return;
    }
    ui->tblHistory->setCurrentIndex(historyModel->index(0, 0));
    historySelected(0);
}

void HistoryViewController::historySelected(int row)
{
    const bool chosen = row >= 0 && row < static_cast<int>(DM.historyList.size());
    rows.clear();
    if (chosen) DM.readHistoryRows(DM.historyList[static_cast<size_t>(row)].Id, rows);
    rowsModel->reload();
    ui->btnTorikesu->setEnabled(chosen);
}

int HistoryViewController::selectedHistoryRow() const
{
    const QModelIndex current = ui->tblHistory->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void HistoryViewController::btnTorikesu()
{
    const int row = selectedHistoryRow();
    if (row < 0 || row >= static_cast<int>(DM.historyList.size())) return;
    const HistoryEntry step = DM.historyList[static_cast<size_t>(row)];
    StepFocus focus;
    if (!DM.revertStep(step.Id, &focus)) return;  // the store has said why
    changedBook = true;
    lastFocus = focus;
    ui->lblHistoryStatus->setText(QStringLiteral("「%1」を取り消しました。").arg(q(step.Label)));
    // The revert is the newest operation now; with 削除のみ on, it is listed
    // only when it deleted rows.
    reloadHistory();
}
