#include "household/YosanViewController.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeySequence>
#include <QShortcut>

#include "editors/EditorWidgets.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/BoxKeys.h"
#include "ui/HouseholdDates.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_YosanViewController.h"

namespace {

const QString kKingakuInvalid = QStringLiteral("金額の欄に不正なデータがあります");
const QString kRedBorder = QStringLiteral("QLineEdit { border: 2px solid red; }");

QString amountText(const std::optional<int64_t>& amount)
{
    return amount ? groupedKingaku(*amount) : QString();
}

}  // namespace

YosanViewController::YosanViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::YosanViewController>())
{
    ui->setupUi(this);
    for (int m = 0; m < 12; ++m)
        monthFields[static_cast<size_t>(m)] = findChild<QLineEdit*>(QStringLiteral("txtYosanTuki%1").arg(m + 1));
    buildRows();
    model = new ListTableModel(
        [this] { return static_cast<int>(rows.size()); },
        {{"yosanHimoku", QStringLiteral("費目"), false,
          [this](int r) {
              const Row& row = rows[static_cast<size_t>(r)];
              return (row.depth ? QStringLiteral("\u3000\u3000") : QString()) + row.name;
          }},
         {"yosanKingaku", QStringLiteral("毎月"), true,
          [this](int r) { return everyMonthText(rows[static_cast<size_t>(r)].himokuNo); }},
         {"yosanTuki", QStringLiteral("月ごとの予算"), false,
          [this](int r) { return monthsText(rows[static_cast<size_t>(r)].himokuNo); }}},
        {}, this);
    ui->tblYosan->setModel(model);
    layOutColumns();
    connect(ui->tblYosan->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &YosanViewController::selectionChanged);
    connect(ui->btnYosanOK, &QPushButton::clicked, this, &YosanViewController::btnYosanOK);
    connect(ui->btnYosanCancel, &QPushButton::clicked, this, &YosanViewController::btnYosanCancel);
    connect(ui->btnYosanClear, &QPushButton::clicked, this, &YosanViewController::btnYosanClear);
    connect(ui->btnYosanClose, &QPushButton::clicked, this, &QDialog::accept);
    bindBoxKeys(ui->yosanBox, [this] { btnYosanOK(); }, [this] { btnYosanCancel(); });
    // Enter or a double click on a row goes on to its amount.
    const auto toAmount = [this] {
        ui->txtYosanKingaku->setFocus();
        ui->txtYosanKingaku->selectAll();
    };
    connect(ui->tblYosan, &QAbstractItemView::doubleClicked, this, toAmount);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter})
        connect(new QShortcut(QKeySequence(key), ui->tblYosan, nullptr, nullptr, Qt::WidgetShortcut),
                &QShortcut::activated, this, toAmount);
    ui->tblYosan->selectRow(0);
    ui->tblYosan->setFocus();
}

YosanViewController::~YosanViewController() = default;

void YosanViewController::buildRows()
{
    rows.clear();
    rows.push_back({kYosanTotal, QStringLiteral("月の合計"), 0});
    for (const auto& himoku : DM.himokuList) {
        if (himoku->SyubetuNo != kSyubetuSisyutu) continue;
        const bool category = himoku->Ucount > 0 || himoku->Hno == himoku->Id;
        const QString name = qText(himoku->Namae);
        rows.push_back({himoku->Id, category ? name : name.section(u'/', 1), category ? 0 : 1});
    }
}

void YosanViewController::layOutColumns()
{
    QTableView* table = ui->tblYosan;
    const QFontMetrics metrics(table->font());
    QHeaderView* header = table->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::Interactive);
    header->resizeSection(0, 14 * metrics.horizontalAdvance(QChar(0x4E00)));
    header->resizeSection(1, metrics.horizontalAdvance(QStringLiteral("9,999,999,999")) + 24);
    header->setSectionResizeMode(2, QHeaderView::Stretch);
    setRowHeights(table);
}

const YosanViewController::Row* YosanViewController::selectedRow() const
{
    const int row = ::selectedRow(ui->tblYosan);
    return row >= 0 && row < static_cast<int>(rows.size()) ? &rows[static_cast<size_t>(row)] : nullptr;
}

QString YosanViewController::everyMonthText(int64_t himokuNo) const
{
    for (const Yosan& y : DM.yosanList)
        if (y.HimokuNo == himokuNo && y.Tuki == kYosanEveryMonth) return groupedKingaku(y.Kingaku);
    return {};
}

QString YosanViewController::monthsText(int64_t himokuNo) const
{
    QStringList months;
    for (const Yosan& y : DM.yosanList)
        if (y.HimokuNo == himokuNo && y.Tuki != kYosanEveryMonth)
            months << QStringLiteral("%1月 %2").arg(y.Tuki).arg(groupedKingaku(y.Kingaku));
    return months.join(QStringLiteral("、"));
}

void YosanViewController::selectionChanged()
{
    const Row* row = selectedRow();
    ui->yosanBox->setEnabled(row != nullptr);
    ui->yosanBox->setTitle(row ? row->name + QStringLiteral("の予算") : QString());
    std::optional<int64_t> everyMonth;
    std::array<std::optional<int64_t>, 12> months{};
    if (row) {
        for (const Yosan& y : DM.yosanList) {
            if (y.HimokuNo != row->himokuNo) continue;
            if (y.Tuki == kYosanEveryMonth) everyMonth = y.Kingaku;
            if (y.Tuki >= 1 && y.Tuki <= 12) months[static_cast<size_t>(y.Tuki - 1)] = y.Kingaku;
        }
    }
    ui->txtYosanKingaku->setText(amountText(everyMonth));
    ui->txtYosanKingaku->setStyleSheet({});
    for (size_t m = 0; m < monthFields.size(); ++m) {
        monthFields[m]->setText(amountText(months[m]));
        monthFields[m]->setStyleSheet({});
    }
}

bool YosanViewController::readField(QLineEdit* field, std::optional<int64_t>& amount)
{
    const QString text = trimmedAmountText(field->text()).remove(u',');
    amount.reset();
    if (text.isEmpty()) return true;
    amount = kingakuFromText(text);
    if (amount) return true;
    field->setStyleSheet(kRedBorder);
    field->setFocus();
    messageService().someMessageWithAlert(kKingakuInvalid, QStringLiteral("information"));
    return false;
}

bool YosanViewController::btnYosanOK()
{
    const Row* row = selectedRow();
    if (!row) return false;
    std::optional<int64_t> everyMonth;
    std::array<std::optional<int64_t>, 12> months{};
    if (!readField(ui->txtYosanKingaku, everyMonth)) return false;
    for (size_t m = 0; m < monthFields.size(); ++m)
        if (!readField(monthFields[m], months[m])) return false;
    // A month with the every-month amount differs from it in nothing.
    for (auto& month : months)
        if (month && month == everyMonth) month.reset();
    const int at = ::selectedRow(ui->tblYosan);
    if (!DM.yosanReplace(row->himokuNo, everyMonth, months)) return false;
    changedSw = true;
    model->reload();
    ui->tblYosan->selectRow(at);
    selectionChanged();
    ui->tblYosan->setFocus();
    return true;
}

void YosanViewController::btnYosanCancel()
{
    selectionChanged();
    ui->tblYosan->setFocus();
}

void YosanViewController::btnYosanClear()
{
    const Row* row = selectedRow();
    if (!row) return;
    const int at = ::selectedRow(ui->tblYosan);
    if (!DM.yosanReplace(row->himokuNo, std::nullopt, {})) return;
    changedSw = true;
    model->reload();
    ui->tblYosan->selectRow(at);
    selectionChanged();
}
