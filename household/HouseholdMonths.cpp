#include "household/HouseholdMonths.h"

namespace {

constexpr int kLatestStartDay = 28;

}  // namespace

Checked<HouseholdMonths> HouseholdMonths::make(const HouseholdMonthSetting& setting)
{
    if (setting.startDay < 1 || setting.startDay > kLatestStartDay)
        return Checked<HouseholdMonths>::refused(
            "月の始まりは1日から28日までの日にしてください。29日から31日は、その日がない月があるため選べません。");
    if (!isHolidayShift(static_cast<int>(setting.shift)))
        return Checked<HouseholdMonths>::refused("土日祝の扱いが正しくありません。");
    if (setting.naming != MonthNaming::ByEndMonth && setting.naming != MonthNaming::ByStartMonth)
        return Checked<HouseholdMonths>::refused("月の呼び方が正しくありません。");
    return Checked<HouseholdMonths>::accepted(HouseholdMonths(setting));
}

Date HouseholdMonths::startIn(const YearMonth& calendarMonth) const
{
    if (isCalendarMonths()) return {calendarMonth.year, calendarMonth.month, 1};
    return shiftToBusinessDay({calendarMonth.year, calendarMonth.month, setting_.startDay}, setting_.shift);
}

int HouseholdMonths::nameOffset() const
{
    return setting_.naming == MonthNaming::ByEndMonth && !isCalendarMonths() ? 1 : 0;
}

DateRange HouseholdMonths::month(const YearMonth& name) const
{
    const YearMonth startMonth = name.addMonths(-nameOffset());
    return {startIn(startMonth), startIn(startMonth.addMonths(1)).addDays(-1)};
}

YearMonth HouseholdMonths::monthOf(const Date& date) const
{
    // A shifted start can fall in the calendar month before, so look around.
    YearMonth startMonth = yearMonthOf(date);
    while (date < startIn(startMonth)) startMonth = startMonth.addMonths(-1);
    while (startIn(startMonth.addMonths(1)) <= date) startMonth = startMonth.addMonths(1);
    return startMonth.addMonths(nameOffset());
}

std::array<DateRange, 12> HouseholdMonths::monthsOfYear(int year) const
{
    std::array<DateRange, 12> months;
    for (int m = 1; m <= 12; ++m) months[static_cast<size_t>(m - 1)] = month({year, m});
    return months;
}

DateRange HouseholdMonths::year(int year) const
{
    return {month({year, 1}).first, month({year, 12}).last};
}
