#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "household/Recurrence.h"
#include "store/Teiki.h"

class DataModel;

// Which occurrences of the book's rules are due, which come next, and what
// posting a set of due ones does to the rules' Kakunin. Reads the store's
// teikiList (read it first), sisanList and himokuList; writes nothing.

// The Japanese reason a rule cannot be used (an asset or category gone, a
// schedule the program cannot read), or "" for a usable rule.
std::string teikiProblem(const DataModel& dm, const Teiki& teiki);

// One occurrence of a rule.
struct TeikiOccurrence {
    int64_t teikiNo = 0;
    Occurrence occurrence;

    bool operator==(const TeikiOccurrence&) const = default;
};

// The occurrences of the usable rules booked after their Kakunin and up to
// today that the book has not dealt with yet, by day and then rule; none
// when the book's record cannot be read.
std::optional<std::vector<TeikiOccurrence>> dueTeiki(DataModel& dm, const Date& today);

// The Kakunin of each rule after the due occurrences `due` were shown and
// those with dealtWith[i] posted or skipped: a rule with all of its own
// dealt with looks from today on, one with some left for next time from the
// day before the first of those. Only the rules with one dealt with appear.
std::vector<TeikiKakunin> kakuninAfterPosting(const std::vector<TeikiOccurrence>& due,
                                              const std::vector<bool>& dealtWith, const Date& today);

// One line of the outlook: an occurrence as it moves one asset (a transfer
// moves two and gives two lines), and the balance that asset is expected to
// have after it.
struct TeikiOutlook {
    Date hizuke;
    int64_t teikiNo = 0;
    int64_t sisanNo = 0;
    int64_t kingaku = 0;  // + into the asset, - out of it
    int64_t zankin = 0;
    bool idouSaki = false;  // the destination's line of a transfer
};

// The occurrences of the usable rules booked from tomorrow to `days` days
// ahead, by day and then rule. The expected balance is the asset's balance
// today (its entries up to today) with the entries dated after today and
// the occurrences up to that line added, entries of a day before its
// occurrences. None when the entries cannot be read.
std::optional<std::vector<TeikiOutlook>> teikiOutlook(DataModel& dm, const Date& today, int days = 30);
