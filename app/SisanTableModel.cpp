#include "app/SisanTableModel.h"

#include "store/DataModel.h"
#include "ui/AmountText.h"

SisanTableModel::SisanTableModel(const DataModel& dm, QObject* parent)
    : ListTableModel({{"sisanNamae", QStringLiteral("資産名"), false}, {"sisanZankin", QStringLiteral("残高"), true}},
                     parent),
      DM(dm)
{
}

int SisanTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(DM.sisanList.size());
}

QString SisanTableModel::text(int row, const std::string& identifier) const
{
    const Sisan& sisan = *DM.sisanList[static_cast<size_t>(row)];
    if (identifier == "sisanNamae") return QString::fromStdString(sisan.Namae);
    if (identifier == "sisanZankin") return groupedKingaku(sisan.Zankin);
    return {};
}
