#include "tests/sync/SyncPc.h"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include "sync/DeviceIds.h"
#include "sync/SyncLog.h"

namespace fs = std::filesystem;

namespace {

const char* const kSchema =
    "CREATE TABLE Sisan  (Id INTEGER PRIMARY KEY, Namae TEXT NOT NULL, SyokiKingaku INTEGER NOT NULL, "
    "Zankin INTEGER NOT NULL);"
    "CREATE TABLE Items  (Id INTEGER PRIMARY KEY, Hizuke TEXT NOT NULL, Nen INTEGER NOT NULL, Tuki INTEGER NOT NULL, "
    "Hi INTEGER NOT NULL, SisanNo INTEGER NOT NULL, SyubetuNo INTEGER NOT NULL, HimokuNo INTEGER, "
    "IdouSisanNo INTEGER, IdouId INTEGER, Nyuukin INTEGER, Syukkin INTEGER, Bikou TEXT NOT NULL);"
    "CREATE TABLE Himoku (Id INTEGER PRIMARY KEY, SyubetuNo INTEGER, Namae TEXT NOT NULL, Hno INTEGER, Ucount INTEGER);"
    "CREATE INDEX Items_SisanNo_Hizuke ON Items(SisanNo, Hizuke);"
    "CREATE INDEX Items_HimokuNo ON Items(HimokuNo);"
    "CREATE INDEX Items_IdouSisanNo ON Items(IdouSisanNo);";

void check(bool ok, const std::string& what)
{
    if (!ok) throw std::runtime_error(what);
}

std::string quoted(const std::string& text)
{
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("''") : std::string(1, c);
    return out + "'";
}

struct Session {
    sqlite3_session* s = nullptr;
    ~Session() { if (s) sqlite3session_delete(s); }
};

}  // namespace

SyncPc::SyncPc(const std::string& dir, const Uuid& book, const std::string& name, const SyncPc* joining)
    : folder((fs::path(dir) / "folder").string())
{
    fs::create_directories(dir);
    check(sqlite3_open((fs::path(dir) / "Zenvora.sql").c_str(), &db) == SQLITE_OK, "open");
    // The tests need no durability against power loss.
    exec("PRAGMA synchronous = OFF");
    exec(kSchema);
    check(createSyncTables(db) && writeBookId(db, book), "sync tables");
    std::string error;
    check(folder.prepare(&error), error);
    if (joining) deliver(*joining, *this);
    self.book = book;
    self.install = Uuid::generate();
    const std::optional<int> device = folder.claimDevice(self.install, name, &error);
    check(device.has_value(), error);
    self.device = *device;
}

SyncPc::~SyncPc() { sqlite3_close(db); }

void SyncPc::exec(const std::string& sql)
{
    char* message = nullptr;
    const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
    const std::string why = message ? message : "";
    sqlite3_free(message);
    check(rc == SQLITE_OK, why + ": " + sql);
}

std::vector<int64_t> SyncPc::ids(const std::string& sql)
{
    std::vector<int64_t> out;
    sqlite3_stmt* s = nullptr;
    check(sqlite3_prepare_v2(db, sql.c_str(), -1, &s, nullptr) == SQLITE_OK, sql);
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) out.push_back(sqlite3_column_int64(s, 0));
    sqlite3_finalize(s);
    check(rc == SQLITE_DONE, sql);
    return out;
}

int64_t SyncPc::scalar(const std::string& sql)
{
    const std::vector<int64_t> values = ids(sql);
    return values.empty() ? 0 : values.front();
}

int64_t SyncPc::nextId(const std::string& table)
{
    bool failed = false;
    const std::optional<int64_t> id = nextDeviceIdIn(db, table, self.device, &failed);
    check(id && !failed, "next id of " + table);
    return *id;
}

void SyncPc::recomputeZankinOfAll()
{
    exec("UPDATE Sisan SET Zankin = SyokiKingaku + (SELECT coalesce(sum(CASE WHEN SyubetuNo IN (2,4) THEN Nyuukin "
         "ELSE -Syukkin END), 0) FROM Items WHERE SisanNo = Sisan.Id)");
}

void SyncPc::record(const std::string& label, const std::function<void()>& change)
{
    exec("BEGIN");
    Session session;
    check(sqlite3session_create(db, "main", &session.s) == SQLITE_OK, "session");
    for (const char* table : {"Sisan", "Items", "Himoku"}) sqlite3session_attach(session.s, table);
    change();
    int size = 0;
    void* bytes = nullptr;
    check(sqlite3session_changeset(session.s, &size, &bytes) == SQLITE_OK, "changeset");
    const std::string changeset(static_cast<const char*>(bytes), static_cast<size_t>(size));
    sqlite3_free(bytes);
    sqlite3session_delete(session.s);
    session.s = nullptr;
    // The balances are written outside the recording, as the program does.
    recomputeZankinOfAll();
    OpMeta meta;
    check(nextLocalMeta(db, self, wallMs, 0, label, &meta) && logLocalOp(db, meta, changeset), "log");
    exec("COMMIT");
    std::string error;
    check(publishOwnOps(db, folder, self, &error), error);
    wallMs += 1000;
}

void SyncPc::seedStarterRows()
{
    exec("INSERT INTO Sisan VALUES (1, '現金', 10000, 10000);"
         "INSERT INTO Himoku VALUES (2, 1, '食費', 2, 1), (3, 1, '食費/その他', 2, 0),"
         "(4, 2, '給与', 4, 1), (5, 2, '給与/その他', 4, 0)");
}

int64_t SyncPc::addEntry(int64_t sisan, int64_t himoku, int64_t kind, int64_t amount, const std::string& hizuke)
{
    int64_t id = 0;
    record("入力の追加", [&] {
        id = nextId("Items");
        const char* column = kind == 1 ? "Syukkin" : "Nyuukin";
        exec("INSERT INTO Items (Id,Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId," + std::string(column) +
             ",Bikou) VALUES (" + std::to_string(id) + "," + quoted(hizuke) + "," + hizuke.substr(0, 4) + "," +
             std::to_string(std::stoi(hizuke.substr(5, 2))) + "," + std::to_string(std::stoi(hizuke.substr(8, 2))) +
             "," + std::to_string(sisan) + "," + std::to_string(kind) + "," + std::to_string(himoku) + ",-1," +
             std::to_string(amount) + ",'')");
    });
    madeEntries.insert(id);
    return id;
}

std::pair<int64_t, int64_t> SyncPc::addTransfer(int64_t from, int64_t to, int64_t amount, const std::string& hizuke)
{
    int64_t moto = 0, saki = 0;
    record("移動の追加", [&] {
        moto = nextId("Items");
        saki = nextId("Items");
        const std::string date = quoted(hizuke) + "," + hizuke.substr(0, 4) + "," +
                                 std::to_string(std::stoi(hizuke.substr(5, 2))) + "," +
                                 std::to_string(std::stoi(hizuke.substr(8, 2)));
        const auto row = [&](int64_t id, int64_t sisan, int kind, int64_t other, int64_t partner, const char* col) {
            exec("INSERT INTO Items (Id,Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdouSisanNo,IdouId," + std::string(col) +
                 ",Bikou) VALUES (" + std::to_string(id) + "," + date + "," + std::to_string(sisan) + "," +
                 std::to_string(kind) + "," + std::to_string(other) + "," + std::to_string(partner) + "," +
                 std::to_string(amount) + ",'')");
        };
        row(moto, from, 3, to, saki, "Syukkin");
        row(saki, to, 4, from, moto, "Nyuukin");
    });
    madeEntries.insert({moto, saki});
    return {moto, saki};
}

void SyncPc::editEntry(int64_t id, const std::string& column, const std::string& value)
{
    const int64_t kind = scalar("SELECT SyubetuNo FROM Items WHERE Id = " + std::to_string(id));
    const int64_t partner = kind >= 3 ? scalar("SELECT IdouId FROM Items WHERE Id = " + std::to_string(id)) : 0;
    record("入力の編集", [&] {
        for (int64_t row : {id, partner}) {
            if (row == 0) continue;
            std::string set = column + " = " + value;
            if (column == "Amount") {
                const int64_t k = scalar("SELECT SyubetuNo FROM Items WHERE Id = " + std::to_string(row));
                set = std::string(k == 1 || k == 3 ? "Syukkin" : "Nyuukin") + " = " + value;
            }
            exec("UPDATE Items SET " + set + " WHERE Id = " + std::to_string(row));
        }
    });
}

void SyncPc::deleteEntry(int64_t id)
{
    const int64_t kind = scalar("SELECT SyubetuNo FROM Items WHERE Id = " + std::to_string(id));
    const int64_t partner = kind >= 3 ? scalar("SELECT IdouId FROM Items WHERE Id = " + std::to_string(id)) : 0;
    record("入力の削除", [&] {
        exec("DELETE FROM Items WHERE Id IN (" + std::to_string(id) + "," + std::to_string(partner) + ")");
    });
    deletedEntries.insert({id, partner});
}

int64_t SyncPc::addSisan(const std::string& namae, int64_t syokiKingaku)
{
    int64_t id = 0;
    record("資産の追加", [&] {
        id = nextId("Sisan");
        exec("INSERT INTO Sisan VALUES (" + std::to_string(id) + "," + quoted(namae) + "," +
             std::to_string(syokiKingaku) + "," + std::to_string(syokiKingaku) + ")");
    });
    return id;
}

void SyncPc::renameSisan(int64_t id, const std::string& namae)
{
    // The program writes the balance it shows together with the name.
    record("資産の編集", [&] {
        exec("UPDATE Sisan SET Namae = " + quoted(namae) + ", Zankin = Zankin + 1 WHERE Id = " + std::to_string(id));
    });
}

void SyncPc::deleteSisanWithItems(int64_t id)
{
    const std::string ids = std::to_string(id);
    for (int64_t entry : this->ids("SELECT Id FROM Items WHERE SisanNo = " + ids + " OR IdouSisanNo = " + ids))
        deletedEntries.insert(entry);
    record("資産の削除", [&] {
        exec("DELETE FROM Items WHERE SisanNo = " + ids + " OR IdouSisanNo = " + ids);
        exec("DELETE FROM Sisan WHERE Id = " + ids);
    });
}

int64_t SyncPc::addCategory(int64_t kind, const std::string& namae)
{
    int64_t id = 0;
    record("費目の追加", [&] {
        id = nextId("Himoku");
        const int64_t sonota = nextId("Himoku");
        exec("INSERT INTO Himoku VALUES (" + std::to_string(id) + "," + std::to_string(kind) + "," + quoted(namae) +
             "," + std::to_string(id) + ",1), (" + std::to_string(sonota) + "," + std::to_string(kind) + "," +
             quoted(namae + "/その他") + "," + std::to_string(id) + ",0)");
    });
    return id;
}

int64_t SyncPc::addSubItem(int64_t category, const std::string& namae)
{
    int64_t id = 0;
    const std::string c = std::to_string(category);
    record("内訳の追加", [&] {
        id = nextId("Himoku");
        exec("INSERT INTO Himoku SELECT " + std::to_string(id) + ", SyubetuNo, Namae || '/' || " + quoted(namae) +
             ", Id, 0 FROM Himoku WHERE Id = " + c);
        exec("UPDATE Himoku SET Ucount = Ucount + 1 WHERE Id = " + c);
    });
    return id;
}

void SyncPc::renameCategory(int64_t id, const std::string& namae)
{
    const std::string c = std::to_string(id);
    record("費目の編集", [&] {
        exec("UPDATE Himoku SET Namae = " + quoted(namae) + " || substr(Namae, instr(Namae, '/')) WHERE Hno = " + c +
             " AND Id != " + c);
        exec("UPDATE Himoku SET Namae = " + quoted(namae) + " WHERE Id = " + c);
    });
}

void SyncPc::deleteSubItem(int64_t id)
{
    const std::string s = std::to_string(id);
    for (int64_t entry : ids("SELECT Id FROM Items WHERE HimokuNo = " + s)) deletedEntries.insert(entry);
    record("内訳の削除", [&] {
        exec("UPDATE Himoku SET Ucount = Ucount - 1 WHERE Id = (SELECT Hno FROM Himoku WHERE Id = " + s + ")");
        exec("DELETE FROM Himoku WHERE Id = " + s);
        exec("DELETE FROM Items WHERE HimokuNo = " + s);
    });
}

void SyncPc::deleteCategory(int64_t id)
{
    const std::string in = "(SELECT Id FROM Himoku WHERE Hno = " + std::to_string(id) + ")";
    for (int64_t entry : ids("SELECT Id FROM Items WHERE HimokuNo IN " + in)) deletedEntries.insert(entry);
    record("費目の削除", [&] {
        exec("DELETE FROM Items WHERE HimokuNo IN " + in);
        exec("DELETE FROM Himoku WHERE Hno = " + std::to_string(id));
    });
}

bool SyncPc::sync(RoundResult* result, std::string* error, FolderScan* scanned)
{
    AppliedVector applied;
    check(readApplied(db, &applied), "applied");
    const std::vector<DeviceClaim> claims = folder.readClaims();
    if (const std::vector<std::string> clashes = claimClashes(claims); !clashes.empty()) {
        if (error) *error = clashes.front();
        return false;
    }
    const FolderScan scan = folder.scan(self.book, self.install, applied, claims);
    if (scanned) *scanned = scan;
    RoundResult local;
    exec("BEGIN");
    if (applyArrived(db, scan.ready, result ? result : &local, error) != RoundProblem::None) {
        exec("ROLLBACK");
        return false;
    }
    exec("COMMIT");
    applied.clear();
    check(readApplied(db, &applied), "applied");
    return folder.publishApplied(self.install, applied, error);
}

std::string SyncPc::dump()
{
    std::string out;
    for (const char* table : {"Sisan", "Items", "Himoku"}) {
        sqlite3_stmt* s = nullptr;
        check(sqlite3_prepare_v2(db, (std::string("SELECT * FROM ") + table + " ORDER BY Id").c_str(), -1, &s,
                                 nullptr) == SQLITE_OK,
              "dump");
        while (sqlite3_step(s) == SQLITE_ROW) {
            out += table;
            for (int c = 0; c < sqlite3_column_count(s); ++c) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, c));
                out += "|" + (text ? std::string(text) : std::string("NULL"));
            }
            out += "\n";
        }
        sqlite3_finalize(s);
    }
    return out;
}

std::string SyncPc::brokenRules()
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
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &s, nullptr);
    if (sqlite3_step(s) != SQLITE_ROW || std::string(reinterpret_cast<const char*>(sqlite3_column_text(s, 0))) != "ok")
        broken += "integrity_check failed\n";
    sqlite3_finalize(s);
    return broken;
}

void deliver(const SyncPc& from, const SyncPc& to, double share, unsigned seed)
{
    std::mt19937 random(seed);
    std::bernoulli_distribution take(share);
    const fs::path source(from.folder.root()), target(to.folder.root());
    for (const auto& entry : fs::recursive_directory_iterator(source)) {
        if (!entry.is_regular_file()) continue;
        const fs::path relative = fs::relative(entry.path(), source);
        const fs::path copy = target / relative;
        const bool immutable = *relative.begin() == "ops" || *relative.begin() == "book-id";
        if ((immutable && fs::exists(copy)) || !take(random)) continue;
        fs::create_directories(copy.parent_path());
        fs::copy_file(entry.path(), copy, fs::copy_options::overwrite_existing);
    }
}
