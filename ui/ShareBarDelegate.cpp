#include "ui/ShareBarDelegate.h"

#include <QPainter>
#include <algorithm>

namespace {

const QColor kBack(0xe6, 0xe6, 0xe6);
const QColor kWithin(0x4e, 0x79, 0xa7);
const QColor kOver(0xe1, 0x57, 0x59);

}  // namespace

ShareBarDelegate::ShareBarDelegate(std::function<std::optional<Share>(int row)> share, QObject* parent)
    : QStyledItemDelegate(parent), share(std::move(share))
{
}

void ShareBarDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);  // the row's background and selection
    const std::optional<Share> s = share(index.row());
    if (!s) return;
    const QRect bar = option.rect.adjusted(6, option.rect.height() / 4, -6, -option.rect.height() / 4);
    painter->save();
    painter->fillRect(bar, kBack);
    const double used = s->over ? 1.0 : std::clamp(s->used, 0.0, 1.0);
    painter->fillRect(QRect(bar.left(), bar.top(), static_cast<int>(bar.width() * used), bar.height()),
                      s->over ? kOver : kWithin);
    painter->restore();
}
