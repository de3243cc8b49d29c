#include "household/HolidayRules.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr Date kLawInForce{1948, 7, 20};
// Substitute holidays exist since this amendment came into force.
constexpr Date kSubstitutesFrom{1973, 4, 12};
// Citizens' holidays (a day between two national holidays) since this one.
constexpr Date kCitizensHolidaysFrom{1985, 12, 27};
// From 2007 a substitute holiday moves past the national holidays after a
// Sunday holiday, and a citizens' holiday may fall on a Sunday.
constexpr int kYearOf2007Reform = 2007;

constexpr int kSunday = 0;
constexpr int kMonday = 1;

struct OneOff {
    Date date;
    const char* name;
};

// Holidays that special laws made for one day: the Crown Prince's weddings,
// the funeral of the Showa Emperor, the enthronements.
constexpr OneOff kOneOffs[] = {
    {{1959, 4, 10}, "結婚の儀"},
    {{1989, 2, 24}, "大喪の礼"},
    {{1990, 11, 12}, "即位礼正殿の儀"},
    {{1993, 6, 9}, "結婚の儀"},
    {{2019, 5, 1}, "休日（祝日扱い）"},
    {{2019, 10, 22}, "休日（祝日扱い）"},
};

Date nthMonday(int year, int month, int n)
{
    const Date first{year, month, 1};
    return first.addDays((kMonday - first.weekday() + 7) % 7 + 7 * (n - 1));
}

// Leap days (29 February) from 1981 to `year`, by the Gregorian rule.
int64_t leapDaysSince1980(int year)
{
    auto upTo = [](int64_t y) { return y / 4 - y / 100 + y / 400; };
    return upTo(year) - upTo(1980);
}

// The equinox formula in millionths of a day: `base` is the day of the
// equinox of 1980 (of 1900–1979 the formula's own base, counted from 1983),
// moved by the length of the tropical year and back by a day at each leap day.
int equinoxDay(int year, int64_t base1900, int64_t base1980, int64_t base2100)
{
    constexpr int64_t kYearDrift = 242194;  // 0.242194 days a year
    constexpr int64_t kDay = 1000000;
    const int64_t drift = kYearDrift * (year - 1980);
    int64_t micro;
    if (year < 1980)
        micro = base1900 + drift - kDay * ((year - 1983) / 4);  // truncating, as the formula divides
    else if (year < 2100)
        micro = base1980 + drift - kDay * ((year - 1980) / 4);
    else  // the 2100–2150 formula; later years by the same Gregorian leap days
        micro = base2100 + drift - kDay * (leapDaysSince1980(year) + 1);
    return static_cast<int>(micro / kDay);
}

// The days the law names each year, and the one-off days, unsorted.
std::vector<Holiday> nationalHolidays(int y)
{
    std::vector<Holiday> days;
    auto add = [&](Date d, const char* name) { days.push_back({d, name}); };
    auto fixed = [&](int m, int d, const char* name) { add({y, m, d}, name); };
    auto during = [y](int from, int to) { return from <= y && y <= to; };

    fixed(1, 1, "元日");
    if (y < 2000) fixed(1, 15, "成人の日");
    else add(nthMonday(y, 1, 2), "成人の日");
    if (y >= 1967) fixed(2, 11, "建国記念の日");
    if (y >= 2020) fixed(2, 23, "天皇誕生日");
    add({y, 3, vernalEquinoxDay(y)}, "春分の日");
    if (y < 1989) fixed(4, 29, "天皇誕生日");
    else if (y < 2007) fixed(4, 29, "みどりの日");
    else fixed(4, 29, "昭和の日");
    fixed(5, 3, "憲法記念日");
    if (y >= 2007) fixed(5, 4, "みどりの日");
    fixed(5, 5, "こどもの日");
    // The Tokyo Olympics moved 海の日, スポーツの日 and 山の日 in 2020 and 2021.
    if (y == 2020) fixed(7, 23, "海の日");
    else if (y == 2021) fixed(7, 22, "海の日");
    else if (during(1996, 2002)) fixed(7, 20, "海の日");
    else if (y >= 2003) add(nthMonday(y, 7, 3), "海の日");
    if (y == 2020) fixed(7, 24, "スポーツの日");
    if (y == 2021) fixed(7, 23, "スポーツの日");
    if (y == 2020) fixed(8, 10, "山の日");
    else if (y == 2021) fixed(8, 8, "山の日");
    else if (y >= 2016) fixed(8, 11, "山の日");
    if (during(1966, 2002)) fixed(9, 15, "敬老の日");
    else if (y >= 2003) add(nthMonday(y, 9, 3), "敬老の日");
    add({y, 9, autumnalEquinoxDay(y)}, "秋分の日");
    if (during(1966, 1999)) fixed(10, 10, "体育の日");
    // 2019 was the last 体育の日; the published table writes the new name beside it.
    else if (y == 2019) add(nthMonday(y, 10, 2), "体育の日（スポーツの日）");
    else if (during(2000, 2018)) add(nthMonday(y, 10, 2), "体育の日");
    else if (y >= 2022) add(nthMonday(y, 10, 2), "スポーツの日");
    fixed(11, 3, "文化の日");
    fixed(11, 23, "勤労感謝の日");
    if (during(1989, 2018)) fixed(12, 23, "天皇誕生日");
    for (const OneOff& o : kOneOffs)
        if (o.date.year == y) add(o.date, o.name);

    std::erase_if(days, [](const Holiday& h) { return h.date < kLawInForce; });
    std::sort(days.begin(), days.end(), [](const Holiday& a, const Holiday& b) { return a.date < b.date; });
    return days;
}

const Holiday* find(const std::vector<Holiday>& days, const Date& d)
{
    auto it = std::find_if(days.begin(), days.end(), [&](const Holiday& h) { return h.date == d; });
    return it == days.end() ? nullptr : &*it;
}

bool isIn(const std::vector<Holiday>& days, const Date& d)
{
    return find(days, d) != nullptr;
}

// A national holiday on a Sunday gives the next day off; since 2007 the
// next day that is not a national holiday. The day is named after the
// holiday just before it (こどもの日 振替休日 after a Sunday 憲法記念日).
void addSubstitutes(const std::vector<Holiday>& national, std::vector<Holiday>& out)
{
    for (const Holiday& h : national) {
        if (h.date < kSubstitutesFrom || h.date.weekday() != kSunday) continue;
        Date next = h.date.addDays(1);
        if (h.date.year >= kYearOf2007Reform)
            while (isIn(national, next)) next = next.addDays(1);
        if (isIn(national, next)) continue;
        out.push_back({next, find(national, next.addDays(-1))->name + " 振替休日"});
    }
}

// A day between two national holidays is a holiday itself; before 2007 not
// when it is a Sunday or already a substitute holiday.
void addCitizensHolidays(const std::vector<Holiday>& national, std::vector<Holiday>& out)
{
    for (size_t i = 0; i + 1 < national.size(); ++i) {
        const Date between = national[i].date.addDays(1);
        if (national[i + 1].date != between.addDays(1) || between < kCitizensHolidaysFrom) continue;
        if (between.year < kYearOf2007Reform && (between.weekday() == kSunday || isIn(out, between))) continue;
        if (!isIn(out, between)) out.push_back({between, "休日"});
    }
}

}  // namespace

int vernalEquinoxDay(int year)
{
    return equinoxDay(year, 20835700, 20843100, 21851000);
}

int autumnalEquinoxDay(int year)
{
    return equinoxDay(year, 23258800, 23248800, 24248800);
}

std::vector<Holiday> holidaysByLaw(int year)
{
    if (year < kLawInForce.year) return {};
    const std::vector<Holiday> national = nationalHolidays(year);
    std::vector<Holiday> all = national;
    addSubstitutes(national, all);
    addCitizensHolidays(national, all);
    std::sort(all.begin(), all.end(), [](const Holiday& a, const Holiday& b) { return a.date < b.date; });
    return all;
}
