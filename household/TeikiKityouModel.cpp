#include "household/TeikiKityouModel.h"

#include <QColor>

#include "household/TeikiTexts.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "ui/AmountText.h"

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

}  // namespace

TeikiKityouModel::TeikiKityouModel(const DataModel& dm, const std::vector<TeikiOccurrence>& due, QObject* parent)
    : QAbstractTableModel(parent), dm(dm)
{
    for (const TeikiOccurrence& o : due) {
        const Teiki* teiki = findById(dm.teikiList, dm.teikiId2Idx, o.teikiNo);
        if (!teiki) continue;
        rows_.push_back({o, *teiki, true, QString::number(teiki->Kingaku)});
    }
}

int TeikiKityouModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TeikiKityouModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumns;
}

std::optional<int64_t> TeikiKityouModel::kingakuOf(const Row& row)
{
    return kingakuFromText(trimmedAmountText(row.kingakuText));
}

QVariant TeikiKityouModel::display(const Row& row, int column) const
{
    switch (column) {
    case kHizuke: return q(dayWithWeekday(row.due.occurrence.posting));
    case kSisan: return q(sisanNamaeOrGone(dm, row.teiki.SisanNo));
    case kSyubetu: return q(teikiSyubetuText(row.teiki.SyubetuNo));
    case kNaiyou: return q(teikiNaiyou(dm, row.teiki));
    case kKingaku: {
        const auto kingaku = kingakuOf(row);
        return kingaku ? groupedKingaku(*kingaku) : row.kingakuText;
    }
    default: return {};
    }
}

QVariant TeikiKityouModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Row& row = rows_[static_cast<size_t>(index.row())];
    const bool kingakuColumn = index.column() == kKingaku;
    switch (role) {
    case Qt::DisplayRole:
        return display(row, index.column());
    case Qt::EditRole:
        return kingakuColumn ? QVariant(row.kingakuText) : display(row, index.column());
    case Qt::CheckStateRole:
        if (index.column() != kHizuke) return {};
        return row.checked ? Qt::Checked : Qt::Unchecked;
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (kingakuColumn ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::ForegroundRole:
        return kingakuColumn && !kingakuOf(row) ? QVariant(QColor(0xc0, 0x00, 0x00)) : QVariant();
    case Qt::ToolTipRole:
        if (kingakuColumn && !kingakuOf(row)) return QStringLiteral("金額の欄に不正なデータがあります");
        if (index.column() == kHizuke && row.due.occurrence.posting != row.due.occurrence.scheduled)
            return QStringLiteral("予定日 ") + q(dayWithWeekday(row.due.occurrence.scheduled)) +
                   QStringLiteral(" が土日祝日のため、この日に記帳します");
        return {};
    default:
        return {};
    }
}

bool TeikiKityouModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return false;
    Row& row = rows_[static_cast<size_t>(index.row())];
    if (role == Qt::CheckStateRole && index.column() == kHizuke) {
        row.checked = static_cast<Qt::CheckState>(value.toInt()) == Qt::Checked;
    } else if (role == Qt::EditRole && index.column() == kKingaku) {
        row.kingakuText = value.toString();
        row.checked = true;  // a changed amount is meant to be posted
    } else {
        return false;
    }
    emit dataChanged(this->index(index.row(), 0), this->index(index.row(), kColumns - 1));
    return true;
}

void TeikiKityouModel::toggle(int row)
{
    if (row < 0 || row >= rowCount()) return;
    setData(index(row, kHizuke), rows_[static_cast<size_t>(row)].checked ? Qt::Unchecked : Qt::Checked,
            Qt::CheckStateRole);
}

Qt::ItemFlags TeikiKityouModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.column() == kHizuke) flags |= Qt::ItemIsUserCheckable;
    if (index.column() == kKingaku) flags |= Qt::ItemIsEditable;
    return flags;
}

QVariant TeikiKityouModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumns) return {};
    static const char* const kTitles[] = {"日付", "資産", "種別", "内容", "金額"};
    if (role == Qt::DisplayRole) return QString::fromUtf8(kTitles[section]);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::AlignVCenter | (section == kKingaku ? Qt::AlignRight : Qt::AlignLeft));
    return {};
}
