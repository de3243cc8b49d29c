#pragma once

#include <QDate>
#include <QObject>
#include <QTimer>

// Notices the calendar day changing while the program runs: past midnight,
// after a suspend, or when the clock is set. It reads the clock (Clock.h)
// every intervalMs and whenever the application becomes active again.
class DayWatcher final : public QObject {
    Q_OBJECT

public:
    explicit DayWatcher(int intervalMs = 60000, QObject* parent = nullptr);

signals:
    void dayChanged();

private:
    void look();

    QDate day;
    QTimer timer;
};
