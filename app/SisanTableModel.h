#pragma once

#include "app/ListTableModel.h"

class DataModel;

// The asset list: name ("sisanNamae") and balance ("sisanZankin") of every
// asset of the store's sisanList.
class SisanTableModel final : public ListTableModel {
public:
    explicit SisanTableModel(const DataModel& dm, QObject* parent = nullptr);
    int rowCount(const QModelIndex& parent = {}) const override;

protected:
    QString text(int row, const std::string& identifier) const override;

private:
    const DataModel& DM;
};
