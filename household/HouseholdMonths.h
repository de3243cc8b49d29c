#pragma once

#include <array>

#include "household/BusinessDays.h"
#include "household/Checked.h"
#include "household/Date.h"

// Which calendar month gives a household month its name when the month
// starts on a day other than the 1st: 11月25日〜12月24日 is 12月分 named by
// its end, 11月分 by its start. The numbers are the ones a book stores.
enum class MonthNaming { ByEndMonth = 0, ByStartMonth = 1 };

// The household's month as the user sets it.
struct HouseholdMonthSetting {
    int startDay = 1;  // 1 to 28
    HolidayShift shift = HolidayShift::SameDay;  // for a start day on a Saturday, Sunday or holiday
    MonthNaming naming = MonthNaming::ByEndMonth;

    bool operator==(const HouseholdMonthSetting&) const = default;
};

// The household months of a valid setting. A month is named by a YearMonth
// (household month m of household year y) and runs from its first day to
// the day before the next one starts. With start day 1 the months are the
// calendar months, whatever the shift and naming.
class HouseholdMonths {
public:
    HouseholdMonths() = default;  // the calendar months

    // The setting, or the message that refuses it (a start day of 29 to 31).
    static Checked<HouseholdMonths> make(const HouseholdMonthSetting& setting);

    const HouseholdMonthSetting& setting() const { return setting_; }
    bool isCalendarMonths() const { return setting_.startDay == 1; }

    DateRange month(const YearMonth& name) const;
    // The household month a day belongs to.
    YearMonth monthOf(const Date& date) const;
    // Household months 1 to 12 of household year `year`, and the whole year.
    std::array<DateRange, 12> monthsOfYear(int year) const;
    DateRange year(int year) const;

private:
    explicit HouseholdMonths(const HouseholdMonthSetting& setting) : setting_(setting) {}

    // The first day of the month that starts in `calendarMonth`.
    Date startIn(const YearMonth& calendarMonth) const;
    // Months from the calendar month a household month starts in to its name.
    int nameOffset() const;

    HouseholdMonthSetting setting_;
};
