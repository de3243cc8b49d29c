#include "bench/Generator.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <random>
#include <vector>

#include "bench/GeneratedNotes.h"
#include "store/Provisioning.h"
#include "store/Transaction.h"

namespace {

// Share of rows per asset, in percent; the first asset is the big one.
constexpr std::array<int, 10> kSisanWeights = {38, 14, 7, 7, 7, 7, 5, 5, 5, 5};
const char* const kSisanNames[] = {"普通預金", "現金", "クレジットカード", "定期預金", "財布（妻）",
                                   "電子マネー", "証券口座", "貯蓄預金", "外貨預金", "ポイント"};
const char* const kCategories[] = {"食費", "日用品", "住居費", "水道光熱費", "通信費", "交通費",
                                   "医療費", "教育費", "娯楽費", "衣服費", "交際費", "保険料",
                                   "給与", "賞与", "副収入", "臨時収入"};
constexpr int kExpenseCategories = 12;  // the rest are income
const char* const kSubItems[] = {"その他", "定期", "臨時", "家族", "立替"};
// Three entries in eight carry no note.
constexpr uint64_t kNoteDraws = 8, kWithoutNote = 3;

struct Connection {
    sqlite3* db = nullptr;
    ~Connection() { sqlite3_close(db); }
};


struct Statement {
    sqlite3_stmt* s = nullptr;
    ~Statement() { sqlite3_finalize(s); }
};

// Runs one statement to its end, skipping any rows it returns (PRAGMA).
bool run(sqlite3* db, const std::string& sql, std::string* error)
{
    Statement st;
    int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &st.s, nullptr);
    if (rc == SQLITE_OK) {
        do rc = sqlite3_step(st.s);
        while (rc == SQLITE_ROW);
    }
    if (rc == SQLITE_DONE) return true;
    *error = sql + ": " + sqlite3_errmsg(db);
    return false;
}

// Days since 1970-01-01 to a civil date (Howard Hinnant's algorithm).
void civilFromDays(int64_t z, int* y, int* m, int* d)
{
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    *d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    *m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    *y = static_cast<int>(yoe + era * 400 + (*m <= 2));
}

int64_t daysFromCivil(int y, int m, int d)
{
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

// The category (0-15, in kCategories' order) of a sub-item: writeMasters
// gives each category and then its five sub-items consecutive Ids from 1.
// Binds one generated entry's fields to an Items insert, from parameter
// `at` on: the date and its parts, asset, kind, sub-item or partner, link,
// and the amount as money in (kinds 2, 4) or money out.
void bindEntry(sqlite3_stmt* s, int at, int64_t day, int sisan, int kind, int64_t himoku, int partner,
               int64_t idouId, int64_t amount)
{
    int y, m, d;
    civilFromDays(day, &y, &m, &d);
    char hizuke[16];
    std::snprintf(hizuke, sizeof hizuke, "%04d-%02d-%02d", y, m, d);
    sqlite3_bind_text(s, at, hizuke, -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(s, at + 1, y);
    sqlite3_bind_int(s, at + 2, m);
    sqlite3_bind_int(s, at + 3, d);
    sqlite3_bind_int(s, at + 4, sisan);
    sqlite3_bind_int(s, at + 5, kind);
    if (himoku) sqlite3_bind_int64(s, at + 6, himoku);
    if (partner) sqlite3_bind_int(s, at + 7, partner);
    sqlite3_bind_int64(s, at + 8, idouId);
    sqlite3_bind_int64(s, (kind == 2 || kind == 4) ? at + 9 : at + 10, amount);
}

int categoryOf(int64_t subItemId)
{
    return static_cast<int>((subItemId - 1) / (1 + std::size(kSubItems)));
}

bool writeMasters(sqlite3* db, std::vector<int64_t>* expenseSubItems, std::vector<int64_t>* incomeSubItems,
                  std::string* error)
{
    for (const char* name : kSisanNames)
        if (!run(db, std::string("INSERT INTO Sisan (Namae,SyokiKingaku,Zankin) VALUES ('") + name + "',100000,100000)",
                 error))
            return false;
    int64_t id = 0;
    for (int c = 0; c < 16; ++c) {
        const int kind = c < kExpenseCategories ? 1 : 2;
        const int64_t hno = ++id;
        if (!run(db, "INSERT INTO Himoku VALUES (" + std::to_string(hno) + "," + std::to_string(kind) + ",'" +
                         kCategories[c] + "'," + std::to_string(hno) + ",5)",
                 error))
            return false;
        for (const char* sub : kSubItems) {
            ++id;
            if (!run(db, "INSERT INTO Himoku VALUES (" + std::to_string(id) + "," + std::to_string(kind) + ",'" +
                             kCategories[c] + "/" + sub + "'," + std::to_string(hno) + ",0)",
                     error))
                return false;
            (kind == 1 ? expenseSubItems : incomeSubItems)->push_back(id);
        }
    }
    return true;
}

}  // namespace

bool generateLedger(const std::string& path, const LedgerShape& shape, GeneratedLedger* out, std::string* error)
{
    if (!createEmptyDatabase(path, error)) return false;
    Connection c;
    if (sqlite3_open(path.c_str(), &c.db) != SQLITE_OK) {
        *error = sqlite3_errmsg(c.db);
        return false;
    }
    // Bulk load: no journal, indexes built once at the end.
    if (!run(c.db, "PRAGMA journal_mode=OFF", error) || !run(c.db, "PRAGMA synchronous=OFF", error)) return false;
    for (const char* index : {"Items_SisanNo_Hizuke", "Items_Nen_SyubetuNo_HimokuNo", "Items_HimokuNo",
                              "Items_IdouSisanNo"})
        if (!run(c.db, std::string("DROP INDEX ") + index, error)) return false;
    Transaction tx(c.db);
    std::vector<int64_t> expenseSubItems, incomeSubItems;
    if (!writeMasters(c.db, &expenseSubItems, &incomeSubItems, error)) return false;

    Statement ins;
    sqlite3_prepare_v2(c.db, "INSERT INTO Items VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?)", -1, &ins.s, nullptr);
    std::mt19937_64 rng(20261123);
    GeneratedNotes notes(20261125);
    std::discrete_distribution<int> pickSisan(kSisanWeights.begin(), kSisanWeights.end());
    const int64_t firstDay = daysFromCivil(shape.lastYear - shape.years + 1, 1, 1);
    const int64_t dayCount = daysFromCivil(shape.lastYear + 1, 1, 1) - firstDay;
    out->entriesOfLargest = 0;

    auto insertRow = [&](int64_t id, int64_t day, int sisan, int kind, int64_t himoku, int partner, int64_t idouId,
                         int64_t amount, const std::string& note) {
        sqlite3_reset(ins.s);
        sqlite3_clear_bindings(ins.s);
        sqlite3_bind_int64(ins.s, 1, id);
        bindEntry(ins.s, 2, day, sisan, kind, himoku, partner, idouId, amount);
        sqlite3_bind_text(ins.s, 13, note.c_str(), static_cast<int>(note.size()), SQLITE_STATIC);
        if (sisan == 1) ++out->entriesOfLargest;
        return sqlite3_step(ins.s) == SQLITE_DONE;
    };

    for (int64_t id = 1; id <= shape.entries; ++id) {
        int64_t day = firstDay + (id - 1) * dayCount / shape.entries;
        if (rng() % 20 == 0) day = std::max(firstDay, day - 1 - static_cast<int64_t>(rng() % 365));
        const int sisan = pickSisan(rng) + 1;  // asset Ids are 1..10 in weight order
        const bool noted = rng() % kNoteDraws >= kWithoutNote;
        const uint64_t roll = rng() % 1000;
        // The note follows the category (its row's draws stay as they were).
        const auto noteOf = [&](int category) {
            int y, m, d;
            civilFromDays(day, &y, &m, &d);
            return noted ? notes.note(category, y, m) : std::string();
        };
        bool ok;
        if (roll < 25 && id < shape.entries) {
            // A transfer pair takes two consecutive Ids.
            int partner = pickSisan(rng) + 1;
            if (partner == sisan) partner = sisan % 10 + 1;
            const int64_t amount = 1000 * (1 + static_cast<int64_t>(rng() % 100));
            const std::string note = noteOf(GeneratedNotes::kTransfer);
            ok = insertRow(id, day, sisan, 3, 0, partner, id + 1, amount, note) &&
                 insertRow(id + 1, day, partner, 4, 0, sisan, id, amount, note);
            ++id;
        } else if (roll < 175) {
            // The amount is drawn before the sub-item, as the ledgers benchmarked before had it.
            const int64_t amount = 10000 + static_cast<int64_t>(rng() % 300000);
            const int64_t himoku = incomeSubItems[rng() % incomeSubItems.size()];
            ok = insertRow(id, day, sisan, 2, himoku, 0, -1, amount, noteOf(categoryOf(himoku)));
        } else {
            const int64_t amount = 100 + static_cast<int64_t>(rng() % 30000);
            const int64_t himoku = expenseSubItems[rng() % expenseSubItems.size()];
            ok = insertRow(id, day, sisan, 1, himoku, 0, -1, amount, noteOf(categoryOf(himoku)));
        }
        if (!ok) {
            *error = sqlite3_errmsg(c.db);
            return false;
        }
    }
    if (!tx.commit()) {
        *error = sqlite3_errmsg(c.db);
        return false;
    }
    out->largestSisanId = 1;
    out->secondSisanId = 2;
    // The application adds its indexes to an existing book the same way.
    return provisionResourceDirectory(std::filesystem::path(path).parent_path().string(), error);
}

bool addEntriesUnder(const std::string& path, const LedgerShape& shape, const std::vector<int64_t>& subItems,
                     int64_t count, std::string* error)
{
    Connection c;
    if (sqlite3_open(path.c_str(), &c.db) != SQLITE_OK) {
        *error = sqlite3_errmsg(c.db);
        return false;
    }
    Transaction tx(c.db);
    Statement ins;
    sqlite3_prepare_v2(c.db,
                       "INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Syukkin,Bikou) "
                       "VALUES (?,?,?,?,?,1,?,-1,?,'')",
                       -1, &ins.s, nullptr);
    std::mt19937_64 rng(20261124);
    std::discrete_distribution<int> pickSisan(kSisanWeights.begin(), kSisanWeights.end());
    const int64_t firstDay = daysFromCivil(shape.lastYear - shape.years + 1, 1, 1);
    const int64_t dayCount = daysFromCivil(shape.lastYear + 1, 1, 1) - firstDay;
    for (int64_t i = 0; i < count; ++i) {
        int y, m, d;
        civilFromDays(firstDay + i * dayCount / count, &y, &m, &d);
        char hizuke[16];
        std::snprintf(hizuke, sizeof hizuke, "%04d-%02d-%02d", y, m, d);
        sqlite3_reset(ins.s);
        sqlite3_bind_text(ins.s, 1, hizuke, -1, SQLITE_TRANSIENT);
        sqlite3_bind_int(ins.s, 2, y);
        sqlite3_bind_int(ins.s, 3, m);
        sqlite3_bind_int(ins.s, 4, d);
        sqlite3_bind_int(ins.s, 5, pickSisan(rng) + 1);
        sqlite3_bind_int64(ins.s, 6, subItems[static_cast<size_t>(i) % subItems.size()]);
        sqlite3_bind_int64(ins.s, 7, 100 + static_cast<int64_t>(rng() % 30000));
        if (sqlite3_step(ins.s) != SQLITE_DONE) {
            *error = sqlite3_errmsg(c.db);
            return false;
        }
    }
    if (tx.commit()) return true;
    *error = sqlite3_errmsg(c.db);
    return false;
}

bool generateCardBook(const std::string& path, int64_t entries, int lastYear, GeneratedCardBook* out,
                      std::string* error)
{
    if (!createEmptyDatabase(path, error)) return false;
    Connection c;
    if (sqlite3_open(path.c_str(), &c.db) != SQLITE_OK) {
        *error = sqlite3_errmsg(c.db);
        return false;
    }
    if (!run(c.db, "PRAGMA journal_mode=OFF", error) || !run(c.db, "PRAGMA synchronous=OFF", error)) return false;
    Transaction tx(c.db);
    const int firstYear = lastYear - 29;
    if (!run(c.db, "INSERT INTO Sisan VALUES (1,'普通預金',1000000,1000000), (2,'クレジットカード',0,0)", error) ||
        !run(c.db, "INSERT INTO Himoku VALUES (1,1,'食費',1,2), (2,1,'食費/その他',1,0), (3,1,'食費/外食',1,0)", error) ||
        !run(c.db, "INSERT INTO CardCycles VALUES (2,15,10,1,2,1," + std::to_string(firstYear * 100 + 1) + ")", error))
        return false;

    Statement ins;
    sqlite3_prepare_v2(c.db,
                       "INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdousisanNo,IdouId,Nyuukin,"
                       "Syukkin,Bikou) VALUES (?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,'')",
                       -1, &ins.s, nullptr);
    const auto insertRow = [&](int64_t day, int sisan, int kind, int64_t himoku, int partner, int64_t idouId,
                               int64_t amount) {
        sqlite3_reset(ins.s);
        sqlite3_clear_bindings(ins.s);
        bindEntry(ins.s, 1, day, sisan, kind, himoku, partner, idouId, amount);
        return sqlite3_step(ins.s) == SQLITE_DONE;
    };

    // Purchases and a few refunds, in date order.
    std::mt19937_64 rng(20261123);
    const int64_t firstDay = daysFromCivil(firstYear, 1, 1);
    const int64_t dayCount = daysFromCivil(lastYear + 1, 1, 1) - firstDay;
    for (int64_t i = 0; i < entries; ++i) {
        const bool refund = rng() % 20 == 0;
        if (!insertRow(firstDay + i * dayCount / entries, 2, refund ? 2 : 1, 2 + static_cast<int64_t>(rng() % 2), 0, -1,
                       100 + static_cast<int64_t>(rng() % 20000))) {
            *error = sqlite3_errmsg(c.db);
            return false;
        }
    }
    // Every period closing up to October of the last year is settled by a
    // transfer from the bank on the 10th of the month after.
    for (int year = firstYear; year <= lastYear; ++year) {
        for (int month = 1; month <= 12 && !(year == lastYear && month > 10); ++month) {
            const int64_t day = daysFromCivil(month == 12 ? year + 1 : year, month == 12 ? 1 : month + 1, 10);
            bool ok = insertRow(day, 1, 3, 0, 2, -1, 50000);
            const int64_t moto = sqlite3_last_insert_rowid(c.db);
            ok = ok && insertRow(day, 2, 4, 0, 1, moto, 50000);
            const int64_t saki = sqlite3_last_insert_rowid(c.db);
            const std::string link =
                "UPDATE Items SET IdouId=" + std::to_string(saki) + " WHERE Id=" + std::to_string(moto);
            ok = ok && run(c.db, link, error) &&
                 run(c.db, "INSERT INTO CardSettlements (SisanNo,ClosingMonth,ItemId,Kingaku) VALUES (2," +
                               std::to_string(year * 100 + month) + "," + std::to_string(saki) + ",50000)",
                     error);
            if (!ok) {
                if (error->empty()) *error = sqlite3_errmsg(c.db);
                return false;
            }
        }
    }
    if (!tx.commit()) {
        *error = sqlite3_errmsg(c.db);
        return false;
    }
    out->bankSisanId = 1;
    out->cardSisanId = 2;
    out->today = std::to_string(lastYear) + "-12-20";
    return true;
}
