#include "household/Date.h"

#include <chrono>
#include <cstdio>

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

year_month_day toChrono(const Date& d)
{
    return year_month_day{std::chrono::year{d.year}, std::chrono::month{static_cast<unsigned>(d.month)},
                          std::chrono::day{static_cast<unsigned>(d.day)}};
}

Date fromChrono(const year_month_day& ymd)
{
    return {static_cast<int>(ymd.year()), static_cast<int>(static_cast<unsigned>(ymd.month())),
            static_cast<int>(static_cast<unsigned>(ymd.day()))};
}

bool parseDigits(std::string_view text, int& value)
{
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + (c - '0');
    }
    return true;
}

}  // namespace

bool Date::isValid() const
{
    return year >= 1 && year <= 9999 && toChrono(*this).ok();
}

int Date::serial() const
{
    return static_cast<int>(sys_days{toChrono(*this)}.time_since_epoch().count());
}

Date Date::fromSerial(int serial)
{
    return fromChrono(year_month_day{sys_days{std::chrono::days{serial}}});
}

Date Date::addDays(int days) const
{
    return fromSerial(serial() + days);
}

int Date::weekday() const
{
    return static_cast<int>(std::chrono::weekday{sys_days{toChrono(*this)}}.c_encoding());
}

std::string Date::iso() const
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", year, month, day);
    return buf;
}

std::optional<Date> Date::fromIso(std::string_view text)
{
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    Date d;
    if (!parseDigits(text.substr(0, 4), d.year) || !parseDigits(text.substr(5, 2), d.month) ||
        !parseDigits(text.substr(8, 2), d.day) || !d.isValid())
        return std::nullopt;
    return d;
}

YearMonth YearMonth::addMonths(int months) const
{
    // Month numbers counted from year 0, so that the division floors.
    const int index = year * 12 + (month - 1) + months;
    return {index / 12, index % 12 + 1};
}

int YearMonth::monthsUntil(const YearMonth& other) const
{
    return (other.year - year) * 12 + (other.month - month);
}

bool isLeapYear(int year)
{
    return std::chrono::year{year}.is_leap();
}

int daysInMonth(int year, int month)
{
    const std::chrono::year_month_day_last last{std::chrono::year{year},
                                                std::chrono::month_day_last{std::chrono::month{static_cast<unsigned>(month)}}};
    return static_cast<int>(static_cast<unsigned>(last.day()));
}

Date dayOfMonth(YearMonth month, int day)
{
    const int last = daysInMonth(month.year, month.month);
    return {month.year, month.month, day < last ? day : last};
}
