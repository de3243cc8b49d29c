// DataModel: balances recomputed from the entries, and their stored copies.
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
    return readRows("error step sum of items: ", "information", [&] {
        const int64_t* position = sisanId2Idx.find(stmt.columnInt(0));
        if (!position) return;  // rows of an asset that is no longer listed
        const int64_t kind = stmt.columnInt(1);
        int64_t& sum = zankin[static_cast<size_t>(*position)];
        if (isNyuukinKind(kind)) sum += stmt.columnInt(2);
        if (isSyukkinKind(kind)) sum -= stmt.columnInt(3);
    });
}

bool DataModel::recomputeAllSisanZankin()
{
    std::vector<size_t> changed;
    return recomputeZankinInMemory(&changed) && (changed.empty() || storeZankinOf(changed));
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
    return commitOrReport(tx);
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
    return !tx.began() || commitOrReport(tx);
}
