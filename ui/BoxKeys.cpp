#include "ui/BoxKeys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>

namespace {

// Watches the key presses that reach the box itself.
class BoxKeyFilter final : public QObject {
public:
    BoxKeyFilter(QWidget* box, std::function<void()> execute, std::function<void()> cancel)
        : QObject(box), execute(std::move(execute)), cancel(std::move(cancel))
    {
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != parent() || event->type() != QEvent::KeyPress) return false;
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (isEnterKey(key)) {
            if (!pressFocusedButton(key)) execute();
            return true;
        }
        if (key.key() == Qt::Key_Escape && key.modifiers() == Qt::NoModifier) {
            cancel();
            return true;
        }
        return false;
    }

private:
    std::function<void()> execute;
    std::function<void()> cancel;
};

}  // namespace

bool isEnterKey(const QKeyEvent& key)
{
    return (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) &&
           (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

bool pressFocusedButton(const QKeyEvent& key)
{
    auto* button = qobject_cast<QPushButton*>(QApplication::focusWidget());
    if (!isEnterKey(key) || !button || !button->isEnabled() || !button->isVisible()) return false;
    button->click();
    return true;
}

void bindBoxKeys(QWidget* box, std::function<void()> execute, std::function<void()> cancel)
{
    box->installEventFilter(new BoxKeyFilter(box, std::move(execute), std::move(cancel)));
}
