#pragma once

#include <functional>

// Milliseconds that work takes.
double millisOf(const std::function<void()>& work);

// Times store and floor in turn, runs times each, after `prepare` (untimed,
// given 2r before the store's run r and 2r+1 before the floor's), and prints
// "bench <operation> store_ms=<median> floor_ms=<median> ratio=<store/floor>".
// Returns the two medians.
struct Medians {
    double storeMs = 0;
    double floorMs = 0;
};
Medians compare(const char* operation, int runs, const std::function<void(int)>& store,
                const std::function<void(int)>& floor, const std::function<void(int)>& prepare = nullptr);
