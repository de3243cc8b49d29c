#include "tests/store/StoreFixture.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <functional>

namespace {

using LifecycleTest = StoreFixture;

TEST_F(LifecycleTest, AMissingDatabaseFileReportsTheAssetReadAndSkipsTheCategories)
{
    const std::string missing = dir + "/missing.sql";
    DataModel dm(missing);

    EXPECT_EQ(takeMessages(), (Messages{{"error prepare selct from sisan: no such table: Sisan", "stop the app"}}));
    EXPECT_TRUE(dm.sisanList.empty());
    EXPECT_TRUE(dm.himokuList.empty());
    EXPECT_TRUE(std::filesystem::exists(missing));
    EXPECT_TRUE(dm.updateSisanZankinTable());  // nothing to write back

    // A file that cannot be opened at all: the open reports, then the read.
    DataModel unopenable(dir + "/no/such/dir/Zenvora.sql");
    EXPECT_EQ(takeMessages(),
              (Messages{{"error open database : unable to open database file", "stop the app"},
                        {"error prepare selct from sisan: unable to open database file", "stop the app"}}));
}

struct Write {
    std::function<bool(DataModel&)> call;
    const char* message;
};

TEST_F(LifecycleTest, AReadOnlyDatabaseRefusesEveryWriteWithSQLitesMessage)
{
    const int64_t a = addSisan("A", 0, 0);
    const int64_t b = addSisan("B", 0, 0);
    addCategory(1, "食費");
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(dir.c_str(), 0755), 0);
    // Root may write any file: open as an unprivileged user so that SQLite
    // falls back to a read-only connection, as it does for everyone else.
    const bool root = ::geteuid() == 0;
    ASSERT_TRUE(!root || ::seteuid(65534) == 0);
    DataModel& dm = open();
    ASSERT_TRUE(!root || ::seteuid(0) == 0);
    ASSERT_TRUE(takeMessages().empty());
    const std::string before = dumpAll();

    const std::vector<Write> writes{
        {[](DataModel& d) { return d.sisanInsert("C", 1); }, "failure inserting sisan : "},
        {[](DataModel& d) { return d.updateSisanZankinTable(); }, "failure updating sisan Zankin: "},
        {[a, b](DataModel& d) { return d.itemIdouSisanInsert("2024-01-02", 2024, 1, 2, a, 3, b, 5, ""); },
         "failure inserting item Syukkin,Nyuukin: "},
        {[](DataModel& d) { return d.insertHimokuOfHiimoku(1, "X"); }, "failure inserting himoku : "},
    };
    for (const auto& write : writes) {
        SCOPED_TRACE(&write - writes.data());
        EXPECT_FALSE(write.call(dm));
        EXPECT_EQ(takeMessages(),
                  (Messages{{std::string(write.message) + "attempt to write a readonly database", "information"}}));
    }
    EXPECT_EQ(dumpAll(), before);
    EXPECT_TRUE(dm.readFromSisanTable());
    EXPECT_EQ(dm.sisanList.size(), 2u);
}

TEST_F(LifecycleTest, ValuesOutsideThirtyTwoBitsAreRefusedBeforeAnythingIsWritten)
{
    const int64_t a = addSisan("A", 0, 0);
    const int64_t b = addSisan("B", 0, 0);
    const int64_t entry = addEntry(a, "2024-01-01", 1, 2, 100);
    DataModel& dm = open();
    const std::string before = dumpAll();
    const int64_t over = int64_t{INT32_MAX} + 1;
    const int64_t under = int64_t{INT32_MIN} - 1;

    const std::vector<std::function<bool(DataModel&)>> writes{
        [&](DataModel& d) { return d.sisanInsert("C", over); },
        [&](DataModel& d) { return d.itemIdouSisanInsert("2024-01-02", 2024, 1, 2, a, 3, b, under, ""); },
        [&](DataModel& d) { return d.itemUpdate(entry, "2024-01-02", 2024, 1, 2, a, 1, 2, over, ""); },
        [&](DataModel& d) { return d.sisanUpdate(a, "A", over, 0); },
    };
    for (size_t i = 0; i < writes.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(writes[i](dm));
        EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"}}));
        EXPECT_EQ(dumpAll(), before);
    }

    // The largest 32-bit amount is accepted and read back exactly.
    ASSERT_TRUE(dm.sisanInsert("max", INT32_MAX));
    EXPECT_EQ(dm.sisanList.back()->Zankin, INT32_MAX);
}

}  // namespace
