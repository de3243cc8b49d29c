#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "household/BusinessDays.h"
#include "household/HolidayCalendar.h"
#include "household/HolidayRules.h"
#include "household/PublishedHolidays.h"

namespace {

constexpr int kFirstReferenceYear = 1970;
constexpr int kLastReferenceYear = 2050;

// The reference table, year by year.
std::map<int, std::vector<Holiday>> readReference()
{
    std::ifstream in(ZENVORA_HOLIDAY_REFERENCE);
    std::map<int, std::vector<Holiday>> years;
    std::string line;
    std::getline(in, line);  // date,name
    while (std::getline(in, line)) {
        const std::optional<Date> date = Date::fromIso(line.substr(0, 10));
        if (!date || line.size() < 12 || line[10] != ',') ADD_FAILURE() << "bad reference line: " << line;
        else years[date->year].push_back({*date, line.substr(11)});
    }
    return years;
}

const std::map<int, std::vector<Holiday>>& reference()
{
    static const auto years = readReference();
    return years;
}

// "date name" lines, for readable differences.
std::vector<std::string> lines(const std::vector<Holiday>& holidays)
{
    std::vector<std::string> out;
    for (const Holiday& h : holidays) out.push_back(h.date.iso() + " " + h.name);
    return out;
}

TEST(HolidayTest, TheLawGivesEveryDayOfTheReferenceTableFrom1970To2050)
{
    ASSERT_EQ(reference().size(), size_t(kLastReferenceYear - kFirstReferenceYear + 1));
    int days = 0;
    for (const auto& [year, listed] : reference()) {
        std::vector<Holiday> expected = listed;
        // The one substitute holiday the table names after the Sunday holiday,
        // not after the holiday just before it as all the others.
        for (Holiday& h : expected)
            if (h.date == Date{2020, 5, 6}) h.name = "こどもの日 振替休日";
        EXPECT_EQ(lines(holidaysByLaw(year)), lines(expected)) << year;
        days += static_cast<int>(expected.size());
    }
    EXPECT_EQ(days, 1329);
}

TEST(HolidayTest, TheCalendarAnswersFromThePublishedTableAndTheLawBeyondIt)
{
    // The compiled table is the reference's years 1970 to 2027, whole.
    const PublishedYears years = publishedYears();
    EXPECT_EQ(years.first, 1970);
    EXPECT_EQ(years.last, 2027);
    std::vector<Holiday> published;
    for (const PublishedHoliday& p : publishedHolidays()) published.push_back({{p.year, p.month, p.day}, p.name});
    std::vector<Holiday> expected;
    for (int year = years.first; year <= years.last; ++year)
        expected.insert(expected.end(), reference().at(year).begin(), reference().at(year).end());
    EXPECT_EQ(published, expected);

    // Every day of the reference years, looked up one by one; the published
    // names where the table has them, the law's names after it.
    for (int year = kFirstReferenceYear; year <= kLastReferenceYear; ++year) {
        const std::vector<Holiday> holidays = holidaysOfYear(year);
        if (year <= years.last) EXPECT_EQ(holidays, reference().at(year)) << year;
        else EXPECT_EQ(holidays, holidaysByLaw(year)) << year;
        size_t next = 0;
        for (Date d{year, 1, 1}; d.year == year; d = d.addDays(1)) {
            const bool listed = next < holidays.size() && holidays[next].date == d;
            ASSERT_EQ(isHoliday(d), listed) << d.iso();
            EXPECT_EQ(holidayName(d), listed ? std::optional(holidays[next].name) : std::nullopt) << d.iso();
            if (listed) ++next;
        }
    }

    // Before the reference: the law's first months, and a one-off day.
    EXPECT_TRUE(holidaysOfYear(1947).empty());
    EXPECT_EQ(holidaysOfYear(1948), (std::vector<Holiday>{{{1948, 9, 23}, "秋分の日"},
                                                         {{1948, 11, 3}, "文化の日"},
                                                         {{1948, 11, 23}, "勤労感謝の日"}}));
    EXPECT_EQ(holidayName({1959, 4, 10}), "結婚の儀");
    EXPECT_EQ(holidayName({1966, 9, 15}), "敬老の日");
    // Far years: still a holiday on each fixed day and a sane equinox.
    EXPECT_EQ(holidayName({2300, 1, 1}), "元日");
    EXPECT_EQ(holidaysOfYear(2300).size(), holidaysByLaw(2300).size());
    for (int year : {2100, 2150, 2500, 5000, 9999}) {
        EXPECT_GE(vernalEquinoxDay(year), 19) << year;
        EXPECT_LE(vernalEquinoxDay(year), 22) << year;
        EXPECT_GE(autumnalEquinoxDay(year), 21) << year;
        EXPECT_LE(autumnalEquinoxDay(year), 24) << year;
    }
}

TEST(HolidayTest, AShiftMovesOffWeekendsAndHolidaysToTheNearestBusinessDay)
{
    struct Case {
        Date day;
        Date before;
        Date after;
    };
    const Case cases[] = {
        {{2026, 11, 25}, {2026, 11, 25}, {2026, 11, 25}},  // a Wednesday stays
        {{2026, 11, 23}, {2026, 11, 20}, {2026, 11, 24}},  // 勤労感謝の日, a Monday
        {{2026, 10, 25}, {2026, 10, 23}, {2026, 10, 26}},  // a Sunday
        {{2026, 9, 22}, {2026, 9, 18}, {2026, 9, 24}},     // 休日 between 敬老の日 and 秋分の日
        {{2026, 5, 4}, {2026, 5, 1}, {2026, 5, 7}},        // みどりの日, こどもの日 and its substitute after
        {{2019, 4, 27}, {2019, 4, 26}, {2019, 5, 7}},      // the ten days off of 2019
        {{2027, 1, 1}, {2026, 12, 31}, {2027, 1, 4}},      // New Year's Eve is a business day
        {{2028, 3, 20}, {2028, 3, 17}, {2028, 3, 21}},     // a computed equinox, a Monday
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.day.iso());
        EXPECT_EQ(shiftToBusinessDay(c.day, HolidayShift::Before).iso(), c.before.iso());
        EXPECT_EQ(shiftToBusinessDay(c.day, HolidayShift::After).iso(), c.after.iso());
        EXPECT_EQ(shiftToBusinessDay(c.day, HolidayShift::SameDay).iso(), c.day.iso());
        EXPECT_EQ(isBusinessDay(c.day), c.before == c.day);
    }
}

}  // namespace
