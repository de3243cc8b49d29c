#pragma once

#include "household/Date.h"

// What happens to a day that falls on a Saturday, a Sunday or a national
// holiday: it stays, or moves to the business day before or after it.
// The numbers are the ones a book stores.
enum class HolidayShift { SameDay = 0, Before = 1, After = 2 };

// True when `value` is one of the three (for numbers read from a book).
bool isHolidayShift(int value);

// Neither a Saturday, a Sunday nor a holiday of HolidayCalendar.
bool isBusinessDay(const Date& date);

// `date` itself when it is a business day or the shift is SameDay; else the
// nearest business day before or after it.
Date shiftToBusinessDay(const Date& date, HolidayShift shift);
