#include "household/TeikiDue.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "household/TeikiSchedule.h"
#include "store/DataModel.h"

namespace {

// The rule's recurrence when the rule can be used.
std::optional<Recurrence> usableRecurrence(const DataModel& dm, const Teiki& teiki)
{
    if (dm.teikiFault(teiki) != TeikiFault::None || !Date::fromIso(teiki.Kakunin)) return std::nullopt;
    const Checked<Recurrence> recurrence = recurrenceOf(teiki);
    if (!recurrence) return std::nullopt;
    return recurrence.value();
}

bool byDayThenRule(const TeikiOccurrence& a, const TeikiOccurrence& b)
{
    return std::pair(a.occurrence.posting, a.teikiNo) < std::pair(b.occurrence.posting, b.teikiNo);
}

// The signed move of an occurrence's amount on the rule's own asset.
int64_t moveOnSisan(const Teiki& teiki)
{
    return teiki.SyubetuNo == kSyubetuSyuunyuu ? teiki.Kingaku : -teiki.Kingaku;
}

}  // namespace

std::string teikiProblem(const DataModel& dm, const Teiki& teiki)
{
    switch (dm.teikiFault(teiki)) {
    case TeikiFault::SisanGone: return "資産が削除されています";
    case TeikiFault::HimokuGone: return "費目が削除されています";
    case TeikiFault::IdouSisanGone: return "移動先の資産が削除されています";
    case TeikiFault::BadSyubetu: return "種別が正しくありません";
    case TeikiFault::None: break;
    }
    const Checked<Recurrence> recurrence = recurrenceOf(teiki);
    if (!recurrence) return recurrence.refusal();
    // Without the day it was last looked at, the rule would post its whole past.
    return Date::fromIso(teiki.Kakunin) ? std::string() : "確認した日が読めません";
}

std::optional<std::vector<TeikiOccurrence>> dueTeiki(DataModel& dm, const Date& today)
{
    std::vector<TeikiKiroku> kiroku;
    if (!dm.readTeikiKiroku(kiroku)) return std::nullopt;
    std::set<std::pair<int64_t, std::string>> dealtWith;
    for (const TeikiKiroku& k : kiroku) dealtWith.emplace(k.TeikiNo, k.Yotei);

    std::vector<TeikiOccurrence> due;
    for (const auto& teiki : dm.teikiList) {
        const auto recurrence = usableRecurrence(dm, *teiki);
        if (!recurrence) continue;  // a broken rule never posts
        for (const Occurrence& o : recurrence->dueSince(Date::fromIso(teiki->Kakunin), today))
            if (!dealtWith.count({teiki->Id, o.scheduled.iso()})) due.push_back({teiki->Id, o});
    }
    std::stable_sort(due.begin(), due.end(), byDayThenRule);
    return due;
}

std::vector<TeikiKakunin> kakuninAfterPosting(const std::vector<TeikiOccurrence>& due,
                                              const std::vector<bool>& dealtWith, const Date& today)
{
    std::map<int64_t, Date> looked;  // per rule with one dealt with: the day it looks up to
    for (size_t i = 0; i < due.size(); ++i)
        if (dealtWith[i]) looked.emplace(due[i].teikiNo, today);
    for (size_t i = 0; i < due.size(); ++i) {
        const auto rule = looked.find(due[i].teikiNo);
        if (dealtWith[i] || rule == looked.end()) continue;
        rule->second = std::min(rule->second, due[i].occurrence.posting.addDays(-1));
    }
    std::vector<TeikiKakunin> kakunin;
    for (const auto& [teikiNo, day] : looked) kakunin.push_back({teikiNo, day.iso()});
    return kakunin;
}

std::optional<std::vector<TeikiOutlook>> teikiOutlook(DataModel& dm, const Date& today, int days)
{
    std::vector<TeikiOccurrence> coming;
    std::map<int64_t, const Teiki*> rules;
    for (const auto& teiki : dm.teikiList) {
        const auto recurrence = usableRecurrence(dm, *teiki);
        if (!recurrence) continue;
        rules[teiki->Id] = teiki.get();
        for (const Occurrence& o : recurrence->upcoming(today, days)) coming.push_back({teiki->Id, o});
    }
    std::stable_sort(coming.begin(), coming.end(), byDayThenRule);

    // The balance of each asset today, and its later entries in date order.
    std::vector<DatedAmount> later;
    if (!dm.readItemsAfter(today.iso(), later)) return std::nullopt;
    std::map<int64_t, int64_t> zankin;
    for (const auto& sisan : dm.sisanList) zankin[sisan->Id] = sisan->Zankin;
    for (const DatedAmount& entry : later) zankin[entry.SisanNo] -= entry.Kingaku;
    std::map<int64_t, size_t> nextEntry;  // per asset: its first later entry not yet added
    const auto addEntriesUpTo = [&](int64_t sisanNo, const std::string& day) {
        size_t& i = nextEntry[sisanNo];
        while (i < later.size() && later[i].SisanNo != sisanNo) ++i;  // its entries lie together
        for (; i < later.size() && later[i].SisanNo == sisanNo && later[i].Hizuke <= day; ++i)
            zankin[sisanNo] += later[i].Kingaku;
    };

    std::vector<TeikiOutlook> lines;
    const auto addLine = [&](const TeikiOccurrence& o, int64_t sisanNo, int64_t kingaku, bool idouSaki) {
        addEntriesUpTo(sisanNo, o.occurrence.posting.iso());
        zankin[sisanNo] += kingaku;
        lines.push_back({o.occurrence.posting, o.teikiNo, sisanNo, kingaku, zankin[sisanNo], idouSaki});
    };
    for (const TeikiOccurrence& o : coming) {
        const Teiki& teiki = *rules[o.teikiNo];
        addLine(o, teiki.SisanNo, moveOnSisan(teiki), false);
        if (teiki.SyubetuNo == kSyubetuIdouMoto) addLine(o, teiki.IdouSisanNo, teiki.Kingaku, true);
    }
    return lines;
}
