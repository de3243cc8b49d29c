#pragma once

#include <vector>

#include "household/BusinessDays.h"
#include "household/Checked.h"
#include "household/Date.h"

// A credit card's cycle as the user sets it: purchases up to the closing day
// are withdrawn from the bank on the withdrawal day, months later.
struct CardCycleSetting {
    int closingDay = kLastDay;    // 1 to 28, or kLastDay (月末締め)
    int withdrawalDay = 27;       // 1 to 31, kLastDay = the last day
    int monthsAfterClosing = 1;   // 0 (当月) to 3; 1 翌月, 2 翌々月
    HolidayShift shift = HolidayShift::After;  // for a withdrawal day on a Saturday, Sunday or holiday

    bool operator==(const CardCycleSetting&) const = default;
};

// The purchases of one closing and their withdrawal. The month the closing
// day falls in identifies the period.
struct CardPeriod {
    YearMonth closingMonth;
    DateRange purchases;  // from the day after the previous closing day to the closing day
    Date withdrawal;      // after the holiday shift

    bool operator==(const CardPeriod&) const = default;
};

// The periods of a valid cycle. The closing day never moves for holidays;
// the withdrawal day does, by the setting's shift.
class CardCycle {
public:
    // The setting, or the message that refuses it.
    static Checked<CardCycle> make(const CardCycleSetting& setting);

    const CardCycleSetting& setting() const { return setting_; }

    CardPeriod period(const YearMonth& closingMonth) const;
    // The period a purchase on `date` is billed in.
    CardPeriod periodOf(const Date& date) const;
    // The period withdrawn next: the first whose withdrawal day is today or
    // later. It may still be open (see isClosed).
    CardPeriod nextWithdrawal(const Date& today) const;
    // The periods from `first` on that have closed by today, in order: the
    // caller passes the first period it has not settled yet.
    std::vector<CardPeriod> closedPeriods(const YearMonth& first, const Date& today) const;

    // A period closes at the end of its closing day.
    static bool isClosed(const CardPeriod& period, const Date& today) { return period.purchases.last < today; }

private:
    explicit CardCycle(const CardCycleSetting& setting) : setting_(setting) {}

    Date closingDate(const YearMonth& month) const { return dayOfMonth(month, setting_.closingDay); }

    CardCycleSetting setting_;
};
