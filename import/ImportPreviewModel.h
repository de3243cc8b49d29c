#pragma once

#include <QAbstractTableModel>
#include <vector>

class ImportPlan;

// The preview's table: one row per statement row that carries money, read
// from the plan as it is painted (nothing is copied, so a statement of a
// million rows costs only the rows on screen). The first column's check box
// is 取り込む; the plan's edits go through the model so the views follow.
class ImportPreviewModel final : public QAbstractTableModel {
public:
    enum Column { Check, Hizuke, Text, Nyuukin, Syukkin, Assignment, Status, Match, ColumnCount };

    explicit ImportPreviewModel(QObject* parent = nullptr);

    // Shows another plan (or none); not owned.
    void setPlan(ImportPlan* plan);
    ImportPlan* plan() const { return plan_; }
    // Tells the views that these rows (all when empty) changed.
    void rowsChanged(const std::vector<size_t>& rows = {});

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    ImportPlan* plan_ = nullptr;

    QVariant display(int row, int column) const;
    QVariant foreground(int row, int column) const;
};
