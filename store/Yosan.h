#pragma once

#include <cstdint>
#include <optional>
#include <string>

// One budget amount (a row of the Yosan table): for an expense category or
// sub-item, or with HimokuNo kYosanTotal for the month's total spending; for
// every month (Tuki 0) or for one month of the year (1 to 12), which then
// takes the place of the every-month amount.
struct Yosan {
    int64_t Id = 0;
    int64_t HimokuNo = 0;
    int64_t Tuki = 0;
    int64_t Kingaku = 0;

    bool operator==(const Yosan&) const = default;
};

inline constexpr int64_t kYosanTotal = 0;     // HimokuNo of the month's total
inline constexpr int64_t kYosanEveryMonth = 0;  // Tuki of the every-month amount

// One line of the budget against what was spent, for a month or a year.
struct YosanRow {
    enum class Level { Total, Category, SubItem };

    int64_t himokuNo = kYosanTotal;
    std::string name;               // the stored name (a sub-item's "category/sub-item"), or 合計
    Level level = Level::Category;
    std::optional<int64_t> yosan;   // none: no budget is set for it
    int64_t jisseki = 0;            // spent

    // Budget less spent; none without a budget.
    std::optional<int64_t> difference() const
    {
        if (!yosan) return std::nullopt;
        return *yosan - jisseki;
    }
    // Spent as a share of the budget (1.0 = all of it); none without a
    // budget or with a budget of 0.
    std::optional<double> share() const
    {
        if (!yosan || *yosan <= 0) return std::nullopt;
        return static_cast<double>(jisseki) / static_cast<double>(*yosan);
    }
    // Spent more than the budget.
    bool over() const { return yosan && jisseki > *yosan; }
};
