#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>
#include <functional>

// Today's date and time in the local time zone, from a clock that tests set.
QDateTime currentDateTime();

// Replaces the clock (tests), also for the times the history records; an
// empty function restores the system clock.
void setClock(std::function<QDateTime()> clock);

// The date stamp of the main window and the reports: calendar year, "年",
// two-digit month, "月", two-digit day, "日" (2018年12月31日).
QString dateStamp(const QDate& date);

// The date as proposed file names carry it: 20181231.
QString fileDateStamp(const QDate& date);
