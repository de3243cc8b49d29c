#include "charts/SisanCheckListModel.h"

#include "store/DataModel.h"

SisanCheckListModel::SisanCheckListModel(DataModel& dm, QObject* parent) : QAbstractListModel(parent), DM(dm) {}

int SisanCheckListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(DM.sisanList.size());
}

QVariant SisanCheckListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const auto& sisan = DM.sisanList[static_cast<size_t>(index.row())];
    if (role == Qt::DisplayRole) return QString::fromStdString(sisan->Namae);
    if (role == Qt::CheckStateRole) return isChecked(sisan->Id) ? Qt::Checked : Qt::Unchecked;
    return {};
}

bool SisanCheckListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.row() >= rowCount()) return false;
    const int64_t id = DM.sisanList[static_cast<size_t>(index.row())]->Id;
    if (value.value<Qt::CheckState>() == Qt::Checked) {
        checked.insert(id);
    } else {
        checked.erase(id);
    }
    emit dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

Qt::ItemFlags SisanCheckListModel::flags(const QModelIndex& index) const
{
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable;
}

void SisanCheckListModel::reload()
{
    beginResetModel();
    endResetModel();
}
