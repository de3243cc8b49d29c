#include "find/FoundItemsModel.h"

#include <algorithm>
#include <numeric>

#include "store/DataModel.h"
#include "store/Money.h"

namespace {

const char* const kTitles[] = {"日付", "資産", "費目・相手資産", "収入", "支出", "備考"};

bool isAmount(int column)
{
    return column == FoundItemsModel::Nyuukin || column == FoundItemsModel::Syukkin;
}

// One CSV field: quoted when it holds a comma, a quote or a line break.
std::string csvField(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + '"';
}

}  // namespace

FoundItemsModel::FoundItemsModel(DataModel& dm, QObject* parent)
    : QAbstractTableModel(parent), DM(dm), items_(std::make_shared<FoundItems>())
{
}

int FoundItemsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int FoundItemsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

const FoundItem& FoundItemsModel::item(int row) const
{
    return items_->rows[static_cast<size_t>(order_[static_cast<size_t>(row)])];
}

std::string FoundItemsModel::cellText(const FoundItem& item, int column) const
{
    switch (column) {
    case Hizuke:
        return item.Hizuke;
    case Sisan:
        return DM.getSisanNamaeFromNo(item.SisanNo);
    case Himoku:
        return DM.getHimokuNamaeFromHimokuRowNo(item.SyubetuNo, item.HimokuNo, item.IdouSisanNo);
    case Nyuukin:
        return isNyuukinKind(item.SyubetuNo) ? formatWithGrouping(item.Nyuukin) : std::string();
    case Syukkin:
        return isSyukkinKind(item.SyubetuNo) ? formatWithGrouping(item.Syukkin) : std::string();
    case Bikou:
        return item.Bikou;
    default:
        return {};
    }
}

QVariant FoundItemsModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(cellText(item(index.row()), index.column()));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (isAmount(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::ToolTipRole:
        return index.column() == Bikou ? QVariant(QString::fromStdString(item(index.row()).Bikou)) : QVariant();
    default:
        return {};
    }
}

QVariant FoundItemsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) return {};
    if (role == Qt::DisplayRole) return QString::fromUtf8(kTitles[section]);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::AlignVCenter | (isAmount(section) ? Qt::AlignRight : Qt::AlignLeft));
    return {};
}

void FoundItemsModel::setItems(std::shared_ptr<const FoundItems> items)
{
    beginResetModel();
    items_ = std::move(items);
    order_.resize(items_->rows.size());
    std::iota(order_.begin(), order_.end(), 0);
    endResetModel();
}

void FoundItemsModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= ColumnCount) return;
    const auto& rows = items_->rows;
    // Ties keep the order found (newest first), whichever way the column goes.
    std::vector<int> sorted(rows.size());
    std::iota(sorted.begin(), sorted.end(), 0);
    const auto by = [&](auto key) {
        std::stable_sort(sorted.begin(), sorted.end(), [&](int a, int b) {
            return order == Qt::AscendingOrder ? key(rows[a]) < key(rows[b]) : key(rows[b]) < key(rows[a]);
        });
    };
    if (column == Nyuukin) {
        by([](const FoundItem& i) { return isNyuukinKind(i.SyubetuNo) ? i.Nyuukin : INT64_MIN; });
    } else if (column == Syukkin) {
        by([](const FoundItem& i) { return isSyukkinKind(i.SyubetuNo) ? i.Syukkin : INT64_MIN; });
    } else if (column == Hizuke) {
        by([](const FoundItem& i) { return i.Hizuke; });  // by date only: ties stay newest-entered first
    } else {
        // Names are looked up once per row, not once per comparison.
        std::vector<std::string> keys(rows.size());
        for (size_t r = 0; r < rows.size(); ++r) keys[r] = cellText(rows[r], column);
        std::stable_sort(sorted.begin(), sorted.end(), [&](int a, int b) {
            return order == Qt::AscendingOrder ? keys[a] < keys[b] : keys[b] < keys[a];
        });
    }
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<int> shownAt(order_.size());
    for (size_t shown = 0; shown < sorted.size(); ++shown) shownAt[static_cast<size_t>(sorted[shown])] = static_cast<int>(shown);
    QModelIndexList after;
    for (const QModelIndex& index : before)
        after.push_back(this->index(shownAt[static_cast<size_t>(order_[static_cast<size_t>(index.row())])], index.column()));
    order_ = std::move(sorted);
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

std::string FoundItemsModel::csv() const
{
    std::string out;
    for (int c = 0; c < ColumnCount; ++c) out += std::string(c ? "," : "") + kTitles[c];
    out += '\n';
    for (int r = 0; r < rowCount(); ++r) {
        const FoundItem& found = item(r);
        for (int c = 0; c < ColumnCount; ++c) {
            if (c) out += ',';
            // Amounts without digit grouping, so that a spreadsheet reads them as numbers.
            if (c == Nyuukin && isNyuukinKind(found.SyubetuNo)) {
                out += std::to_string(found.Nyuukin);
            } else if (c == Syukkin && isSyukkinKind(found.SyubetuNo)) {
                out += std::to_string(found.Syukkin);
            } else if (!isAmount(c)) {
                out += csvField(cellText(found, c));
            }
        }
        out += '\n';
    }
    return out;
}
