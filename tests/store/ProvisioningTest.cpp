#include "tests/store/StoreFixture.h"

#include <sys/stat.h>

#include <sqlite3.h>

#include <filesystem>

#include "store/Provisioning.h"

namespace {

using ProvisioningTest = StoreFixture;

const char* const kIndexCount =
    "SELECT COUNT(*) FROM sqlite_master WHERE type='index' AND name IN ('Items_SisanNo_Hizuke', "
    "'Items_Nen_SyubetuNo_HimokuNo', 'Items_HimokuNo', 'Items_IdouSisanNo')";

TEST_F(ProvisioningTest, AMissingDirectoryGetsAPrivateDatabaseWithTheStarterBook)
{
    const std::string home = dir + "/data/Zenvora";
    std::string error = "stale";
    ASSERT_TRUE(provisionResourceDirectory(home, &error)) << error;
    EXPECT_EQ(error, "");

    struct stat st {};
    ASSERT_EQ(::stat((home + "/Zenvora.sql").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    ASSERT_EQ(::stat(home.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    EXPECT_FALSE(std::filesystem::exists(home + "/Zenvora.sql.new"));

    path = home + "/Zenvora.sql";
    sqlite3_close(side);
    ASSERT_EQ(sqlite3_open(path.c_str(), &side), SQLITE_OK);
    EXPECT_EQ(scalar(kIndexCount), 4);
    DataModel& dm = open();
    EXPECT_EQ(dump("Sisan"), "Sisan:\n1|現金|0|0|\n");

    // Every category is its own Hno, counts one sub-item and is followed by it.
    const auto& list = dm.himokuList;
    ASSERT_TRUE(!list.empty() && list.size() % 2 == 0);
    for (size_t i = 0; i < list.size(); i += 2) {
        const Himoku& c = *list[i];
        const Himoku& sub = *list[i + 1];
        EXPECT_TRUE(c.Ucount == 1 && c.Hno == c.Id && sub.Ucount == 0 && sub.Hno == c.Id &&
                    sub.SyubetuNo == c.SyubetuNo) << c.Namae;
        EXPECT_EQ(sub.Namae, c.Namae + "/その他");
    }
    EXPECT_EQ(list.front()->SyubetuNo, 1);
    EXPECT_EQ(list.back()->SyubetuNo, 2);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(ProvisioningTest, AnExistingDatabaseOnlyGainsItsMissingIndexes)
{
    addSisan("銀行", 100, 100);
    addCategory(1, "Mom's");
    exec("DROP INDEX Items_HimokuNo; DROP INDEX Items_IdouSisanNo");
    const std::string before = dumpAll();

    std::string error;
    ASSERT_TRUE(provisionResourceDirectory(dir, &error)) << error;
    EXPECT_EQ(scalar(kIndexCount), 4);
    EXPECT_EQ(dumpAll(), before);
}

}  // namespace
