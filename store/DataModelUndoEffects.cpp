// DataModel: bringing the lists and balances up to date after a recorded
// step, an undo, a redo or a revert, from the rows its changeset carries
// rather than from every entry of the book.
#include <algorithm>

#include "store/ChangesetDigest.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/ItemsArena.h"
#include "store/Money.h"

namespace {

bool ledgerOrder(const Items& a, const Items& b)
{
    return a.Hizuke != b.Hizuke ? a.Hizuke < b.Hizuke : a.Id < b.Id;
}

}  // namespace

bool DataModel::resolveUpdates(ChangesetDigest& digest, int64_t wholeRowsOf)
{
    for (const ChangesetDigest::Update& u : digest.updates) {
        const std::shared_ptr<Items> now = readFromItem1Item(u.id);
        if (!now) return false;
        const int64_t current[4] = {now->SisanNo, now->SyubetuNo, now->Nyuukin, now->Syukkin};
        int64_t was[4], is[4];
        for (int i = 0; i < 4; ++i) {
            was[i] = u.before[i].value_or(current[i]);
            is[i] = u.after[i].value_or(current[i]);
        }
        digest.entries.push_back({u.id, was[0], signedKingaku(was[1], was[2], was[3]), false});
        digest.entries.push_back({u.id, is[0], signedKingaku(is[1], is[2], is[3]), true});
        digest.sisanIds.insert(was[0]);
        digest.sisanIds.insert(is[0]);
        // The row as the book holds it after the update (the caller reads it then).
        if (is[0] == wholeRowsOf && now->SisanNo == wholeRowsOf) digest.wholeRows.push_back(*now);
    }
    digest.updates.clear();
    return true;
}

std::string DataModel::sisanNamesOf(const ChangesetDigest& digest) const
{
    return ::sisanNamesOf(digest, [this](int64_t id) {
        const Sisan* sisan = findById(sisanList, sisanId2Idx, id);
        return sisan ? sisan->Namae : std::string("????");
    });
}

void DataModel::applyZankinDeltas(const ChangesetDigest& digest)
{
    const auto move = [this](int64_t sisanId, int64_t delta) {
        if (Sisan* sisan = findById(sisanList, sisanId2Idx, sisanId)) sisan->Zankin += delta;
    };
    for (const auto& entry : digest.entries) move(entry.sisanNo, entry.inserted ? entry.kingaku : -entry.kingaku);
    for (const auto& [id, delta] : digest.syokiKingakuDelta) move(id, delta);
}

int64_t DataModel::focusSisanOf(const ChangesetDigest& digest, int64_t shownSisanId) const
{
    const auto listed = [this](int64_t id) { return sisanId2Idx.find(id) != nullptr; };
    // An asset put back comes first, then the shown ledger when the step
    // changed it, then the first ledger it changed, then a changed asset.
    for (int64_t id : digest.insertedSisans)
        if (listed(id)) return id;
    const auto touched = [&digest](int64_t id) {
        return std::any_of(digest.entries.begin(), digest.entries.end(),
                           [id](const ChangesetDigest::Entry& e) { return e.sisanNo == id; });
    };
    if (listed(shownSisanId) && touched(shownSisanId)) return shownSisanId;
    for (const auto& sisan : sisanList)
        if (touched(sisan->Id)) return sisan->Id;
    for (int64_t id : digest.changedSisans)
        if (listed(id)) return id;
    if (listed(shownSisanId)) return shownSisanId;
    return sisanList.empty() ? 0 : sisanList.front()->Id;
}

bool DataModel::showEffects(const ChangesetDigest& digest, int64_t shownSisanId, bool exact,
                            const std::vector<std::pair<int64_t, int64_t>>& zankinBefore, StepFocus* focus,
                            bool followChange)
{
    if (digest.himokuChanged && !readFromHimokuTable()) return false;
    if (digest.teikiChanged && !readFromTeikiTable()) return false;
    if (digest.sisanChanged) {
        // The re-read brings back the stored balances: keep the ones shown.
        if (!readFromSisanTable()) return false;
        for (const auto& [id, zankin] : zankinBefore)
            if (Sisan* sisan = findById(sisanList, sisanId2Idx, id)) sisan->Zankin = zankin;
    }
    if (exact) {
        // Balances move by what the entries and opening amounts moved; an
        // asset put back is summed from its entries.
        applyZankinDeltas(digest);
        for (int64_t id : digest.insertedSisans)
            if (sisanId2Idx.find(id) && !recomputeSisanZankin(id)) return false;
        zankinExact = true;
    } else if (!recomputeZankinInMemory()) {
        // The balances shown were stored copies: one pass over the entries
        // brings every one right. The stored copies are left for the quit.
        return false;
    }

    const bool stillShown = sisanId2Idx.find(shownSisanId) != nullptr;
    const int64_t focusSisanId = followChange || !stillShown ? focusSisanOf(digest, shownSisanId) : shownSisanId;
    const int64_t* position = sisanId2Idx.find(focusSisanId);
    theSisanNo = position ? *position : 0;
    const bool ledgerChanged =
        digest.namesChanged || std::any_of(digest.entries.begin(), digest.entries.end(),
                                           [&](const ChangesetDigest::Entry& e) { return e.sisanNo == focusSisanId; });
    if (!position) {
        clearItemList();
    } else if (focusSisanId != itemListSisanId || (ledgerChanged && !patchItemList(digest))) {
        if (!readFromItemsTable(focusSisanId)) return false;
    }
    totalOfZankinFrom_sisanList();
    if (!focus) return true;
    *focus = StepFocus{};
    for (const auto& entry : digest.entries) {
        if (entry.inserted && entry.sisanNo == focusSisanId && itemId2Idx.find(entry.id)) {
            focus->itemId = entry.id;
            break;
        }
    }
    for (int64_t id : digest.changedSisans) {
        if (sisanId2Idx.find(id)) {
            focus->sisanId = id;
            break;
        }
    }
    if (himokuId2Idx.find(digest.himokuRow)) focus->himokuId = digest.himokuRow;
    return true;
}

int64_t DataModel::shownSisanId() const
{
    return theSisanNo >= 0 && theSisanNo < static_cast<int64_t>(sisanList.size())
               ? sisanList[static_cast<size_t>(theSisanNo)]->Id
               : 0;
}

bool DataModel::patchItemList(const ChangesetDigest& digest)
{
    // The merge needs the ledger in the order it was read (date, then Id):
    // a list the user sorted is read again instead.
    const bool readOrder = std::all_of(itemSortASC.begin(), itemSortASC.end(), [](const auto& f) { return f.second; });
    const Sisan* sisan = findById(sisanList, sisanId2Idx, itemListSisanId);
    if (!readOrder || !itemsArena || !sisan) return false;

    // Rows removed or changed leave; the changed ones come back among the
    // whole rows, in their new place.
    std::vector<bool> gone(itemList.size(), false);
    for (const auto& entry : digest.entries)
        if (const int64_t* p = entry.inserted ? nullptr : itemId2Idx.find(entry.id)) gone[static_cast<size_t>(*p)] = true;
    std::vector<const Items*> added;
    for (const Items& item : digest.wholeRows) added.push_back(&item);
    std::sort(added.begin(), added.end(), [](const Items* a, const Items* b) { return ledgerOrder(*a, *b); });

    std::vector<std::shared_ptr<Items>> merged;
    merged.reserve(itemList.size() + added.size());
    size_t next = 0;
    const auto takeAddedBefore = [&](const Items* row) {
        while (next < added.size() && (!row || ledgerOrder(*added[next], *row))) {
            Items& item = itemsArena->next();
            item = *added[next++];
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

    // Running balances, and names where one changed, as a read sets them.
    int64_t zankin = sisan->SyokiKingaku;
    itemIdx2Id.clear();
    itemIdx2Id.reserve(merged.size());
    for (const auto& row : merged) {
        Items& item = *row;
        zankin += signedKingaku(item.SyubetuNo, item.Nyuukin, item.Syukkin);
        item.Zankin = zankin;
        if (digest.namesChanged)
            item.strHimoku = getHimokuNamaeFromHimokuRowNo(item.SyubetuNo, item.HimokuNo, item.IdouSisanNo);
        itemIdx2Id.push_back(item.Id);
    }
    itemList = std::move(merged);
    itemId2Idx.assignPositions(itemIdx2Id);
    updateSisanZankinList(itemListSisanId, zankin);
    return true;
}
