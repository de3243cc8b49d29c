#pragma once

#include <QDate>
#include <QString>
#include <string>

#include "household/Date.h"

// The household calendar's dates in the windows.

Date dateOf(const QDate& date);
QDate qDateOf(const Date& date);

// Today from the application's clock (ui/Clock.h).
Date householdToday();

// A household text (UTF-8) as a QString.
inline QString qText(const std::string& text)
{
    return QString::fromStdString(text);
}

// "2026年12月10日（木）": a day with its weekday, as withdrawal days are shown.
QString dayWithWeekday(const Date& date);
