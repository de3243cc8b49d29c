#include "bench/HouseholdBench.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

#include "bench/Compare.h"
#include "bench/Floor.h"
#include "bench/Generator.h"
#include "store/DataModel.h"

namespace {

constexpr int64_t kCardEntries = 100000;

std::vector<std::string> firstDaysOf(const std::vector<DateRange>& ranges)
{
    std::vector<std::string> days;
    for (const DateRange& r : ranges) days.push_back(r.first.iso());
    return days;
}

// Budgets for the total and a few categories, one month of them raised.
void setBudgets(DataModel& dm)
{
    std::array<std::optional<int64_t>, 12> december{};
    december[11] = 90000;
    dm.yosanReplace(kYosanTotal, 300000, {});
    int set = 0;
    for (const auto& h : dm.himokuList) {
        if (h->SyubetuNo != 1 || set == 6) continue;
        dm.yosanReplace(h->Id, 30000 + 1000 * set, set == 0 ? december : std::array<std::optional<int64_t>, 12>{});
        ++set;
    }
}

void benchCard(const std::string& dir, int runs)
{
    const std::string path = dir + "/Card.sql";
    GeneratedCardBook book;
    std::string error;
    if (!generateCardBook(path, kCardEntries, 2025, &book, &error)) {
        std::fprintf(stderr, "cannot generate the card book: %s\n", error.c_str());
        return;
    }
    DataModel dm(path);
    Floor floor(path);
    const Date today = *Date::fromIso(book.today);
    const Card& card = *dm.cardOf(book.cardSisanId);
    // The floor sums the same periods the store sums: each one due, the next
    // withdrawal and the open period.
    CardOutlook outlook;
    dm.cardOutlookOf(book.cardSisanId, today, outlook);
    std::vector<std::pair<std::string, std::string>> periods;
    const auto add = [&](const CardPeriod& p) { periods.emplace_back(p.purchases.first.iso(), p.purchases.last.iso()); };
    for (const auto& due : outlook.due) add(due.period);
    const bool nextIsDue = !outlook.due.empty() && outlook.next && outlook.due.back().period == outlook.next->period;
    if (outlook.next && !nextIsDue) add(outlook.next->period);
    if (outlook.open) add(outlook.open->period);
    const int64_t first = int64_t{card.firstClosing.year} * 100 + card.firstClosing.month;
    compare("card_next_withdrawal", std::max(runs, 21),
            [&](int) {
                CardOutlook o;
                dm.cardOutlookOf(book.cardSisanId, today, o);
            },
            [&](int) { floor.cardPeriods(book.cardSisanId, first, periods); });
}

}  // namespace

void benchHousehold(DataModel& dm, Floor& floor, int nen, const std::string& dir, int runs)
{
    dm.updateHouseholdMonthSetting({25, HolidayShift::Before, MonthNaming::ByEndMonth});
    std::string ids;  // the assets whose entries the store reads, as it lists them
    for (const auto& sisan : dm.sisanList) ids += (ids.empty() ? "" : ",") + std::to_string(sisan->Id);
    const std::array<DateRange, 12> months = dm.householdMonths.monthsOfYear(nen);
    const std::vector<DateRange> year(months.begin(), months.end());
    compare("annual_year_payday", runs, [&](int) { dm.annualInOutFromItemsTable(std::to_string(nen)); },
            [&](int) { floor.rangeSums(ids, firstDaysOf(year), year.back().last.iso(), true); });

    setBudgets(dm);
    const DateRange june = dm.householdMonths.month({nen, 6});
    compare("budget_month_1m", std::max(runs, 21),
            [&](int) {
                std::vector<YosanRow> rows;
                dm.yosanJissekiOf(nen, 6, rows);
            },
            [&](int) { floor.rangeSums(ids, {june.first.iso()}, june.last.iso(), false); });
    dm.updateHouseholdMonthSetting({});

    benchCard(dir, runs);
}
