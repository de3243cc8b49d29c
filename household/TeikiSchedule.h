#pragma once

#include <string>

#include "household/Recurrence.h"
#include "store/Teiki.h"

// A rule of the book (store/Teiki.h) as the calendar arithmetic takes it.

// The rule's schedule. A stored day that does not read as "yyyy-MM-dd"
// becomes an invalid Date, which Recurrence::make refuses.
Schedule scheduleOf(const Teiki& teiki);

// Writes the schedule into the rule's columns.
void setSchedule(Teiki& teiki, const Schedule& schedule);

// The rule's recurrence, or the Japanese reason it has none.
Checked<Recurrence> recurrenceOf(const Teiki& teiki);

// True when `after` puts occurrences on other days than `before`: another
// unit, interval, day, month, weekday or start. (A change of the end, the
// count or the day-off rule keeps each occurrence's scheduled day.)
bool movesDays(const Teiki& before, const Teiki& after);

// The Kakunin of a rule made today: it looks from today on, so nothing
// before the day it was made is ever posted.
std::string kakuninOfNewRule(const Date& today);

// The Kakunin of a rule saved today over `before`: when its days move it
// looks from tomorrow on, so that an occurrence already posted under the old
// days never comes back under the new ones; otherwise it is kept.
std::string kakuninAfterEdit(const Teiki& before, const Teiki& after, const Date& today);
