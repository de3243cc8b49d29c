#pragma once

#include <cstdint>
#include <string>

// Recurring entries (定期的な支出入): the rules, and the occurrences already
// dealt with. The numbers are the ones the book stores.

// One rule (a row of the Teiki table): what to book, and when.
struct Teiki {
    int64_t Id = 0;
    int64_t SisanNo = 0;      // the asset whose ledger gets the entry (a transfer's source)
    int64_t SyubetuNo = 1;    // 1 expense, 2 income, 3 transfer out of SisanNo
    int64_t HimokuNo = 0;     // kinds 1, 2: the sub-item; 0 for a transfer
    int64_t IdouSisanNo = 0;  // kind 3: the destination asset; 0 otherwise
    int64_t Kingaku = 0;
    std::string Bikou{};
    // The schedule.
    int64_t Tani = 0;      // repeat unit: 0 month, 1 year, 2 week
    int64_t Kankaku = 1;   // every Kankaku units
    int64_t Hi = 1;        // month and year: the day, 31 = the last day
    int64_t Tuki = 1;      // year: the month
    int64_t Youbi = 0;     // week: 0 Sunday ... 6 Saturday
    std::string Kaisi{};     // the first day it may fall on, "yyyy-MM-dd"
    std::string Syuuryou{};  // the last day it may fall on, or "" for none
    int64_t Kaisuu = 0;    // how many times at most, 0 for no limit
    int64_t Kyuujitu = 0;  // a day off: 0 the day itself, 1 the business day before, 2 after
    // The day up to which the program has looked at the rule: every
    // occurrence booked on or before it is done with (posted, skipped, or
    // before the rule was made or its schedule last changed).
    std::string Kakunin{};
};

// How an occurrence was dealt with (TeikiKiroku.Jyoutai).
enum : int64_t {
    kTeikiKityou = 1,      // posted as the rule says
    kTeikiMiokuri = 2,     // skipped for good
    kTeikiHenkou = 3,      // posted with another amount
};

// One occurrence dealt with (a row of the TeikiKiroku table). The rule and
// the scheduled day identify it: it is never offered again.
struct TeikiKiroku {
    int64_t Id = 0;
    int64_t TeikiNo = 0;
    std::string Yotei;      // the schedule's day, "yyyy-MM-dd"
    std::string Hizuke;     // the day it was booked on; "" when skipped
    int64_t Jyoutai = kTeikiKityou;
    int64_t ItemId = 0;     // the entry posted (a transfer's source row); 0 when skipped
    int64_t IdouId = 0;     // a transfer's destination row; 0 otherwise
    int64_t Kingaku = 0;    // the amount posted
};

// One occurrence to deal with in teikiKityou: posted on `Hizuke` with
// `Kingaku`, or skipped for good.
struct TeikiPosting {
    int64_t TeikiNo = 0;
    std::string Yotei;
    std::string Hizuke;
    int64_t Kingaku = 0;
    bool miokuri = false;  // skip it instead of posting it
};

// A rule's Kakunin moved forward (never back) by teikiKityou.
struct TeikiKakunin {
    int64_t TeikiNo = 0;
    std::string Kakunin{};
};

// An entry's amount as it moves its asset's balance (income +, expense -),
// with its asset and day: what the expected balances start from.
struct DatedAmount {
    int64_t SisanNo = 0;
    std::string Hizuke;
    int64_t Kingaku = 0;
};

// What makes a rule unusable: something it names is gone.
enum class TeikiFault {
    None,
    SisanGone,      // its asset was deleted
    HimokuGone,     // its sub-item was deleted (or is no sub-item of its kind)
    IdouSisanGone,  // the destination of its transfer was deleted
    BadSyubetu,     // a kind the program does not know
};
