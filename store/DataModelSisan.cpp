// DataModel: assets and balances.
#include "store/ColumnText.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/Transaction.h"

bool DataModel::readFromSisanTable()
{
    GrandTotalSisan = 0;
    sisanList.clear();
    sisanId2Idx.clear();
    sisanIdx2Id.clear();
    if (!prepare("SELECT * FROM Sisan", "error prepare selct from sisan: ", "stop the app")) return false;
    for (int64_t p = 0; sqlite3_step(stmt) == SQLITE_ROW; ++p) {
        const int64_t id = sqlite3_column_int(stmt, 0);
        const int64_t zankin = sqlite3_column_int(stmt, 3);
        GrandTotalSisan += zankin;
        sisanList.push_back(
            std::make_shared<Sisan>(id, columnText(stmt, 1), sqlite3_column_int(stmt, 2), zankin));
        sisanId2Idx[id] = p;
        sisanIdx2Id.push_back(id);
    }
    finalize();
    return true;
}

void DataModel::totalOfZankinFrom_sisanList()
{
    GrandTotalSisan = 0;
    for (const auto& sisan : sisanList) GrandTotalSisan += sisan->Zankin;
}

void DataModel::updateSisanZankinList(int64_t id, int64_t zankin)
{
    if (Sisan* sisan = findById(sisanList, sisanId2Idx, id)) {
        sisan->Zankin = zankin;
        return;
    }
    someMessageWithAlert("error updateSisanZankinList");
}

bool DataModel::updateSisanZankinTable()
{
    // One transaction so that the whole write costs one disk sync. What was
    // written before a failure is still committed: the balances are
    // independent of each other.
    Transaction tx(db);
    for (const auto& sisan : sisanList) {
        if (!allFitInt32({sisan->Zankin, sisan->Id})) {
            tx.commit();
            return false;
        }
        const std::string sql =
            "UPDATE Sisan SET Zankin=" + std::to_string(sisan->Zankin) + " WHERE Id=" + std::to_string(sisan->Id);
        if (!runWrite(sql, "error prepare update sisan: ", "stop the app", "failure updating sisan Zankin: ")) {
            tx.commit();
            return false;
        }
    }
    if (tx.began() && !commitOrReport(tx)) return false;
    return true;
}

bool DataModel::sisanInsert(const std::string& namae, int64_t syokiKingaku)
{
    if (!allFitInt32({syokiKingaku})) return false;
    if (!prepare("INSERT INTO Sisan (Namae,SyokiKingaku,Zankin) VALUES (?,?,?)", "error preparing sisan insert: ",
                 "information"))
        return false;
    const bool done = bindTextOr(1, namae, "error insert Column Namae") &&
                      bindIntOr(2, syokiKingaku, "error insert Column SyokiKingaku ") &&
                      bindIntOr(3, syokiKingaku, "error insert Column Zankin ") &&
                      stepDone("failure inserting sisan : ");
    finalize();
    return done && readFromSisanTable();
}

bool DataModel::sisanUpdate(int64_t id, const std::string& namae, int64_t syokiKingaku, int64_t zankin)
{
    if (!allFitInt32({id, syokiKingaku, zankin})) return false;
    const std::string sql = "UPDATE Sisan SET Namae= ? , SyokiKingaku=" + std::to_string(syokiKingaku) +
                            " , Zankin=" + std::to_string(zankin) + " WHERE Id=" + std::to_string(id);
    if (!prepare(sql, "error prepare update sisan: ", "stop the app")) return false;
    const bool done = bind_text(1, namae) && stepDone("failure updating sisan: ");
    finalize();
    return done && readFromSisanTable();
}

bool DataModel::sisanDelete(int64_t id)
{
    if (!allFitInt32({id})) return false;
    if (!runWrite("DELETE FROM Sisan WHERE Id=" + std::to_string(id), "error preparing delete sisan: ",
                  "information", "failure deletin from sisan: "))
        return false;
    return readFromSisanTable();
}

std::string DataModel::getSisanNamaeFromNo(int64_t id)
{
    const Sisan* sisan = findById(sisanList, sisanId2Idx, id);
    return sisan ? sisan->Namae : "????";
}
