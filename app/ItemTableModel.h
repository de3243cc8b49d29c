#pragma once

#include "app/ListTableModel.h"

class DataModel;

// The entry list of the shown asset, over the store's itemList in its
// current order: date, category (or partner asset), income, expense and the
// running balance. The note shows as the row's tool tip.
class ItemTableModel final : public ListTableModel {
public:
    explicit ItemTableModel(const DataModel& dm, QObject* parent = nullptr);
    int rowCount(const QModelIndex& parent = {}) const override;

protected:
    QString text(int row, const std::string& identifier) const override;
    QString toolTip(int row) const override;

private:
    const DataModel& DM;
};
