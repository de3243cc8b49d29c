#include "household/TeikiSchedule.h"

#include <algorithm>

namespace {

// A day no calendar has: Recurrence::make refuses it.
constexpr Date kNoDay{0, 0, 0};

Date dayOrNone(const std::string& text)
{
    return Date::fromIso(text).value_or(kNoDay);
}

}  // namespace

Schedule scheduleOf(const Teiki& t)
{
    Schedule s;
    s.unit = static_cast<RepeatUnit>(t.Tani);
    s.every = static_cast<int>(t.Kankaku);
    s.day = static_cast<int>(t.Hi);
    s.month = static_cast<int>(t.Tuki);
    s.weekday = static_cast<int>(t.Youbi);
    s.start = dayOrNone(t.Kaisi);
    if (!t.Syuuryou.empty()) s.end = dayOrNone(t.Syuuryou);
    if (t.Kaisuu != 0) s.count = static_cast<int>(t.Kaisuu);
    s.shift = static_cast<HolidayShift>(t.Kyuujitu);
    return s;
}

void setSchedule(Teiki& t, const Schedule& s)
{
    t.Tani = static_cast<int64_t>(s.unit);
    t.Kankaku = s.every;
    t.Hi = s.day;
    t.Tuki = s.month;
    t.Youbi = s.weekday;
    t.Kaisi = s.start.iso();
    t.Syuuryou = s.end ? s.end->iso() : std::string();
    t.Kaisuu = s.count.value_or(0);
    t.Kyuujitu = static_cast<int64_t>(s.shift);
}

Checked<Recurrence> recurrenceOf(const Teiki& teiki)
{
    // A unit or shift number the program does not know is refused as such.
    if (teiki.Tani < 0 || teiki.Tani > 2) return Checked<Recurrence>::refused("繰り返しの単位が正しくありません。");
    return Recurrence::make(scheduleOf(teiki));
}

bool movesDays(const Teiki& before, const Teiki& after)
{
    return before.Tani != after.Tani || before.Kankaku != after.Kankaku || before.Hi != after.Hi ||
           before.Tuki != after.Tuki || before.Youbi != after.Youbi || before.Kaisi != after.Kaisi;
}

std::string kakuninOfNewRule(const Date& today)
{
    return today.addDays(-1).iso();
}

std::string kakuninAfterEdit(const Teiki& before, const Teiki& after, const Date& today)
{
    if (!movesDays(before, after)) return before.Kakunin;
    return std::max(before.Kakunin, today.iso());
}
