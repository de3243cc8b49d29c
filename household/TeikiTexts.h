#pragma once

#include <optional>
#include <string>

#include "household/Recurrence.h"
#include "store/Teiki.h"

class DataModel;

// The texts the recurring entries' windows show for a rule (UTF-8).

// "支出", "収入", "移動".
std::string teikiSyubetuText(int64_t syubetuNo);

// The asset's name, or "（削除された資産）".
std::string sisanNamaeOrGone(const DataModel& dm, int64_t sisanId);

// What the rule books: its sub-item ("食費/外食") or "→ 普通預金" for a
// transfer ("← 現金" on the destination's side), with the note after it in
// brackets when there is one: "住居費/その他（家賃）".
std::string teikiNaiyou(const DataModel& dm, const Teiki& teiki, bool idouSaki = false);

// "2026-11-25（水）".
std::string dayWithWeekday(const Date& date);

// The first occurrence booked on or after `from`, if the schedule has one.
std::optional<Occurrence> nextOccurrence(const Recurrence& recurrence, const Date& from);
