#include "household/HouseholdLabels.h"

namespace {

// "（土日祝は前営業日）" or "（土日祝は翌営業日）"; nothing when the day stays.
std::string shiftNote(HolidayShift shift)
{
    if (shift == HolidayShift::SameDay) return "";
    return "（土日祝は" + holidayShiftName(shift) + "）";
}

// "毎月" for every 1, "3か月ごとの" (or weeks, years) for more.
std::string everyText(int every, const char* eachUnit, const char* unit)
{
    if (every == 1) return eachUnit;
    return std::to_string(every) + unit + "ごとの";
}

}  // namespace

std::string holidayShiftName(HolidayShift shift)
{
    switch (shift) {
    case HolidayShift::Before: return "前営業日";
    case HolidayShift::After: return "翌営業日";
    case HolidayShift::SameDay: break;
    }
    return "その日のまま";
}

std::string dayText(int day)
{
    if (day == kLastDay) return "末日";
    return std::to_string(day) + "日";
}

std::string monthDayText(const Date& date, bool withYear)
{
    std::string text = withYear ? std::to_string(date.year) + "年" : "";
    return text + std::to_string(date.month) + "月" + std::to_string(date.day) + "日";
}

std::string periodLabel(const DateRange& range, bool withYears)
{
    return monthDayText(range.first, withYears) + "〜" + monthDayText(range.last, withYears);
}

std::string householdMonthSettingLabel(const HouseholdMonthSetting& setting)
{
    const std::string label = "月の始まり: " + dayText(setting.startDay);
    if (setting.startDay == 1) return label;
    return label + shiftNote(setting.shift);
}

std::string householdMonthLabel(const HouseholdMonths& months, const YearMonth& name)
{
    const std::string month = std::to_string(name.year) + "年" + std::to_string(name.month) + "月";
    if (months.isCalendarMonths()) return month;
    return month + "分（" + periodLabel(months.month(name)) + "）";
}

std::string cardCycleLabel(const CardCycleSetting& setting)
{
    static const char* const kMonthsAfter[] = {"当月", "翌月", "翌々月", "3か月後の"};
    const std::string closing = setting.closingDay == kLastDay ? "月末" : dayText(setting.closingDay);
    const int after = setting.monthsAfterClosing;
    const std::string month = after >= 0 && after <= 3 ? kMonthsAfter[after] : std::to_string(after) + "か月後の";
    return closing + "締め・" + month + dayText(setting.withdrawalDay) + "引落" + shiftNote(setting.shift);
}

std::string scheduleLabel(const Schedule& schedule)
{
    static const char* const kWeekdays[] = {"日", "月", "火", "水", "木", "金", "土"};
    std::string label;
    switch (schedule.unit) {
    case RepeatUnit::Month:
        label = everyText(schedule.every, "毎月", "か月") + dayText(schedule.day);
        break;
    case RepeatUnit::Year:
        label = everyText(schedule.every, "毎年", "年") + std::to_string(schedule.month) + "月" +
                std::to_string(schedule.day) + "日";
        break;
    case RepeatUnit::Week:
        label = everyText(schedule.every, "毎週", "週") +
                (schedule.weekday >= 0 && schedule.weekday <= 6 ? kWeekdays[schedule.weekday] : "?") + "曜日";
        break;
    }
    return label + shiftNote(schedule.shift);
}
