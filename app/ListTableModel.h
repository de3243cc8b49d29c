#pragma once

#include <QAbstractTableModel>
#include <string>
#include <vector>

// A read-only table over one of the store's lists: the subclass says how
// many rows the list has and what a cell shows; this class gives the columns
// their identifiers, header titles and alignment. The list is never copied,
// so a view costs only the rows it paints.
class ListTableModel : public QAbstractTableModel {
public:
    struct Column {
        const char* identifier;  // "Hizuke", "sisanZankin", ...
        QString title;
        bool amount;  // right-aligned
    };

    explicit ListTableModel(std::vector<Column> columns, QObject* parent = nullptr);

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The identifier of a column, or "" outside the columns.
    std::string columnIdentifier(int column) const;
    // Tells the views that the whole list may have changed.
    void reload();
    // Tells the views that the same rows now stand in another order. A
    // selection stays on its row number, as after a reload.
    void reorder();

protected:
    // The cell's text for the column with this identifier.
    virtual QString text(int row, const std::string& identifier) const = 0;
    virtual QString toolTip(int /*row*/) const { return {}; }

private:
    std::vector<Column> columns;
};
