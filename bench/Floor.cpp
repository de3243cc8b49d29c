#include "bench/Floor.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

std::string annualSql(int nen, const char* column, int kind)
{
    const std::string y = std::to_string(nen);
    std::string sql = "Select Himoku.Namae ";
    for (int m = 1; m <= 12; ++m)
        sql += " , SUM(CASE WHEN Tuki = " + std::to_string(m) + " THEN " + column + " END) AS g" + std::to_string(m);
    return sql + ",SUM(CASE WHEN Nen=" + y + " THEN " + column + " END) AS N" + y +
           "  FROM Items JOIN Himoku ON Items.HimokuNo=Himoku.Id WHERE Nen=" + y +
           " AND Items.SyubetuNo=" + std::to_string(kind) + " GROUP BY Items.HimokuNo";
}

// A floor that cannot read its rows measures nothing: stop the benchmark.
void expectDone(int rc, sqlite3* db)
{
    if (rc == SQLITE_DONE) return;
    std::fprintf(stderr, "floor: %s\n", sqlite3_errmsg(db));
    std::exit(1);
}

// Calls onRow at every row of s, then checks that the rows ended.
template <typename OnRow>
void eachRow(sqlite3* db, sqlite3_stmt* s, OnRow onRow)
{
    for (int rc = sqlite3_step(s);; rc = sqlite3_step(s)) {
        if (rc != SQLITE_ROW) {
            expectDone(rc, db);
            return;
        }
        onRow();
    }
}

sqlite3* openBook(const std::string& path)
{
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    return db;
}

std::string ledgerSql(int64_t sisanId)
{
    return "SELECT * FROM Items WHERE SisanNo = " + std::to_string(sisanId) + " ORDER BY Hizuke";
}

}  // namespace

// Opened as the store opens its book: one thread, no per-call locking.
Floor::Floor(const std::string& path) : db_(openBook(path)), path_(path) {}

Floor::~Floor()
{
    sqlite3_close(db_);
}

void Floor::readAll(const std::string& sql, uint32_t textColumns)
{
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db_, sql.c_str(), -1, &s, nullptr);
    const int columns = sqlite3_column_count(s);
    eachRow(db_, s, [&] {
        for (int c = 0; c < columns; ++c) {
            if (textColumns & (1u << c)) {
                sink_ += sqlite3_column_text(s, c)[0] + sqlite3_column_bytes(s, c);
            } else {
                sink_ += sqlite3_column_int(s, c);
            }
        }
    });
    sqlite3_finalize(s);
}

void Floor::write(const std::string& sql)
{
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db_, sql.c_str(), -1, &s, nullptr);
    expectDone(sqlite3_step(s), db_);
    sqlite3_finalize(s);
}

void Floor::startupRecompute()
{
    sqlite3* db = openBook(path_);
    std::swap(db, db_);
    // The assets' opening amounts by Id, then the categories, then every
    // entry's amount summed per asset in the same pass the store makes.
    std::unordered_map<int64_t, int64_t> zankin;
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db_, "SELECT * FROM Sisan", -1, &s, nullptr);
    eachRow(db_, s, [&] {
        sink_ += sqlite3_column_text(s, 1)[0] + sqlite3_column_int64(s, 3);
        zankin[sqlite3_column_int(s, 0)] = sqlite3_column_int(s, 2);
    });
    sqlite3_finalize(s);
    readAll("SELECT * FROM Himoku ORDER BY SyubetuNo, Hno,Id", 1u << 2);
    sqlite3_prepare_v2(db_, "SELECT SisanNo, SyubetuNo, Nyuukin, Syukkin FROM Items", -1, &s, nullptr);
    eachRow(db_, s, [&] {
        const auto found = zankin.find(sqlite3_column_int(s, 0));
        if (found == zankin.end()) return;
        const int kind = sqlite3_column_int(s, 1);
        if (kind == 2 || kind == 4) found->second += sqlite3_column_int(s, 2);
        if (kind == 1 || kind == 3) found->second -= sqlite3_column_int(s, 3);
    });
    sqlite3_finalize(s);
    for (const auto& [id, sum] : zankin) sink_ += id + sum;
    std::swap(db, db_);
    sqlite3_close(db);
}

void Floor::quickCheck()
{
    sqlite3* db = nullptr;
    sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, "PRAGMA quick_check", -1, &s, nullptr);
    eachRow(db, s, [&] { sink_ += sqlite3_column_bytes(s, 0); });
    sqlite3_finalize(s);
    sqlite3_close(db);
}

void Floor::readLedger(int64_t sisanId)
{
    readAll(ledgerSql(sisanId), (1u << 1) | (1u << 12));
}

void Floor::readYears()
{
    readAll("SELECT DISTINCT Nen FROM Items ORDER BY Nen", 0);
}

void Floor::annualYear(int nen)
{
    readAll(annualSql(nen, "Nyuukin", 2), 1u);
    readAll(annualSql(nen, "Syukkin", 1), 1u);
}

void Floor::monthlySums()
{
    readAll("SELECT SisanNo, Nen, Tuki, SUM(CASE WHEN SyubetuNo IN (2,4) THEN Nyuukin"
            " WHEN SyubetuNo IN (1,3) THEN -Syukkin END) FROM Items NOT INDEXED GROUP BY SisanNo, Nen, Tuki",
            1u << 3);
}

void Floor::insertItem(const char* sql, int64_t sisan, int64_t kind, int64_t partner, int64_t idouId)
{
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db_, sql, -1, &s, nullptr);
    sqlite3_bind_text(s, 1, "2025-06-15", -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(s, 2, 2025);
    sqlite3_bind_int(s, 3, 6);
    sqlite3_bind_int(s, 4, 15);
    sqlite3_bind_int(s, 5, static_cast<int>(sisan));
    sqlite3_bind_int(s, 6, static_cast<int>(kind));
    sqlite3_bind_int(s, 7, static_cast<int>(partner));
    sqlite3_bind_int(s, 8, static_cast<int>(idouId));
    sqlite3_bind_int(s, 9, 1200);
    sqlite3_bind_text(s, 10, "bench", -1, SQLITE_TRANSIENT);
    expectDone(sqlite3_step(s), db_);
    sqlite3_finalize(s);
}

void Floor::insertEntry(int64_t sisanId, int64_t himokuId)
{
    insertItem("INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Syukkin,Bikou) "
               "VALUES (?,?,?,?,?,?,?,?,?,?)",
               sisanId, 1, himokuId, -1);
    readLedger(sisanId);
}

void Floor::insertTransfer(int64_t from, int64_t to)
{
    write("BEGIN");
    insertItem("INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdousisanNo,IdouId,Syukkin,Bikou) "
               "VALUES (?,?,?,?,?,?,?,?,?,?)",
               from, 3, to, -1);
    const int64_t a = sqlite3_last_insert_rowid(db_);
    insertItem("INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdousisanNo,IdouId,Nyuukin,Bikou) "
               "VALUES (?,?,?,?,?,?,?,?,?,?)",
               to, 4, from, a);
    const int64_t b = sqlite3_last_insert_rowid(db_);
    write("UPDATE Items SET IdouId=" + std::to_string(b) + " WHERE Id=" + std::to_string(a));
    write("COMMIT");
    readLedger(to);
    readLedger(from);
}

void Floor::deleteSubItem(int64_t id, int64_t hno, int64_t ucount, int64_t shownSisanId)
{
    write("BEGIN");
    write("DELETE FROM Himoku WHERE Id=" + std::to_string(id));
    write("UPDATE Himoku SET Ucount= " + std::to_string(ucount - 1) + " WHERE Id=" + std::to_string(hno));
    write("DELETE FROM Items WHERE HimokuNo=" + std::to_string(id));
    write("COMMIT");
    readAll("SELECT * FROM Himoku ORDER BY SyubetuNo, Hno,Id", 1u << 2);
    readLedger(shownSisanId);
    readAll("SELECT * FROM Sisan", 1u << 1);
}

void Floor::applyChangeset(const std::string& changeset)
{
    write("BEGIN");
    const auto abortOnConflict = [](void*, int, sqlite3_changeset_iter*) { return SQLITE_CHANGESET_ABORT; };
    if (sqlite3changeset_apply(db_, static_cast<int>(changeset.size()), const_cast<char*>(changeset.data()), nullptr,
                               abortOnConflict, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "floor: %s\n", sqlite3_errmsg(db_));
        std::exit(1);
    }
    write("COMMIT");
}

void Floor::rangeSums(const std::string& sisanIds, const std::vector<std::string>& firstDays,
                      const std::string& lastDay, bool withIncome)
{
    std::string bucket = "0";
    if (firstDays.size() > 1) {
        bucket = "CASE";
        for (size_t r = 1; r < firstDays.size(); ++r)
            bucket += " WHEN Hizuke < ?" + std::to_string(r + 1) + " THEN " + std::to_string(r - 1);
        bucket += " ELSE " + std::to_string(firstDays.size() - 1) + " END";
    }
    const std::string sql = "SELECT SyubetuNo, HimokuNo, " + bucket +
                            ", SUM(CASE SyubetuNo WHEN 1 THEN Syukkin ELSE Nyuukin END) FROM Items WHERE SisanNo IN (" +
                            sisanIds + ") AND Hizuke BETWEEN ?1 AND ?" + std::to_string(firstDays.size() + 1) +
                            " AND SyubetuNo " + (withIncome ? "IN (1,2)" : "= 1") + " GROUP BY 1, 2, 3";
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db_, sql.c_str(), -1, &s, nullptr);
    for (size_t r = 0; r < firstDays.size(); ++r)
        sqlite3_bind_text(s, static_cast<int>(r) + 1, firstDays[r].c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(s, static_cast<int>(firstDays.size()) + 1, lastDay.c_str(), -1, SQLITE_TRANSIENT);
    eachRow(db_, s, [&] {
        sink_ += sqlite3_column_int64(s, 0) + sqlite3_column_int64(s, 1) + sqlite3_column_int64(s, 2) +
                 sqlite3_column_int64(s, 3);
    });
    sqlite3_finalize(s);
}

void Floor::cardPeriods(int64_t sisanId, int64_t fromMonth,
                        const std::vector<std::pair<std::string, std::string>>& periods)
{
    readAll("SELECT ClosingMonth FROM CardSettlements WHERE SisanNo = " + std::to_string(sisanId) +
                " AND ClosingMonth >= " + std::to_string(fromMonth) +
                " AND (ItemId IS NULL OR ItemId IN (SELECT Id FROM Items)) ORDER BY ClosingMonth",
            0);
    for (const auto& [first, last] : periods) {
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(db_,
                           ("SELECT SUM(CASE WHEN SyubetuNo IN (1,3) THEN Syukkin WHEN SyubetuNo = 2 THEN -Nyuukin END) "
                            "FROM Items WHERE SisanNo = " + std::to_string(sisanId) + " AND Hizuke BETWEEN ? AND ?")
                               .c_str(),
                           -1, &s, nullptr);
        sqlite3_bind_text(s, 1, first.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(s, 2, last.c_str(), -1, SQLITE_TRANSIENT);
        eachRow(db_, s, [&] { sink_ += sqlite3_column_int64(s, 0); });
        sqlite3_finalize(s);
    }
}
void Floor::readFound(const std::string& sql, const std::vector<std::string>& texts)
{
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db_, sql.c_str(), -1, &s, nullptr);
    for (size_t i = 0; i < texts.size(); ++i)
        sqlite3_bind_text(s, static_cast<int>(i) + 1, texts[i].c_str(), -1, SQLITE_TRANSIENT);
    eachRow(db_, s, [&] {
        for (int c = 0; c < 9; ++c) {
            if (c == 1 || c == 8) {
                sink_ += sqlite3_column_bytes(s, c) + (sqlite3_column_text(s, c) ? 1 : 0);
            } else {
                sink_ += sqlite3_column_int(s, c);
            }
        }
    });
    sqlite3_finalize(s);
}
