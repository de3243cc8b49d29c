#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "household/CardCycle.h"

// An asset used as a credit card (a row of the CardCycles table): its cycle
// and the asset its withdrawals are paid from.
struct Card {
    int64_t SisanNo = 0;                // the card's asset
    CardCycleSetting cycle;
    int64_t PayingSisanNo = 0;          // the asset paid from; 0 when none is chosen
    YearMonth firstClosing{1970, 1};    // the first period whose settlement is followed

    bool operator==(const Card&) const = default;
};

// One period of a card with what it comes to: the expenses and transfers
// out of the card minus its refunds, dated within the period's purchases.
struct CardPeriodKingaku {
    CardPeriod period;
    int64_t kingaku = 0;
    bool closed = false;  // its closing day has passed
};

// What a card stands at on a day.
struct CardOutlook {
    int64_t sisanId = 0;
    // Periods whose withdrawal day has come but that are not settled yet:
    // the settlements to offer, oldest first.
    std::vector<CardPeriodKingaku> due;
    // The first period not settled whose withdrawal day is today or later;
    // it may still be open.
    std::optional<CardPeriodKingaku> next;
    // The period today's purchases go to, when it is not `next`.
    std::optional<CardPeriodKingaku> open;
    // What the closed periods not settled yet come to: the money the paying
    // asset is still to lose.
    int64_t comingKingaku = 0;
};
