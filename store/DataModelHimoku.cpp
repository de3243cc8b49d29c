// DataModel: the category tree (categories and their sub-items).
#include <sqlite3.h>

#include "store/DataModel.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

// The Id comes first: NULL lets SQLite pick it (DataModel::newRowIdOr).
const char* const kInsertHimoku = "INSERT INTO Himoku (Id, SyubetuNo, Namae, Hno, Ucount) VALUES (?,?,?,?,?)";

std::string renameSql(int64_t id) { return "UPDATE Himoku SET Namae= ? WHERE Id=" + std::to_string(id); }

}  // namespace

bool DataModel::readFromHimokuTable()
{
    himokuList.clear();
    himokuId2Idx.clear();
    himokuIdx2Id.clear();
    if (!prepare("SELECT * FROM Himoku ORDER BY SyubetuNo, Hno,Id", "error prepare selct from himoku: ",
                 "stop the app"))
        return false;
    const bool read = readRows("error step selct from himoku: ", "stop the app", [this] {
        const int64_t id = checkedInt(0, IntegerRange::Int32);
        const int64_t syubetuNo = checkedInt(1, IntegerRange::Int32);
        const int64_t hno = checkedInt(3, IntegerRange::Int32);
        const int64_t ucount = checkedInt(4, IntegerRange::Int32);
        himokuId2Idx[id] = static_cast<int64_t>(himokuList.size());
        himokuIdx2Id.push_back(id);
        himokuList.push_back(std::make_shared<Himoku>(id, syubetuNo, stmt.columnText(2), hno, ucount));
    });
    if (read) return true;
    // A tree cut short would lose sub-items from the lists and counts.
    himokuList.clear();
    himokuId2Idx.clear();
    himokuIdx2Id.clear();
    return false;
}

bool DataModel::insertHimokuRow(int64_t id, int64_t syubetuNo, const std::string& namae, int64_t hno, int64_t ucount,
                                const char* prepareMessage, const char* stepMessage)
{
    if (!prepare(kInsertHimoku, prepareMessage, "information")) return false;
    const bool done = bindIdOr(1, id) && bindIntOr(2, syubetuNo, "error insert Column SyubetuNo ") &&
                      bindTextOr(3, namae, "error insert Column Namae") &&
                      bindIntOr(4, hno, "error insert Column Hno ") &&
                      bindIntOr(5, ucount, "error insert Column Ucount ") && stepDone(stepMessage);
    finalize();
    return done;
}

bool DataModel::insertHimokuOfHiimoku(int64_t syubetuNo, const std::string& namae)
{
    if (!allFitInt32({syubetuNo})) return false;
    {
        // The category row and its "その他" sub-item exist together or not at all.
        RecordedStep step(db, himokuStepLabel(namae, "追加"));
        if (!beganOrReport(step)) return false;
        const char* prepareMessage = "error preparing HimokumeiOfHimoku insert: ";
        const char* stepMessage = "failure inserting himoku : ";
        int64_t category = 0, sonota = 0;
        if (!newRowIdOr("Himoku", &category) || !newRowIdOr("Himoku", &sonota)) return false;
        if (category != 0) {
            // A book that syncs knows both Ids first: two inserts, no update.
            if (!insertHimokuRow(category, syubetuNo, namae, category, 1, prepareMessage, stepMessage) ||
                !insertHimokuRow(sonota, syubetuNo, namae + "/その他", category, 0, prepareMessage, stepMessage))
                return false;
        } else {
            if (!insertHimokuRow(0, syubetuNo, namae, 0, 1, prepareMessage, stepMessage)) return false;
            const int64_t n = sqlite3_last_insert_rowid(db);
            if (!insertHimokuRow(0, syubetuNo, namae + "/その他", n, 0, prepareMessage, stepMessage)) return false;
            const std::string ns = std::to_string(n);
            if (!runWrite("UPDATE Himoku SET Hno= " + ns + " WHERE Id=" + ns,
                          "error prepare update HnoOfHimoku for insert himokumei: ", "stop the app",
                          "failure updating HnoOfHimoku for insert himokumei: "))
                return false;
        }
        if (!commitStep(step)) return false;
    }
    return readFromHimokuTable();
}

bool DataModel::insertUtiwakeOfHimoku(int64_t syubetuno, const std::string& utiwake, int64_t hno, int64_t ucount0)
{
    if (!allFitInt32({syubetuno, hno, ucount0, ucount0 + 1})) return false;
    {
        RecordedStep step(db, utiwakeStepLabel(utiwake, "追加"));
        if (!beganOrReport(step)) return false;
        int64_t id = 0;
        if (!newRowIdOr("Himoku", &id) ||
            !insertHimokuRow(id, syubetuno, utiwake, hno, 0, "error preparing UtiwakemeiOfHimoku insert: ",
                             "failure inserting utiwake : "))
            return false;
        if (!runWrite("UPDATE Himoku SET Ucount= " + std::to_string(ucount0 + 1) + " WHERE Id=" + std::to_string(hno),
                      "error prepare update Ucount O fHimoku for update himokumei: ", "stop the app",
                      "failure updating Ucount Of Himoku for update himokumei: "))
            return false;
        if (!commitStep(step)) return false;
    }
    return readFromHimokuTable();
}

bool DataModel::updateHnoOfHimoku(int64_t id, int64_t hno)
{
    if (!allFitInt32({id, hno})) return false;
    RecordedStep step(db, himokuStepLabel(getHimokuNamaeFromNo(id), "番号の変更"));
    if (!beganOrReport(step)) return false;
    return runWrite("UPDATE Himoku SET Hno= " + std::to_string(hno) + " WHERE Id=" + std::to_string(id),
                    "error prepare update HnoOfHimoku: ", "stop the app", "failure updating HnoOfHimoku: ") &&
           commitStep(step);
}

bool DataModel::renameRow(int64_t id, const std::string& namae, const char* preparePrefix, const char* stepPrefix)
{
    if (!prepare(renameSql(id), preparePrefix, "stop the app")) return false;
    const bool done = bind_text(1, namae) && stepDone(stepPrefix);
    finalize();
    return done;
}

bool DataModel::updateNamaeOfHimoku(int64_t id, const std::string& himokuNamae,
                                    const std::vector<int64_t>& utiwakeids,
                                    const std::vector<std::string>& utiwakeNamaes)
{
    if (utiwakeNamaes.size() != utiwakeids.size()) {
        someMessageWithAlert("error updateNamaeOfHimoku: sub-item ids and names differ in number");
        return false;
    }
    if (!allFitInt32({id})) return false;
    for (int64_t utiwakeId : utiwakeids)
        if (!allFitInt32({utiwakeId})) return false;
    {
        // The category and every sub-item carry the new name, or none does.
        RecordedStep step(db, himokuStepLabel(getHimokuNamaeFromNo(id), "名前の変更"));
        if (!beganOrReport(step)) return false;
        if (!renameRow(id, himokuNamae, "error prepare update Namae Of Himoku: ", "failure updating Namae Of Himoku: "))
            return false;
        for (size_t i = 0; i < utiwakeids.size(); ++i) {
            if (!renameRow(utiwakeids[i], himokuNamae + "/" + utiwakeNamaes[i],
                           "error prepare update utiwake namae Of updated Himoku: ",
                           "failure updating utiwake namae Of updated Himoku: "))
                return false;
        }
        if (!commitStep(step)) return false;
    }
    return readFromHimokuTable() && rereadShownItems();
}

bool DataModel::updateNamaeOfUtiwakeHimoku(int64_t id, const std::string& namae)
{
    if (!allFitInt32({id})) return false;
    {
        RecordedStep step(db, utiwakeStepLabel(getHimokuNamaeFromNo(id), "名前の変更"));
        if (!beganOrReport(step)) return false;
        if (!renameRow(id, namae, "error prepare update Namae Of Utiwake Himoku: ",
                       "failure updating Namae Of Utiwake Himoku: ") ||
            !commitStep(step))
            return false;
    }
    return readFromHimokuTable() && rereadShownItems();
}

bool DataModel::deleteUtiwakeHimoku(int64_t id, int64_t hno, int64_t ucount)
{
    if (!allFitInt32({id, hno, ucount, ucount - 1})) return false;
    {
        // Row, count and entries go together, so the count always matches.
        RecordedStep step(db, utiwakeStepLabel(getHimokuNamaeFromNo(id), "削除"));
        if (!beganOrReport(step)) return false;
        const std::string ids = std::to_string(id);
        if (!runWrite("DELETE FROM Himoku WHERE Id=" + ids, "error preparing delete utiwake: ", "information",
                      "failure delet from himoku: "))
            return false;
        if (!runWrite("UPDATE Himoku SET Ucount= " + std::to_string(ucount - 1) + " WHERE Id=" + std::to_string(hno),
                      "error prepare update Ucount Of Himoku: ", "stop the app", "failure updating Ucount Of Himoku: "))
            return false;
        if (!runWrite("DELETE FROM Items WHERE HimokuNo=" + ids, "error preparing delete items from utiwake: ",
                      "information", "failure delete items  from himoku: "))
            return false;
        if (!deleteYosanOf({id})) return false;
        if (!commitStep(step)) return false;
    }
    return rereadAfterHimokuDelete();
}

bool DataModel::deleteHimokuHimoku(int64_t himokuid, const std::vector<int64_t>& utiwakeids)
{
    if (!allFitInt32({himokuid})) return false;
    for (int64_t utiwakeId : utiwakeids)
        if (!allFitInt32({utiwakeId})) return false;
    {
        RecordedStep step(db, himokuStepLabel(getHimokuNamaeFromNo(himokuid), "削除"));
        if (!beganOrReport(step)) return false;
        if (!runWrite("DELETE FROM Himoku WHERE Hno=" + std::to_string(himokuid),
                      "error preparing delete himoku,utiwake: ", "information", "failure delete from himoku,utiwake: "))
            return false;
        for (int64_t utiwakeId : utiwakeids) {
            if (!runWrite("DELETE FROM Items WHERE HimokuNo=" + std::to_string(utiwakeId),
                          "error preparing delete items from himoku delete: ", "information",
                          "failure delet  items from himoku delete: "))
                return false;
        }
        std::vector<int64_t> budgeted = utiwakeids;
        budgeted.push_back(himokuid);
        if (!deleteYosanOf(budgeted)) return false;
        if (!commitStep(step)) return false;
    }
    return rereadAfterHimokuDelete();
}

bool DataModel::rereadAfterHimokuDelete()
{
    if (!readFromHimokuTable() || !rereadShownItems()) return false;
    return readFromSisanTable() && readFromYosanTable();
}
