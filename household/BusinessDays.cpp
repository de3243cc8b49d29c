#include "household/BusinessDays.h"

#include "household/HolidayCalendar.h"

bool isHolidayShift(int value)
{
    return value >= static_cast<int>(HolidayShift::SameDay) && value <= static_cast<int>(HolidayShift::After);
}

bool isBusinessDay(const Date& date)
{
    const int weekday = date.weekday();
    return weekday != 0 && weekday != 6 && !isHoliday(date);
}

Date shiftToBusinessDay(const Date& date, HolidayShift shift)
{
    if (shift == HolidayShift::SameDay) return date;
    const int step = shift == HolidayShift::Before ? -1 : 1;
    Date d = date;
    while (!isBusinessDay(d)) d = d.addDays(step);
    return d;
}
