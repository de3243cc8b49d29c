#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "household/CardCycle.h"

namespace {

CardCycle cycle(int closingDay, int withdrawalDay, int monthsAfter, HolidayShift shift = HolidayShift::After)
{
    const Checked<CardCycle> c = CardCycle::make({closingDay, withdrawalDay, monthsAfter, shift});
    EXPECT_TRUE(c.ok()) << c.refusal();
    return c.value();
}

// "closing month: purchases -> withdrawal"
std::string text(const CardPeriod& p)
{
    char month[8];
    std::snprintf(month, sizeof month, "%04d-%02d", p.closingMonth.year, p.closingMonth.month);
    return std::string(month) + ": " + p.purchases.first.iso() + ".." + p.purchases.last.iso() + " -> " +
           p.withdrawal.iso();
}

TEST(CardCycleTest, PeriodsAndWithdrawalDaysForEachClosingDayAndDelay)
{
    struct Case {
        CardCycle card;
        Date purchase;
        const char* period;
    };
    const Case cases[] = {
        // Closing on the 15th, paid on the 10th of the next month.
        {cycle(15, 10, 1), {2026, 11, 15}, "2026-11: 2026-10-16..2026-11-15 -> 2026-12-10"},
        // 10 January 2027 is a Sunday and the 11th 成人の日: Tuesday the 12th.
        {cycle(15, 10, 1), {2026, 11, 16}, "2026-12: 2026-11-16..2026-12-15 -> 2027-01-12"},
        // Two months later, on 建国記念の日.
        {cycle(15, 11, 2), {2026, 12, 1}, "2026-12: 2026-11-16..2026-12-15 -> 2027-02-12"},
        // Closing on the 25th, paid on the 27th: 27 February 2027 is a Saturday.
        {cycle(25, 27, 1), {2026, 12, 26}, "2027-01: 2026-12-26..2027-01-25 -> 2027-03-01"},
        {cycle(25, 27, 2), {2026, 12, 25}, "2026-12: 2026-11-26..2026-12-25 -> 2027-03-01"},
        // Closing on the last day: a leap February, then paid on the 27th.
        {cycle(kLastDay, 27, 1), {2024, 2, 29}, "2024-02: 2024-02-01..2024-02-29 -> 2024-03-27"},
        {cycle(kLastDay, 27, 1), {2024, 3, 1}, "2024-03: 2024-03-01..2024-03-31 -> 2024-04-30"},
        // Two months later on the 4th: みどりの日, こどもの日, then the
        // substitute for a Sunday 憲法記念日.
        {cycle(kLastDay, 4, 2), {2026, 3, 31}, "2026-03: 2026-03-01..2026-03-31 -> 2026-05-07"},
        {cycle(kLastDay, 4, 2, HolidayShift::Before), {2026, 3, 1}, "2026-03: 2026-03-01..2026-03-31 -> 2026-05-01"},
        // Paid on the last day, a Saturday in February 2026.
        {cycle(15, kLastDay, 1), {2026, 1, 10}, "2026-01: 2025-12-16..2026-01-15 -> 2026-03-02"},
        // Paid in the month it closes.
        {cycle(10, 26, 0), {2026, 11, 11}, "2026-12: 2026-11-11..2026-12-10 -> 2026-12-28"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.period);
        const CardPeriod p = c.card.periodOf(c.purchase);
        EXPECT_EQ(text(p), c.period);
        EXPECT_EQ(c.card.periodOf(p.purchases.first), p);
        EXPECT_EQ(c.card.period(p.closingMonth.addMonths(1)).purchases.first, p.purchases.last.addDays(1));
    }
}

TEST(CardCycleTest, TheNextWithdrawalAndThePeriodsClosedButNotSettled)
{
    const CardCycle monthly = cycle(15, 10, 1);
    // On the 12th of November the withdrawal of the 10th has passed; the
    // next one is for the period still open.
    CardPeriod next = monthly.nextWithdrawal({2026, 11, 12});
    EXPECT_EQ(text(next), "2026-11: 2026-10-16..2026-11-15 -> 2026-12-10");
    EXPECT_FALSE(CardCycle::isClosed(next, {2026, 11, 12}));
    EXPECT_FALSE(CardCycle::isClosed(next, {2026, 11, 15}));
    EXPECT_TRUE(CardCycle::isClosed(next, {2026, 11, 16}));
    // On a withdrawal day that withdrawal is still the next one.
    EXPECT_EQ(monthly.nextWithdrawal({2026, 11, 10}).closingMonth, (YearMonth{2026, 10}));
    // A withdrawal moved past a holiday: on 11 January 2027 it is still ahead.
    EXPECT_EQ(monthly.nextWithdrawal({2027, 1, 11}).withdrawal, (Date{2027, 1, 12}));
    EXPECT_EQ(monthly.nextWithdrawal({2027, 1, 13}).withdrawal, (Date{2027, 2, 10}));
    // One moved across a year end, past the period closed after it: 31
    // December 2022 is a Saturday, 1 January a Sunday, the 2nd its substitute.
    EXPECT_EQ(text(cycle(1, kLastDay, 1).nextWithdrawal({2023, 1, 2})),
              "2022-11: 2022-10-02..2022-11-01 -> 2023-01-03");

    // Two months later: two closed periods wait at once.
    const CardCycle late = cycle(kLastDay, 4, 2);
    next = late.nextWithdrawal({2026, 5, 6});
    EXPECT_EQ(text(next), "2026-03: 2026-03-01..2026-03-31 -> 2026-05-07");
    std::vector<std::string> closed;
    for (const CardPeriod& p : late.closedPeriods({2026, 3}, {2026, 5, 6})) closed.push_back(text(p));
    EXPECT_EQ(closed, (std::vector<std::string>{"2026-03: 2026-03-01..2026-03-31 -> 2026-05-07",
                                                "2026-04: 2026-04-01..2026-04-30 -> 2026-06-04"}));
    EXPECT_EQ(late.closedPeriods({2026, 1}, {2026, 5, 6}).size(), 4u);
    EXPECT_TRUE(late.closedPeriods({2026, 5}, {2026, 5, 31}).empty());
    EXPECT_EQ(late.closedPeriods({2026, 5}, {2026, 6, 1}).size(), 1u);
}

TEST(CardCycleTest, ACycleThatCannotBeKeptIsRefusedWithItsReason)
{
    struct Case {
        CardCycleSetting setting;
        const char* message;
    };
    const Case cases[] = {
        {{29, 10, 1, HolidayShift::After}, "締め日は1日から28日まで、または末日にしてください。"},
        {{15, 32, 1, HolidayShift::After}, "引落日は1日から31日（末日）までにしてください。"},
        {{15, 10, 4, HolidayShift::After}, "引落月は締めた月から3か月後までにしてください。"},
        {{15, 15, 0, HolidayShift::After}, "締めた月のうちに引き落とすときは、引落日を締め日より後の日にしてください。"},
        {{15, 10, 1, static_cast<HolidayShift>(-1)}, "土日祝の扱いが正しくありません。"},
    };
    for (const Case& c : cases) {
        const Checked<CardCycle> card = CardCycle::make(c.setting);
        EXPECT_FALSE(card.ok());
        EXPECT_EQ(card.refusal(), c.message);
    }
}

}  // namespace
