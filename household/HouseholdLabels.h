#pragma once

#include <string>

#include "household/BusinessDays.h"
#include "household/CardCycle.h"
#include "household/Date.h"
#include "household/HouseholdMonths.h"
#include "household/Recurrence.h"

// The texts the household windows show, built from the settings (UTF-8).

// A shift as a choice in a list: "その日のまま", "前営業日", "翌営業日".
std::string holidayShiftName(HolidayShift shift);

// A day of the month: "25日", kLastDay "末日".
std::string dayText(int day);

// "11月25日"; with the year "2026年11月25日".
std::string monthDayText(const Date& date, bool withYear = false);

// "11月25日〜12月24日"; with the years "2025年12月25日〜2026年1月24日".
std::string periodLabel(const DateRange& range, bool withYears = false);

// "月の始まり: 25日（土日祝は前営業日）", or "月の始まり: 1日" for the
// calendar months.
std::string householdMonthSettingLabel(const HouseholdMonthSetting& setting);

// "2026年12月分（11月25日〜12月24日）"; for calendar months "2026年12月".
std::string householdMonthLabel(const HouseholdMonths& months, const YearMonth& name);

// "15日締め・翌月10日引落（土日祝は翌営業日）", "月末締め・翌々月末日引落".
std::string cardCycleLabel(const CardCycleSetting& setting);

// "毎月25日", "2か月ごとの末日", "毎年3月15日", "毎週金曜日", "2週ごとの月曜日",
// followed by the shift as in "（土日祝は前営業日）" when it moves the day.
std::string scheduleLabel(const Schedule& schedule);
