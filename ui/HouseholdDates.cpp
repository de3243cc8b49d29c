#include "ui/HouseholdDates.h"

#include "household/HouseholdLabels.h"
#include "ui/Clock.h"

Date dateOf(const QDate& date)
{
    return {date.year(), date.month(), date.day()};
}

QDate qDateOf(const Date& date)
{
    return {date.year, date.month, date.day};
}

Date householdToday()
{
    return dateOf(currentDateTime().date());
}

QString dayWithWeekday(const Date& date)
{
    static const char16_t* const kWeekdays[] = {u"日", u"月", u"火", u"水", u"木", u"金", u"土"};
    return qText(monthDayText(date, true)) + QStringLiteral("（") +
           QString::fromUtf16(kWeekdays[date.weekday()]) + QStringLiteral("）");
}
