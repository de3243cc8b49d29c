#include "app/DayWatcher.h"

#include <QGuiApplication>

#include "ui/Clock.h"

DayWatcher::DayWatcher(int intervalMs, QObject* parent) : QObject(parent), day(currentDateTime().date())
{
    connect(&timer, &QTimer::timeout, this, &DayWatcher::look);
    timer.start(intervalMs);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) look();
    });
}

void DayWatcher::look()
{
    const QDate today = currentDateTime().date();
    if (today == day) return;
    day = today;
    emit dayChanged();
}
