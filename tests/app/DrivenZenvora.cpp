// The program as main runs it, driven by keys for the process tests:
//
//   zenvora_driven --book PATH [KEYS]
//
// Once the window is shown it prints "window", presses KEYS (a key sequence
// such as "Ctrl+Shift+A") on the focused widget, and prints "modal CLASS"
// when a modal window opens, so that a test can signal the program while an
// editor, a report or a message box is open.
#include <QApplication>
#include <QKeySequence>
#include <QTest>
#include <QTimer>
#include <cstdio>

#include "app/Application.h"
#include "app/ViewController.h"

namespace {

void say(const char* what, const char* detail = "")
{
    std::printf("%s%s%s\n", what, *detail ? " " : "", detail);
    std::fflush(stdout);
}

void pressKeys(ViewController& window, const QString& keys)
{
    // Shortcuts reach the active window only.
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window)) say("inactive");
    const QKeyCombination key = QKeySequence(keys)[0];
    QWidget* target = QApplication::focusWidget() ? QApplication::focusWidget() : &window;
    QTest::keyClick(target, key.key(), key.keyboardModifiers());
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zenvora"));
    const QStringList arguments = QApplication::arguments();
    const int book = static_cast<int>(arguments.indexOf(QStringLiteral("--book")));
    if (book < 0 || book + 1 >= arguments.size()) return 2;
    const QString keys = arguments.value(book + 2);

    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&watch] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            say("modal", modal->metaObject()->className());
            watch.stop();
        }
    });
    return runZenvora(arguments[book + 1].toStdString(), [&](ViewController& window) {
        say("window");
        if (keys.isEmpty()) return;
        watch.start(20);
        pressKeys(window, keys);
    });
}
