// DataModel: assets and balances.
#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

void DataModel::clearSisanList()
{
    GrandTotalSisan = 0;
    sisanList.clear();
    sisanId2Idx.clear();
    sisanIdx2Id.clear();
}

bool DataModel::readFromSisanTable()
{
    clearSisanList();
    zankinExact = false;  // the stored copies may lag the entries
    if (!prepare("SELECT * FROM Sisan", "error prepare selct from sisan: ", "stop the app")) return false;
    const bool read = readRows("error step selct from sisan: ", "stop the app", [this] {
        const int64_t id = checkedInt(0, IntegerRange::Int32);
        const int64_t syokiKingaku = checkedInt(2, IntegerRange::Int32);
        const int64_t zankin = checkedInt(3, IntegerRange::Int64);
        GrandTotalSisan += zankin;
        sisanId2Idx[id] = static_cast<int64_t>(sisanList.size());
        sisanIdx2Id.push_back(id);
        sisanList.push_back(std::make_shared<Sisan>(id, stmt.columnText(1), syokiKingaku, zankin));
    });
    // A list cut short would have its missing assets written back as gone.
    if (!read) clearSisanList();
    return read;
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

bool DataModel::sisanInsert(const std::string& namae, int64_t syokiKingaku)
{
    if (!allFitInt32({syokiKingaku})) return false;
    {
        RecordedStep step(db, sisanStepLabel(namae, "追加"));
        if (!beganOrReport(step)) return false;
        int64_t id = 0;
        if (!newRowIdOr("Sisan", &id) ||
            !prepare("INSERT INTO Sisan (Id,Namae,SyokiKingaku,Zankin) VALUES (?,?,?,?)",
                     "error preparing sisan insert: ", "information"))
            return false;
        const bool done = bindIdOr(1, id) && bindTextOr(2, namae, "error insert Column Namae") &&
                          bindIntOr(3, syokiKingaku, "error insert Column SyokiKingaku ") &&
                          bindIntOr(4, syokiKingaku, "error insert Column Zankin ") &&
                          stepDone("failure inserting sisan : ");
        finalize();
        if (!done || !commitStep(step)) return false;
    }
    return readFromSisanTable();
}

bool DataModel::sisanUpdate(int64_t id, const std::string& namae, int64_t syokiKingaku, int64_t zankin)
{
    if (!allFitInt32({id, syokiKingaku})) return false;
    const std::string sql = "UPDATE Sisan SET Namae= ? , SyokiKingaku=" + std::to_string(syokiKingaku) +
                            " , Zankin=" + std::to_string(zankin) + " WHERE Id=" + std::to_string(id);
    {
        const Sisan* before = findById(sisanList, sisanId2Idx, id);
        RecordedStep step(db, sisanStepLabel(before ? before->Namae : namae, "編集"));
        if (!beganOrReport(step)) return false;
        if (!prepare(sql, "error prepare update sisan: ", "stop the app")) return false;
        const bool done = bind_text(1, namae) && stepDone("failure updating sisan: ");
        finalize();
        if (!done || !commitStep(step)) return false;
    }
    return readFromSisanTable();
}

bool DataModel::sisanDelete(int64_t id)
{
    if (!allFitInt32({id})) return false;
    {
        RecordedStep step(db, sisanStepLabel(getSisanNamaeFromNo(id), "削除"));
        if (!beganOrReport(step)) return false;
        if (!runWrite("DELETE FROM Sisan WHERE Id=" + std::to_string(id), "error preparing delete sisan: ",
                      "information", "failure deletin from sisan: "))
            return false;
        if (!commitStep(step)) return false;
    }
    return readFromSisanTable();
}

std::string DataModel::getSisanNamaeFromNo(int64_t id)
{
    const Sisan* sisan = findById(sisanList, sisanId2Idx, id);
    return sisan ? sisan->Namae : "????";
}
