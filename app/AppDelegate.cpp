#include "app/AppDelegate.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <cstdio>

#include "store/DataModel.h"
#include "store/MessageSink.h"
#include "ui/MessageService.h"

namespace {

// Modal windows open on one another: more than this means one refuses to go.
constexpr int kMaxModalWindows = 32;

}  // namespace

AppDelegate::AppDelegate(DataModel& dm, QObject* parent) : QObject(parent), DM(dm) {}

void AppDelegate::applicationWillTerminate()
{
    if (terminated) return;
    terminated = true;
    if (unattended) setMessageSink({});  // the store's own messages go to standard error too
    if (DM.updateSisanZankinTable()) return;
    if (unattended)
        std::fprintf(stderr, "Zenvora.app:failure  terminating!!\n");
    else
        DM.someMessageWithAlert("Zenvora.app:failure  terminating!!", "information");
}

void AppDelegate::terminateUnattended()
{
    terminationIsUnattended();
    setMessageService(&printingMessageService());
    // A modal window would keep the quit waiting for an answer nobody gives.
    for (int open = 0; open < kMaxModalWindows; ++open) {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal) break;
        if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->done(QDialog::Rejected);  // an editor tells its delegate as it closes
        else
            modal->hide();
    }
    // Every event loop ends, the modal ones included, and none starts again.
    QCoreApplication::exit(0);
}

void AppDelegate::watch(QObject* window)
{
    mainWindow = window;
    window->installEventFilter(this);
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == mainWindow && event->type() == QEvent::Close) applicationWillTerminate();
    return false;
}
