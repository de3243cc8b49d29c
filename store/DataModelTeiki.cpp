// DataModel: recurring entries, their rules and the occurrences posted or skipped.
#include <sqlite3.h>

#include <algorithm>
#include <set>

#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/ItemsSql.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

const char* const kTeikiColumns =
    "Id,SisanNo,SyubetuNo,HimokuNo,IdouSisanNo,Kingaku,Bikou,Tani,Kankaku,Hi,Tuki,Youbi,Kaisi,Syuuryou,Kaisuu,"
    "Kyuujitu,Kakunin";
const char* const kInsertTeiki =
    "INSERT INTO Teiki (SisanNo,SyubetuNo,HimokuNo,IdouSisanNo,Kingaku,Bikou,Tani,Kankaku,Hi,Tuki,Youbi,Kaisi,"
    "Syuuryou,Kaisuu,Kyuujitu,Kakunin) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
const char* const kUpdateTeiki =
    "UPDATE Teiki SET SisanNo=?,SyubetuNo=?,HimokuNo=?,IdouSisanNo=?,Kingaku=?,Bikou=?,Tani=?,Kankaku=?,Hi=?,"
    "Tuki=?,Youbi=?,Kaisi=?,Syuuryou=?,Kaisuu=?,Kyuujitu=?,Kakunin=? WHERE Id=?";
const char* const kInsertKiroku =
    "INSERT INTO TeikiKiroku (TeikiNo,Yotei,Hizuke,Jyoutai,ItemId,IdouId,Kingaku) VALUES (?,?,?,?,?,?,?)";
// Occurrences are selected by the day they are booked on, which a day off
// moves by a few days from the scheduled one: a month covers any such move.
const char* const kReadKiroku =
    "SELECT k.Id,k.TeikiNo,k.Yotei,k.Hizuke,k.Jyoutai,k.ItemId,k.IdouId,k.Kingaku FROM TeikiKiroku k "
    "JOIN Teiki t ON t.Id = k.TeikiNo WHERE k.Yotei >= date(t.Kakunin, '-1 month') ORDER BY k.TeikiNo, k.Yotei";
const char* const kUnusableTeiki = "定期的な支出入の規則が見つからないか、資産や費目が削除されていて使えません。";

// The year, month and day of a "yyyy-MM-dd" text; false for any other form.
bool splitHizuke(const std::string& hizuke, int64_t* nen, int64_t* tuki, int64_t* hi)
{
    if (hizuke.size() != 10 || hizuke[4] != '-' || hizuke[7] != '-') return false;
    int64_t parts[3] = {0, 0, 0};
    const size_t starts[3] = {0, 5, 8}, lengths[3] = {4, 2, 2};
    for (int p = 0; p < 3; ++p) {
        for (size_t i = starts[p]; i < starts[p] + lengths[p]; ++i) {
            if (hizuke[i] < '0' || hizuke[i] > '9') return false;
            parts[p] = parts[p] * 10 + (hizuke[i] - '0');
        }
    }
    *nen = parts[0];
    *tuki = parts[1];
    *hi = parts[2];
    return parts[1] >= 1 && parts[1] <= 12 && parts[2] >= 1 && parts[2] <= 31;
}

}  // namespace

std::string DataModel::teikiNamae(const Teiki& teiki)
{
    if (!teiki.Bikou.empty()) return teiki.Bikou;
    if (teiki.SyubetuNo != kSyubetuIdouMoto) return getHimokuNamaeFromNo(teiki.HimokuNo);
    return getSisanNamaeFromNo(teiki.SisanNo) + "→" + getSisanNamaeFromNo(teiki.IdouSisanNo);
}

void DataModel::clearTeikiList()
{
    teikiList.clear();
    teikiId2Idx.clear();
    teikiIdx2Id.clear();
}

bool DataModel::readFromTeikiTable()
{
    clearTeikiList();
    if (!prepare(std::string("SELECT ") + kTeikiColumns + " FROM Teiki ORDER BY Id",
                 "error prepare select from teiki: ", "information"))
        return false;
    const bool read = readRows("error step select from teiki: ", "information", [this] {
        auto teiki = std::make_shared<Teiki>();
        teiki->Id = stmt.columnInt(0);
        teiki->SisanNo = stmt.columnInt(1);
        teiki->SyubetuNo = stmt.columnInt(2);
        teiki->HimokuNo = stmt.columnInt(3);
        teiki->IdouSisanNo = stmt.columnInt(4);
        teiki->Kingaku = stmt.columnInt(5);
        teiki->Bikou = stmt.columnText(6);
        teiki->Tani = stmt.columnInt(7);
        teiki->Kankaku = stmt.columnInt(8);
        teiki->Hi = stmt.columnInt(9);
        teiki->Tuki = stmt.columnInt(10);
        teiki->Youbi = stmt.columnInt(11);
        teiki->Kaisi = stmt.columnText(12);
        teiki->Syuuryou = stmt.columnText(13);
        teiki->Kaisuu = stmt.columnInt(14);
        teiki->Kyuujitu = stmt.columnInt(15);
        teiki->Kakunin = stmt.columnText(16);
        teikiIdx2Id.push_back(teiki->Id);
        teikiList.push_back(std::move(teiki));
    });
    if (!read) {
        clearTeikiList();
        return false;
    }
    teikiId2Idx.assignPositions(teikiIdx2Id);
    return true;
}

TeikiFault DataModel::teikiFault(const Teiki& teiki) const
{
    if (!findById(sisanList, sisanId2Idx, teiki.SisanNo)) return TeikiFault::SisanGone;
    if (teiki.SyubetuNo == kSyubetuIdouMoto) {
        const bool partner = teiki.IdouSisanNo != teiki.SisanNo && findById(sisanList, sisanId2Idx, teiki.IdouSisanNo);
        return partner ? TeikiFault::None : TeikiFault::IdouSisanGone;
    }
    if (teiki.SyubetuNo != kSyubetuSisyutu && teiki.SyubetuNo != kSyubetuSyuunyuu) return TeikiFault::BadSyubetu;
    // Entries are filed under sub-items of their own kind only.
    const Himoku* himoku = findById(himokuList, himokuId2Idx, teiki.HimokuNo);
    const bool utiwake = himoku && himoku->Ucount == 0 && himoku->SyubetuNo == teiki.SyubetuNo;
    return utiwake ? TeikiFault::None : TeikiFault::HimokuGone;
}

bool DataModel::bindTeiki(const Teiki& t)
{
    return bind_int(1, t.SisanNo) && bind_int(2, t.SyubetuNo) && bind_int(3, t.HimokuNo) &&
           bind_int(4, t.IdouSisanNo) && bind_int(5, t.Kingaku) && bind_text(6, t.Bikou) && bind_int(7, t.Tani) &&
           bind_int(8, t.Kankaku) && bind_int(9, t.Hi) && bind_int(10, t.Tuki) && bind_int(11, t.Youbi) &&
           bind_text(12, t.Kaisi) && bind_text(13, t.Syuuryou) && bind_int(14, t.Kaisuu) &&
           bind_int(15, t.Kyuujitu) && bind_text(16, t.Kakunin);
}

bool DataModel::teikiInsert(const Teiki& teiki)
{
    if (!allFitInt32({teiki.Kingaku})) return false;
    {
        RecordedStep step(db, teikiStepLabel(teikiNamae(teiki), "追加"));
        if (!beganOrReport(step)) return false;
        if (!prepare(kInsertTeiki, "error preparing teiki insert: ", "information")) return false;
        const bool done = bindTeiki(teiki) && stepDone("failure inserting teiki: ");
        finalize();
        if (!done || !commitStep(step)) return false;
    }
    return readFromTeikiTable();
}

bool DataModel::teikiUpdate(const Teiki& teiki)
{
    if (!allFitInt32({teiki.Kingaku, teiki.Id})) return false;
    {
        RecordedStep step(db, teikiStepLabel(teikiNamae(teiki), "編集"));
        if (!beganOrReport(step)) return false;
        if (!prepare(kUpdateTeiki, "error preparing teiki update: ", "information")) return false;
        const bool done = bindTeiki(teiki) && bind_int(17, teiki.Id) && stepDone("failure updating teiki: ");
        finalize();
        if (!done || !commitStep(step)) return false;
    }
    return readFromTeikiTable();
}

bool DataModel::teikiDelete(int64_t id)
{
    if (!allFitInt32({id})) return false;
    const Teiki* teiki = findById(teikiList, teikiId2Idx, id);
    {
        // The record of its occurrences goes with the rule, and comes back
        // with it when the deletion is undone.
        RecordedStep step(db, teikiStepLabel(teiki ? teikiNamae(*teiki) : std::to_string(id), "削除"));
        if (!beganOrReport(step)) return false;
        const std::string ids = std::to_string(id);
        if (!runWrite("DELETE FROM TeikiKiroku WHERE TeikiNo=" + ids, "error preparing delete: ", "information",
                      "failure deleting from teikikiroku: ") ||
            !runWrite("DELETE FROM Teiki WHERE Id=" + ids, "error preparing delete: ", "information",
                      "failure deleting from teiki: "))
            return false;
        if (!commitStep(step)) return false;
    }
    return readFromTeikiTable();
}

bool DataModel::readTeikiKiroku(std::vector<TeikiKiroku>& rows)
{
    if (!prepare(kReadKiroku, "error prepare select from teikikiroku: ", "information")) return false;
    std::vector<TeikiKiroku> read;
    const bool done = readRows("error step select from teikikiroku: ", "information", [&] {
        TeikiKiroku& k = read.emplace_back();
        k.Id = stmt.columnInt(0);
        k.TeikiNo = stmt.columnInt(1);
        k.Yotei = stmt.columnText(2);
        k.Hizuke = stmt.columnText(3);
        k.Jyoutai = stmt.columnInt(4);
        k.ItemId = stmt.columnInt(5);
        k.IdouId = stmt.columnInt(6);
        k.Kingaku = stmt.columnInt(7);
    });
    if (done) rows = std::move(read);
    return done;
}

bool DataModel::postTeikiEntry(const Teiki& teiki, const TeikiPosting& posting, TeikiKiroku* kiroku)
{
    int64_t nen = 0, tuki = 0, hi = 0;
    splitHizuke(posting.Hizuke, &nen, &tuki, &hi);  // checked by the caller
    const int64_t kind = teiki.SyubetuNo;
    if (kind == kSyubetuSisyutu || kind == kSyubetuSyuunyuu) {
        int64_t id = 0;
        if (!newRowIdOr("Items", &id) ||
            !insertItemRow(kind == kSyubetuSisyutu ? kInsertSyukkin : kInsertNyuukin,
                           "error preparing Syukkin,Nyuukin insert: ", id, posting.Hizuke, nen, tuki, hi,
                           teiki.SisanNo, kind, teiki.HimokuNo, -1, posting.Kingaku, teiki.Bikou))
            return false;
        kiroku->ItemId = id ? id : sqlite3_last_insert_rowid(db);
        return true;
    }
    // A transfer: both rows, each naming the other, as the entry panel makes them.
    return insertIdouPair(posting.Hizuke, nen, tuki, hi, teiki.SisanNo, kSyubetuIdouMoto, teiki.IdouSisanNo,
                          posting.Kingaku, teiki.Bikou, &kiroku->ItemId, &kiroku->IdouId);
}

bool DataModel::insertTeikiKiroku(const TeikiKiroku& k)
{
    if (!prepare(kInsertKiroku, "error preparing teikikiroku insert: ", "information")) return false;
    const bool done = bind_int(1, k.TeikiNo) && bind_text(2, k.Yotei) && bind_text(3, k.Hizuke) &&
                      bind_int(4, k.Jyoutai) && bind_int(5, k.ItemId) && bind_int(6, k.IdouId) &&
                      bind_int(7, k.Kingaku) && stepDone("failure inserting teikikiroku: ");
    finalize();
    return done;
}

bool DataModel::teikiKityou(const std::vector<TeikiPosting>& postings, const std::vector<TeikiKakunin>& kakunin)
{
    // Everything is checked before the first write.
    std::vector<const Teiki*> rules;
    for (const TeikiPosting& posting : postings) {
        const Teiki* teiki = findById(teikiList, teikiId2Idx, posting.TeikiNo);
        if (!teiki || (!posting.miokuri && teikiFault(*teiki) != TeikiFault::None)) {
            someMessageWithAlert(kUnusableTeiki);
            return false;
        }
        int64_t nen = 0, tuki = 0, hi = 0;
        if (!splitHizuke(posting.Yotei, &nen, &tuki, &hi) ||
            (!posting.miokuri && !splitHizuke(posting.Hizuke, &nen, &tuki, &hi))) {
            someMessageWithAlert("failure posting teiki: a date is not yyyy-MM-dd");
            return false;
        }
        if (posting.Kingaku < 0 || !allFitInt32({posting.Kingaku})) {
            if (posting.Kingaku < 0) someMessageWithAlert("金額の欄に不正なデータがあります");
            return false;
        }
        rules.push_back(teiki);
    }
    std::set<int64_t> booked;  // assets whose balance moved
    {
        // One step: undoing it takes the entries and the record away
        // together, and the occurrences are due again.
        const size_t skipped =
            std::count_if(postings.begin(), postings.end(), [](const TeikiPosting& p) { return p.miokuri; });
        RecordedStep step(db, teikiKityouStepLabel(postings.size() - skipped, skipped));
        if (!beganOrReport(step)) return false;
        for (size_t i = 0; i < postings.size(); ++i) {
            const TeikiPosting& posting = postings[i];
            const Teiki& teiki = *rules[i];
            TeikiKiroku kiroku;
            kiroku.TeikiNo = teiki.Id;
            kiroku.Yotei = posting.Yotei;
            if (posting.miokuri) {
                kiroku.Jyoutai = kTeikiMiokuri;
            } else {
                if (!postTeikiEntry(teiki, posting, &kiroku)) return false;
                kiroku.Hizuke = posting.Hizuke;
                kiroku.Kingaku = posting.Kingaku;
                kiroku.Jyoutai = posting.Kingaku == teiki.Kingaku ? kTeikiKityou : kTeikiHenkou;
                booked.insert(teiki.SisanNo);
                if (teiki.SyubetuNo == kSyubetuIdouMoto) booked.insert(teiki.IdouSisanNo);
            }
            if (!insertTeikiKiroku(kiroku)) return false;
        }
        for (const TeikiKakunin& k : kakunin) {
            if (!prepare("UPDATE Teiki SET Kakunin=?1 WHERE Id=?2 AND Kakunin<?1", "error preparing teiki update: ",
                         "information"))
                return false;
            const bool done = bind_text(1, k.Kakunin) && bind_int(2, k.TeikiNo) && stepDone("failure updating teiki: ");
            finalize();
            if (!done) return false;
        }
        if (!commitStep(step)) return false;
    }
    const int64_t shownId =
        theSisanNo >= 0 && theSisanNo < static_cast<int64_t>(sisanList.size()) ? sisanList[theSisanNo]->Id : 0;
    for (int64_t sisanId : booked)
        if (sisanId != shownId && !recomputeSisanZankin(sisanId)) return false;
    const bool reread = readFromTeikiTable() && rereadShownItems();
    totalOfZankinFrom_sisanList();
    return reread;
}

bool DataModel::readItemsAfter(const std::string& hizuke, std::vector<DatedAmount>& rows)
{
    // Per asset, so that each read is a range of the (SisanNo, Hizuke) index.
    std::vector<DatedAmount> read;
    for (const auto& sisan : sisanList) {
        if (!prepare("SELECT SyubetuNo, Nyuukin, Syukkin, Hizuke FROM Items WHERE SisanNo = " +
                         std::to_string(sisan->Id) + " AND Hizuke > ? ORDER BY Hizuke",
                     "error prepare selct from item: ", "information"))
            return false;
        if (!bind_text(1, hizuke)) {
            finalize();
            return false;
        }
        const bool done = readRows("error step selct from item: ", "information", [&] {
            const int64_t kind = stmt.columnInt(0);
            const int64_t kingaku =
                isNyuukinKind(kind) ? stmt.columnInt(1) : isSyukkinKind(kind) ? -stmt.columnInt(2) : 0;
            read.push_back({sisan->Id, stmt.columnText(3), kingaku});
        });
        if (!done) return false;
    }
    rows = std::move(read);
    return true;
}
