#include "import/ImportPreviewDialog.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QSignalBlocker>

#include "import/CardStatementCheck.h"
#include "import/ImportPlan.h"
#include "import/ImportPreviewModel.h"
#include "import/Matching.h"
#include "ui/AmountText.h"
#include "ui/FitToScreen.h"
#include "ui/MessageService.h"
#include "ui_ImportPreviewDialog.h"

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

// The combo box's value: a sub-item's Id, or minus the partner asset's Id.
int64_t transferValue(int64_t sisanId)
{
    return -sisanId;
}

}  // namespace

ImportPreviewDialog::ImportPreviewDialog(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::ImportPreviewDialog>())
{
    ui->setupUi(this);
    model = new ImportPreviewModel(this);
    ui->tblImportRows->setModel(model);
    ui->tblImportRows->installEventFilter(this);
    QFont title = ui->lblImportLayout->font();
    title.setBold(true);
    title.setPointSizeF(title.pointSizeF() * 1.2);
    ui->lblImportLayout->setFont(title);
    layOutColumns();
    fitToScreen(this);

    connect(ui->tblImportRows->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &ImportPreviewDialog::refreshHimokuCombo);
    connect(ui->cmbImportSisan, &QComboBox::activated, this, [this](int index) {
        emit sisanChosen(ui->cmbImportSisan->itemData(index).toLongLong());
    });
    connect(ui->cmbImportHimoku, &QComboBox::currentIndexChanged, this, [this] {
        const bool himoku = ui->cmbImportHimoku->currentData().toLongLong() > 0;
        ui->btnImportSetDefault->setEnabled(himoku);
    });
    connect(ui->btnImportSetRows, &QPushButton::clicked, this, [this] { applyToRows(selectedRows()); });
    connect(ui->btnImportSetSameText, &QPushButton::clicked, this, &ImportPreviewDialog::applyToSameText);
    connect(ui->btnImportSetDefault, &QPushButton::clicked, this, &ImportPreviewDialog::applyAsDefault);
    connect(ui->btnImportOk, &QPushButton::clicked, this, &ImportPreviewDialog::tryAccept);
    connect(ui->btnImportCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(model, &QAbstractItemModel::dataChanged, this, &ImportPreviewDialog::refreshSummary);
}

ImportPreviewDialog::~ImportPreviewDialog() = default;

void ImportPreviewDialog::layOutColumns()
{
    // Widths from the font, never from the rows: a statement may have a million.
    const QFontMetrics m(font());
    QHeaderView* header = ui->tblImportRows->horizontalHeader();
    const auto width = [&](const char* sample) { return m.horizontalAdvance(QString::fromUtf8(sample)) + 24; };
    header->resizeSection(ImportPreviewModel::Check, width("取込"));
    header->resizeSection(ImportPreviewModel::Hizuke, width("0000-00-00"));
    header->resizeSection(ImportPreviewModel::Text, width("ＡＭＡＺＯＮ．ＣＯ．ＪＰ ＭＡＲＫＥＴ"));
    header->resizeSection(ImportPreviewModel::Nyuukin, width("9,999,999,999"));
    header->resizeSection(ImportPreviewModel::Syukkin, width("9,999,999,999"));
    header->resizeSection(ImportPreviewModel::Assignment, width("水道光熱費/電気代電気代"));
    header->resizeSection(ImportPreviewModel::Status, width("重複の可能性"));
    header->setStretchLastSection(true);
    ui->tblImportRows->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ui->tblImportRows->verticalHeader()->setDefaultSectionSize(m.height() + 8);
}

void ImportPreviewDialog::showFile(const QString& layout, const QString& details, int position, int count)
{
    ui->lblImportLayout->setText(QStringLiteral("「%1」").arg(layout));
    ui->lblImportFile->setText(details);
    setWindowTitle(count > 1 ? QStringLiteral("明細の取り込み (%1/%2)").arg(position).arg(count)
                             : QStringLiteral("明細の取り込み"));
}

void ImportPreviewDialog::showSisans(const std::vector<ContextSisan>& sisans, int64_t chosen)
{
    const QSignalBlocker quiet(ui->cmbImportSisan);
    ui->cmbImportSisan->clear();
    for (const ContextSisan& s : sisans) {
        ui->cmbImportSisan->addItem(q(s.namae), QVariant::fromValue<qlonglong>(s.id));
        if (s.id == chosen) ui->cmbImportSisan->setCurrentIndex(ui->cmbImportSisan->count() - 1);
    }
}

void ImportPreviewDialog::showPlan(ImportPlan* plan)
{
    model->setPlan(plan);
    for (QWidget* w : std::initializer_list<QWidget*>{ui->tblImportRows, ui->cmbImportHimoku, ui->btnImportSetRows,
                                                      ui->btnImportSetSameText, ui->btnImportSetDefault,
                                                      ui->btnImportOk, ui->cmbImportSisan})
        w->setEnabled(plan != nullptr);
    if (!plan) {
        ui->lblImportSummary->setText(QStringLiteral("照合しています…"));
        return;
    }
    QStringList checks;
    const BilledTotalCheck billed = checkBilledTotal(plan->statement());
    if (!billed.matches()) checks << q(billed.message());
    if (const std::string refusal = plan->refusal(); !refusal.empty()) checks << q(refusal);
    ui->lblImportCheck->setText(checks.join(QLatin1Char('\n')));
    if (model->rowCount() > 0) {
        ui->tblImportRows->setCurrentIndex(model->index(0, ImportPreviewModel::Check));
        ui->tblImportRows->selectRow(0);
    }
    ui->tblImportRows->setFocus();
    refreshHimokuCombo();
    refreshSummary();
}

int ImportPreviewDialog::currentRow() const
{
    return ui->tblImportRows->currentIndex().row();
}

std::vector<size_t> ImportPreviewDialog::selectedRows() const
{
    std::vector<size_t> rows;
    for (const QModelIndex& index : ui->tblImportRows->selectionModel()->selectedRows())
        rows.push_back(static_cast<size_t>(index.row()));
    std::sort(rows.begin(), rows.end());
    if (rows.empty() && currentRow() >= 0) rows.push_back(static_cast<size_t>(currentRow()));
    return rows;
}

void ImportPreviewDialog::refreshHimokuCombo()
{
    ImportPlan* plan = model->plan();
    const QSignalBlocker quiet(ui->cmbImportHimoku);
    const int64_t previous = ui->cmbImportHimoku->currentData().toLongLong();
    ui->cmbImportHimoku->clear();
    const int row = currentRow();
    if (!plan || row < 0) return;
    // The sub-items of the row's kind, then the transfers to the other assets.
    const size_t i = static_cast<size_t>(row);
    const int64_t kind = plan->syubetuOf(i);
    for (const ContextHimoku& h : plan->context().himokus)
        if (h.syubetuNo == kind) ui->cmbImportHimoku->addItem(q(h.namae), QVariant::fromValue<qlonglong>(h.id));
    for (const ContextSisan& s : plan->context().sisans)
        if (s.id != plan->context().sisanId)
            ui->cmbImportHimoku->addItem(QStringLiteral("振替: %1").arg(q(s.namae)),
                                         QVariant::fromValue<qlonglong>(transferValue(s.id)));
    const PlannedRow& p = plan->rows()[i];
    const int64_t shown = p.partnerSisanId ? transferValue(p.partnerSisanId) : p.himokuNo ? p.himokuNo : previous;
    const int at = ui->cmbImportHimoku->findData(QVariant::fromValue<qlonglong>(shown));
    ui->cmbImportHimoku->setCurrentIndex(at >= 0 ? at : 0);
    ui->btnImportSetDefault->setEnabled(ui->cmbImportHimoku->currentData().toLongLong() > 0);
}

void ImportPreviewDialog::applyToRows(const std::vector<size_t>& rows)
{
    ImportPlan* plan = model->plan();
    if (!plan || rows.empty() || ui->cmbImportHimoku->currentIndex() < 0) return;
    const int64_t value = ui->cmbImportHimoku->currentData().toLongLong();
    if (value > 0)
        plan->setHimoku(rows, value);
    else
        plan->setTransfer(rows, -value);
    model->rowsChanged(rows);
}

void ImportPreviewDialog::applyToSameText()
{
    if (model->plan() && currentRow() >= 0) applyToRows(model->plan()->sameText(static_cast<size_t>(currentRow())));
}

void ImportPreviewDialog::applyAsDefault()
{
    ImportPlan* plan = model->plan();
    const int64_t value = ui->cmbImportHimoku->currentData().toLongLong();
    if (!plan || value <= 0) return;
    plan->setLayoutDefault(value);
    model->rowsChanged();
}

void ImportPreviewDialog::toggleSelected()
{
    ImportPlan* plan = model->plan();
    const int row = currentRow();
    if (!plan || row < 0) return;
    const std::vector<size_t> rows = selectedRows();
    plan->setChecked(rows, !plan->rows()[static_cast<size_t>(row)].checked);
    model->rowsChanged(rows);
}

void ImportPreviewDialog::refreshSummary()
{
    const ImportPlan* plan = model->plan();
    if (!plan) return;
    const ImportSummary s = plan->summary();
    const int64_t fresh = s.read - s.already - s.possibleDuplicates - s.transfers - s.refused;
    QString text = QStringLiteral("読み込み %1行：新規 %2・取込済み %3・重複の可能性 %4・振替候補 %5・読めない行 %6")
                       .arg(s.read)
                       .arg(fresh)
                       .arg(s.already)
                       .arg(s.possibleDuplicates)
                       .arg(s.transfers)
                       .arg(s.refused);
    text += QStringLiteral("\n取り込む行 %1行（収入 %2円、支出 %3円）")
                .arg(s.imported)
                .arg(groupedKingaku(s.income), groupedKingaku(s.expense));
    if (s.unassigned > 0) text += QStringLiteral("　費目・振替先の未設定 %1行").arg(s.unassigned);
    // A card's statement against its period in the book, as the ticks leave it.
    if (const std::optional<CardStatementPeriod>& card = plan->context().cardPeriod)
        text += u'\n' + q(checkCardStatement(*plan, *card).message(card->period));
    ui->lblImportSummary->setText(text);
}

void ImportPreviewDialog::say(const QString& message)
{
    messageService().someMessageWithAlert(message, QStringLiteral("information"));
}

void ImportPreviewDialog::tryAccept()
{
    ImportPlan* plan = model->plan();
    if (!plan) return;
    if (const std::string refusal = plan->refusal(); !refusal.empty()) return say(q(refusal));
    const ImportSummary s = plan->summary();
    if (s.imported == 0) return say(QStringLiteral("取り込む行がありません。取り込む行にチェックを付けてください。"));
    if (s.unassigned > 0) {
        const int row = static_cast<int>(plan->firstUnassigned());
        ui->tblImportRows->setCurrentIndex(model->index(row, ImportPreviewModel::Assignment));
        ui->tblImportRows->selectRow(row);
        ui->tblImportRows->setFocus();
        return say(QStringLiteral("費目・振替先の決まっていない行が %1行あります。選んでから取り込んでください。")
                       .arg(s.unassigned));
    }
    accept();
}

bool ImportPreviewDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->tblImportRows && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
            toggleSelected();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}
