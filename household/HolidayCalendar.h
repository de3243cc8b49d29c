#pragma once

#include <optional>
#include <string>
#include <vector>

#include "household/Holiday.h"

// Japan's holidays as the program knows them: the Cabinet Office's published
// table for the years it covers, the law's rules for every other year. Safe
// to call from any thread; nothing is read from disk.

// The holidays of `year`, in date order.
std::vector<Holiday> holidaysOfYear(int year);

bool isHoliday(const Date& date);

// The holiday's name ("春分の日", "憲法記念日 振替休日", "休日"), or nothing on
// an ordinary day.
std::optional<std::string> holidayName(const Date& date);
