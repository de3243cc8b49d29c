#pragma once

#include <QAbstractTableModel>
#include <optional>
#include <vector>

#include "household/TeikiDue.h"

class DataModel;

// The due occurrences as the posting window lists them, one per row: a
// check on the date (all checked at first), the asset, the kind, what it
// books, and the amount, which the user may type over. An amount typed is
// kept as typed; one that is not a whole yen amount shows in red until it is
// put right.
class TeikiKityouModel final : public QAbstractTableModel {
public:
    enum Column { kHizuke, kSisan, kSyubetu, kNaiyou, kKingaku, kColumns };

    struct Row {
        TeikiOccurrence due;
        Teiki teiki;  // the rule as it was read
        bool checked = true;
        QString kingakuText;
    };

    // The rows of `due`, whose rules dm.teikiList holds.
    TeikiKityouModel(const DataModel& dm, const std::vector<TeikiOccurrence>& due, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    const std::vector<Row>& rows() const { return rows_; }
    // Checks the row when unchecked and unchecks it when checked.
    void toggle(int row);
    // The row's amount, or none when its text is not a whole yen amount.
    static std::optional<int64_t> kingakuOf(const Row& row);

private:
    const DataModel& dm;
    std::vector<Row> rows_;

    QVariant display(const Row& row, int column) const;
};
