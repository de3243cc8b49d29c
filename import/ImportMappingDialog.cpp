#include "import/ImportMappingDialog.h"

#include <QHeaderView>
#include <QRegularExpression>
#include <algorithm>

#include "import/StatementDate.h"
#include "ui/ListTableModel.h"
#include "ui/FitToScreen.h"
#include "ui/MessageService.h"
#include "ui_ImportMappingDialog.h"

namespace {

constexpr int kNone = -1;

}  // namespace

ImportMappingDialog::ImportMappingDialog(const QString& message, std::vector<CsvRecord> firstRecords, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::ImportMappingDialog>()), records(std::move(firstRecords))
{
    ui->setupUi(this);
    ui->lblMappingFile->setText(message);
    fitToScreen(this);
    for (const CsvRecord& r : records) columns = std::max(columns, static_cast<int>(r.fields.size()));

    // The file's line number, then its fields as written.
    std::vector<ListTableModel::Column> shown{{"", QStringLiteral("行"), true, [this](int row) {
                                                    return QString::number(records[static_cast<size_t>(row)].line);
                                                }}};
    for (int c = 0; c < columns; ++c)
        shown.push_back({"", QStringLiteral("列%1").arg(c + 1), false, [this, c](int row) {
                             const auto& fields = records[static_cast<size_t>(row)].fields;
                             return c < static_cast<int>(fields.size()) ? QString::fromStdString(fields[static_cast<size_t>(c)])
                                                                        : QString();
                         }});
    auto* model = new ListTableModel([this] { return static_cast<int>(records.size()); }, std::move(shown), {}, this);
    ui->tblMappingLines->setModel(model);
    ui->tblMappingLines->verticalHeader()->setVisible(false);
    ui->tblMappingLines->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ui->tblMappingLines->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    ui->tblMappingLines->horizontalHeader()->resizeSection(0, fontMetrics().horizontalAdvance(QStringLiteral("000")) + 16);
    ui->spnMappingHeaderLine->setMaximum(records.empty() ? 0 : static_cast<int>(records.back().line));

    ui->cmbMappingDateShape->addItem(QStringLiteral("日付の形: 自動"), DateShape::Any);
    ui->cmbMappingDateShape->addItem(QStringLiteral("2026/7/2・2026-07-02・2026.07.02"), DateShape::Slashed);
    ui->cmbMappingDateShape->addItem(QStringLiteral("20260702"), DateShape::Compact);
    ui->cmbMappingDateShape->addItem(QStringLiteral("2026年7月2日"), DateShape::Kanji);
    ui->cmbMappingDateShape->addItem(QStringLiteral("和暦 (R8.1.5)"), DateShape::Wareki);

    connect(ui->tblMappingLines->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) {
                if (current.isValid())
                    ui->spnMappingHeaderLine->setValue(static_cast<int>(records[static_cast<size_t>(current.row())].line));
            });
    connect(ui->spnMappingHeaderLine, &QSpinBox::valueChanged, this, [this] {
        showHeadings();
        guessColumns();
    });
    connect(ui->rdbMappingSigned, &QRadioButton::toggled, this, &ImportMappingDialog::showAmountShape);
    connect(ui->btnMappingOk, &QPushButton::clicked, this, &ImportMappingDialog::tryAccept);
    connect(ui->btnMappingCancel, &QPushButton::clicked, this, &QDialog::reject);

    // The first line is the usual place of the headings.
    ui->spnMappingHeaderLine->setValue(records.empty() ? 0 : static_cast<int>(records.front().line));
    showHeadings();
    guessColumns();
    showAmountShape();
    ui->tblMappingLines->setFocus();
}

ImportMappingDialog::~ImportMappingDialog() = default;

const CsvRecord* ImportMappingDialog::headerRecord() const
{
    const auto line = static_cast<uint32_t>(ui->spnMappingHeaderLine->value());
    const auto it = std::find_if(records.begin(), records.end(), [line](const CsvRecord& r) { return r.line == line; });
    return line == 0 || it == records.end() ? nullptr : &*it;
}

void ImportMappingDialog::showHeadings()
{
    const CsvRecord* header = headerRecord();
    for (QComboBox* combo : {ui->cmbMappingDate, ui->cmbMappingText, ui->cmbMappingAmount, ui->cmbMappingIn,
                             ui->cmbMappingOut, ui->cmbMappingNote}) {
        const int chosen = chosenColumn(combo);
        combo->clear();
        combo->addItem(QStringLiteral("（なし）"), kNone);
        for (int c = 0; c < columns; ++c) {
            QString text = QStringLiteral("列%1").arg(c + 1);
            if (header && c < static_cast<int>(header->fields.size()))
                text += QStringLiteral(": ") + QString::fromStdString(header->fields[static_cast<size_t>(c)]).trimmed();
            combo->addItem(text, c);
        }
        combo->setCurrentIndex(std::max(0, combo->findData(chosen)));
    }
}

void ImportMappingDialog::guessColumns()
{
    // A new heading line: every column is found again on it.
    for (QComboBox* combo : {ui->cmbMappingDate, ui->cmbMappingText, ui->cmbMappingAmount, ui->cmbMappingIn,
                             ui->cmbMappingOut, ui->cmbMappingNote})
        combo->setCurrentIndex(0);
    const CsvRecord* header = headerRecord();
    if (!header || header->fields.size() < 2) return;  // a title line names no columns
    const struct {
        QComboBox* combo;
        QRegularExpression heading;
    } guesses[] = {
        {ui->cmbMappingDate, QRegularExpression(QStringLiteral("日付|年月日|日$"))},
        {ui->cmbMappingText, QRegularExpression(QStringLiteral("摘要|内容|利用店|取引先|お取引"))},
        {ui->cmbMappingAmount, QRegularExpression(QStringLiteral("^(?!.*残高).*金額"))},
        {ui->cmbMappingIn, QRegularExpression(QStringLiteral("入金|預入|お預|受入"))},
        {ui->cmbMappingOut, QRegularExpression(QStringLiteral("出金|引出|支払|払出"))},
        {ui->cmbMappingNote, QRegularExpression(QStringLiteral("メモ|備考"))},
    };
    for (const auto& g : guesses) {
        for (size_t c = 0; c < header->fields.size(); ++c) {
            if (!QString::fromStdString(header->fields[c]).contains(g.heading)) continue;
            g.combo->setCurrentIndex(g.combo->findData(static_cast<int>(c)));
            break;
        }
    }
    const bool inOut = chosenColumn(ui->cmbMappingAmount) == kNone && chosenColumn(ui->cmbMappingIn) != kNone;
    (inOut ? ui->rdbMappingInOut : ui->rdbMappingSigned)->setChecked(true);
}

void ImportMappingDialog::showAmountShape()
{
    const bool signedAmount = ui->rdbMappingSigned->isChecked();
    ui->cmbMappingAmount->setEnabled(signedAmount);
    ui->chkMappingPositiveIsExpense->setEnabled(signedAmount);
    ui->cmbMappingIn->setEnabled(!signedAmount);
    ui->cmbMappingOut->setEnabled(!signedAmount);
}

int ImportMappingDialog::chosenColumn(const QComboBox* combo)
{
    return combo->currentIndex() < 0 ? kNone : combo->currentData().toInt();
}

UserMapping ImportMappingDialog::mapping() const
{
    UserMapping m;
    m.name = ui->txtMappingName->text().trimmed().toStdString();
    m.headerLine = ui->spnMappingHeaderLine->value();
    if (const CsvRecord* header = headerRecord()) m.headings = header->fields;
    m.dateColumn = chosenColumn(ui->cmbMappingDate);
    m.dateShapes = ui->cmbMappingDateShape->currentData().toUInt();
    if (const int text = chosenColumn(ui->cmbMappingText); text != kNone) m.textColumns = {text};
    if (ui->rdbMappingSigned->isChecked()) {
        m.amountColumn = chosenColumn(ui->cmbMappingAmount);
        m.positiveIsExpense = ui->chkMappingPositiveIsExpense->isChecked();
    } else {
        m.inColumn = chosenColumn(ui->cmbMappingIn);
        m.outColumn = chosenColumn(ui->cmbMappingOut);
    }
    m.noteColumn = chosenColumn(ui->cmbMappingNote);
    return m;
}

void ImportMappingDialog::tryAccept()
{
    const UserMapping m = mapping();
    QString missing;
    if (m.dateColumn == kNone)
        missing = QStringLiteral("日付の列を選んでください。");
    else if (m.textColumns.empty())
        missing = QStringLiteral("内容の列を選んでください。");
    else if (ui->rdbMappingSigned->isChecked() && m.amountColumn == kNone)
        missing = QStringLiteral("金額の列を選んでください。");
    else if (!ui->rdbMappingSigned->isChecked() && (m.inColumn == kNone || m.outColumn == kNone || m.inColumn == m.outColumn))
        missing = QStringLiteral("入金の列と出金の列を、別々の列で選んでください。");
    else if (m.name.empty())
        missing = QStringLiteral("形式の名前を入力してください。次からはこの名前で読み込みます。");
    if (!missing.isEmpty()) {
        messageService().someMessageWithAlert(missing, QStringLiteral("information"));
        return;
    }
    accept();
}
