#include <gtest/gtest.h>

#include "household/Date.h"

namespace {

TEST(DateTest, OnlyTheBooksFormOfAnExistingDayIsRead)
{
    EXPECT_EQ(Date::fromIso("2024-02-29"), (Date{2024, 2, 29}));
    EXPECT_EQ(Date::fromIso("0001-01-01"), (Date{1, 1, 1}));
    EXPECT_EQ(Date::fromIso("9999-12-31"), (Date{9999, 12, 31}));
    for (const char* bad : {"2100-02-29", "2026-13-01", "0000-01-01", "2026-2-01", "2026/02/01", "+026-02-01"})
        EXPECT_EQ(Date::fromIso(bad), std::nullopt) << bad;
    EXPECT_EQ((Date{987, 3, 4}).iso(), "0987-03-04");
}

TEST(DateTest, DayArithmeticCrossesMonthsYearsAndLeapDays)
{
    EXPECT_EQ((Date{1970, 1, 1}).serial(), 0);
    EXPECT_EQ((Date{1969, 12, 31}).serial(), -1);
    EXPECT_EQ((Date{2024, 1, 1}).daysUntil({2025, 1, 1}), 366);
    EXPECT_EQ((Date{2026, 11, 23}).weekday(), 1);  // a Monday
    EXPECT_EQ((Date{1970, 1, 1}).weekday(), 4);    // a Thursday
    // Every day of four centuries steps to the next by one serial.
    Date d{1900, 1, 1};
    for (int serial = d.serial(); d.year < 2300; ++serial) {
        ASSERT_TRUE(d.isValid()) << d.iso();
        ASSERT_EQ(d.serial(), serial);
        const Date next = d.addDays(1);
        ASSERT_LT(d, next);
        ASSERT_EQ(Date::fromSerial(serial + 1), next);
        d = next;
    }

    EXPECT_EQ(daysInMonth(1900, 2), 28);
    EXPECT_EQ(daysInMonth(2000, 2), 29);
    EXPECT_EQ((YearMonth{2026, 1}).addMonths(-1), (YearMonth{2025, 12}));
    EXPECT_EQ((YearMonth{2026, 1}).addMonths(-13), (YearMonth{2024, 12}));
    EXPECT_EQ((YearMonth{2026, 11}).addMonths(14), (YearMonth{2028, 1}));
    EXPECT_EQ((YearMonth{2025, 12}).monthsUntil({2027, 1}), 13);
}

}  // namespace
