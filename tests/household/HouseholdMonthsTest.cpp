#include <gtest/gtest.h>

#include <string>

#include "household/HouseholdMonths.h"

namespace {

HouseholdMonths months(int startDay, HolidayShift shift, MonthNaming naming)
{
    const Checked<HouseholdMonths> m = HouseholdMonths::make({startDay, shift, naming});
    EXPECT_TRUE(m.ok()) << m.refusal();
    return m.value();
}

std::string text(const DateRange& r)
{
    return r.first.iso() + ".." + r.last.iso();
}

struct Row {
    YearMonth name;
    const char* range;
};

void expectMonths(const HouseholdMonths& m, std::initializer_list<Row> rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.name.year) + "-" + std::to_string(row.name.month));
        EXPECT_EQ(text(m.month(row.name)), row.range);
    }
}

TEST(HouseholdMonthsTest, PaydayMonthsAcrossYearEndsAndHolidayShiftedStarts)
{
    // The 25th, on the business day before. 25 January 2026 and 25 October
    // 2026 are Sundays, 25 April 2027 too; 25 December 2026 is a Friday.
    const HouseholdMonths byEnd = months(25, HolidayShift::Before, MonthNaming::ByEndMonth);
    expectMonths(byEnd, {{{2026, 1}, "2025-12-25..2026-01-22"},
                         {{2026, 2}, "2026-01-23..2026-02-24"},
                         {{2026, 11}, "2026-10-23..2026-11-24"},
                         {{2026, 12}, "2026-11-25..2026-12-24"},
                         {{2027, 1}, "2026-12-25..2027-01-24"},
                         {{2027, 4}, "2027-03-25..2027-04-22"}});
    EXPECT_EQ(text(byEnd.year(2026)), "2025-12-25..2026-12-24");
    // Named by the month they start in, the same ranges move one name down.
    const HouseholdMonths byStart = months(25, HolidayShift::Before, MonthNaming::ByStartMonth);
    expectMonths(byStart, {{{2025, 12}, "2025-12-25..2026-01-22"}, {{2026, 11}, "2026-11-25..2026-12-24"}});
    EXPECT_EQ(text(byStart.year(2026)), "2026-01-23..2027-01-24");
    // On the business day after: Monday 26 October 2026.
    const HouseholdMonths after = months(25, HolidayShift::After, MonthNaming::ByEndMonth);
    expectMonths(after, {{{2026, 10}, "2026-09-25..2026-10-25"}, {{2026, 11}, "2026-10-26..2026-11-24"}});
    // Kept on the day: a Sunday starts the month.
    expectMonths(months(25, HolidayShift::SameDay, MonthNaming::ByEndMonth),
                 {{{2026, 11}, "2026-10-25..2026-11-24"}});
    // A shift that crosses into the month before: the 2nd of May 2027 is a
    // Sunday, and 1 May a Saturday.
    expectMonths(months(2, HolidayShift::Before, MonthNaming::ByStartMonth),
                 {{{2027, 4}, "2027-04-02..2027-04-29"}, {{2027, 5}, "2027-04-30..2027-06-01"}});
}

TEST(HouseholdMonthsTest, LeapFebruaryAndTheCalendarMonthsOfStartDayOne)
{
    // From the 28th: the month over February is a day longer in a leap year.
    const HouseholdMonths late = months(28, HolidayShift::SameDay, MonthNaming::ByStartMonth);
    expectMonths(late, {{{2024, 2}, "2024-02-28..2024-03-27"}, {{2025, 2}, "2025-02-28..2025-03-27"}});
    EXPECT_EQ(late.monthOf({2024, 2, 29}), (YearMonth{2024, 2}));

    // Start day 1 is the calendar, whatever the shift and the naming.
    for (HolidayShift shift : {HolidayShift::SameDay, HolidayShift::Before, HolidayShift::After})
        for (MonthNaming naming : {MonthNaming::ByEndMonth, MonthNaming::ByStartMonth}) {
            const HouseholdMonths m = months(1, shift, naming);
            EXPECT_TRUE(m.isCalendarMonths());
            for (int year : {2024, 2026})
                for (int month = 1; month <= 12; ++month)
                    EXPECT_EQ(m.month({year, month}), (DateRange{{year, month, 1}, dayOfMonth({year, month}, kLastDay)}));
            EXPECT_EQ(m.year(2024), (DateRange{{2024, 1, 1}, {2024, 12, 31}}));
        }
    EXPECT_EQ(HouseholdMonths().month({2024, 2}), (DateRange{{2024, 2, 1}, {2024, 2, 29}}));
}

TEST(HouseholdMonthsTest, EverySettingTilesTheDaysWithoutGapOrOverlap)
{
    for (int startDay = 1; startDay <= 28; ++startDay)
        for (HolidayShift shift : {HolidayShift::SameDay, HolidayShift::Before, HolidayShift::After})
            for (MonthNaming naming : {MonthNaming::ByEndMonth, MonthNaming::ByStartMonth}) {
                SCOPED_TRACE(std::to_string(startDay) + "/" + std::to_string(int(shift)) + "/" +
                             std::to_string(int(naming)));
                const HouseholdMonths m = months(startDay, shift, naming);
                const auto year = m.monthsOfYear(2026);
                ASSERT_EQ(year.front().first, m.year(2026).first);
                ASSERT_EQ(year.back().last, m.year(2026).last);
                ASSERT_EQ(m.month({2025, 12}).last.addDays(1), year.front().first);
                for (size_t i = 0; i + 1 < year.size(); ++i) ASSERT_EQ(year[i].last.addDays(1), year[i + 1].first);
                for (Date d{2025, 12, 1}; d <= Date{2027, 1, 31}; d = d.addDays(1))
                    ASSERT_TRUE(m.month(m.monthOf(d)).contains(d)) << d.iso();
            }
}

TEST(HouseholdMonthsTest, AStartDayThatSomeMonthsLackIsRefusedWithItsReason)
{
    for (int day : {0, 29, 30, 31}) {
        const Checked<HouseholdMonths> m =
            HouseholdMonths::make({day, HolidayShift::SameDay, MonthNaming::ByEndMonth});
        EXPECT_FALSE(m.ok()) << day;
        EXPECT_EQ(m.refusal(),
                  "月の始まりは1日から28日までの日にしてください。29日から31日は、その日がない月があるため選べません。");
    }
    EXPECT_EQ(HouseholdMonths::make({25, static_cast<HolidayShift>(7), MonthNaming::ByEndMonth}).refusal(),
              "土日祝の扱いが正しくありません。");
    EXPECT_EQ(HouseholdMonths::make({25, HolidayShift::Before, static_cast<MonthNaming>(2)}).refusal(),
              "月の呼び方が正しくありません。");
}

}  // namespace
