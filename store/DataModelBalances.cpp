// DataModel: balances recomputed from the entries, and their stored copies.
#include <sqlite3.h>

#include <utility>

#include "store/DataModel.h"
#include "store/Transaction.h"

namespace {

// Every entry's asset, kind and amounts, in table order. One sequential pass
// summed per asset here costs less than half of SQLite's GROUP BY SisanNo,
// which either sorts every row or visits the table in index order.
const char* const kEntryAmountsSql = "SELECT SisanNo, SyubetuNo, Nyuukin, Syukkin FROM Items";

}  // namespace

bool DataModel::sumZankinOfSisans(std::vector<int64_t>& zankin, const int64_t* onlySisanId)
{
    std::string sql = kEntryAmountsSql;
    if (onlySisanId) sql += " WHERE SisanNo = " + std::to_string(*onlySisanId);
    if (!prepare(sql, "error prepare sum of items: ", "information")) return false;
    zankin.resize(sisanList.size());
    for (size_t p = 0; p < sisanList.size(); ++p) zankin[p] = sisanList[p]->SyokiKingaku;
    // Every value summed is checked as it is read: this pass is the start's
    // check of the entries' figures (BookValues.h).
    return readRows("error step sum of items: ", "information", [&] {
        const int64_t kind = checkedInt(1, IntegerRange::Int32);
        const int64_t* position = sisanId2Idx.find(checkedInt(0, IntegerRange::Int32));
        if (!position) return;  // rows of an asset that is no longer listed
        int64_t& sum = zankin[static_cast<size_t>(*position)];
        if (isNyuukinKind(kind)) sum += checkedInt(2, IntegerRange::Int32);
        if (isSyukkinKind(kind)) sum -= checkedInt(3, IntegerRange::Int32);
    });
}

bool DataModel::recomputeAllSisanZankin()
{
    std::vector<size_t> changed;
    if (!recomputeZankinInMemory(&changed)) return false;
    // Sums of values the program cannot read are never stored.
    if (unreadableValueSeen) return false;
    if (changed.empty()) return true;
    if (deferCorrections) {
        for (size_t p : changed) zankinPendingIds.insert(sisanList[p]->Id);
        return true;
    }
    return storeZankinOf(changed);
}

bool DataModel::recomputeZankinInMemory(std::vector<size_t>* changed)
{
    std::vector<int64_t> zankin;
    if (!sumZankinOfSisans(zankin)) return false;
    for (size_t p = 0; p < sisanList.size(); ++p) {
        if (sisanList[p]->Zankin == zankin[p]) continue;
        sisanList[p]->Zankin = zankin[p];
        if (changed) changed->push_back(p);
    }
    totalOfZankinFrom_sisanList();
    zankinExact = true;
    return true;
}

bool DataModel::recomputeSisanZankin(int64_t sisanId)
{
    std::vector<int64_t> zankin;
    if (!sumZankinOfSisans(zankin, &sisanId)) return false;
    if (const int64_t* position = sisanId2Idx.find(sisanId))
        sisanList[static_cast<size_t>(*position)]->Zankin = zankin[static_cast<size_t>(*position)];
    return true;
}

bool DataModel::storeZankinOf(const std::vector<size_t>& positions)
{
    Transaction tx(db);
    if (!beganOrReport(tx)) return false;
    for (size_t p : positions)
        if (!updateZankinRow(*sisanList[p])) return false;
    if (tx.commit()) {
        for (size_t p : positions) zankinPendingIds.erase(sisanList[p]->Id);
        return true;
    }
    // Another program reading the book keeps the commit out. The balances
    // shown are right; their stored copies follow when the book is free.
    if ((sqlite3_errcode(db) & 0xff) == SQLITE_BUSY) {
        for (size_t p : positions) zankinPendingIds.insert(sisanList[p]->Id);
        return true;
    }
    someMessageWithAlert(errorText("failure committing a transaction: "));
    return false;
}

bool DataModel::storePendingZankin()
{
    if (historyPrunePending) pruneOldHistory();
    std::vector<size_t> positions;
    for (const int64_t id : std::exchange(zankinPendingIds, {}))
        if (const int64_t* p = sisanId2Idx.find(id)) positions.push_back(static_cast<size_t>(*p));
    if (positions.empty()) return true;
    sqlite3_busy_timeout(db, kCorrectionWaitMs);
    const bool stored = storeZankinOf(positions) && zankinPendingIds.empty();
    sqlite3_busy_timeout(db, busyTimeoutMs);
    return stored;
}

bool DataModel::updateZankinRow(const Sisan& sisan)
{
    if (!allFitInt32({sisan.Id})) return false;
    // The balance is spliced as decimal text, so it keeps all 64 bits.
    const std::string sql =
        "UPDATE Sisan SET Zankin=" + std::to_string(sisan.Zankin) + " WHERE Id=" + std::to_string(sisan.Id);
    return runWrite(sql, "error prepare update sisan: ", "stop the app", "failure updating sisan Zankin: ");
}

bool DataModel::updateSisanZankinTable()
{
    // One transaction so that the whole write costs one disk sync. What was
    // written before a failure is still committed: the balances are
    // independent of each other.
    Transaction tx(db);
    for (const auto& sisan : sisanList) {
        if (!updateZankinRow(*sisan)) {
            tx.commit();
            return false;
        }
    }
    zankinPendingIds.clear();  // every balance is in this write
    return !tx.began() || commitOrReport(tx);
}
