#include "household/TeikiTexts.h"

#include "store/DataModel.h"
#include "store/FindById.h"

std::string teikiSyubetuText(int64_t syubetuNo)
{
    switch (syubetuNo) {
    case kSyubetuSisyutu: return "支出";
    case kSyubetuSyuunyuu: return "収入";
    case kSyubetuIdouMoto: return "移動";
    default: return "?";
    }
}

std::string sisanNamaeOrGone(const DataModel& dm, int64_t sisanId)
{
    const Sisan* sisan = findById(dm.sisanList, dm.sisanId2Idx, sisanId);
    return sisan ? sisan->Namae : "（削除された資産）";
}

std::string teikiNaiyou(const DataModel& dm, const Teiki& teiki, bool idouSaki)
{
    std::string naiyou;
    if (teiki.SyubetuNo == kSyubetuIdouMoto) {
        naiyou = idouSaki ? "← " + sisanNamaeOrGone(dm, teiki.SisanNo) : "→ " + sisanNamaeOrGone(dm, teiki.IdouSisanNo);
    } else {
        const Himoku* himoku = findById(dm.himokuList, dm.himokuId2Idx, teiki.HimokuNo);
        naiyou = himoku ? himoku->Namae : "（削除された費目）";
    }
    return teiki.Bikou.empty() ? naiyou : naiyou + "（" + teiki.Bikou + "）";
}

std::string dayWithWeekday(const Date& date)
{
    static const char* const kWeekdays[] = {"日", "月", "火", "水", "木", "金", "土"};
    return date.iso() + "（" + kWeekdays[date.weekday()] + "）";
}

std::optional<Occurrence> nextOccurrence(const Recurrence& recurrence, const Date& from)
{
    // Windows that widen, so that a schedule of every few days costs as
    // little as one of every 99 years.
    for (const int days : {62, 800, 40000}) {
        const Date to = from.addDays(days);
        if (to.year > 9999) break;
        const std::vector<Occurrence> found = recurrence.between(from, to);
        if (!found.empty()) return found.front();
    }
    const std::vector<Occurrence> rest = recurrence.between(from, {9999, 12, 31});
    if (!rest.empty()) return rest.front();
    return std::nullopt;
}
