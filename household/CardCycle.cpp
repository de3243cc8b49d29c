#include "household/CardCycle.h"

namespace {

constexpr int kLatestClosingDay = 28;
constexpr int kMostMonthsAfterClosing = 3;

std::string refusalOf(const CardCycleSetting& s)
{
    if ((s.closingDay < 1 || s.closingDay > kLatestClosingDay) && s.closingDay != kLastDay)
        return "締め日は1日から28日まで、または末日にしてください。";
    if (s.withdrawalDay < 1 || s.withdrawalDay > kLastDay) return "引落日は1日から31日（末日）までにしてください。";
    if (s.monthsAfterClosing < 0 || s.monthsAfterClosing > kMostMonthsAfterClosing)
        return "引落月は締めた月から3か月後までにしてください。";
    if (s.monthsAfterClosing == 0 && s.withdrawalDay <= s.closingDay)
        return "締めた月のうちに引き落とすときは、引落日を締め日より後の日にしてください。";
    if (!isHolidayShift(static_cast<int>(s.shift))) return "土日祝の扱いが正しくありません。";
    return "";
}

}  // namespace

Checked<CardCycle> CardCycle::make(const CardCycleSetting& setting)
{
    std::string refusal = refusalOf(setting);
    if (!refusal.empty()) return Checked<CardCycle>::refused(std::move(refusal));
    return Checked<CardCycle>::accepted(CardCycle(setting));
}

CardPeriod CardCycle::period(const YearMonth& closingMonth) const
{
    const Date withdrawal = dayOfMonth(closingMonth.addMonths(setting_.monthsAfterClosing), setting_.withdrawalDay);
    return {closingMonth,
            {closingDate(closingMonth.addMonths(-1)).addDays(1), closingDate(closingMonth)},
            shiftToBusinessDay(withdrawal, setting_.shift)};
}

CardPeriod CardCycle::periodOf(const Date& date) const
{
    const YearMonth month = yearMonthOf(date);
    return period(date <= closingDate(month) ? month : month.addMonths(1));
}

CardPeriod CardCycle::nextWithdrawal(const Date& today) const
{
    // Withdrawal days rise from one period to the next; start a little early
    // and step forward to the first one on or after today.
    YearMonth month = periodOf(today).closingMonth.addMonths(-setting_.monthsAfterClosing - 1);
    while (period(month.addMonths(-1)).withdrawal >= today) month = month.addMonths(-1);
    while (period(month).withdrawal < today) month = month.addMonths(1);
    return period(month);
}

std::vector<CardPeriod> CardCycle::closedPeriods(const YearMonth& first, const Date& today) const
{
    std::vector<CardPeriod> closed;
    for (YearMonth month = first;; month = month.addMonths(1)) {
        CardPeriod p = period(month);
        if (!isClosed(p, today)) break;
        closed.push_back(p);
    }
    return closed;
}
