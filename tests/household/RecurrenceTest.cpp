#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "household/Recurrence.h"

namespace {

Recurrence recurrence(const Schedule& s)
{
    const Checked<Recurrence> r = Recurrence::make(s);
    EXPECT_TRUE(r.ok()) << r.refusal();
    return r.value();
}

Schedule monthly(int day, Date start, HolidayShift shift = HolidayShift::SameDay)
{
    Schedule s;
    s.day = day;
    s.start = start;
    s.shift = shift;
    return s;
}

// "scheduled>posting" per occurrence, or the day alone when it stays.
std::vector<std::string> texts(const std::vector<Occurrence>& occurrences)
{
    std::vector<std::string> out;
    for (const Occurrence& o : occurrences)
        out.push_back(o.scheduled == o.posting ? o.scheduled.iso() : o.scheduled.iso() + ">" + o.posting.iso());
    return out;
}

using Texts = std::vector<std::string>;

TEST(RecurrenceTest, DayThirtyOneFallsOnTheLastDayOfShorterMonthsAndLeapFebruary)
{
    const Recurrence end = recurrence(monthly(31, {2024, 1, 15}));
    EXPECT_EQ(texts(end.between({2023, 1, 1}, {2024, 6, 30})),
              (Texts{"2024-01-31", "2024-02-29", "2024-03-31", "2024-04-30", "2024-05-31", "2024-06-30"}));
    // Moved to the business day before: 31 March and 30 June 2024 are Sundays,
    // 31 August a Saturday.
    const Recurrence before = recurrence(monthly(kLastDay, {2024, 3, 1}, HolidayShift::Before));
    EXPECT_EQ(texts(before.between({2024, 3, 1}, {2024, 8, 31})),
              (Texts{"2024-03-31>2024-03-29", "2024-04-30", "2024-05-31", "2024-06-30>2024-06-28", "2024-07-31",
                     "2024-08-31>2024-08-30"}));
    // Day 30 in a common February: the 28th.
    EXPECT_EQ(texts(recurrence(monthly(30, {2025, 1, 31})).between({2025, 2, 1}, {2025, 3, 1})),
              (Texts{"2025-02-28"}));

    // Every year on 29 February: the 28th in common years.
    Schedule leap;
    leap.unit = RepeatUnit::Year;
    leap.month = 2;
    leap.day = 29;
    leap.start = {2023, 6, 1};
    EXPECT_EQ(texts(recurrence(leap).between({2020, 1, 1}, {2028, 12, 31})),
              (Texts{"2024-02-29", "2025-02-28", "2026-02-28", "2027-02-28", "2028-02-29"}));
}

TEST(RecurrenceTest, EachKindOfScheduleStartsOnItsFirstDayAndStopsAtItsEndOrCount)
{
    // Every 2 months on the 10th from 20 January: the 10th of February first.
    Schedule two = monthly(10, {2026, 1, 20});
    two.every = 2;
    two.end = Date{2026, 8, 10};
    EXPECT_EQ(texts(recurrence(two).between({2025, 1, 1}, {2027, 1, 1})),
              (Texts{"2026-02-10", "2026-04-10", "2026-06-10", "2026-08-10"}));

    // Every week on Monday from a Tuesday, after holidays: 敬老の日 21
    // September, 休日 22, 秋分の日 23.
    Schedule weekly;
    weekly.unit = RepeatUnit::Week;
    weekly.weekday = 1;
    weekly.start = {2026, 9, 1};
    weekly.shift = HolidayShift::After;
    weekly.count = 4;
    EXPECT_EQ(texts(recurrence(weekly).between({2026, 1, 1}, {2026, 12, 31})),
              (Texts{"2026-09-07", "2026-09-14", "2026-09-21>2026-09-24", "2026-09-28"}));
    // The count is counted from the first occurrence, whatever the window.
    EXPECT_EQ(texts(recurrence(weekly).between({2026, 9, 20}, {2026, 12, 31})),
              (Texts{"2026-09-21>2026-09-24", "2026-09-28"}));
    weekly.every = 2;
    weekly.count.reset();
    EXPECT_EQ(texts(recurrence(weekly).between({2026, 9, 10}, {2026, 10, 20})),
              (Texts{"2026-09-21>2026-09-24", "2026-10-05", "2026-10-19"}));

    // Every year on 15 March from a start after it in its own year.
    Schedule yearly;
    yearly.unit = RepeatUnit::Year;
    yearly.month = 3;
    yearly.day = 15;
    yearly.start = {2026, 3, 16};
    yearly.every = 2;
    EXPECT_EQ(texts(recurrence(yearly).between({2026, 1, 1}, {2031, 12, 31})),
              (Texts{"2027-03-15", "2029-03-15", "2031-03-15"}));
}

TEST(RecurrenceTest, AnOccurrenceIsDueOnItsPostingDayOnceAcrossRunsMonthEndsAndHolidays)
{
    // The 23rd, after holidays: 23 February 2026 is 天皇誕生日, 23 May a
    // Saturday, 23 November 勤労感謝の日.
    const Recurrence r = recurrence(monthly(23, {2026, 1, 1}, HolidayShift::After));
    EXPECT_EQ(texts(r.dueSince(std::nullopt, {2026, 6, 1})),
              (Texts{"2026-01-23", "2026-02-23>2026-02-24", "2026-03-23", "2026-04-23", "2026-05-23>2026-05-25"}));
    // Runs on consecutive days split the occurrences without a gap or a
    // repeat; the day of a restart finds nothing new.
    std::vector<Occurrence> stepped;
    Date last{2026, 1, 1};
    for (Date today{2026, 1, 2}; today <= Date{2026, 12, 31}; today = today.addDays(1)) {
        for (const Occurrence& o : r.dueSince(last, today)) {
            EXPECT_EQ(o.posting, today);
            stepped.push_back(o);
        }
        EXPECT_TRUE(r.dueSince(today, today).empty());
        last = today;
    }
    EXPECT_EQ(stepped, r.between({2026, 1, 2}, {2026, 12, 31}));

    // A posting day moved back across a month end belongs to the month it
    // is posted in: 1 November 2026 is a Sunday, posted on Friday 30 October.
    const Recurrence first = recurrence(monthly(1, {2026, 1, 1}, HolidayShift::Before));
    EXPECT_EQ(texts(first.between({2026, 10, 1}, {2026, 10, 31})), (Texts{"2026-10-01", "2026-11-01>2026-10-30"}));
    EXPECT_EQ(texts(first.between({2026, 11, 1}, {2026, 11, 30})), Texts{});
    // Moved forward across it: 31 May 2026 is a Sunday, posted on Monday 1 June.
    const Recurrence end = recurrence(monthly(kLastDay, {2026, 1, 1}, HolidayShift::After));
    EXPECT_TRUE(end.dueSince(Date{2026, 5, 30}, {2026, 5, 31}).empty());
    EXPECT_EQ(texts(end.dueSince(Date{2026, 5, 31}, {2026, 6, 1})), (Texts{"2026-05-31>2026-06-01"}));

    // The next 30 days from today, today itself being already due.
    EXPECT_EQ(texts(r.upcoming({2026, 10, 25})), (Texts{"2026-11-23>2026-11-24"}));
    EXPECT_EQ(texts(r.upcoming({2026, 10, 23})), Texts{});
    EXPECT_EQ(texts(recurrence(monthly(25, {2026, 1, 1})).upcoming({2026, 11, 25})), (Texts{"2026-12-25"}));
}

TEST(RecurrenceTest, ASchedulePastTheCalendarIsRefusedWithItsReason)
{
    struct Case {
        void (*spoil)(Schedule&);
        const char* message;
    };
    const Case cases[] = {
        {[](Schedule& s) { s.day = 32; }, "日は1日から31日（末日）までで指定してください。"},
        {[](Schedule& s) { s.every = 100; }, "繰り返しの間隔は1から99までで指定してください。"},
        {[](Schedule& s) { s.unit = RepeatUnit::Year, s.month = 2, s.day = 30; }, "毎年の月日が正しくありません。"},
        {[](Schedule& s) { s.unit = RepeatUnit::Year, s.month = 13; }, "毎年の月日が正しくありません。"},
        {[](Schedule& s) { s.unit = RepeatUnit::Week, s.weekday = 7; }, "曜日が正しくありません。"},
        {[](Schedule& s) { s.unit = static_cast<RepeatUnit>(3); }, "繰り返しの単位が正しくありません。"},
        {[](Schedule& s) { s.start = {2026, 2, 29}; }, "開始日が正しくありません。"},
        {[](Schedule& s) { s.end = Date{2026, 3, 31}; }, "終了日は開始日以降の日にしてください。"},
        {[](Schedule& s) { s.count = 0; }, "回数は1から9999までで指定してください。"},
        {[](Schedule& s) { s.shift = static_cast<HolidayShift>(3); }, "土日祝の扱いが正しくありません。"},
    };
    for (const Case& c : cases) {
        Schedule s = monthly(25, {2026, 4, 1});
        c.spoil(s);
        const Checked<Recurrence> r = Recurrence::make(s);
        EXPECT_FALSE(r.ok());
        EXPECT_EQ(r.refusal(), c.message);
    }
    Schedule sameDay = monthly(25, {2026, 4, 1});
    sameDay.end = sameDay.start;
    EXPECT_TRUE(Recurrence::make(sameDay).ok());
    EXPECT_TRUE(Recurrence::make(sameDay)->between({2026, 1, 1}, {2026, 12, 31}).empty());
}

}  // namespace
