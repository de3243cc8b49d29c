// DataModel: bringing the lists and balances up to date after an undo, a
// redo or a revert, from the rows its changeset carries rather than from
// every entry of the book.
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <set>

#include "store/Changeset.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/ItemsArena.h"
#include "store/Money.h"

// What a replayed changeset did, as the in-memory lists need to know it.
struct StepEffects {
    bool sisanChanged = false;   // asset rows added, changed or removed
    bool himokuChanged = false;  // category rows likewise
    bool namesChanged = false;   // an asset or category renamed: display texts change
    std::vector<int64_t> touchedItems;     // entries removed or changed (by Id)
    std::vector<Items> removedItems;       // entries as they were, whole
    std::vector<Items> addedItems;         // entries as they are now, whole
    std::set<int64_t> insertedSisans;
    std::vector<int64_t> changedSisans;    // asset rows added or changed, in changeset order
    int64_t himokuRow = 0;                 // a category row put back or changed, else a sub-item
};

namespace {

enum ItemsColumn {
    kId, kHizuke, kNen, kTuki, kHi, kSisanNo, kSyubetuNo, kHimokuNo, kIdouSisanNo, kIdouId, kNyuukin, kSyukkin, kBikou
};

Items itemFrom(const ChangesetReader& r, bool after)
{
    const auto v = [&](int c) { return after ? r.after(c) : r.before(c); };
    const auto i = [&](int c) { return ChangesetReader::intOf(v(c)); };
    return Items(i(kId), ChangesetReader::textOf(v(kHizuke)), i(kNen), i(kTuki), i(kHi), i(kSisanNo), i(kSyubetuNo),
                 i(kHimokuNo), i(kIdouSisanNo), i(kIdouId), i(kNyuukin), i(kSyukkin),
                 ChangesetReader::textOf(v(kBikou)), "", "", "", 0);
}

// Overwrites the columns the change carries a value for.
void overlay(Items& item, const ChangesetReader& r, bool after)
{
    for (int c = 0; c < r.columns(); ++c) {
        sqlite3_value* value = after ? r.after(c) : r.before(c);
        if (!value) continue;
        const int64_t n = ChangesetReader::intOf(value);
        switch (c) {
        case kHizuke: item.Hizuke = ChangesetReader::textOf(value); break;
        case kNen: item.Nen = n; break;
        case kTuki: item.Tuki = n; break;
        case kHi: item.Hi = n; break;
        case kSisanNo: item.SisanNo = n; break;
        case kSyubetuNo: item.SyubetuNo = n; break;
        case kHimokuNo: item.HimokuNo = n; break;
        case kIdouSisanNo: item.IdouSisanNo = n; break;
        case kIdouId: item.IdouId = n; break;
        case kNyuukin: item.Nyuukin = n; break;
        case kSyukkin: item.Syukkin = n; break;
        case kBikou: item.Bikou = ChangesetReader::textOf(value); break;
        default: break;
        }
    }
}

// What the entry adds to its asset's balance.
int64_t signedKingaku(const Items& item)
{
    if (isNyuukinKind(item.SyubetuNo)) return item.Nyuukin;
    if (isSyukkinKind(item.SyubetuNo)) return -item.Syukkin;
    return 0;
}

bool ledgerOrder(const Items& a, const Items& b)
{
    return a.Hizuke != b.Hizuke ? a.Hizuke < b.Hizuke : a.Id < b.Id;
}

}  // namespace

bool DataModel::collectEffects(const std::string& changeset, StepEffects& fx)
{
    ChangesetReader r(changeset);
    while (r.next()) {
        const int64_t key = ChangesetReader::intOf(r.latest(0));
        if (r.isTable("Items")) {
            if (r.op() != RowOp::Insert) fx.touchedItems.push_back(key);
            if (r.op() == RowOp::Insert) {
                fx.addedItems.push_back(itemFrom(r, true));
            } else if (r.op() == RowOp::Delete) {
                fx.removedItems.push_back(itemFrom(r, false));
            } else {
                // An update carries only what it changed: the rest is the row as it is now.
                const std::shared_ptr<Items> now = readFromItem1Item(key);
                if (!now) return false;
                fx.addedItems.push_back(*now);
                fx.removedItems.push_back(*now);
                overlay(fx.removedItems.back(), r, false);
            }
        } else if (r.isTable("Sisan")) {
            fx.sisanChanged = true;
            if (r.op() == RowOp::Insert) fx.insertedSisans.insert(key);
            if (r.op() != RowOp::Delete) fx.changedSisans.push_back(key);
            if (r.op() == RowOp::Update && r.after(1)) fx.namesChanged = true;
        } else if (r.isTable("Himoku")) {
            fx.himokuChanged = true;
            if (r.op() == RowOp::Update && r.after(2)) fx.namesChanged = true;
            const bool category = ChangesetReader::intOf(r.latest(4)) > 0;
            if (r.op() != RowOp::Delete && (fx.himokuRow == 0 || category)) fx.himokuRow = key;
        }
    }
    if (r.ok()) return true;
    someMessageWithAlert("error reading the history: a damaged change");
    return false;
}

int64_t DataModel::focusSisanOf(const StepEffects& fx, int64_t shownSisanId) const
{
    const auto listed = [this](int64_t id) { return sisanId2Idx.find(id) != nullptr; };
    // An asset put back comes first, then the shown ledger when the step
    // changed it, then the first ledger it changed, then a changed asset.
    for (int64_t id : fx.insertedSisans)
        if (listed(id)) return id;
    std::set<int64_t> touched;
    for (const auto* rows : {&fx.removedItems, &fx.addedItems})
        for (const Items& item : *rows) touched.insert(item.SisanNo);
    if (touched.count(shownSisanId) && listed(shownSisanId)) return shownSisanId;
    for (const auto& sisan : sisanList)
        if (touched.count(sisan->Id)) return sisan->Id;
    for (int64_t id : fx.changedSisans)
        if (listed(id)) return id;
    if (listed(shownSisanId)) return shownSisanId;
    return sisanList.empty() ? 0 : sisanList.front()->Id;
}

bool DataModel::showEffects(const std::string& changeset, int64_t shownSisanId,
                            const std::vector<std::pair<int64_t, int64_t>>& zankinBefore, StepFocus* focus)
{
    StepEffects fx;
    const bool exact = zankinExact;
    if (!collectEffects(changeset, fx)) return false;
    if (fx.himokuChanged && !readFromHimokuTable()) return false;
    if (fx.sisanChanged) {
        // The re-read brings back the stored balances: keep the ones shown.
        if (!readFromSisanTable()) return false;
        for (const auto& [id, zankin] : zankinBefore)
            if (Sisan* sisan = findById(sisanList, sisanId2Idx, id)) sisan->Zankin = zankin;
    }
    if (exact) {
        // Balances move by what the step's entries and opening amounts moved;
        // an asset put back is summed from its entries.
        if (!applyZankinDeltas(changeset)) return false;
        for (int64_t id : fx.insertedSisans)
            if (sisanId2Idx.find(id) && !recomputeSisanZankin(id)) return false;
        zankinExact = true;
    } else if (!recomputeAllSisanZankin()) {
        // The balances shown were stored copies already: one pass over the
        // entries brings every one right.
        return false;
    }

    const int64_t focusSisanId = focusSisanOf(fx, shownSisanId);
    const int64_t* position = sisanId2Idx.find(focusSisanId);
    theSisanNo = position ? *position : 0;
    bool shownChanged = fx.namesChanged;
    for (const auto* rows : {&fx.removedItems, &fx.addedItems})
        for (const Items& item : *rows) shownChanged = shownChanged || item.SisanNo == focusSisanId;
    if (!position) {
        clearItemList();
    } else if (focusSisanId != itemListSisanId || (shownChanged && !patchItemList(fx, focusSisanId))) {
        if (!readFromItemsTable(focusSisanId)) return false;
    }
    totalOfZankinFrom_sisanList();
    if (focus) {
        *focus = StepFocus{};
        for (const Items& item : fx.addedItems) {
            if (item.SisanNo == focusSisanId && itemId2Idx.find(item.Id)) {
                focus->itemId = item.Id;
                break;
            }
        }
        for (int64_t id : fx.changedSisans) {
            if (sisanId2Idx.find(id)) {
                focus->sisanId = id;
                break;
            }
        }
        if (himokuId2Idx.find(fx.himokuRow)) focus->himokuId = fx.himokuRow;
    }
    return true;
}

bool DataModel::applyZankinDeltas(const std::string& changeset)
{
    std::map<int64_t, int64_t> delta;  // asset Id -> change of its balance
    ChangesetReader r(changeset);
    while (r.next()) {
        const int64_t key = ChangesetReader::intOf(r.latest(0));
        if (r.isTable("Sisan")) {
            // An asset added or removed has no listed balance to move.
            if (r.op() == RowOp::Update && r.before(2) && r.after(2))
                delta[key] += ChangesetReader::intOf(r.after(2)) - ChangesetReader::intOf(r.before(2));
            continue;
        }
        if (!r.isTable("Items")) continue;
        if (r.op() != RowOp::Update) {
            const Items row = itemFrom(r, r.op() == RowOp::Insert);
            delta[row.SisanNo] += r.op() == RowOp::Insert ? signedKingaku(row) : -signedKingaku(row);
            continue;
        }
        // An update carries only what it changed: the rest is the row as it is now.
        const bool moves = r.after(kSisanNo) || r.after(kSyubetuNo) || r.after(kNyuukin) || r.after(kSyukkin);
        if (!moves) continue;
        const std::shared_ptr<Items> now = readFromItem1Item(key);
        if (!now) return false;
        Items was = *now;
        overlay(was, r, false);
        delta[now->SisanNo] += signedKingaku(*now);
        delta[was.SisanNo] -= signedKingaku(was);
    }
    if (!r.ok()) return false;
    for (const auto& [id, change] : delta)
        if (Sisan* sisan = findById(sisanList, sisanId2Idx, id)) sisan->Zankin += change;
    return true;
}

bool DataModel::patchItemList(const StepEffects& fx, int64_t sisanId)
{
    // The merge needs the ledger in the order it was read (date, then Id):
    // a list the user sorted is read again instead.
    const bool readOrder = std::all_of(itemSortASC.begin(), itemSortASC.end(), [](const auto& f) { return f.second; });
    const Sisan* sisan = findById(sisanList, sisanId2Idx, sisanId);
    if (!readOrder || !itemsArena || !sisan) return false;

    std::vector<bool> gone(itemList.size(), false);
    for (int64_t id : fx.touchedItems)
        if (const int64_t* p = itemId2Idx.find(id)) gone[static_cast<size_t>(*p)] = true;
    std::vector<const Items*> added;
    for (const Items& item : fx.addedItems)
        if (item.SisanNo == sisanId) added.push_back(&item);
    std::sort(added.begin(), added.end(), [](const Items* a, const Items* b) { return ledgerOrder(*a, *b); });

    std::vector<std::shared_ptr<Items>> merged;
    merged.reserve(itemList.size() + added.size());
    size_t next = 0;
    const auto takeAddedBefore = [&](const Items* row) {
        while (next < added.size() && (!row || ledgerOrder(*added[next], *row))) {
            Items& item = itemsArena->emplace(*added[next++]);
            item.strHimoku = getHimokuNamaeFromHimokuRowNo(item.SyubetuNo, item.HimokuNo, item.IdouSisanNo);
            item.strNyuukin = isNyuukinKind(item.SyubetuNo) ? formatWithGrouping(item.Nyuukin) : std::string();
            item.strSyukkin = isSyukkinKind(item.SyubetuNo) ? formatWithGrouping(item.Syukkin) : std::string();
            merged.push_back(std::shared_ptr<Items>(itemsArena, &item));
        }
    };
    for (size_t p = 0; p < itemList.size(); ++p) {
        if (gone[p]) continue;
        takeAddedBefore(itemList[p].get());
        merged.push_back(std::move(itemList[p]));
    }
    takeAddedBefore(nullptr);

    // Running balances and display texts, as a read of the ledger sets them.
    int64_t zankin = sisan->SyokiKingaku;
    itemIdx2Id.clear();
    itemIdx2Id.reserve(merged.size());
    for (const auto& row : merged) {
        Items& item = *row;
        zankin += signedKingaku(item);
        item.Zankin = zankin;
        if (fx.namesChanged)
            item.strHimoku = getHimokuNamaeFromHimokuRowNo(item.SyubetuNo, item.HimokuNo, item.IdouSisanNo);
        itemIdx2Id.push_back(item.Id);
    }
    itemList = std::move(merged);
    itemId2Idx.assignPositions(itemIdx2Id);
    updateSisanZankinList(sisanId, zankin);
    return true;
}
