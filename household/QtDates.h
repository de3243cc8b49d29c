#pragma once

#include <QDate>

#include "household/Date.h"
#include "ui/Clock.h"

// The household calendar's days and Qt's, one for the other.
inline Date dateOf(const QDate& date)
{
    return {date.year(), date.month(), date.day()};
}

inline QDate qdateOf(const Date& date)
{
    return {date.year, date.month, date.day};
}

// Today by the program's clock (ui/Clock.h).
inline Date householdToday()
{
    return dateOf(currentDateTime().date());
}
