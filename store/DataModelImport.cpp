// DataModel: the statement import's reads and its one write.
#include <sqlite3.h>

#include <set>

#include "store/DataModel.h"
#include "store/DeviceIds.h"
#include "store/FindById.h"
#include "store/ItemsSql.h"
#include "store/Money.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

const char* const kReadFailure = "error reading the import tables: ";
const char* const kWriteFailure = "failure importing statement rows: ";

// The Items of one asset in a date range, with the origin of those imported.
// The origin must name the same asset: an Id that SQLite gave again after
// its row was deleted does not inherit the old row's origin from elsewhere.
const char* const kSelectWindow =
    "SELECT i.Id, i.Hizuke, i.SyubetuNo, i.HimokuNo, i.IdouSisanNo, i.Nyuukin, i.Syukkin, i.Bikou, "
    "o.IdKey, o.ContentKey, o.Text FROM Items i LEFT JOIN ImportOrigin o ON o.ItemId = i.Id AND o.SisanNo = i.SisanNo "
    "WHERE i.SisanNo = ? AND i.Hizuke BETWEEN ? AND ?";

// The Id a new row is inserted with: 0 binds NULL, and SQLite picks it.
struct RowId {
    int64_t id = 0;
};

// A statement of the import's write, prepared once and run once per row.
class Prepared {
public:
    Prepared(sqlite3* db, const char* sql) : db_(db) { ok_ = statement_.prepare(db, sql); }
    bool ok() const { return ok_; }

    // Binds the values in order (integers, texts, or nullptr for NULL) and
    // runs the statement to its end.
    template <typename... Values>
    bool run(const Values&... values)
    {
        statement_.reset();
        int index = 0;
        bool bound = true;
        ((bound = bound && bind(++index, values)), ...);
        return bound && statement_.step() == Step::Done;
    }
    int64_t lastId() const { return sqlite3_last_insert_rowid(db_); }
    int changes() const { return sqlite3_changes(db_); }

private:
    bool bind(int i, int64_t v) { return statement_.bindInt64(i, v) == SQLITE_OK; }
    bool bind(int i, const std::string& v) { return statement_.bindText(i, v) == SQLITE_OK; }
    bool bind(int i, std::nullptr_t) { return statement_.bindNull(i) == SQLITE_OK; }
    bool bind(int i, RowId v) { return (v.id ? statement_.bindInt64(i, v.id) : statement_.bindNull(i)) == SQLITE_OK; }

    sqlite3* db_;
    Statement statement_;
    bool ok_ = false;
};

// The statements of one import, and the rows they write.
class ImportWriter {
public:
    ImportWriter(sqlite3* db, const ImportBatch& batch)
        : db_(db), sisan_(batch.record.sisanId), syukkin_(db, kInsertSyukkin), nyuukin_(db, kInsertNyuukin),
          moto_(db, kInsertIdouMoto), saki_(db, kInsertIdouSaki), link_(db, "UPDATE Items SET IdouId=? WHERE Id=?"),
          pair_(db,
                "UPDATE Items SET Hizuke=?, Nen=?, Tuki=?, Hi=?, SyubetuNo=?, HimokuNo=NULL, IdouSisanNo=?, IdouId=?, "
                "Nyuukin=NULLIF(?,0), Syukkin=NULLIF(?,0) WHERE Id=? AND SisanNo=? AND SyubetuNo IN (1,2) AND "
                "COALESCE(Nyuukin,0) * (SyubetuNo = 2) - COALESCE(Syukkin,0) * (SyubetuNo = 1) = ?"),
          origin_(db,
                  "INSERT OR REPLACE INTO ImportOrigin (ItemId, ImportId, SisanNo, IdKey, ContentKey, Text) "
                  "VALUES (?,?,?,?,?,?)")
    {
    }

    bool ready() const
    {
        return syukkin_.ok() && nyuukin_.ok() && moto_.ok() && saki_.ok() && link_.ok() && pair_.ok() && origin_.ok();
    }

    // Writes one entry and its origin; *own gets its row in the imported asset.
    bool write(int64_t importId, const ImportEntry& e, int64_t* own)
    {
        if (e.partnerSisanId != 0) {
            if (!(e.pairedItemId != 0 ? pairWith(e, own) : transfer(e, own))) return false;
        } else {
            const bool out = e.kingaku < 0;
            Prepared& insert = out ? syukkin_ : nyuukin_;
            RowId id;
            if (!newId(&id) ||
                !row(insert, id, e, sisan_, out ? kSyubetuSisyutu : kSyubetuSyuunyuu, e.himokuNo, -1,
                     out ? -e.kingaku : e.kingaku))
                return false;
            *own = id.id ? id.id : insert.lastId();
        }
        return origin_.run(*own, importId, sisan_, e.idKey, e.contentKey, e.text);
    }

private:
    bool row(Prepared& insert, RowId id, const ImportEntry& e, int64_t sisan, int64_t kind, int64_t partner,
             int64_t idouId, int64_t amount)
    {
        return insert.run(id, e.hizuke, e.nen, e.tuki, e.hi, sisan, kind, partner, idouId, amount, e.bikou);
    }

    // The Id of a new row: the device's when the book syncs, else SQLite's.
    bool newId(RowId* id)
    {
        switch (newRowId(db_, "Items", &id->id)) {
        case NewRowId::Assigned:
        case NewRowId::BySqlite:
            return true;
        case NewRowId::Exhausted:
            return fail("no Id is left for a new row");
        case NewRowId::Failed:
            break;
        }
        return false;
    }

    // Both rows as the entry panel makes them. When the book syncs both Ids
    // are known first and each row names the other; otherwise the source
    // row, the destination row naming it, then the source row naming the
    // destination.
    bool transfer(const ImportEntry& e, int64_t* own)
    {
        const bool out = e.kingaku < 0;
        const int64_t amount = out ? -e.kingaku : e.kingaku;
        const int64_t source = out ? sisan_ : e.partnerSisanId;
        const int64_t destination = out ? e.partnerSisanId : sisan_;
        RowId moto, saki;
        if (!newId(&moto) || !newId(&saki)) return false;
        if (moto.id != 0) {
            if (!row(moto_, moto, e, source, kSyubetuIdouMoto, destination, saki.id, amount) ||
                !row(saki_, saki, e, destination, kSyubetuIdouSaki, source, moto.id, amount))
                return false;
            *own = out ? moto.id : saki.id;
            return true;
        }
        if (!row(moto_, moto, e, source, kSyubetuIdouMoto, destination, -1, amount)) return false;
        const int64_t motoId = moto_.lastId();
        if (!row(saki_, saki, e, destination, kSyubetuIdouSaki, source, motoId, amount)) return false;
        const int64_t sakiId = saki_.lastId();
        *own = out ? motoId : sakiId;
        return link_.run(sakiId, motoId);
    }

    // The other asset's entry of the opposite amount becomes the other row:
    // it keeps its Id, note and origin, and takes the transfer's kind, link and date.
    bool pairWith(const ImportEntry& e, int64_t* own)
    {
        const bool out = e.kingaku < 0;
        const int64_t amount = out ? -e.kingaku : e.kingaku;
        Prepared& insert = out ? moto_ : saki_;
        RowId id;
        if (!newId(&id) || !row(insert, id, e, sisan_, out ? kSyubetuIdouMoto : kSyubetuIdouSaki, e.partnerSisanId,
                                e.pairedItemId, amount))
            return false;
        *own = id.id ? id.id : insert.lastId();
        const int64_t otherKind = out ? kSyubetuIdouSaki : kSyubetuIdouMoto;
        const auto nyuukin = out ? amount : 0;
        const auto syukkin = out ? 0 : amount;
        if (!pair_.run(e.hizuke, e.nen, e.tuki, e.hi, otherKind, sisan_, *own, nyuukin, syukkin, e.pairedItemId,
                       e.partnerSisanId, -e.kingaku))
            return false;
        return pair_.changes() == 1 || fail("the paired entry has changed since the preview");
    }

    bool fail(const char* why)
    {
        failure = why;
        return false;
    }

public:
    const char* failure = nullptr;  // a reason of the writer's own, else SQLite's message

private:
    sqlite3* db_;
    int64_t sisan_;
    Prepared syukkin_, nyuukin_, moto_, saki_, link_, pair_, origin_;
};

bool fitsAll(const ImportBatch& b)
{
    const ImportRecordRow& r = b.record;
    for (int64_t v : {r.sisanId, r.rowsRead, r.rowsAlready, r.rowsRefused, static_cast<int64_t>(b.entries.size())})
        if (!fitsInt32(v)) return false;
    for (const ImportEntry& e : b.entries)
        for (int64_t v : {e.nen, e.tuki, e.hi, e.kingaku, -e.kingaku, e.himokuNo, e.partnerSisanId, e.pairedItemId})
            if (!fitsInt32(v)) return false;
    for (const ImportAssignment& a : b.assignments)
        if (!fitsInt32(a.syubetuNo) || !fitsInt32(a.himokuNo)) return false;
    return true;
}

}  // namespace

bool DataModel::readImportWindow(int64_t sisanId, const std::string& from, const std::string& to,
                                 std::vector<ImportBookRow>& rows)
{
    rows.clear();
    if (!prepare(kSelectWindow, kReadFailure, "information")) return false;
    if (stmt.bindInt64(1, sisanId) != SQLITE_OK || stmt.bindText(2, from) != SQLITE_OK ||
        stmt.bindText(3, to) != SQLITE_OK) {
        someMessageWithAlert(errorText(kReadFailure));
        finalize();
        return false;
    }
    const bool read = readRows(kReadFailure, "information", [&] {
        ImportBookRow& r = rows.emplace_back();
        r.id = stmt.columnInt64(0);
        r.sisanId = sisanId;
        r.hizuke = stmt.columnText(1);
        r.syubetuNo = stmt.columnInt(2);
        r.himokuNo = stmt.columnInt(3);
        r.idouSisanNo = stmt.columnInt(4);
        r.kingaku = isNyuukinKind(r.syubetuNo) ? stmt.columnInt(5) : isSyukkinKind(r.syubetuNo) ? -stmt.columnInt(6) : 0;
        r.bikou = stmt.columnText(7);
        r.idKey = stmt.columnText(8);
        r.contentKey = stmt.columnText(9);
        r.text = stmt.columnText(10);
    });
    if (!read) rows.clear();
    return read;
}

bool DataModel::readImportAssignments(std::vector<ImportAssignment>& assignments)
{
    assignments.clear();
    if (!prepare("SELECT Layout, MatchKey, SyubetuNo, HimokuNo FROM ImportCategory", kReadFailure, "information"))
        return false;
    const bool read = readRows(kReadFailure, "information", [&] {
        assignments.push_back({stmt.columnText(0), stmt.columnText(1), stmt.columnInt(2), stmt.columnInt(3)});
    });
    if (!read) assignments.clear();
    return read;
}

bool DataModel::readImportAccounts(std::vector<ImportAccountRow>& accounts)
{
    accounts.clear();
    if (!prepare("SELECT Layout, Account, SisanNo FROM ImportAccount", kReadFailure, "information")) return false;
    const bool read = readRows(kReadFailure, "information", [&] {
        accounts.push_back({stmt.columnText(0), stmt.columnText(1), stmt.columnInt(2)});
    });
    if (!read) accounts.clear();
    return read;
}

bool DataModel::readImportProfiles(std::vector<ImportProfileRow>& profiles)
{
    profiles.clear();
    if (!prepare("SELECT Id, Namae, Mapping FROM ImportProfile ORDER BY Namae", kReadFailure, "information"))
        return false;
    const bool read = readRows(kReadFailure, "information", [&] {
        profiles.push_back({stmt.columnInt64(0), stmt.columnText(1), stmt.columnText(2)});
    });
    if (!read) profiles.clear();
    return read;
}

bool DataModel::findImportRecord(const std::string& fileHash, ImportRecordRow& record)
{
    record = {};
    if (!prepare("SELECT Id, FileName, FileHash, Layout, LayoutName, Account, ImportedAt, SisanNo, RowsRead, "
                 "RowsImported, RowsAlready, RowsRefused FROM ImportRecord WHERE FileHash = ? ORDER BY Id DESC LIMIT 1",
                 kReadFailure, "information"))
        return false;
    if (stmt.bindText(1, fileHash) != SQLITE_OK) {
        someMessageWithAlert(errorText(kReadFailure));
        finalize();
        return false;
    }
    const bool read = readRows(kReadFailure, "information", [&] {
        record = {stmt.columnInt64(0), stmt.columnText(1), stmt.columnText(2), stmt.columnText(3),
                  stmt.columnText(4),  stmt.columnText(5), stmt.columnText(6), stmt.columnInt(7),
                  stmt.columnInt(8),   stmt.columnInt(9),  stmt.columnInt(10), stmt.columnInt(11)};
    });
    if (!read) record = {};
    return read;
}

bool DataModel::saveImportProfile(const std::string& namae, const std::string& mapping)
{
    RecordedStep step(db, importProfileStepLabel(namae));
    if (!beganOrReport(step)) return false;
    if (!prepare("INSERT INTO ImportProfile (Namae, Mapping) VALUES (?, ?) "
                 "ON CONFLICT(Namae) DO UPDATE SET Mapping = excluded.Mapping",
                 "error saving a statement layout: ", "information"))
        return false;
    const bool done = bind_text(1, namae) && bind_text(2, mapping) && stepDone("error saving a statement layout: ");
    finalize();
    return done && commitStep(step);
}

bool DataModel::importStatementEntries(const ImportBatch& batch, ImportOutcome* outcome)
{
    if (!fitsAll(batch)) {
        someMessageWithAlert("金額の欄に不正なデータがあります");
        return false;
    }
    const ImportRecordRow& r = batch.record;
    ImportOutcome done;
    const bool exact = zankinExact;
    {
        // The whole import is one undoable step: undoing it takes away its
        // entries, their origins and its record, so the same file imports
        // again afterwards.
        RecordedStep step(db, importStepLabel(r.fileName, batch.entries.size()));
        if (!beganOrReport(step)) return false;
        Prepared record(db,
                        "INSERT INTO ImportRecord (FileName, FileHash, Layout, LayoutName, Account, ImportedAt, SisanNo, "
                        "RowsRead, RowsImported, RowsAlready, RowsRefused) VALUES (?,?,?,?,?,?,?,?,?,?,?)");
        Prepared learn(db,
                       "INSERT INTO ImportCategory (Layout, MatchKey, SyubetuNo, HimokuNo) VALUES (?,?,?,?) "
                       "ON CONFLICT(Layout, MatchKey, SyubetuNo) DO UPDATE SET HimokuNo = excluded.HimokuNo");
        Prepared account(db,
                         "INSERT INTO ImportAccount (Layout, Account, SisanNo) VALUES (?,?,?) "
                         "ON CONFLICT(Layout, Account) DO UPDATE SET SisanNo = excluded.SisanNo");
        ImportWriter writer(db, batch);
        const auto failed = [&] {
            someMessageWithAlert(writer.failure ? std::string(kWriteFailure) + writer.failure : errorText(kWriteFailure));
            return false;
        };
        if (!record.ok() || !learn.ok() || !account.ok() || !writer.ready()) return failed();
        if (!record.run(r.fileName, r.fileHash, r.layout, r.layoutName, r.account, r.importedAt, r.sisanId, r.rowsRead,
                        static_cast<int64_t>(batch.entries.size()), r.rowsAlready, r.rowsRefused))
            return failed();
        done.importId = record.lastId();
        done.itemIds.reserve(batch.entries.size());
        for (const ImportEntry& e : batch.entries) {
            int64_t own = 0;
            if (!writer.write(done.importId, e, &own)) return failed();
            done.itemIds.push_back(own);
        }
        for (const ImportAssignment& a : batch.assignments)
            if (!learn.run(a.layout, a.matchKey, a.syubetuNo, a.himokuNo)) return failed();
        if (!account.run(r.layout, r.account, r.sisanId)) return failed();
        // Committing moves the balances by the amounts the step wrote.
        if (!commitStep(step)) return false;
    }
    if (!exact) {
        // The balances shown were stored copies: the assets the import
        // touched are summed from their entries.
        std::set<int64_t> touched{r.sisanId};
        for (const ImportEntry& e : batch.entries)
            if (e.partnerSisanId != 0) touched.insert(e.partnerSisanId);
        for (int64_t id : touched)
            if (findById(sisanList, sisanId2Idx, id) && !recomputeSisanZankin(id)) return false;
    }
    totalOfZankinFrom_sisanList();
    if (outcome) *outcome = std::move(done);
    return true;
}
