// The import's tables in the book and the one write of an import.
#include <sqlite3.h>

#include "store/BookCheck.h"
#include "store/Provisioning.h"
#include "tests/store/StoreFixture.h"

namespace {

class ImportStoreTest : public StoreFixture {
protected:
    std::string importTables()
    {
        return dump("ImportRecord") + dump("ImportOrigin") + dump("ImportCategory") + dump("ImportAccount");
    }
};

ImportEntry entry(const char* hizuke, int64_t kingaku, int64_t himokuNo, const char* text)
{
    ImportEntry e;
    e.hizuke = hizuke;
    e.nen = std::stoi(e.hizuke.substr(0, 4));
    e.tuki = std::stoi(e.hizuke.substr(5, 2));
    e.hi = std::stoi(e.hizuke.substr(8, 2));
    e.kingaku = kingaku;
    e.himokuNo = himokuNo;
    e.bikou = e.text = text;
    e.contentKey = e.hizuke + "|" + std::to_string(kingaku) + "|" + text + "#1";
    return e;
}

}  // namespace

TEST_F(ImportStoreTest, ABookOfAnEarlierVersionGainsTheImportTablesWhenOpenedAndStaysABook)
{
    // A book as an earlier version made it: the three tables only.
    const std::string old = dir + "/old.sql";
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(old.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "CREATE TABLE Sisan (Id INTEGER PRIMARY KEY, Namae TEXT NOT NULL, SyokiKingaku INTEGER NOT NULL, "
                           "Zankin INTEGER NOT NULL);"
                           "CREATE TABLE Items (Id INTEGER PRIMARY KEY, Hizuke TEXT NOT NULL, Nen INTEGER NOT NULL, "
                           "Tuki INTEGER NOT NULL, Hi INTEGER NOT NULL, SisanNo INTEGER NOT NULL, SyubetuNo INTEGER NOT NULL, "
                           "HimokuNo INTEGER, IdouSisanNo INTEGER, IdouId INTEGER, Nyuukin INTEGER, Syukkin INTEGER, "
                           "Bikou TEXT NOT NULL);"
                           "CREATE TABLE Himoku (Id INTEGER PRIMARY KEY, SyubetuNo INTEGER, Namae TEXT NOT NULL, Hno INTEGER, "
                           "Ucount INTEGER);"
                           "INSERT INTO Sisan VALUES (1, '財布', 500, 500);",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    std::string error;
    ASSERT_TRUE(provisionBook(old, &error)) << error;
    ASSERT_TRUE(provisionBook(old, &error)) << error;  // a second opening changes nothing
    sqlite3_stmt* s = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "SELECT group_concat(name, ',') FROM (SELECT name FROM sqlite_master WHERE type = "
                                     "'table' AND name LIKE 'Import%' ORDER BY name)",
                                 -1, &s, nullptr),
              SQLITE_OK);
    ASSERT_EQ(sqlite3_step(s), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(s, 0)),
                 "ImportAccount,ImportCategory,ImportOrigin,ImportProfile,ImportRecord");
    sqlite3_finalize(s);
    sqlite3_close(db);
    EXPECT_EQ(checkBook(old).verdict, BookVerdict::Ready);
    DataModel book(old);
    EXPECT_EQ(book.sisanList.size(), 1u);
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(ImportStoreTest, AnImportIsWrittenWholeOrNotAtAllAndBalancesFollowIt)
{
    addSmallBook();  // S (1, 10,000), T (2); 食費 その他 2, 外食 3; 給与 その他 5
    const int64_t typed = addEntry(2, "2026-07-09", 2, 5, 35710);  // T's side of the card payment
    DataModel& dm = open();

    ImportBatch batch;
    batch.record = {0, "bank.csv", "abc", "mufg", "三菱UFJ銀行 入出金明細", "", "2026-11-23 10:00:00", 1, 4, 0, 1, 0};
    batch.entries = {entry("2026-07-02", -1200, 3, "TEST SHOP"), entry("2026-07-01", 250000, 5, "給料"),
                     entry("2026-07-10", -35710, 0, "ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ"), entry("2026-07-15", -10000, 0, "カード")};
    batch.entries[2].partnerSisanId = 2;
    batch.entries[2].pairedItemId = typed;
    batch.entries[3].partnerSisanId = 2;
    batch.assignments = {{"", "TESTSHOP", 1, 3}, {"mufg", "", 1, 2}};
    const std::string before = dumpAll() + importTables();

    // A failure at the last origin leaves the book, the import's tables and
    // the balances as they were.
    armFailure("ImportOrigin", "INSERT", "(SELECT COUNT(*) FROM ImportOrigin) = 3");
    ImportOutcome outcome;
    EXPECT_FALSE(dm.importStatementEntries(batch, &outcome));
    EXPECT_EQ(takeMessages(), (Messages{{"failure importing statement rows: boom", "information"}}));
    EXPECT_EQ(dumpAll() + importTables(), before);
    EXPECT_EQ(dm.sisanList[0]->Zankin, 10000);
    // So does a paired entry that changed since the preview.
    exec("DROP TRIGGER armed_failure");
    exec("UPDATE Items SET Nyuukin = 35000 WHERE Id = " + std::to_string(typed));
    EXPECT_FALSE(dm.importStatementEntries(batch, &outcome));
    EXPECT_EQ(takeMessages(), (Messages{{"failure importing statement rows: the paired entry has changed since the preview",
                                         "information"}}));
    exec("UPDATE Items SET Nyuukin = 35710 WHERE Id = " + std::to_string(typed));

    ASSERT_TRUE(dm.importStatementEntries(batch, &outcome));
    EXPECT_EQ(outcome.itemIds, (std::vector<int64_t>{2, 3, 4, 5}));
    EXPECT_EQ(dump("Items"), "Items:\n"
                             "1|2026-07-10|2026|7|10|2|4|NULL|1|4|35710|NULL||\n"
                             "2|2026-07-02|2026|7|2|1|1|3|NULL|-1|NULL|1200|TEST SHOP|\n"
                             "3|2026-07-01|2026|7|1|1|2|5|NULL|-1|250000|NULL|給料|\n"
                             "4|2026-07-10|2026|7|10|1|3|NULL|2|1|NULL|35710|ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ|\n"
                             "5|2026-07-15|2026|7|15|1|3|NULL|2|6|NULL|10000|カード|\n"
                             "6|2026-07-15|2026|7|15|2|4|NULL|1|5|10000|NULL|カード|\n");
    EXPECT_EQ(dump("ImportOrigin"), "ImportOrigin:\n"
                                    "2|1|1||2026-07-02|-1200|TEST SHOP#1|TEST SHOP|\n"
                                    "3|1|1||2026-07-01|250000|給料#1|給料|\n"
                                    "4|1|1||2026-07-10|-35710|ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ#1|ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ|\n"
                                    "5|1|1||2026-07-15|-10000|カード#1|カード|\n");
    EXPECT_EQ(dump("ImportRecord"),
              "ImportRecord:\n1|bank.csv|abc|mufg|三菱UFJ銀行 入出金明細||2026-11-23 10:00:00|1|4|4|1|0|\n");
    EXPECT_EQ(dump("ImportCategory"), "ImportCategory:\n1||TESTSHOP|1|3|\n2|mufg||1|2|\n");
    EXPECT_EQ(dump("ImportAccount"), "ImportAccount:\n1|mufg||1|\n");
    // The balances moved by the amounts written: the paired entry kept its
    // amount on its side, the new transfer moved 10,000 to T.
    EXPECT_EQ(dm.sisanList[0]->Zankin, 10000 - 1200 + 250000 - 35710 - 10000);
    EXPECT_EQ(dm.sisanList[1]->Zankin, 35710 + 10000);
    EXPECT_EQ(dm.GrandTotalSisan, 10000 + 250000 - 1200);

    // What the matching reads back: the asset's entries in the range with their origins.
    std::vector<ImportBookRow> rows;
    ASSERT_TRUE(dm.readImportWindow(1, "2026-07-02", "2026-07-10", rows));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].kingaku, -1200);
    EXPECT_EQ(rows[0].contentKey, "2026-07-02|-1200|TEST SHOP#1");
    EXPECT_EQ(rows[1].syubetuNo, 3);
    EXPECT_EQ(rows[1].idouSisanNo, 2);
}
