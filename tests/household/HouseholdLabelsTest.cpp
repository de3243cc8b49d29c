#include <gtest/gtest.h>

#include "household/HouseholdLabels.h"

namespace {

TEST(HouseholdLabelsTest, TheWindowsTextsAreBuiltFromTheSettings)
{
    EXPECT_EQ(householdMonthSettingLabel({25, HolidayShift::Before, MonthNaming::ByEndMonth}),
              "月の始まり: 25日（土日祝は前営業日）");
    EXPECT_EQ(householdMonthSettingLabel({10, HolidayShift::After, MonthNaming::ByStartMonth}),
              "月の始まり: 10日（土日祝は翌営業日）");
    EXPECT_EQ(householdMonthSettingLabel({25, HolidayShift::SameDay, MonthNaming::ByEndMonth}), "月の始まり: 25日");
    EXPECT_EQ(householdMonthSettingLabel({1, HolidayShift::Before, MonthNaming::ByEndMonth}), "月の始まり: 1日");

    const DateRange december{{2026, 11, 25}, {2026, 12, 24}};
    EXPECT_EQ(periodLabel(december), "11月25日〜12月24日");
    EXPECT_EQ(periodLabel({{2025, 12, 25}, {2026, 1, 4}}, true), "2025年12月25日〜2026年1月4日");
    const auto payday = HouseholdMonths::make({25, HolidayShift::Before, MonthNaming::ByEndMonth});
    EXPECT_EQ(householdMonthLabel(payday.value(), {2026, 12}), "2026年12月分（11月25日〜12月24日）");
    EXPECT_EQ(householdMonthLabel(HouseholdMonths(), {2026, 12}), "2026年12月");

    EXPECT_EQ(cardCycleLabel({15, 10, 1, HolidayShift::After}), "15日締め・翌月10日引落（土日祝は翌営業日）");
    EXPECT_EQ(cardCycleLabel({kLastDay, kLastDay, 2, HolidayShift::SameDay}), "月末締め・翌々月末日引落");
    EXPECT_EQ(cardCycleLabel({10, 26, 0, HolidayShift::Before}), "10日締め・当月26日引落（土日祝は前営業日）");

    Schedule s;
    s.day = 25;
    s.shift = HolidayShift::Before;
    EXPECT_EQ(scheduleLabel(s), "毎月25日（土日祝は前営業日）");
    s.every = 2;
    s.day = kLastDay;
    s.shift = HolidayShift::SameDay;
    EXPECT_EQ(scheduleLabel(s), "2か月ごとの末日");
    s.unit = RepeatUnit::Year;
    s.every = 1;
    s.month = 3;
    s.day = 15;
    EXPECT_EQ(scheduleLabel(s), "毎年3月15日");
    s.unit = RepeatUnit::Week;
    s.weekday = 5;
    EXPECT_EQ(scheduleLabel(s), "毎週金曜日");
    s.every = 2;
    s.weekday = 1;
    s.shift = HolidayShift::After;
    EXPECT_EQ(scheduleLabel(s), "2週ごとの月曜日（土日祝は翌営業日）");

    EXPECT_EQ(holidayShiftName(HolidayShift::SameDay), "その日のまま");
}

}  // namespace
