#pragma once

#include <optional>
#include <vector>

#include "household/BusinessDays.h"
#include "household/Checked.h"
#include "household/Date.h"

// How often a recurring entry repeats. The numbers are the ones a book stores.
enum class RepeatUnit { Month = 0, Year = 1, Week = 2 };

// The schedule of a recurring entry as the user sets it.
struct Schedule {
    RepeatUnit unit = RepeatUnit::Month;
    int every = 1;    // every N months, years or weeks (1 to 99)
    int day = 1;      // Month: 1 to 31, kLastDay = the last day; Year: the day of `month`
    int month = 1;    // Year: 1 to 12
    int weekday = 0;  // Week: 0 Sunday ... 6 Saturday
    Date start;                // no occurrence is scheduled before it
    std::optional<Date> end;   // nor after it
    std::optional<int> count;  // nor more than this many
    HolidayShift shift = HolidayShift::SameDay;

    bool operator==(const Schedule&) const = default;
};

// One occurrence of a schedule. The rule and the scheduled date identify it
// for good: a posting day moved by a new holiday table, or a schedule edited
// later, never makes a remembered occurrence look new.
struct Occurrence {
    Date scheduled;  // the schedule's own day (day 31 already on a short month's last day)
    Date posting;    // the day it is booked on, after the holiday shift

    bool operator==(const Occurrence&) const = default;
};

// The dates of a valid schedule. Occurrences are selected by their posting
// day, the day the money moves, and come in date order.
class Recurrence {
public:
    // The schedule, or the message that refuses it.
    static Checked<Recurrence> make(const Schedule& schedule);

    const Schedule& schedule() const { return schedule_; }

    // Those posted from `from` to `to`, both included.
    std::vector<Occurrence> between(const Date& from, const Date& to) const;

    // Those that came due after the last run and up to today, both as the
    // caller knows them (posting day after lastRun, on or before today);
    // without a last run, every one up to today. The caller drops those it
    // has already posted, skipped or edited, and passes as lastRun the day
    // the schedule was last edited when that is later, so an edit never
    // brings back the past.
    std::vector<Occurrence> dueSince(const std::optional<Date>& lastRun, const Date& today) const;

    // Those posted from tomorrow to `days` days ahead.
    std::vector<Occurrence> upcoming(const Date& today, int days = 30) const;

private:
    explicit Recurrence(const Schedule& schedule);

    Date scheduledAt(int index) const;  // 0 = the first occurrence
    bool exists(int index) const;
    int firstScheduledFrom(const Date& date) const;

    Schedule schedule_;
    Date first_;  // the first scheduled day on or after the start
};
