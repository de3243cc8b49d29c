#include "app/ItemTableModel.h"

#include "store/DataModel.h"
#include "ui/AmountText.h"

ItemTableModel::ItemTableModel(const DataModel& dm, QObject* parent)
    : ListTableModel({{"Hizuke", QStringLiteral("日付"), false},
                      {"HimokuNo", QStringLiteral("費目"), false},
                      {"Nyuukin", QStringLiteral("収入"), true},
                      {"Syukkin", QStringLiteral("支出"), true},
                      {"Zankin", QStringLiteral("残高"), true}},
                     parent),
      DM(dm)
{
}

int ItemTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(DM.itemList.size());
}

QString ItemTableModel::text(int row, const std::string& identifier) const
{
    const Items& item = *DM.itemList[static_cast<size_t>(row)];
    if (identifier == "Hizuke") return QString::fromStdString(item.Hizuke);
    if (identifier == "HimokuNo") return QString::fromStdString(item.strHimoku);
    if (identifier == "Nyuukin") return QString::fromStdString(item.strNyuukin);
    if (identifier == "Syukkin") return QString::fromStdString(item.strSyukkin);
    if (identifier == "Zankin") return groupedKingaku(item.Zankin);
    return {};
}

QString ItemTableModel::toolTip(int row) const
{
    return QString::fromStdString(DM.itemList[static_cast<size_t>(row)]->Bikou);
}
