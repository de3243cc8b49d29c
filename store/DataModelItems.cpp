// DataModel: ledger entries and transfers.
#include <sqlite3.h>

#include "store/DataModel.h"
#include "store/DeviceIds.h"
#include "store/FindById.h"
#include "store/ItemsArena.h"
#include "store/ItemsSql.h"
#include "store/Money.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

const char* const kInsertStepFailure = "failure inserting item Syukkin,Nyuukin: ";
const std::string kUnknownNamae = "????";  // the name of a row that names no category or asset

// Copies text into a field of a reused row: into its buffer when that is
// large enough, else into a new one of the text's length (an assignment
// would take twice the short buffer's size, a waste on every row).
void assignText(std::string& field, const std::string& text)
{
    if (text.size() <= field.capacity()) {
        field.assign(text);
    } else {
        field = std::string(text);
    }
}

// How many rows of a ledger have a kind the program does not know, and the
// first few of their Ids: one message however many there are.
std::string unknownKindsText(const std::vector<int64_t>& ids)
{
    constexpr size_t kNamed = 5;
    std::string named;
    for (size_t i = 0; i < ids.size() && i < kNamed; ++i) named += (i ? ", " : "") + std::to_string(ids[i]);
    if (ids.size() > kNamed) named += " ほか";
    return "種別の分からない行が " + std::to_string(ids.size()) + " 件あります（Id " + named +
           "）。これらの行は残高に含めていません。";
}

}  // namespace

void DataModel::clearItemList()
{
    itemList.clear();
    itemId2Idx.clear();
    itemIdx2Id.clear();
    itemListSisanId = 0;
}

std::shared_ptr<ItemsArena> DataModel::emptyItemsArena()
{
    // Reuse the previous ledger's storage unless a screen still holds one of
    // its rows; then that storage stays with the screen and a new one starts.
    if (itemsArena && itemsArena.use_count() == 1) {
        itemsArena->recycle();
    } else {
        itemsArena = std::make_shared<ItemsArena>();
    }
    return itemsArena;
}

bool DataModel::readFromItemsTable(int64_t sisanId)
{
    clearItemList();
    const Sisan* sisan = findById(sisanList, sisanId2Idx, sisanId);
    if (!sisan) {
        someMessageWithAlert("error readFromItemTable", "stop the app");
        return false;
    }
    if (!prepare("SELECT * FROM Items WHERE SisanNo = " + std::to_string(sisanId) + " ORDER BY Hizuke",
                 "error prepare selct from item: ", "stop the app"))
        return false;
    const std::shared_ptr<ItemsArena> arena = emptyItemsArena();
    int64_t zankin = sisan->SyokiKingaku;
    std::vector<int64_t> unknownKinds;  // Ids of rows of no known kind, told once after the read
    const bool read = readRows("error step selct from item: ", "stop the app", [&] {
        const int64_t id = stmt.columnInt(0);
        const int64_t kind = stmt.columnInt(6);
        const int64_t himokuNo = stmt.columnInt(7);
        const int64_t idouSisanNo = stmt.columnInt(8);
        const int64_t nyuukin = stmt.columnInt(10);
        const int64_t syukkin = stmt.columnInt(11);
        if (isSyukkinKind(kind)) {
            zankin -= syukkin;
        } else if (isNyuukinKind(kind)) {
            zankin += nyuukin;
        } else {
            unknownKinds.push_back(id);
        }
        // Every field is written: the row may hold an earlier read's entry.
        Items& item = arena->next();
        item.Id = id;
        item.Hizuke = stmt.columnText(1);
        item.Nen = stmt.columnInt(2);
        item.Tuki = stmt.columnInt(3);
        item.Hi = stmt.columnInt(4);
        item.SisanNo = stmt.columnInt(5);
        item.SyubetuNo = kind;
        item.HimokuNo = himokuNo;
        item.IdouSisanNo = idouSisanNo;
        item.IdouId = stmt.columnInt(9);
        item.Nyuukin = nyuukin;
        item.Syukkin = syukkin;
        item.Bikou = stmt.columnText(12);
        assignText(item.strHimoku, namaeOfRow(kind, himokuNo, idouSisanNo));
        item.strNyuukin = isNyuukinKind(kind) ? formatWithGrouping(nyuukin) : std::string();
        item.strSyukkin = isSyukkinKind(kind) ? formatWithGrouping(syukkin) : std::string();
        item.Zankin = zankin;
        itemList.push_back(std::shared_ptr<Items>(arena, &item));
        itemIdx2Id.push_back(id);
    });
    if (!read) {
        // A ledger cut short would show wrong running balances: show none,
        // and keep the asset's balance as it was.
        clearItemList();
        return false;
    }
    arena->releaseUnused();
    itemListSisanId = sisanId;
    itemId2Idx.assignPositions(itemIdx2Id);
    updateSisanZankinList(sisanId, zankin);
    for (auto& flag : itemSortASC) flag.second = true;
    if (!unknownKinds.empty()) someMessageWithAlert("error in readFromItemTable IntToStr", unknownKindsText(unknownKinds));
    return true;
}

bool DataModel::rereadShownItems()
{
    if (theSisanNo < 0 || theSisanNo >= static_cast<int64_t>(sisanList.size())) {
        clearItemList();
        return true;
    }
    return readFromItemsTable(sisanList[static_cast<size_t>(theSisanNo)]->Id);
}

std::shared_ptr<Items> DataModel::readFromItem1Item(int64_t id)
{
    if (!fitsInt32(id)) return nullptr;
    if (!prepare("SELECT * FROM Items WHERE Id = " + std::to_string(id), "error prepare selct from item: ",
                 "stop the app"))
        return nullptr;
    std::shared_ptr<Items> item;
    const bool read = readRows("error step selct from item: ", "stop the app", [&] {
        const int64_t kind = stmt.columnInt(6);
        const int64_t himokuNo = stmt.columnInt(7);
        const int64_t idouSisanNo = stmt.columnInt(8);
        item = std::make_shared<Items>(stmt.columnInt(0), stmt.columnText(1), stmt.columnInt(2), stmt.columnInt(3),
                                       stmt.columnInt(4), stmt.columnInt(5), kind, himokuNo, idouSisanNo,
                                       stmt.columnInt(9), stmt.columnInt(10), stmt.columnInt(11),
                                       stmt.columnText(12),
                                       getHimokuNamaeFromHimokuRowNo(kind, himokuNo, idouSisanNo), "", "", 0);
    });
    return read ? item : nullptr;
}

std::string DataModel::getHimokuNamaeFromHimokuRowNo(int64_t syubetuNo, int64_t himokuNo, int64_t idouSisanNo)
{
    return namaeOfRow(syubetuNo, himokuNo, idouSisanNo);
}

std::string DataModel::getHimokuNamaeFromNo(int64_t id)
{
    const Himoku* himoku = findById(himokuList, himokuId2Idx, id);
    return himoku ? himoku->Namae : kUnknownNamae;
}

const std::string& DataModel::namaeOfRow(int64_t syubetuNo, int64_t himokuNo, int64_t idouSisanNo) const
{
    if (syubetuNo == kSyubetuSisyutu || syubetuNo == kSyubetuSyuunyuu) {
        const Himoku* himoku = findById(himokuList, himokuId2Idx, himokuNo);
        return himoku ? himoku->Namae : kUnknownNamae;
    }
    if (syubetuNo == kSyubetuIdouMoto || syubetuNo == kSyubetuIdouSaki) {
        const Sisan* sisan = findById(sisanList, sisanId2Idx, idouSisanNo);
        return sisan ? sisan->Namae : kUnknownNamae;
    }
    return kUnknownNamae;
}

bool DataModel::insertItemRow(const char* sql, const char* prepareMessage, int64_t id, const std::string& hizuke,
                              int64_t nen, int64_t tuki, int64_t hi, int64_t sisanNo, int64_t syubetuNo,
                              int64_t partnerNo, int64_t idouId, int64_t kingaku, const std::string& bikou)
{
    if (!prepare(sql, prepareMessage, "information")) return false;
    const bool done = bindIdOr(1, id) && bindTextOr(2, hizuke, "error insert Column Hizuke") &&
                      bindIntOr(3, nen, "error insert Column  Nen") &&
                      bindIntOr(4, tuki, "error insert Column  Tuki") &&
                      bindIntOr(5, hi, "error insert Column Hi ") &&
                      bindIntOr(6, sisanNo, "error insert Column SisanNo ") &&
                      bindIntOr(7, syubetuNo, "error insert Column SyubetuNo ") &&
                      bindIntOr(8, partnerNo, "error insert Column HimokuNo ") &&
                      bindIntOr(9, idouId, "error insert Column IdouId ") &&
                      bindIntOr(10, kingaku, "error insert Column Syukkin ") &&
                      bindTextOr(11, bikou, "error insert Column Bikou ") && stepDone(kInsertStepFailure);
    finalize();
    return done;
}

bool DataModel::insertIdouPair(const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi, int64_t sisanNo,
                               int64_t syubetuNo, int64_t idouSisanNo, int64_t kingaku, const std::string& bikou,
                               int64_t* motoId, int64_t* sakiId)
{
    int64_t moto = 0, saki = 0;
    if (!newRowIdOr("Items", &moto) || !newRowIdOr("Items", &saki)) return false;
    if (moto != 0) {
        // A book that syncs: both Ids are known before either row is
        // written, so the pair is two inserts, each naming the other.
        if (!insertItemRow(kInsertIdouMoto, "error preparing 移動元データ insert: ", moto, hizuke, nen, tuki, hi,
                           sisanNo, syubetuNo, idouSisanNo, saki, kingaku, bikou) ||
            !insertItemRow(kInsertIdouSaki, "error preparing 移動先データ insert: ", saki, hizuke, nen, tuki, hi,
                           idouSisanNo, kSyubetuIdouSaki, sisanNo, moto, kingaku, bikou))
            return false;
    } else {
        if (!insertItemRow(kInsertIdouMoto, "error preparing 移動元データ insert: ", 0, hizuke, nen, tuki, hi, sisanNo,
                           syubetuNo, idouSisanNo, -1, kingaku, bikou))
            return false;
        moto = sqlite3_last_insert_rowid(db);
        if (!insertItemRow(kInsertIdouSaki, "error preparing 移動先データ insert: ", 0, hizuke, nen, tuki, hi,
                           idouSisanNo, kSyubetuIdouSaki, sisanNo, moto, kingaku, bikou))
            return false;
        saki = sqlite3_last_insert_rowid(db);
        if (!runWrite("UPDATE Items SET IdouId=" + std::to_string(saki) + " WHERE Id=" + std::to_string(moto),
                      "error prepare update 移動元item: ", "stop the app", "failure updating  移動元item: "))
            return false;
    }
    if (motoId) *motoId = moto;
    if (sakiId) *sakiId = saki;
    return true;
}

bool DataModel::itemNyuukinSyukkinInsert(const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi,
                                         int64_t sisanNo, int64_t syubetuNo, int64_t himokuNo, int64_t kingaku,
                                         const std::string& bikou)
{
    if (!allFitInt32({nen, tuki, hi, sisanNo, syubetuNo, himokuNo, kingaku})) return false;
    const char* sql = syubetuNo == kSyubetuSisyutu ? kInsertSyukkin : kInsertNyuukin;
    {
        RecordedStep step(db, entryStepLabel(getHimokuNamaeFromNo(himokuNo), kingaku, "追加"));
        if (!beganOrReport(step)) return false;
        int64_t id = 0;
        if (!newRowIdOr("Items", &id) ||
            !insertItemRow(sql, "error preparing Syukkin,Nyuukin insert: ", id, hizuke, nen, tuki, hi, sisanNo,
                           syubetuNo, himokuNo, -1, kingaku, bikou))
            return false;
        if (!commitStep(step)) return false;
    }
    return rereadShownItems();
}

bool DataModel::itemIdouSisanInsert(const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi,
                                    int64_t sisanNo, int64_t syubetuNo, int64_t idouSisanNo, int64_t kingaku,
                                    const std::string& bikou)
{
    if (!allFitInt32({nen, tuki, hi, sisanNo, syubetuNo, idouSisanNo, kingaku})) return false;
    {
        // Both rows and their link are one step, written together or not at
        // all; the ledgers are re-read only after the commit, so a
        // rolled-back transfer never reaches the lists or the balances.
        RecordedStep step(db, idouStepLabel(getSisanNamaeFromNo(sisanNo), getSisanNamaeFromNo(idouSisanNo), kingaku,
                                            "追加"));
        if (!beganOrReport(step)) return false;
        if (!insertIdouPair(hizuke, nen, tuki, hi, sisanNo, syubetuNo, idouSisanNo, kingaku, bikou)) return false;
        if (!commitStep(step)) return false;
    }
    // Only the destination's balance is needed from its ledger; the list
    // shown afterwards is the source's.
    return recomputeSisanZankin(idouSisanNo) && readFromItemsTable(sisanNo);
}

bool DataModel::itemUpdate(int64_t id, const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi,
                           int64_t sisanNo, int64_t syubetuNo, int64_t himokuNo, int64_t kingaku,
                           const std::string& bikou)
{
    if (syubetuNo != kSyubetuSisyutu && syubetuNo != kSyubetuSyuunyuu) return false;
    if (!allFitInt32({id, nen, tuki, hi, sisanNo, syubetuNo, himokuNo, kingaku})) return false;
    const char* amountColumn = syubetuNo == kSyubetuSisyutu ? " ,Syukkin=" : " ,Nyuukin=";
    const std::string sql = std::string("UPDATE Items SET") + " Hizuke= ? ,Nen=" + std::to_string(nen) +
                            " ,Tuki=" + std::to_string(tuki) + " ,Hi=" + std::to_string(hi) +
                            " ,SisanNo=" + std::to_string(sisanNo) + " ,SyubetuNo=" + std::to_string(syubetuNo) +
                            " ,HimokuNo=  " + std::to_string(himokuNo) + amountColumn + std::to_string(kingaku) +
                            " ,Bikou = ?" + " WHERE Id=" + std::to_string(id);
    {
        RecordedStep step(db, entryStepLabel(getHimokuNamaeFromNo(himokuNo), kingaku, "編集"));
        if (!beganOrReport(step)) return false;
        if (!prepare(sql, "error prepare update 編集更新item: ", "stop the app")) return false;
        const bool done =
            bind_text(1, hizuke) && bind_text(2, bikou) && stepDone("failure updating  編集更新item: ");
        finalize();
        if (!done || !commitStep(step)) return false;
    }
    return readFromItemsTable(sisanNo);
}

bool DataModel::itemDelete(int64_t id)
{
    if (!allFitInt32({id})) return false;
    {
        RecordedStep step(db, entryLabel(id, "削除"));
        if (!beganOrReport(step)) return false;
        if (!runWrite("DELETE FROM Items WHERE Id=" + std::to_string(id), "error preparing delete: ", "information",
                      "failure deletin from Items: "))
            return false;
        if (!commitStep(step)) return false;
    }
    return rereadShownItems();
}

bool DataModel::itemDeleteIdouPair(int64_t partnerId, int64_t id)
{
    if (!allFitInt32({partnerId, id})) return false;
    const std::shared_ptr<Items> partner = readFromItem1Item(partnerId);
    {
        RecordedStep step(db, partner ? entryLabel(*partner, "削除") : entryLabel(id, "削除"));
        if (!beganOrReport(step)) return false;
        for (int64_t rowId : {partnerId, id}) {
            if (!runWrite("DELETE FROM Items WHERE Id=" + std::to_string(rowId), "error preparing delete: ",
                          "information", "failure deletin from Items: "))
                return false;
        }
        if (!commitStep(step)) return false;
    }
    // The partner's asset loses the row too: bring its balance up to date.
    if (partner && sisanId2Idx.count(partner->SisanNo) && !recomputeSisanZankin(partner->SisanNo)) return false;
    return rereadShownItems();
}

bool DataModel::itemDeleteWhereSisanNo(int64_t sisanId)
{
    if (!allFitInt32({sisanId})) return false;
    {
        RecordedStep step(db, sisanStepLabel(getSisanNamaeFromNo(sisanId), "データの削除"));
        if (!beganOrReport(step)) return false;
        if (!deleteItemsOfSisan(sisanId) || !commitStep(step)) return false;
    }
    return rereadShownItems();
}

bool DataModel::sisanDeleteWithItems(int64_t id)
{
    if (!allFitInt32({id})) return false;
    {
        RecordedStep step(db, sisanStepLabel(getSisanNamaeFromNo(id), "削除"));
        if (!beganOrReport(step)) return false;
        if (!deleteItemsOfSisan(id)) return false;
        if (!runWrite("DELETE FROM Sisan WHERE Id=" + std::to_string(id), "error preparing delete sisan: ",
                      "information", "failure deletin from sisan: "))
            return false;
        if (!deleteCardRowsOf(id)) return false;
        if (!commitStep(step)) return false;
    }
    return rereadShownItems() && readFromSisanTable() && readFromCardTable();
}

bool DataModel::deleteItemsOfSisan(int64_t sisanId)
{
    const std::string ids = std::to_string(sisanId);
    return runWrite("DELETE FROM Items WHERE (SisanNo=" + ids + " ) OR ( (IdouSisanNo IS NOT NULL) AND (IdousisanNo = " +
                        ids + ") )",
                    "error preparing delete: ", "information", "failure delete where sisanId= from Items: ");
}
