#include "app/AppDelegate.h"

#include <QEvent>
#include <cstdio>

#include "store/DataModel.h"
#include "store/MessageSink.h"

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
