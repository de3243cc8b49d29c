// The program's run: one book, checked before the window, ended in order.
#include "app/Application.h"

#include <QApplication>
#include <QSessionManager>
#include <QTimer>
#include <future>
#include <memory>
#include <vector>

#include "app/AppDelegate.h"
#include "app/BookGate.h"
#include "app/DailyBackup.h"
#include "app/DayWatcher.h"
#include "app/QuitOnSignal.h"
#include "app/SingleInstance.h"
#include "app/ViewController.h"
#include "find/IndexAtStart.h"
#include "find/TextFolding.h"
#include "store/BookCheck.h"
#include "store/BookLock.h"
#include "store/DataModel.h"
#include "store/MessageSink.h"
#include "ui/MessageService.h"

namespace {

constexpr int kBackupDelayMs = 1000;

void bringToFront(QWidget& window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

// Another program holds the book: it is asked to show its window, and what
// it answered is said. The exit code.
int handOver(const std::string& book)
{
    return sayBookAlreadyOpen(book, SingleInstance::askRunning(book));
}

// The store on the book once SQLite's check of every page passed. The check
// (a quarter of a second for a million entries) runs on a worker thread
// beside the store's first reads, which write nothing and whose messages
// wait for its verdict: a damaged book shows only the offer to replace it.
std::unique_ptr<DataModel> openCheckedBook(const std::string& book, SingleInstance& instance)
{
    for (;;) {
        instance.listen();  // the book may be a new file now
        std::future<BookCheck> pages = std::async(std::launch::async, [book] { return checkBookPages(book); });
        std::vector<std::pair<std::string, std::string>> held;
        setMessageSink([&held](const std::string& m, const std::string& i) { held.emplace_back(m, i); });
        auto dm = std::make_unique<DataModel>(book, DataModel::kBusyTimeoutMs, DataModel::Corrections::Defer);
        const BookCheck verdict = pages.get();
        installStoreMessageSink();
        if (verdict.verdict != BookVerdict::Ready) dm.reset();  // closed before the book is replaced
        switch (acceptBookPages(verdict, book, instance.lock())) {
        case PagesVerdict::Sound:
            for (const auto& [message, informative] : held) deliverMessage(message, informative);
            dm->storePendingZankin();
            return dm;
        case PagesVerdict::Replaced:
            continue;
        case PagesVerdict::Refused:
            return nullptr;
        }
    }
}

// The window on a book that passed its checks, until the event loop ends.
int runWindow(DataModel& dm, SingleInstance& instance, const std::string& book, const WindowShown& windowShown)
{
    AppDelegate delegate(dm);
    quitOnTerminationSignals([&delegate] { delegate.terminateUnattended(); });
#if QT_CONFIG(sessionmanager)
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, &delegate,
                     [&delegate](QSessionManager&) { delegate.terminationIsUnattended(); });
#endif
    ViewController window(dm);
    delegate.watch(&window);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::applicationWillTerminate);
    instance.setWindow([&window] { bringToFront(window); });
    window.show();
    delegate.applicationDidFinishLaunching();
    if (dm.zankinWritePending()) QTimer::singleShot(0, &window, [book] { sayBookIsBeingRead(book); });
    // The copy of a large book takes a few hundred milliseconds on its own
    // thread: it starts once the first paint is surely done, not competing
    // with it, and again whenever the day changes.
    DailyBackup backup(book, backupFolderOf(book));
    QTimer::singleShot(kBackupDelayMs, &backup, &DailyBackup::start);
    DayWatcher day;
    QObject::connect(&day, &DayWatcher::dayChanged, &window, &ViewController::todayChanged);
    QObject::connect(&day, &DayWatcher::dayChanged, &backup, &DailyBackup::start);
    if (windowShown) QTimer::singleShot(0, &window, [&] { windowShown(window); });
    return QApplication::exec();
}

}  // namespace

int runZenvora(const std::string& bookPath, const WindowShown& windowShown)
{
    QApplication::setQuitOnLastWindowClosed(AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    installStoreMessageSink();
    installTextFold();

    // The book is the file the path leads to, whatever links lead there.
    const BookPath path = resolveBookPath(bookPath.empty() ? DataModel::defaultBookPath() : bookPath);
    if (!path.danglingLink.empty()) {
        sayDanglingLink(path);
        return 1;
    }
    const std::string& book = path.path;
    SingleInstance instance(book);
    if (instance.runningElsewhere()) return handOver(book);
    // A later start learns what this one is doing even before the window.
    instance.listen();
    // Nothing is written before the book has passed its checks.
    // (Another start may take a book this one had to create or replace.)
    const std::unique_ptr<DataModel> dm =
        prepareBookForStart(book, instance.lock()) ? openCheckedBook(book, instance) : nullptr;
    if (!dm) return instance.runningElsewhere() ? handOver(book) : 1;
    if (dm->badValue()) {
        sayUnreadableValue(book, *dm->badValue());
        return 1;
    }
    prepareSearchIndex(*dm);
    return runWindow(*dm, instance, book, windowShown);
}
