#include "tests/sync/SyncedPc.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <random>

#include "store/Changeset.h"
#include "store/History.h"
#include "store/MessageSink.h"
#include "store/Provisioning.h"

namespace fs = std::filesystem;

namespace {

std::string dateFields(const std::string& hizuke, int64_t* nen, int64_t* tuki, int64_t* hi)
{
    *nen = std::stoll(hizuke.substr(0, 4));
    *tuki = std::stoll(hizuke.substr(5, 2));
    *hi = std::stoll(hizuke.substr(8, 2));
    return hizuke;
}

}  // namespace

SyncedPc::SyncedPc(const std::string& dir, const std::string& pcName)
    : name(pcName), bookPath((fs::path(dir) / "Zenvora.sql").string()), folderPath((fs::path(dir) / "folder").string())
{
    fs::create_directories(dir);
    fs::create_directories(folderPath);
    std::string error;
    EXPECT_TRUE(createStarterBook(bookPath, &error)) << error;
    use();
    dm = std::make_unique<DataModel>(bookPath);
    sync = std::make_unique<BookSync>(*dm);
    dm->setCommitListener([this] { sync->publish(); });
    EXPECT_TRUE(sync->load());
    EXPECT_EQ(sqlite3_open_v2(bookPath.c_str(), &side_, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
}

SyncedPc::~SyncedPc()
{
    sqlite3_close(side_);
    sync.reset();
    dm.reset();
    setMessageSink(nullptr);
    setHistoryClock(nullptr);
}

void SyncedPc::use()
{
    setHistoryClock([this] { return wallMs; });
    setMessageSink([this](const std::string& m, const std::string& i) { messages.push_back(m + " / " + i); });
}

void SyncedPc::after(const char* what)
{
    EXPECT_TRUE(messages.empty()) << name << " " << what << ": " << (messages.empty() ? "" : messages.front());
    messages.clear();
    wallMs += 1000;
}

void SyncedPc::setUp()
{
    use();
    std::string error;
    ASSERT_TRUE(sync->setUp(folderPath, name, &error)) << error;
    ASSERT_TRUE(BookSync::writeSnapshotOf(bookPath, folderPath, sync->identity()->install, &error)) << error;
    after("setUp");
}

void SyncedPc::join()
{
    use();
    std::string error;
    ASSERT_TRUE(sync->join(folderPath, name, bookPath + ".before-sync", &error)) << error;
    after("join");
}

bool SyncedPc::round(RoundReport* report)
{
    use();
    RoundReport r = sync->round();
    if (report) *report = r;
    after("round");
    return r.ran;
}

SyncStatus SyncedPc::status()
{
    use();
    return sync->status();
}

int64_t SyncedPc::newestId(const char* table)
{
    return scalar(std::string("SELECT max(Id) FROM ") + table);
}

int64_t SyncedPc::addEntry(int64_t sisan, int64_t himoku, int64_t amount, const std::string& hizuke,
                           const std::string& bikou)
{
    use();
    int64_t nen, tuki, hi;
    dateFields(hizuke, &nen, &tuki, &hi);
    const int64_t kind = scalar("SELECT SyubetuNo FROM Himoku WHERE Id = " + std::to_string(himoku));
    EXPECT_TRUE(dm->itemNyuukinSyukkinInsert(hizuke, nen, tuki, hi, sisan, kind, himoku, amount, bikou));
    const int64_t id = newestId("Items");
    madeEntries.insert(id);
    after("addEntry");
    return id;
}

std::pair<int64_t, int64_t> SyncedPc::addTransfer(int64_t from, int64_t to, int64_t amount, const std::string& hizuke)
{
    use();
    int64_t nen, tuki, hi;
    dateFields(hizuke, &nen, &tuki, &hi);
    EXPECT_TRUE(dm->itemIdouSisanInsert(hizuke, nen, tuki, hi, from, 3, to, amount, ""));
    const int64_t saki = newestId("Items");
    const int64_t moto = scalar("SELECT IdouId FROM Items WHERE Id = " + std::to_string(saki));
    madeEntries.insert({moto, saki});
    after("addTransfer");
    return {moto, saki};
}

void SyncedPc::editEntry(int64_t id, const std::string& field, const std::string& value)
{
    use();
    const std::shared_ptr<Items> item = dm->readFromItem1Item(id);
    ASSERT_TRUE(item) << name << ": no entry " << id;
    Items e = *item;
    int64_t kingaku = e.SyubetuNo == 1 ? e.Syukkin : e.Nyuukin;
    if (field == "Amount") kingaku = std::stoll(value);
    if (field == "Bikou") e.Bikou = value;
    if (field == "Hizuke") e.Hizuke = dateFields(value, &e.Nen, &e.Tuki, &e.Hi);
    EXPECT_TRUE(dm->itemUpdate(id, e.Hizuke, e.Nen, e.Tuki, e.Hi, e.SisanNo, e.SyubetuNo, e.HimokuNo, kingaku, e.Bikou));
    after("editEntry");
}

void SyncedPc::deleteEntry(int64_t id)
{
    use();
    const std::shared_ptr<Items> item = dm->readFromItem1Item(id);
    ASSERT_TRUE(item) << name << ": no entry " << id;
    if (item->SyubetuNo == 3 || item->SyubetuNo == 4) {
        EXPECT_TRUE(dm->itemDeleteIdouPair(item->IdouId, id));
        deletedEntries.insert(item->IdouId);
    } else {
        EXPECT_TRUE(dm->itemDelete(id));
    }
    deletedEntries.insert(id);
    after("deleteEntry");
}

int64_t SyncedPc::addSisan(const std::string& namae, int64_t syokiKingaku)
{
    use();
    EXPECT_TRUE(dm->sisanInsert(namae, syokiKingaku));
    after("addSisan");
    return newestId("Sisan");
}

void SyncedPc::renameSisan(int64_t id, const std::string& namae)
{
    use();
    const int64_t* position = dm->sisanId2Idx.find(id);
    ASSERT_TRUE(position);
    const Sisan& sisan = *dm->sisanList[static_cast<size_t>(*position)];
    EXPECT_TRUE(dm->sisanUpdate(id, namae, sisan.SyokiKingaku, sisan.Zankin));
    dm->recomputeAllSisanZankin();  // as the main window does after the asset editor
    after("renameSisan");
}

void SyncedPc::deleteSisan(int64_t id)
{
    use();
    const std::string s = std::to_string(id);
    for (int64_t entry : ids("SELECT Id FROM Items WHERE SisanNo = " + s + " OR IdouSisanNo = " + s))
        deletedEntries.insert(entry);
    EXPECT_TRUE(dm->sisanDeleteWithItems(id));
    dm->recomputeAllSisanZankin();
    after("deleteSisan");
}

int64_t SyncedPc::addCategory(int64_t kind, const std::string& namae)
{
    use();
    EXPECT_TRUE(dm->insertHimokuOfHiimoku(kind, namae));
    after("addCategory");
    return scalar("SELECT Hno FROM Himoku WHERE Id = (SELECT max(Id) FROM Himoku)");
}

int64_t SyncedPc::addSubItem(int64_t category, const std::string& namae)
{
    use();
    const int64_t* position = dm->himokuId2Idx.find(category);
    EXPECT_TRUE(position);
    if (!position) return 0;
    const Himoku& row = *dm->himokuList[static_cast<size_t>(*position)];
    EXPECT_TRUE(dm->insertUtiwakeOfHimoku(row.SyubetuNo, row.Namae + "/" + namae, category, row.Ucount));
    after("addSubItem");
    return newestId("Himoku");
}

void SyncedPc::renameCategory(int64_t id, const std::string& namae)
{
    use();
    std::vector<int64_t> subs;
    std::vector<std::string> names;
    for (const auto& row : dm->himokuList) {
        if (row->Hno != id || row->Id == id) continue;
        subs.push_back(row->Id);
        const size_t slash = row->Namae.find('/');
        names.push_back(slash == std::string::npos ? row->Namae : row->Namae.substr(slash + 1));
    }
    EXPECT_TRUE(dm->updateNamaeOfHimoku(id, namae, subs, names));
    after("renameCategory");
}

void SyncedPc::deleteSubItem(int64_t id)
{
    use();
    const int64_t* position = dm->himokuId2Idx.find(id);
    ASSERT_TRUE(position);
    const int64_t hno = dm->himokuList[static_cast<size_t>(*position)]->Hno;
    const int64_t* category = dm->himokuId2Idx.find(hno);
    ASSERT_TRUE(category);
    for (int64_t entry : ids("SELECT Id FROM Items WHERE HimokuNo = " + std::to_string(id)))
        deletedEntries.insert(entry);
    EXPECT_TRUE(dm->deleteUtiwakeHimoku(id, hno, dm->himokuList[static_cast<size_t>(*category)]->Ucount));
    dm->recomputeAllSisanZankin();
    after("deleteSubItem");
}

void SyncedPc::deleteCategory(int64_t id)
{
    use();
    std::vector<int64_t> subs;
    for (const auto& row : dm->himokuList)
        if (row->Hno == id) subs.push_back(row->Id);
    for (int64_t sub : subs)
        for (int64_t entry : ids("SELECT Id FROM Items WHERE HimokuNo = " + std::to_string(sub)))
            deletedEntries.insert(entry);
    EXPECT_TRUE(dm->deleteHimokuHimoku(id, subs));
    dm->recomputeAllSisanZankin();
    after("deleteCategory");
}

void SyncedPc::noteUndone()
{
    // Entries the undo or redo added or removed may be gone by a user's will.
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(side_, "SELECT Changeset FROM History ORDER BY Id DESC LIMIT 1", -1, &s, nullptr);
    if (sqlite3_step(s) == SQLITE_ROW) {
        ChangesetReader reader(std::string(static_cast<const char*>(sqlite3_column_blob(s, 0)),
                                           static_cast<size_t>(sqlite3_column_bytes(s, 0))));
        while (reader.next())
            if (reader.isTable("Items")) deletedEntries.insert(ChangesetReader::intOf(reader.latest(0)));
    }
    sqlite3_finalize(s);
}

bool SyncedPc::undo()
{
    use();
    const bool done = dm->undo();
    if (done) noteUndone();
    messages.clear();  // an undo that meets another PC's change says why and changes nothing
    wallMs += 1000;
    return done;
}

bool SyncedPc::redo()
{
    use();
    const bool done = dm->redo();
    if (done) noteUndone();
    messages.clear();
    wallMs += 1000;
    return done;
}

std::vector<int64_t> SyncedPc::ids(const std::string& sql)
{
    std::vector<int64_t> out;
    sqlite3_stmt* s = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(side_, sql.c_str(), -1, &s, nullptr), SQLITE_OK) << sql;
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) out.push_back(sqlite3_column_int64(s, 0));
    sqlite3_finalize(s);
    EXPECT_EQ(rc, SQLITE_DONE) << sql;
    return out;
}

int64_t SyncedPc::scalar(const std::string& sql)
{
    const std::vector<int64_t> values = ids(sql);
    return values.empty() ? 0 : values.front();
}

std::string SyncedPc::text(const std::string& sql)
{
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(side_, sql.c_str(), -1, &s, nullptr);
    std::string out;
    if (sqlite3_step(s) == SQLITE_ROW && sqlite3_column_text(s, 0))
        out = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
    sqlite3_finalize(s);
    return out;
}

int64_t SyncedPc::himokuId(const std::string& namae)
{
    for (const auto& row : dm->himokuList)
        if (row->Namae == namae) return row->Id;
    ADD_FAILURE() << "no sub-item " << namae;
    return 0;
}

std::string SyncedPc::dump()
{
    use();
    EXPECT_TRUE(dm->updateSisanZankinTable());
    std::string out;
    for (const char* table : {"Sisan", "Items", "Himoku"}) {
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(side_, (std::string("SELECT * FROM ") + table + " ORDER BY Id").c_str(), -1, &s, nullptr);
        while (sqlite3_step(s) == SQLITE_ROW) {
            out += table;
            for (int c = 0; c < sqlite3_column_count(s); ++c) {
                const auto* value = reinterpret_cast<const char*>(sqlite3_column_text(s, c));
                out += "|" + (value ? std::string(value) : std::string("NULL"));
            }
            out += "\n";
        }
        sqlite3_finalize(s);
    }
    return out;
}

std::string SyncedPc::brokenRules()
{
    const std::pair<const char*, const char*> rules[] = {
        {"transfer half without its partner",
         "SELECT count(*) FROM Items a WHERE a.SyubetuNo IN (3,4) AND NOT EXISTS (SELECT 1 FROM Items b WHERE b.Id = "
         "a.IdouId AND b.IdouId = a.Id AND b.SyubetuNo = 7 - a.SyubetuNo AND b.SisanNo = a.IdouSisanNo AND "
         "b.IdouSisanNo = a.SisanNo AND b.Hizuke = a.Hizuke AND coalesce(b.Syukkin, b.Nyuukin) = "
         "coalesce(a.Syukkin, a.Nyuukin))"},
        {"entry without its sub-item",
         "SELECT count(*) FROM Items i WHERE i.SyubetuNo IN (1,2) AND NOT EXISTS (SELECT 1 FROM Himoku h WHERE h.Id = "
         "i.HimokuNo AND h.Hno != h.Id)"},
        {"entry without its asset",
         "SELECT count(*) FROM Items i WHERE NOT EXISTS (SELECT 1 FROM Sisan s WHERE s.Id = i.SisanNo) OR "
         "(i.SyubetuNo IN (3,4) AND NOT EXISTS (SELECT 1 FROM Sisan s WHERE s.Id = i.IdouSisanNo))"},
        {"sub-item without its category",
         "SELECT count(*) FROM Himoku s WHERE s.Hno != s.Id AND NOT EXISTS (SELECT 1 FROM Himoku c WHERE c.Id = s.Hno "
         "AND c.Hno = c.Id)"},
        {"wrong Ucount",
         "SELECT count(*) FROM Himoku c WHERE c.Hno = c.Id AND c.Ucount != max(1, (SELECT count(*) FROM Himoku s "
         "WHERE s.Hno = c.Id AND s.Id != c.Id))"},
        {"wrong Zankin",
         "SELECT count(*) FROM Sisan s WHERE Zankin != SyokiKingaku + (SELECT coalesce(sum(CASE WHEN SyubetuNo IN "
         "(2,4) THEN Nyuukin ELSE -Syukkin END), 0) FROM Items WHERE SisanNo = s.Id)"},
    };
    std::string broken;
    for (const auto& [what, sql] : rules)
        if (const int64_t n = scalar(sql)) broken += std::string(what) + ": " + std::to_string(n) + "\n";
    if (text("PRAGMA integrity_check") != "ok") broken += "integrity_check failed\n";
    // The balances shown are the sums of the entries.
    for (const auto& sisan : dm->sisanList) {
        const int64_t sum = scalar("SELECT SyokiKingaku + (SELECT coalesce(sum(CASE WHEN SyubetuNo IN (2,4) THEN "
                                   "Nyuukin ELSE -Syukkin END), 0) FROM Items WHERE SisanNo = Sisan.Id) FROM Sisan "
                                   "WHERE Id = " +
                                   std::to_string(sisan->Id));
        if (sum != sisan->Zankin) broken += "balance shown for " + sisan->Namae + " is not its sum\n";
    }
    return broken;
}

void deliver(const SyncedPc& from, const SyncedPc& to, double share, unsigned seed)
{
    std::mt19937 random(seed);
    std::bernoulli_distribution take(share);
    const fs::path source(from.folderPath), target(to.folderPath);
    for (const auto& entry : fs::recursive_directory_iterator(source)) {
        if (!entry.is_regular_file()) continue;
        const fs::path relative = fs::relative(entry.path(), source);
        const fs::path copy = target / relative;
        const std::string top = relative.begin()->string();
        const bool immutable = top == "ops" || top == "book-id" || top == "retired";
        if (immutable && fs::exists(copy)) continue;
        if (!immutable && fs::exists(copy) && fs::last_write_time(copy) >= entry.last_write_time()) continue;
        if (!take(random)) continue;
        fs::create_directories(copy.parent_path());
        fs::copy_file(entry.path(), copy, fs::copy_options::overwrite_existing);
    }
}
