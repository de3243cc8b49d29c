#include "bench/Compare.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    const size_t n = v.size();
    return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

}  // namespace

double millisOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

Medians compare(const char* operation, int runs, const std::function<void(int)>& store,
                const std::function<void(int)>& floor, const std::function<void(int)>& prepare)
{
    std::vector<double> storeMs, floorMs;
    for (int r = 0; r < runs; ++r) {
        if (prepare) prepare(2 * r);
        storeMs.push_back(millisOf([&] { store(r); }));
        if (prepare) prepare(2 * r + 1);
        floorMs.push_back(millisOf([&] { floor(r); }));
    }
    const double s = median(storeMs), f = median(floorMs);
    std::printf("bench %s store_ms=%.3f floor_ms=%.3f ratio=%.3f\n", operation, s, f, s / f);
    std::fflush(stdout);
    return {s, f};
}

