#pragma once

#include <QAbstractListModel>
#include <cstdint>
#include <set>

class DataModel;

// The store's asset list as a list of check boxes: which assets get a line
// of their own in the asset history. Checks are kept by asset Id, so they
// survive a reload of the list.
class SisanCheckListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    explicit SisanCheckListModel(DataModel& dm, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    bool isChecked(int64_t sisanId) const { return checked.count(sisanId) != 0; }
    // Tells the views that sisanList may have changed.
    void reload();

private:
    DataModel& DM;
    std::set<int64_t> checked;
};
