#include "tests/store/StoreFixture.h"

#include <sqlite3.h>

#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "store/MessageSink.h"
#include "store/Provisioning.h"

void StoreFixture::SetUp()
{
    char pattern[] = "/tmp/zenvora-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    path = dir + "/Zenvora.sql";
    std::string error;
    ASSERT_TRUE(createEmptyDatabase(path, &error)) << error;
    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    setMessageSink([this](const std::string& m, const std::string& i) { messages.emplace_back(m, i); });
}

void StoreFixture::TearDown()
{
    store.reset();
    sqlite3_close(side);
    setMessageSink(nullptr);
    std::filesystem::remove_all(dir);
}

DataModel& StoreFixture::open(int busyTimeoutMs)
{
    store.reset();
    store = std::make_unique<DataModel>(path, busyTimeoutMs);
    return *store;
}

void StoreFixture::exec(const std::string& sql)
{
    char* error = nullptr;
    if (sqlite3_exec(side, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) ADD_FAILURE() << sql << ": " << error;
    sqlite3_free(error);
}

int64_t StoreFixture::scalar(const std::string& sql)
{
    sqlite3_stmt* s = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(side, sql.c_str(), -1, &s, nullptr), SQLITE_OK) << sqlite3_errmsg(side);
    const int64_t value = sqlite3_step(s) == SQLITE_ROW ? sqlite3_column_int64(s, 0) : 0;
    sqlite3_finalize(s);
    return value;
}

std::string StoreFixture::dump(const std::string& table)
{
    sqlite3_stmt* s = nullptr;
    std::string out = table + ":\n";
    EXPECT_EQ(sqlite3_prepare_v2(side, ("SELECT * FROM " + table + " ORDER BY rowid").c_str(), -1, &s, nullptr),
              SQLITE_OK);
    int rc;
    for (rc = sqlite3_step(s); rc == SQLITE_ROW; rc = sqlite3_step(s)) {
        for (int c = 0; c < sqlite3_column_count(s); ++c) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, c));
            out += std::string(text ? text : "NULL") + "|";
        }
        out += '\n';
    }
    EXPECT_EQ(rc, SQLITE_DONE) << sqlite3_errmsg(side);
    sqlite3_finalize(s);
    return out;
}

int64_t StoreFixture::insert(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    char* sql = sqlite3_vmprintf(format, args);  // %Q quotes text
    va_end(args);
    exec(sql);
    sqlite3_free(sql);
    return sqlite3_last_insert_rowid(side);
}

int64_t StoreFixture::addSisan(const std::string& namae, long long syokiKingaku, long long zankin)
{
    return insert("INSERT INTO Sisan (Namae,SyokiKingaku,Zankin) VALUES (%Q,%lld,%lld)", namae.c_str(), syokiKingaku,
                  zankin);
}

int64_t StoreFixture::addEntry(long long sisanNo, const std::string& hizuke, long long kind, long long himokuNo,
                               long long amount)
{
    const char* h = hizuke.c_str();
    return insert("INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,%s,Bikou) VALUES "
                  "(%Q,substr(%Q,1,4),substr(%Q,6,2),substr(%Q,9,2),%lld,%lld,NULLIF(%lld,0),-1,%lld,'')",
                  kind == 1 || kind == 3 ? "Syukkin" : "Nyuukin", h, h, h, h, sisanNo, kind, himokuNo, amount);
}

int64_t StoreFixture::addCategory(long long kind, const std::string& namae, std::vector<std::string> subItems)
{
    const char* sql = "INSERT INTO Himoku (SyubetuNo,Namae,Hno,Ucount) VALUES (%lld,%Q,%lld,%lld)";
    const int64_t id = insert(sql, kind, namae.c_str(), 0LL, static_cast<long long>(subItems.size() + 1));
    exec("UPDATE Himoku SET Hno=Id WHERE Id=" + std::to_string(id));
    subItems.insert(subItems.begin(), "その他");
    for (const auto& sub : subItems) insert(sql, kind, (namae + "/" + sub).c_str(), static_cast<long long>(id), 0LL);
    return id;
}

void StoreFixture::addSmallBook()
{
    addSisan("S", 10000, 10000);
    addSisan("T", 0, 0);
    addCategory(1, "食費", {"外食"});
    addCategory(2, "給与");
}

std::string StoreFixture::bookBytes() const
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void StoreFixture::writeBook(const std::string& content)
{
    sqlite3_close(side);
    side = nullptr;
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

void StoreFixture::armFailure(const std::string& table, const std::string& event, const std::string& when)
{
    exec("CREATE TRIGGER armed_failure BEFORE " + event + " ON " + table + " WHEN " + when +
         " BEGIN SELECT RAISE(ABORT, 'boom'); END");
}
