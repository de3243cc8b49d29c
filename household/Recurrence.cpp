#include "household/Recurrence.h"

#include <algorithm>

namespace {

constexpr int kMaxEvery = 99;
constexpr int kMaxCount = 9999;

// The message that refuses the schedule, or "" when it is valid.
std::string refusalOf(const Schedule& s)
{
    if (!s.start.isValid()) return "開始日が正しくありません。";
    if (s.end && !s.end->isValid()) return "終了日が正しくありません。";
    if (s.end && *s.end < s.start) return "終了日は開始日以降の日にしてください。";
    if (s.count && (*s.count < 1 || *s.count > kMaxCount)) return "回数は1から9999までで指定してください。";
    if (s.every < 1 || s.every > kMaxEvery) return "繰り返しの間隔は1から99までで指定してください。";
    if (!isHolidayShift(static_cast<int>(s.shift))) return "土日祝の扱いが正しくありません。";
    switch (s.unit) {
    case RepeatUnit::Month:
        if (s.day < 1 || s.day > kLastDay) return "日は1日から31日（末日）までで指定してください。";
        return "";
    case RepeatUnit::Year:
        // 29 February is kept, and falls on the 28th in common years.
        if (s.month < 1 || s.month > 12 || s.day < 1 || s.day > daysInMonth(2000, s.month))
            return "毎年の月日が正しくありません。";
        return "";
    case RepeatUnit::Week:
        if (s.weekday < 0 || s.weekday > 6) return "曜日が正しくありません。";
        return "";
    }
    return "繰り返しの単位が正しくありません。";
}

}  // namespace

Checked<Recurrence> Recurrence::make(const Schedule& schedule)
{
    std::string refusal = refusalOf(schedule);
    if (!refusal.empty()) return Checked<Recurrence>::refused(std::move(refusal));
    return Checked<Recurrence>::accepted(Recurrence(schedule));
}

Recurrence::Recurrence(const Schedule& s) : schedule_(s)
{
    const Date& start = s.start;
    switch (s.unit) {
    case RepeatUnit::Month:
        first_ = dayOfMonth(yearMonthOf(start), s.day);
        if (first_ < start) first_ = dayOfMonth(yearMonthOf(start).addMonths(1), s.day);
        break;
    case RepeatUnit::Year:
        first_ = dayOfMonth({start.year, s.month}, s.day);
        if (first_ < start) first_ = dayOfMonth({start.year + 1, s.month}, s.day);
        break;
    case RepeatUnit::Week:
        first_ = start.addDays((s.weekday - start.weekday() + 7) % 7);
        break;
    }
}

Date Recurrence::scheduledAt(int index) const
{
    const int steps = index * schedule_.every;
    switch (schedule_.unit) {
    case RepeatUnit::Month:
        return dayOfMonth(yearMonthOf(first_).addMonths(steps), schedule_.day);
    case RepeatUnit::Year:
        return dayOfMonth({first_.year + steps, schedule_.month}, schedule_.day);
    case RepeatUnit::Week:
        break;
    }
    return first_.addDays(7 * steps);
}

bool Recurrence::exists(int index) const
{
    if (schedule_.count && index >= *schedule_.count) return false;
    const Date d = scheduledAt(index);
    return d.year <= 9999 && (!schedule_.end || d <= *schedule_.end);
}

int Recurrence::firstScheduledFrom(const Date& date) const
{
    if (date <= first_) return 0;
    // An estimate from the distance that never overshoots (it counts whole
    // units), then exact by stepping forward.
    int units = 0;
    switch (schedule_.unit) {
    case RepeatUnit::Month: units = yearMonthOf(first_).monthsUntil(yearMonthOf(date)); break;
    case RepeatUnit::Year: units = date.year - first_.year; break;
    case RepeatUnit::Week: units = first_.daysUntil(date) / 7; break;
    }
    int index = std::max(0, units / schedule_.every);
    while (scheduledAt(index) < date) ++index;
    return index;
}

std::vector<Occurrence> Recurrence::between(const Date& from, const Date& to) const
{
    std::vector<Occurrence> found;
    if (to < from) return found;
    // The posting day never decreases from one occurrence to the next, so
    // the first one posted on or after `from` is at most a few before the
    // first one scheduled on or after it.
    int index = firstScheduledFrom(from);
    while (index > 0 && shiftToBusinessDay(scheduledAt(index - 1), schedule_.shift) >= from) --index;
    for (; exists(index); ++index) {
        const Date scheduled = scheduledAt(index);
        const Date posting = shiftToBusinessDay(scheduled, schedule_.shift);
        if (posting > to) break;
        if (posting >= from) found.push_back({scheduled, posting});
    }
    return found;
}

std::vector<Occurrence> Recurrence::dueSince(const std::optional<Date>& lastRun, const Date& today) const
{
    return between(lastRun ? lastRun->addDays(1) : Date{1, 1, 1}, today);
}

std::vector<Occurrence> Recurrence::upcoming(const Date& today, int days) const
{
    return between(today.addDays(1), today.addDays(days));
}
