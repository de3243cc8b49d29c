#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

class DataModel;

// The figures of the annual charts, taken from the store's annual lists of
// the year last computed (annualInOutFromItemsTable).

// Income, expense and balance of each month (index = month - 1).
struct MonthlyInOut {
    std::array<int64_t, 12> income{};
    std::array<int64_t, 12> expense{};
    std::array<int64_t, 12> balance{};
};

// From the summary rows; all zero while no year has been computed.
MonthlyInOut monthlyInOut(const DataModel& dm);

// True when the year has neither an income nor an expense sub-item row.
bool annualHasNoEntries(const DataModel& dm);

// One slice of the expense donut: a category, or the rest.
struct ExpenseSlice {
    std::string name;
    int64_t amount = 0;
    double share = 0;  // of the year's expense, 0 to 1
};

inline constexpr size_t kNamedSlices = 8;
// Not "その他": a sub-item of that name is common, and this slice is another thing.
inline constexpr const char* kRestSliceName = "その他の費目";

// The year's expense per category (its sub-items added together), largest
// first, ties in category order. Beyond kNamedSlices categories the smaller
// ones are added into one kRestSliceName slice at the end. Categories
// without expense have no slice; no expense gives no slices.
std::vector<ExpenseSlice> expenseByCategory(const DataModel& dm);

// The category name of a stored sub-item name ("食費/外食" -> "食費"): the
// sub-item's category in the tree, or the text before the first "/" for a
// name the tree does not hold.
std::string categoryOfSubItem(const DataModel& dm, const std::string& subItem);
