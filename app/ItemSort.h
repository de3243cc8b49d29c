#pragma once

#include <memory>
#include <string>
#include <vector>

#include "store/Items.h"

// Sorts a ledger in place by the entry-list column with this identifier:
// "Hizuke" and "HimokuNo" (the category text) in text order, "Nyuukin",
// "Syukkin" and "Zankin" as signed integers. Entries with equal keys may come
// out in any order; running balances are left as they were. Any other
// identifier leaves the list untouched and returns false.
bool sortItemList(std::vector<std::shared_ptr<Items>>& list, const std::string& identifier, bool ascending);
