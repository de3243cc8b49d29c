#include "ui/StoreTableModels.h"

#include "ui/ListTableModel.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

}  // namespace

ListTableModel* makeSisanTableModel(const DataModel& dm, QObject* parent,
                                    std::function<QString(int row)> afterWithdrawals)
{
    const auto sisan = [&dm](int row) -> const Sisan& { return *dm.sisanList[static_cast<size_t>(row)]; };
    std::vector<ListTableModel::Column> columns{
        {"sisanNamae", QStringLiteral("資産名"), false, [sisan](int r) { return q(sisan(r).Namae); }},
        {"sisanZankin", QStringLiteral("残高"), true, [sisan](int r) { return groupedKingaku(sisan(r).Zankin); }}};
    if (afterWithdrawals)
        columns.push_back({"sisanHikiotosigo", QStringLiteral("引落後"), true, std::move(afterWithdrawals)});
    return new ListTableModel([&dm] { return static_cast<int>(dm.sisanList.size()); }, std::move(columns), {},
                              parent);
}

ListTableModel* makeItemTableModel(const DataModel& dm, QObject* parent)
{
    const auto item = [&dm](int row) -> const Items& { return *dm.itemList[static_cast<size_t>(row)]; };
    return new ListTableModel(
        [&dm] { return static_cast<int>(dm.itemList.size()); },
        {{"Hizuke", QStringLiteral("日付"), false, [item](int r) { return q(item(r).Hizuke); }},
         {"HimokuNo", QStringLiteral("費目"), false, [item](int r) { return q(item(r).strHimoku); }},
         {"Nyuukin", QStringLiteral("収入"), true, [item](int r) { return q(item(r).strNyuukin); }},
         {"Syukkin", QStringLiteral("支出"), true, [item](int r) { return q(item(r).strSyukkin); }},
         {"Zankin", QStringLiteral("残高"), true, [item](int r) { return groupedKingaku(item(r).Zankin); }}},
        [item](int r) { return q(item(r).Bikou); }, parent);
}
