#pragma once

#include <QStyledItemDelegate>
#include <functional>
#include <optional>

// Paints a column's cells as bars: how much of a whole a row has used, in
// blue up to all of it and red across the cell when over. The shares come
// from the list behind the model, by row; a row without one stays empty.
class ShareBarDelegate final : public QStyledItemDelegate {
public:
    struct Share {
        double used;  // 1.0 = all of it
        bool over;
    };
    ShareBarDelegate(std::function<std::optional<Share>(int row)> share, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    std::function<std::optional<Share>(int row)> share;
};
