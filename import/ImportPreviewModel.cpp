#include "import/ImportPreviewModel.h"

#include <QBrush>
#include <QColor>

#include "import/ImportPlan.h"
#include "ui/AmountText.h"

namespace {

QString q(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString dateText(const ImportDate& date)
{
    return date.isNull() ? QString() : QString::fromStdString(date.hizuke());
}

const QColor kRefused(0xb0, 0x00, 0x20);
const QColor kMissing(0xc0, 0x40, 0x00);

}  // namespace

ImportPreviewModel::ImportPreviewModel(QObject* parent) : QAbstractTableModel(parent) {}

void ImportPreviewModel::setPlan(ImportPlan* plan)
{
    beginResetModel();
    plan_ = plan;
    endResetModel();
}

void ImportPreviewModel::rowsChanged(const std::vector<size_t>& rows)
{
    const int count = rowCount();
    if (count == 0) return;
    if (rows.empty()) {
        emit dataChanged(index(0, 0), index(count - 1, ColumnCount - 1));
        return;
    }
    for (const size_t r : rows) {
        const int row = static_cast<int>(r);
        emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    }
}

int ImportPreviewModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !plan_ ? 0 : static_cast<int>(plan_->rows().size());
}

int ImportPreviewModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ImportPreviewModel::display(int row, int column) const
{
    const size_t i = static_cast<size_t>(row);
    const StatementRow& r = plan_->source(i);
    const StatementFile& s = plan_->statement();
    switch (column) {
    case Hizuke: return dateText(r.date);
    case Text: return q(s.text(r.text));
    case Nyuukin: return r.kind == RowKind::Entry && r.kingaku > 0 ? groupedKingaku(r.kingaku) : QString();
    case Syukkin: return r.kind == RowKind::Entry && r.kingaku < 0 ? groupedKingaku(-r.kingaku) : QString();
    case Assignment: {
        const PlannedRow& p = plan_->rows()[i];
        if (p.checked && !p.assigned()) return QStringLiteral("（未設定）");
        return QString::fromStdString(plan_->assignmentText(i));
    }
    case Status: return QString::fromUtf8(statusName(plan_->rows()[i].status));
    case Match: return QString::fromStdString(plan_->matchText(i));
    default: return {};
    }
}

QVariant ImportPreviewModel::foreground(int row, int column) const
{
    const PlannedRow& p = plan_->rows()[static_cast<size_t>(row)];
    if (p.status == MatchStatus::Unreadable) return QBrush(kRefused);
    if (column == Assignment && p.checked && !p.assigned()) return QBrush(kMissing);
    if (!p.checked) return QBrush(QColor(Qt::gray));
    return {};
}

QVariant ImportPreviewModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const int row = index.row();
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return display(row, column);
    case Qt::ToolTipRole:
        return column == Text || column == Match ? display(row, column) : QVariant();
    case Qt::CheckStateRole:
        if (column != Check) return {};
        return plan_->rows()[static_cast<size_t>(row)].checked ? Qt::Checked : Qt::Unchecked;
    case Qt::ForegroundRole:
        return foreground(row, column);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (column == Nyuukin || column == Syukkin ? Qt::AlignRight : Qt::AlignLeft));
    default:
        return {};
    }
}

bool ImportPreviewModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || index.column() != Check || role != Qt::CheckStateRole)
        return false;
    const bool checked = value.value<Qt::CheckState>() == Qt::Checked;
    if (plan_->setChecked({static_cast<size_t>(index.row())}, checked) == 0) return false;
    rowsChanged({static_cast<size_t>(index.row())});
    return true;
}

Qt::ItemFlags ImportPreviewModel::flags(const QModelIndex& index) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::IndexIsValid)) return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == Check && plan_->rows()[static_cast<size_t>(index.row())].checkable) f |= Qt::ItemIsUserCheckable;
    return f;
}

QVariant ImportPreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::AlignVCenter |
                                   (section == Nyuukin || section == Syukkin ? Qt::AlignRight : Qt::AlignLeft));
    if (role != Qt::DisplayRole) return {};
    static const char* const titles[] = {"取込", "日付", "内容", "入金", "出金", "費目・振替先", "状態", "照合・理由"};
    return QString::fromUtf8(titles[section]);
}
