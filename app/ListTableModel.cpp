#include "app/ListTableModel.h"

ListTableModel::ListTableModel(std::vector<Column> columns, QObject* parent)
    : QAbstractTableModel(parent), columns(std::move(columns))
{
}

int ListTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns.size());
}

QVariant ListTableModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Column& column = columns[static_cast<size_t>(index.column())];
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row(), column.identifier);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (column.amount ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::ToolTipRole: {
        const QString tip = toolTip(index.row());
        return tip.isEmpty() ? QVariant() : QVariant(tip);
    }
    default:
        return {};
    }
}

QVariant ListTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
    const Column& column = columns[static_cast<size_t>(section)];
    if (role == Qt::DisplayRole) return column.title;
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::AlignVCenter | (column.amount ? Qt::AlignRight : Qt::AlignLeft));
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
    const int rows = rowCount();
    if (rows > 0) emit dataChanged(index(0, 0), index(rows - 1, columnCount() - 1));
}
