#include "store/Provisioning.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "store/History.h"
#include "store/HouseholdTables.h"
#include "store/ImportTables.h"
#include "store/SyncLog.h"
#include "store/TeikiTables.h"
#include "store/Transaction.h"

namespace fs = std::filesystem;

namespace {

const char* const kSchema[] = {
    "CREATE TABLE Sisan  (Id INTEGER PRIMARY KEY, Namae TEXT NOT NULL, SyokiKingaku INTEGER NOT NULL, "
    "Zankin INTEGER NOT NULL)",
    "CREATE TABLE Items  (Id INTEGER PRIMARY KEY, Hizuke TEXT NOT NULL, Nen INTEGER NOT NULL, Tuki INTEGER NOT NULL, "
    "Hi INTEGER NOT NULL, SisanNo INTEGER NOT NULL, SyubetuNo INTEGER NOT NULL, HimokuNo INTEGER, "
    "IdouSisanNo INTEGER, IdouId INTEGER, Nyuukin INTEGER, Syukkin INTEGER, Bikou TEXT NOT NULL)",
    "CREATE TABLE Himoku (Id INTEGER PRIMARY KEY, SyubetuNo INTEGER, Namae TEXT NOT NULL, Hno INTEGER, "
    "Ucount INTEGER)",
};

// The indexes that keep ledger reads, the annual report and deletions fast.
const char* const kIndexes[] = {
    "CREATE INDEX IF NOT EXISTS Items_SisanNo_Hizuke ON Items(SisanNo, Hizuke)",
    "CREATE INDEX IF NOT EXISTS Items_Nen_SyubetuNo_HimokuNo ON Items(Nen, SyubetuNo, HimokuNo)",
    "CREATE INDEX IF NOT EXISTS Items_HimokuNo ON Items(HimokuNo)",
    "CREATE INDEX IF NOT EXISTS Items_IdouSisanNo ON Items(IdouSisanNo)",
};

// The starter book: one wallet and common categories, each with its その他.
const char* const kStarterSisan = "INSERT INTO Sisan (Namae,SyokiKingaku,Zankin) VALUES ('現金',0,0)";
const char* const kExpenseCategories[] = {"食費", "日用品", "住居費", "水道光熱費", "通信費",
                                          "交通費", "医療費", "教育費", "娯楽費", "衣服費"};
const char* const kIncomeCategories[] = {"給与", "賞与", "臨時収入"};
const char* const kCategoriesOwnHno = "UPDATE Himoku SET Hno = Id WHERE Ucount > 0";

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};

bool fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

bool runAll(sqlite3* db, const char* const* first, const char* const* last, std::string* error)
{
    for (; first != last; ++first)
        if (!runControlStatement(db, *first)) return fail(error, std::string(sqlite3_errmsg(db)) + ": " + *first);
    return true;
}

// The history of undoable steps and the record of sync live in the book; a
// book of an earlier version gets their tables when it is opened.
bool addHistory(sqlite3* db, std::string* error)
{
    return (createHistoryTable(db) || fail(error, std::string(sqlite3_errmsg(db)) + ": the history table")) &&
           (createSyncTables(db) || fail(error, std::string(sqlite3_errmsg(db)) + ": the sync tables"));
}

// The household tables live in the book; a book of an earlier version gets
// them, empty, when it is opened.
bool addHouseholdTables(sqlite3* db, std::string* error)
{
    return createHouseholdTables(db) || fail(error, std::string(sqlite3_errmsg(db)) + ": the household tables");
}

// The statement import's tables; a book of an earlier version gets them
// when it is opened.
bool addImportTables(sqlite3* db, std::string* error)
{
    return createImportTables(db) || fail(error, std::string(sqlite3_errmsg(db)) + ": the import tables");
}

// The recurring entries' tables; a book of an earlier version gets them
// when it is opened.
bool addTeikiTables(sqlite3* db, std::string* error)
{
    return createTeikiTables(db) || fail(error, std::string(sqlite3_errmsg(db)) + ": the recurring entries' tables");
}

bool buildSchema(sqlite3* db, std::string* error)
{
    return runAll(db, std::begin(kSchema), std::end(kSchema), error) &&
           runAll(db, std::begin(kIndexes), std::end(kIndexes), error) && addHistory(db, error) &&
           addImportTables(db, error) && addHouseholdTables(db, error) && addTeikiTables(db, error);
}

bool insertCategory(sqlite3* db, int kind, const char* name, std::string* error)
{
    // The category row counts its one sub-item, その他, which points at it.
    // The category's own Hno is set once all categories are in.
    const char* const inserts[] = {
        "INSERT INTO Himoku (SyubetuNo, Namae, Hno, Ucount) VALUES (?1, ?2, 0, 1)",
        "INSERT INTO Himoku (SyubetuNo, Namae, Hno, Ucount) VALUES (?1, ?2 || '/その他', last_insert_rowid(), 0)",
    };
    for (const char* sql : inserts) {
        sqlite3_stmt* s = nullptr;
        const bool ok = sqlite3_prepare_v2(db, sql, -1, &s, nullptr) == SQLITE_OK &&
                        sqlite3_bind_int(s, 1, kind) == SQLITE_OK &&
                        sqlite3_bind_text(s, 2, name, -1, SQLITE_STATIC) == SQLITE_OK && sqlite3_step(s) == SQLITE_DONE;
        sqlite3_finalize(s);
        if (!ok) return fail(error, std::string(sqlite3_errmsg(db)) + ": category " + name);
    }
    return true;
}

}  // namespace

bool createStarterBook(const std::string& path, std::string* error)
{
    const fs::path target = path;
    // Build the book under a temporary name and move it into place only when
    // it is complete.
    const fs::path temp = target.string() + ".new";
    std::error_code ec;
    fs::remove(temp, ec);
    {
        Connection c;
        if (sqlite3_open_v2(temp.c_str(), &c.db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK)
            return fail(error, "cannot create " + temp.string() + ": " + sqlite3_errmsg(c.db));
        ::chmod(temp.c_str(), S_IRUSR | S_IWUSR);
        Transaction tx(c.db);
        bool ok = tx.began() && buildSchema(c.db, error) && runAll(c.db, &kStarterSisan, &kStarterSisan + 1, error);
        for (const char* name : kExpenseCategories) ok = ok && insertCategory(c.db, 1, name, error);
        for (const char* name : kIncomeCategories) ok = ok && insertCategory(c.db, 2, name, error);
        ok = ok && runAll(c.db, &kCategoriesOwnHno, &kCategoriesOwnHno + 1, error);
        if (!ok || !tx.commit()) {
            if (error && error->empty()) *error = sqlite3_errmsg(c.db);
            fs::remove(temp, ec);
            return false;
        }
    }
    fs::rename(temp, target, ec);
    if (ec) return fail(error, "cannot move the new book into place: " + ec.message());
    return true;
}

std::string resourceDirectory()
{
    const char* xdg = std::getenv("XDG_DATA_HOME");
    if (xdg && *xdg) return std::string(xdg) + "/Zenvora";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : ".") + "/.local/share/Zenvora";
}

bool provisionResourceDirectory(const std::string& dir, std::string* error)
{
    return provisionBook((fs::path(dir) / "Zenvora.sql").string(), error);
}

bool provisionBook(const std::string& path, std::string* error)
{
    if (error) error->clear();
    std::error_code ec;
    const fs::path database = path;
    const fs::path dir = database.parent_path();
    // A new resource directory is private to its owner, like the book in it.
    if (!dir.empty() && fs::create_directories(dir, ec)) fs::permissions(dir, fs::perms::owner_all, ec);
    if (ec) return fail(error, "cannot create " + dir.string() + ": " + ec.message());
    // An empty file is what an interrupted first start or `touch` leaves: it
    // holds no data, so it is provisioned like a missing one.
    if (!fs::exists(database, ec) || fs::file_size(database, ec) == 0) return createStarterBook(database.string(), error);

    Connection c;
    if (sqlite3_open_v2(database.c_str(), &c.db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
        return fail(error, "cannot open " + database.string() + ": " + sqlite3_errmsg(c.db));
    return runAll(c.db, std::begin(kIndexes), std::end(kIndexes), error) && addHistory(c.db, error) &&
           addImportTables(c.db, error) && addHouseholdTables(c.db, error) && addTeikiTables(c.db, error);
}

bool createEmptyDatabase(const std::string& path, std::string* error)
{
    Connection c;
    if (sqlite3_open_v2(path.c_str(), &c.db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK)
        return fail(error, "cannot create " + path + ": " + sqlite3_errmsg(c.db));
    Transaction tx(c.db);
    return tx.began() && buildSchema(c.db, error) && (tx.commit() || fail(error, sqlite3_errmsg(c.db)));
}
