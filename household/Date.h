#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

// A calendar day of the proleptic Gregorian calendar, with no time and no
// time zone: callers pass "today" in. The arithmetic is std::chrono's
// calendar; this type only keeps the three numbers the book stores.
struct Date {
    int year = 1970;
    int month = 1;
    int day = 1;

    // Ordered by year, then month, then day: the order of the days.
    auto operator<=>(const Date&) const = default;

    // True for an existing day of the years 1 to 9999.
    bool isValid() const;

    // Days since 1970-01-01 (negative before it); fromSerial is its inverse.
    int serial() const;
    static Date fromSerial(int serial);

    Date addDays(int days) const;
    // Days from this date to other (other - this).
    int daysUntil(const Date& other) const { return other.serial() - serial(); }

    // 0 Sunday, 1 Monday ... 6 Saturday.
    int weekday() const;

    // "yyyy-MM-dd", the form the book stores; fromIso accepts exactly that
    // form of a valid day and nothing else.
    std::string iso() const;
    static std::optional<Date> fromIso(std::string_view text);
};

// A calendar month, or a household month's name (year and month number).
struct YearMonth {
    int year = 1970;
    int month = 1;

    auto operator<=>(const YearMonth&) const = default;

    YearMonth addMonths(int months) const;
    // Months from this month to other (other - this).
    int monthsUntil(const YearMonth& other) const;
};

// The day value that stands for the last day of any month. Day values from
// 29 to 31 fall on the last day of the months too short for them.
constexpr int kLastDay = 31;

bool isLeapYear(int year);
int daysInMonth(int year, int month);

// The day `day` (1..31, kLastDay = the last day) of the month, moved back to
// the month's last day when the month is shorter.
Date dayOfMonth(YearMonth month, int day);

inline YearMonth yearMonthOf(const Date& date) { return {date.year, date.month}; }

// An inclusive span of days.
struct DateRange {
    Date first;
    Date last;

    bool operator==(const DateRange&) const = default;
    bool contains(const Date& d) const { return first <= d && d <= last; }
};
