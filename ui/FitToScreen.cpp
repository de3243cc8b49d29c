#include "ui/FitToScreen.h"

#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace {

// Room for a title bar and the borders: more than the usual window manager takes.
const QSize kFrame(16, 48);

// The position along one axis that puts [start, start + length) inside
// [low, low + room), or at low when it cannot fit.
int inside(int start, int length, int low, int room)
{
    return std::max(low, std::min(start, low + room - length));
}

}  // namespace

void fitToScreen(QWidget* window)
{
    const QWidget* parent = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    const QScreen* screen = (parent ? parent : window)->screen();
    if (!screen) return;
    const QRect available = screen->availableGeometry();
    window->resize(window->size().boundedTo(available.size() - kFrame).expandedTo(window->minimumSizeHint()));

    QRect framed(QPoint(), window->size() + kFrame);
    framed.moveCenter(parent ? parent->frameGeometry().center() : available.center());
    window->move(inside(framed.x(), framed.width(), available.x(), available.width()),
                 inside(framed.y(), framed.height(), available.y(), available.height()));
}
