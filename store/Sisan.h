#pragma once

#include <cstdint>
#include <string>

// One asset account (a row of the Sisan table).
struct Sisan {
    int64_t Id;
    std::string Namae;
    int64_t SyokiKingaku;  // opening amount: the balance before any entry
    int64_t Zankin;        // balance; in memory it leads the stored copy

    Sisan(int64_t Id, std::string Namae, int64_t SyokiKingaku, int64_t Zankin)
        : Id(Id), Namae(std::move(Namae)), SyokiKingaku(SyokiKingaku), Zankin(Zankin) {}
};
