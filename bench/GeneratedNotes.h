#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Notes as a household writes them: a few hundred usual texts per book, each
// belonging to a category (shops for food, 電気代 for utilities, gifts for
// 交際費, ...), the most usual far more frequent than the rest, many carrying
// the month or a person ("電気代 3月分", "結婚祝い 田中さん"), some in the
// half-width katakana of card statements ("ｺﾝﾋﾞﾆ"). Deterministic for a seed.
class GeneratedNotes {
public:
    explicit GeneratedNotes(uint64_t seed);

    // A note for an entry of the generated category (0-15 in the
    // generator's order) or, with kTransfer, of a transfer, dated year/month.
    static constexpr int kTransfer = -1;
    std::string note(int category, int year, int month);

private:
    std::mt19937_64 rng_;
    std::vector<std::discrete_distribution<int>> pick_;  // per list of usual notes
    std::discrete_distribution<int> pickPerson_, pickPlace_;
};
