// Zenvora: a household account book.
#include <QApplication>
#include <QSessionManager>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "app/AppDelegate.h"
#include "app/BookGate.h"
#include "app/CommandLine.h"
#include "app/DailyBackup.h"
#include "app/QuitOnSignal.h"
#include "app/SingleInstance.h"
#include "app/ViewController.h"
#include "find/IndexAtStart.h"
#include "find/TextFolding.h"
#include "store/DataModel.h"
#include "ui/MessageService.h"

namespace {

constexpr int kBackupDelayMs = 1000;

bool hasDisplay()
{
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value && *value) return true;
    }
    return false;
}

void bringToFront(QWidget& window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

}  // namespace

int main(int argc, char** argv)
{
    const CommandLine line = parseCommandLine(argc, argv);
    switch (line.action) {
    case CommandLine::Action::Help:
        std::fputs(usageText(argv[0]).c_str(), stdout);
        return 0;
    case CommandLine::Action::Version:
        std::puts("Zenvora " ZENVORA_VERSION);
        return 0;
    case CommandLine::Action::Error:
        std::fprintf(stderr, "%s: %s\n%s", argv[0], line.error.c_str(), usageText(argv[0]).c_str());
        return 2;
    case CommandLine::Action::Run:
        break;
    }
    if (!hasDisplay()) {
        std::fprintf(stderr,
                     "Zenvora is a desktop application and needs a graphical display (DISPLAY or WAYLAND_DISPLAY).\n"
                     "On a machine without one, run it on a virtual display (Debian package xvfb):  xvfb-run -a %s\n",
                     argv[0]);
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zenvora"));
    QApplication::setQuitOnLastWindowClosed(AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    installStoreMessageSink();
    installTextFold();

    // An absolute path, so that the lock and the running program's address
    // are the same for every spelling of the same book.
    const std::string book =
        line.book.empty() ? DataModel::defaultBookPath() : std::filesystem::absolute(line.book).lexically_normal().string();
    SingleInstance instance(book);
    if (instance.runningElsewhere()) {
        if (SingleInstance::askRunningToRaise(book)) return 0;
        sayBookAlreadyOpen(book);
        return 1;
    }
    // Nothing is read or written before the book has passed its checks.
    if (!prepareBookForStart(book)) return 1;
    prepareSearchIndex(book);

    DataModel& dm = DataModel::sharedInstance(book);
    AppDelegate delegate(dm);
    quitOnTerminationSignals([&delegate] { delegate.terminationIsUnattended(); });
#if QT_CONFIG(sessionmanager)
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &delegate,
                     [&delegate](QSessionManager&) { delegate.terminationIsUnattended(); });
#endif
    ViewController window(dm);
    delegate.watch(&window);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
    instance.listen([&window] { bringToFront(window); });
    window.show();
    delegate.applicationDidFinishLaunching();
    // The copy of a large book takes a few hundred milliseconds on its own
    // thread: it starts once the first paint is surely done, not competing with it.
    DailyBackup backup(book, (std::filesystem::path(book).parent_path() / "backups").string());
    QTimer::singleShot(kBackupDelayMs, &backup, &DailyBackup::start);
    return QApplication::exec();
}
