#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <string>
#include <vector>

// A read-only table over one of the store's lists. It asks the list for its
// row count and each column for a cell's text, so the list is never copied
// and a view costs only the rows it paints.
class ListTableModel final : public QAbstractTableModel {
public:
    struct Column {
        const char* identifier;  // "Hizuke", "sisanZankin", ...
        QString title;
        bool amount;                       // right-aligned
        std::function<QString(int)> text;  // the cell of a row
    };

    ListTableModel(std::function<int()> rows, std::vector<Column> columns,
                   std::function<QString(int)> toolTip = {}, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // Colours a row's text (a QColor, or an empty QVariant for the usual
    // colour), as the row is painted.
    void setRowForeground(std::function<QVariant(int)> foreground) { rowForeground = std::move(foreground); }

    // The identifier of a column, or "" outside the columns.
    std::string columnIdentifier(int column) const;
    // Tells the views that the whole list may have changed.
    void reload();
    // Tells the views that the same rows now stand in another order. A
    // selection stays on its row number, as after a reload.
    void reorder();

private:
    std::function<int()> rows;
    std::vector<Column> columns;
    std::function<QString(int)> toolTip;
    std::function<QVariant(int)> rowForeground;

    QVariant alignment(int column) const;
};
