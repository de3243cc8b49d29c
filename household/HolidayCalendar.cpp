#include "household/HolidayCalendar.h"

#include <algorithm>

#include "household/HolidayRules.h"
#include "household/PublishedHolidays.h"

namespace {

// Years held in memory, computed once; a year outside them is computed
// when asked for.
constexpr int kFirstHeldYear = 1948;
constexpr int kLastHeldYear = 2200;

std::vector<Holiday> publishedOrByLaw(int year)
{
    const PublishedYears published = publishedYears();
    if (year < published.first || year > published.last) return holidaysByLaw(year);
    std::vector<Holiday> days;
    for (const PublishedHoliday& p : publishedHolidays())
        if (p.year == year) days.push_back({{p.year, p.month, p.day}, p.name});
    return days;
}

// Every held year's holidays in date order, with their serial days beside
// them for a binary search.
struct HeldHolidays {
    std::vector<Holiday> days;
    std::vector<int> serials;

    HeldHolidays()
    {
        for (int year = kFirstHeldYear; year <= kLastHeldYear; ++year)
            for (Holiday& h : publishedOrByLaw(year)) days.push_back(std::move(h));
        serials.reserve(days.size());
        for (const Holiday& h : days) serials.push_back(h.date.serial());
    }

    const Holiday* find(const Date& date) const
    {
        const int serial = date.serial();
        auto it = std::lower_bound(serials.begin(), serials.end(), serial);
        if (it == serials.end() || *it != serial) return nullptr;
        return &days[static_cast<size_t>(it - serials.begin())];
    }
};

const HeldHolidays& held()
{
    static const HeldHolidays holidays;  // initialised once, thread-safely
    return holidays;
}

bool isHeldYear(int year)
{
    return year >= kFirstHeldYear && year <= kLastHeldYear;
}

}  // namespace

std::vector<Holiday> holidaysOfYear(int year)
{
    if (!isHeldYear(year)) return holidaysByLaw(year);
    const auto& days = held().days;
    auto byYear = [](const Holiday& h, int y) { return h.date.year < y; };
    auto begin = std::lower_bound(days.begin(), days.end(), year, byYear);
    auto end = std::lower_bound(begin, days.end(), year + 1, byYear);
    return {begin, end};
}

bool isHoliday(const Date& date)
{
    if (isHeldYear(date.year)) return held().find(date) != nullptr;
    return holidayName(date).has_value();
}

std::optional<std::string> holidayName(const Date& date)
{
    if (isHeldYear(date.year)) {
        const Holiday* h = held().find(date);
        if (h == nullptr) return std::nullopt;
        return h->name;
    }
    for (const Holiday& h : holidaysByLaw(date.year))
        if (h.date == date) return h.name;
    return std::nullopt;
}
