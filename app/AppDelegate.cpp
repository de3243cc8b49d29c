#include "app/AppDelegate.h"

#include <QEvent>

#include "store/DataModel.h"

AppDelegate::AppDelegate(DataModel& dm, QObject* parent) : QObject(parent), DM(dm) {}

void AppDelegate::applicationWillTerminate()
{
    if (terminated) return;
    terminated = true;
    if (!DM.updateSisanZankinTable()) DM.someMessageWithAlert("Zenvora.app:failure  terminating!!", "information");
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
