#include "ui/ListTableModel.h"

ListTableModel::ListTableModel(std::function<int()> rows, std::vector<Column> columns,
                               std::function<QString(int)> toolTip, QObject* parent)
    : QAbstractTableModel(parent), rows(std::move(rows)), columns(std::move(columns)), toolTip(std::move(toolTip))
{
}

int ListTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows();
}

int ListTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns.size());
}

QVariant ListTableModel::alignment(int column) const
{
    const bool amount = columns[static_cast<size_t>(column)].amount;
    return QVariant::fromValue(Qt::AlignVCenter | (amount ? Qt::AlignRight : Qt::AlignLeft));
}

QVariant ListTableModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    switch (role) {
    case Qt::DisplayRole:
        return columns[static_cast<size_t>(index.column())].text(index.row());
    case Qt::TextAlignmentRole:
        return alignment(index.column());
    case Qt::ForegroundRole:
        return rowForeground ? rowForeground(index.row()) : QVariant();
    case Qt::ToolTipRole: {
        const QString tip = toolTip ? toolTip(index.row()) : QString();
        return tip.isEmpty() ? QVariant() : QVariant(tip);
    }
    default:
        return {};
    }
}

QVariant ListTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
    if (role == Qt::DisplayRole) return columns[static_cast<size_t>(section)].title;
    if (role == Qt::TextAlignmentRole) return alignment(section);
    return {};
}

std::string ListTableModel::columnIdentifier(int column) const
{
    if (column < 0 || column >= columnCount()) return {};
    return columns[static_cast<size_t>(column)].identifier;
}

void ListTableModel::reload()
{
    beginResetModel();
    endResetModel();
}

void ListTableModel::reorder()
{
    // The row count stays, so a change of every cell's data says it all and
    // spares the views the per-row work of a reset or a layout change.
    const int count = rowCount();
    if (count > 0) emit dataChanged(index(0, 0), index(count - 1, columnCount() - 1));
}
