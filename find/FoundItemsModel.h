#pragma once

#include <QAbstractTableModel>
#include <memory>
#include <string>
#include <vector>

#include "store/SearchQuery.h"

class DataModel;

// The entries a search found, as a read-only table: date, asset, category
// (or the partner asset of a transfer), income, expense, note. Names come
// from the store's lists when shown, so a renamed category shows its new
// name. Sorting reorders a list of row numbers, never the rows themselves.
class FoundItemsModel final : public QAbstractTableModel {
public:
    enum Column { Hizuke, Sisan, Himoku, Nyuukin, Syukkin, Bikou, ColumnCount };

    explicit FoundItemsModel(DataModel& dm, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    // Shows these results (newest first, as found) in place of the last.
    void setItems(std::shared_ptr<const FoundItems> items);
    const FoundItems& items() const { return *items_; }
    // The found entry shown at row.
    const FoundItem& item(int row) const;
    // The results as CSV text (UTF-8, a heading line, the rows as shown).
    std::string csv() const;

private:
    DataModel& DM;
    std::shared_ptr<const FoundItems> items_;
    std::vector<int> order_;  // shown row -> row of items_

    std::string cellText(const FoundItem& item, int column) const;
};
