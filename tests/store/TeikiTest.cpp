// Recurring entries in the book: due occurrences across month ends, leap
// days, holidays and restarts, posted once and only once.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <tuple>

#include "household/TeikiDue.h"
#include "household/TeikiSchedule.h"
#include "store/BookCheck.h"
#include "store/DataModel.h"
#include "store/Provisioning.h"
#include "tests/store/StoreFixture.h"

namespace {

class TeikiTest : public StoreFixture {
protected:
    // Assets S (1) and T (2), 食費/その他 (2), 食費/外食 (3), 給与/その他 (5).
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSmallBook();
        open();
        ASSERT_TRUE(store->readFromTeikiTable());
    }

    // A monthly rule made on `made`, its id.
    int64_t addRule(int64_t kind, int64_t partner, int64_t kingaku, int day, const Date& start, const Date& made,
                    HolidayShift shift = HolidayShift::SameDay, const std::string& bikou = "")
    {
        Teiki t;
        t.SisanNo = 1;
        t.SyubetuNo = kind;
        (kind == kSyubetuIdouMoto ? t.IdouSisanNo : t.HimokuNo) = partner;
        t.Kingaku = kingaku;
        t.Bikou = bikou;
        Schedule s;
        s.day = day;
        s.start = start;
        s.shift = shift;
        setSchedule(t, s);
        t.Kakunin = kakuninOfNewRule(made);
        EXPECT_TRUE(store->teikiInsert(t));
        return store->teikiList.back()->Id;
    }

    // The due occurrences as "rule:scheduled>posting" (">posting" only when it moved).
    Rows due(const Date& today)
    {
        const auto found = dueTeiki(*store, today);
        EXPECT_TRUE(found.has_value());
        Rows rows;
        for (const TeikiOccurrence& o : found.value_or(std::vector<TeikiOccurrence>{})) {
            std::string row = std::to_string(o.teikiNo) + ":" + o.occurrence.scheduled.iso();
            if (o.occurrence.posting != o.occurrence.scheduled) row += ">" + o.occurrence.posting.iso();
            rows.push_back(row);
        }
        return rows;
    }

    // Posts the due occurrences marked 'p', skips those marked 's' and leaves
    // those marked '-' for next time, as the dialog does.
    bool answer(const Date& today, const std::string& marks)
    {
        const std::vector<TeikiOccurrence> found = dueTeiki(*store, today).value();
        EXPECT_EQ(found.size(), marks.size());
        std::vector<TeikiPosting> postings;
        std::vector<bool> dealtWith;
        for (size_t i = 0; i < found.size() && i < marks.size(); ++i) {
            dealtWith.push_back(marks[i] != '-');
            if (marks[i] == '-') continue;
            const Teiki& t = *store->teikiList[static_cast<size_t>(*store->teikiId2Idx.find(found[i].teikiNo))];
            postings.push_back({t.Id, found[i].occurrence.scheduled.iso(), found[i].occurrence.posting.iso(), t.Kingaku,
                                marks[i] == 's'});
        }
        return store->teikiKityou(postings, kakuninAfterPosting(found, dealtWith, today));
    }

    // A new store on the same book, as after a restart.
    void restart()
    {
        open();
        ASSERT_TRUE(store->readFromTeikiTable());
    }

    std::string entries() { return dump("Items"); }
};

TEST_F(TeikiTest, DueOccurrencesCrossMonthEndsLeapDaysAndHolidaysAndAreNeverPostedTwiceAcrossRestarts)
{
    // The last day of each month from January 2024: 29 February, 31 March a Sunday.
    const int64_t matubi = addRule(kSyubetuSisyutu, 2, 1000, kLastDay, {2024, 1, 1}, {2024, 1, 1});
    // The 20th, on the next business day: 20 January a Saturday, 20 March 春分の日.
    const int64_t hatuka = addRule(kSyubetuSyuunyuu, 5, 300000, 20, {2024, 1, 1}, {2024, 1, 1}, HolidayShift::After);
    const std::string a = std::to_string(matubi) + ":", b = std::to_string(hatuka) + ":";

    EXPECT_EQ(due({2024, 1, 21}), Rows{});
    EXPECT_EQ(due({2024, 3, 1}),
              (Rows{b + "2024-01-20>2024-01-22", a + "2024-01-31", b + "2024-02-20", a + "2024-02-29"}));
    // Post January's two, leave February's two for next time.
    ASSERT_TRUE(answer({2024, 3, 1}, "pp--"));
    restart();
    EXPECT_EQ(due({2024, 3, 1}), (Rows{b + "2024-02-20", a + "2024-02-29"}));
    // The holiday moves March's salary to the 21st: not due on the 20th.
    EXPECT_EQ(due({2024, 3, 20}), (Rows{b + "2024-02-20", a + "2024-02-29"}));
    ASSERT_TRUE(answer({2024, 3, 21}, "sp-"));  // skip February's salary, post the 29th
    restart();
    EXPECT_EQ(due({2024, 3, 21}), (Rows{b + "2024-03-20>2024-03-21"}));
    ASSERT_TRUE(answer({2024, 4, 1}, "pp"));
    EXPECT_EQ(takeMessages(), Messages{});
    restart();
    EXPECT_EQ(due({2024, 4, 1}), Rows{});
    EXPECT_EQ(due({2024, 4, 30}), (Rows{b + "2024-04-20>2024-04-22", a + "2024-04-30"}));

    // Each occurrence posted once, on its posting day, as its rule says.
    EXPECT_EQ(scalar("SELECT count(*) FROM Items"), 5);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items WHERE Hizuke='2024-03-21' AND Nyuukin=300000 AND HimokuNo=5"), 1);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items WHERE Hizuke='2024-02-29' AND Syukkin=1000 AND HimokuNo=2"), 1);
    EXPECT_EQ(scalar("SELECT count(*) FROM TeikiKiroku"), 6);
    EXPECT_EQ(scalar("SELECT count(*) FROM TeikiKiroku WHERE Jyoutai=2 AND ItemId=0 AND Yotei='2024-02-20'"), 1);
    EXPECT_EQ(store->sisanList[0]->Zankin, 10000 + 2 * 300000 - 3 * 1000);

    // Posting a dealt-with occurrence again fails whole, and says why.
    const std::string before = dumpAll() + dump("TeikiKiroku") + dump("Teiki");
    EXPECT_FALSE(store->teikiKityou({{matubi, "2024-03-31", "2024-03-31", 1000, false},
                                     {matubi, "2024-01-31", "2024-01-31", 1000, false}},
                                    {}));
    EXPECT_EQ(takeMessages(),
              (Messages{{"failure inserting teikikiroku: UNIQUE constraint failed: TeikiKiroku.TeikiNo, "
                         "TeikiKiroku.Yotei",
                         "information"}}));
    EXPECT_EQ(dumpAll() + dump("TeikiKiroku") + dump("Teiki"), before);
}

TEST_F(TeikiTest, ARuleMadeOrRescheduledLaterNeverPostsThePast)
{
    // Made on 10 March with a start in January: January and February stay unposted.
    const int64_t id = addRule(kSyubetuSisyutu, 3, 500, 25, {2024, 1, 1}, {2024, 3, 10});
    const std::string r = std::to_string(id) + ":";
    EXPECT_EQ(due({2024, 3, 28}), Rows{r + "2024-03-25"});
    ASSERT_TRUE(answer({2024, 3, 28}, "p"));

    // On the 28th the day becomes the 26th: March's is already posted, and
    // the 26th is past, so the next one is April's.
    Teiki edited = *store->teikiList[0];
    edited.Hi = 26;
    edited.Kakunin = kakuninAfterEdit(*store->teikiList[0], edited, {2024, 3, 28});
    ASSERT_TRUE(store->teikiUpdate(edited));
    EXPECT_EQ(due({2024, 3, 31}), Rows{});
    EXPECT_EQ(due({2024, 4, 26}), Rows{r + "2024-04-26"});

    // A new amount alone keeps what is due: it is posted with the new amount.
    edited = *store->teikiList[0];
    edited.Kingaku = 800;
    EXPECT_EQ(kakuninAfterEdit(*store->teikiList[0], edited, {2024, 4, 27}), "2024-03-28");
}

TEST_F(TeikiTest, ATransferPostsBothLinkedRowsAndAnEditedAmountIsRemembered)
{
    const int64_t id = addRule(kSyubetuIdouMoto, 2, 20000, 1, {2024, 5, 1}, {2024, 4, 1}, HolidayShift::SameDay,
                               "積立");
    const auto found = dueTeiki(*store, {2024, 5, 1}).value();
    ASSERT_EQ(found.size(), 1u);
    ASSERT_TRUE(store->teikiKityou({{id, "2024-05-01", "2024-05-01", 25000, false}},
                                   kakuninAfterPosting(found, {true}, {2024, 5, 1})));
    const int64_t moto = scalar("SELECT Id FROM Items WHERE SyubetuNo=3");
    const int64_t saki = scalar("SELECT Id FROM Items WHERE SyubetuNo=4");
    EXPECT_EQ(scalar("SELECT IdouId FROM Items WHERE Id=" + std::to_string(moto)), saki);
    EXPECT_EQ(scalar("SELECT count(*) FROM Items WHERE Id=" + std::to_string(saki) + " AND IdouId=" +
                     std::to_string(moto) + " AND SisanNo=2 AND IdouSisanNo=1 AND Nyuukin=25000 AND Bikou='積立'"),
              1);
    EXPECT_EQ(dump("TeikiKiroku"), "TeikiKiroku:\n1|" + std::to_string(id) + "|2024-05-01|2024-05-01|3|" +
                                       std::to_string(moto) + "|" + std::to_string(saki) + "|25000|\n");
    EXPECT_EQ(store->sisanList[0]->Zankin, 10000 - 25000);
    EXPECT_EQ(store->sisanList[1]->Zankin, 25000);
    EXPECT_EQ(store->teikiList[0]->Kakunin, "2024-05-01");
}

TEST_F(TeikiTest, EachChangeIsOneStepAndUndoingAPostingMakesItsOccurrencesDueAgain)
{
    const int64_t id = addRule(kSyubetuIdouMoto, 2, 700, 10, {2024, 1, 1}, {2024, 1, 1}, HolidayShift::SameDay, "積立");
    ASSERT_NE(store->undoTarget(), nullptr);
    EXPECT_EQ(store->undoTarget()->Label, "定期的な支出入『積立』の追加");
    const std::string r = std::to_string(id) + ":";
    const Rows wasDue{r + "2024-01-10", r + "2024-02-10", r + "2024-03-10"};
    ASSERT_EQ(due({2024, 3, 10}), wasDue);
    const std::string before = dumpAll() + dump("TeikiKiroku") + dump("Teiki");

    // Post January's and March's (a transfer: both rows), skip February's.
    ASSERT_TRUE(answer({2024, 3, 10}, "psp"));
    const std::string after = dumpAll() + dump("TeikiKiroku") + dump("Teiki");
    EXPECT_EQ(store->undoTarget()->Label, "定期的な支出入 2件の記帳・1件の見送り");
    EXPECT_EQ(scalar("SELECT count(*) FROM Items"), 4);
    // The history lists what the step did to the rule and its record in words.
    std::vector<HistoryRowView> rows;
    ASSERT_TRUE(store->readHistoryRows(store->undoTarget()->Id, rows));
    std::string listed;
    for (const HistoryRowView& v : rows)
        if (v.kind != "入力")
            listed += v.change + " " + v.kind + " " + v.hizuke + " " + v.sisan + " " + v.himoku + " " + v.syukkin +
                      " " + v.bikou + "\n";
    EXPECT_EQ(listed,
              "追加 定期の記録 2024-01-10 S →T 700 記帳\n"
              "追加 定期の記録 2024-02-10 S →T  見送り\n"
              "追加 定期の記録 2024-03-10 S →T 700 記帳\n"
              "変更前 定期 2024-01-01 S →T 700 積立 最終確認 2023-12-31\n"
              "変更後 定期 2024-01-01 S →T 700 積立 最終確認 2024-03-10\n");

    // Undo takes the entries, the record and the rule's last look away
    // together: the same occurrences are due again, also after a restart.
    ASSERT_TRUE(store->undo());
    EXPECT_EQ(dumpAll() + dump("TeikiKiroku") + dump("Teiki"), before);
    EXPECT_EQ(store->sisanList[0]->Zankin, 10000);
    EXPECT_EQ(store->teikiList[0]->Kakunin, "2023-12-31") << "the rules are read again";
    EXPECT_EQ(due({2024, 3, 10}), wasDue);
    restart();
    EXPECT_EQ(due({2024, 3, 10}), wasDue);

    // Redo posts them again, once; nothing is due.
    ASSERT_TRUE(store->redo());
    EXPECT_EQ(dumpAll() + dump("TeikiKiroku") + dump("Teiki"), after);
    EXPECT_EQ(store->sisanList[0]->Zankin, 10000 - 2 * 700);
    EXPECT_EQ(due({2024, 3, 10}), Rows{});

    // Editing and deleting the rule are steps of their own; undoing the
    // deletion brings the rule back with its record.
    Teiki edited = *store->teikiList[0];
    edited.Kingaku = 900;
    ASSERT_TRUE(store->teikiUpdate(edited));
    EXPECT_EQ(store->undoTarget()->Label, "定期的な支出入『積立』の編集");
    ASSERT_TRUE(store->teikiDelete(id));
    EXPECT_EQ(store->undoTarget()->Label, "定期的な支出入『積立』の削除");
    EXPECT_TRUE(store->teikiList.empty());
    ASSERT_TRUE(store->undo());
    ASSERT_EQ(store->teikiList.size(), 1u);
    EXPECT_EQ(store->teikiList[0]->Kingaku, 900);
    EXPECT_EQ(scalar("SELECT count(*) FROM TeikiKiroku"), 3);
    EXPECT_EQ(due({2024, 3, 10}), Rows{});
    EXPECT_EQ(takeMessages(), Messages{});
}

TEST_F(TeikiTest, ARuleWhoseAssetOrCategoryIsGoneIsBrokenAndNeverPosts)
{
    const int64_t gaisyoku = addRule(kSyubetuSisyutu, 3, 1200, 5, {2024, 1, 1}, {2024, 1, 1});
    const int64_t idou = addRule(kSyubetuIdouMoto, 2, 5000, 5, {2024, 1, 1}, {2024, 1, 1});
    ASSERT_TRUE(store->sisanInsert("U", 0));
    ASSERT_TRUE(store->deleteUtiwakeHimoku(3, 1, 3));
    ASSERT_TRUE(store->sisanDeleteWithItems(2));
    EXPECT_EQ(teikiProblem(*store, *store->teikiList[0]), "費目が削除されています");
    EXPECT_EQ(teikiProblem(*store, *store->teikiList[1]), "移動先の資産が削除されています");
    EXPECT_EQ(due({2024, 3, 1}), Rows{});

    const std::string before = dumpAll() + dump("TeikiKiroku");
    EXPECT_FALSE(store->teikiKityou({{gaisyoku, "2024-01-05", "2024-01-05", 1200, false}}, {}));
    EXPECT_FALSE(store->teikiKityou({{idou, "2024-01-05", "2024-01-05", 5000, false}}, {}));
    const Message unusable{"定期的な支出入の規則が見つからないか、資産や費目が削除されていて使えません。", "information"};
    EXPECT_EQ(takeMessages(), (Messages{unusable, unusable}));
    EXPECT_EQ(dumpAll() + dump("TeikiKiroku"), before);

    // Deleting a rule takes its record along.
    ASSERT_TRUE(store->teikiKityou({{gaisyoku, "2024-01-05", "", 0, true}}, {}));
    ASSERT_TRUE(store->teikiDelete(gaisyoku));
    EXPECT_EQ(scalar("SELECT count(*) FROM TeikiKiroku"), 0);
    EXPECT_EQ(store->teikiList.size(), 1u);
}

TEST_F(TeikiTest, AFailurePartWayThroughPostingLeavesTheBookAsItWas)
{
    const int64_t id = addRule(kSyubetuIdouMoto, 2, 700, 10, {2024, 1, 1}, {2024, 1, 1});
    armFailure("TeikiKiroku", "INSERT", "NEW.Yotei = '2024-02-10'");
    const std::string before = dumpAll() + dump("TeikiKiroku") + dump("Teiki");
    const auto found = dueTeiki(*store, {2024, 2, 10}).value();
    EXPECT_FALSE(store->teikiKityou({{id, "2024-01-10", "2024-01-10", 700, false},
                                     {id, "2024-02-10", "2024-02-10", 700, false}},
                                    kakuninAfterPosting(found, {true, true}, {2024, 2, 10})));
    EXPECT_EQ(takeMessages(), (Messages{{"failure inserting teikikiroku: boom", "information"}}));
    EXPECT_EQ(dumpAll() + dump("TeikiKiroku") + dump("Teiki"), before);
    EXPECT_EQ(store->sisanList[0]->Zankin, 10000);
    EXPECT_EQ(due({2024, 2, 10}).size(), 2u);
}

TEST_F(TeikiTest, TheOutlookGivesEachAssetsExpectedBalanceAfterEachOccurrence)
{
    // Today 2024-06-10: S holds 10,000 - 1,000 (the 5th) and has 2,000 out on the 12th.
    addEntry(1, "2024-06-05", 1, 2, 1000);
    addEntry(1, "2024-06-12", 1, 2, 2000);
    restart();
    const int64_t kyuuryou = addRule(kSyubetuSyuunyuu, 5, 50000, 25, {2024, 1, 1}, {2024, 6, 1});
    const int64_t idou = addRule(kSyubetuIdouMoto, 2, 3000, 11, {2024, 1, 1}, {2024, 6, 1});
    const auto lines = teikiOutlook(*store, {2024, 6, 10}, 30).value();
    using L = std::tuple<std::string, int64_t, int64_t, int64_t, int64_t>;
    std::vector<L> got;
    for (const TeikiOutlook& l : lines) got.emplace_back(l.hizuke.iso(), l.teikiNo, l.sisanNo, l.kingaku, l.zankin);
    // 11 July is past the window; the entry of the 12th counts from the 12th on.
    EXPECT_EQ(got, (std::vector<L>{{"2024-06-11", idou, 1, -3000, 6000},
                                   {"2024-06-11", idou, 2, 3000, 3000},
                                   {"2024-06-25", kyuuryou, 1, 50000, 54000}}));
}

TEST_F(TeikiTest, AnOlderBookGainsTheTablesWhenOpenedAndTheBookCheckAcceptsThem)
{
    const std::string older = dir + "/older.sql";
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(older.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "CREATE TABLE Sisan (Id INTEGER PRIMARY KEY, Namae TEXT NOT NULL, SyokiKingaku INTEGER NOT "
                           "NULL, Zankin INTEGER NOT NULL);"
                           "CREATE TABLE Items (Id INTEGER PRIMARY KEY, Hizuke TEXT NOT NULL, Nen INTEGER NOT NULL, "
                           "Tuki INTEGER NOT NULL, Hi INTEGER NOT NULL, SisanNo INTEGER NOT NULL, "
                           "SyubetuNo INTEGER NOT "
                           "NULL, HimokuNo INTEGER, IdouSisanNo INTEGER, IdouId INTEGER, Nyuukin INTEGER, Syukkin "
                           "INTEGER, Bikou TEXT NOT NULL);"
                           "CREATE TABLE Himoku (Id INTEGER PRIMARY KEY, SyubetuNo INTEGER, Namae TEXT NOT NULL, Hno "
                           "INTEGER, Ucount INTEGER);",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    std::string error;
    ASSERT_TRUE(provisionBook(older, &error)) << error;
    EXPECT_EQ(checkBook(older).verdict, BookVerdict::Ready);
    DataModel dm(older);
    EXPECT_TRUE(dm.readFromTeikiTable());
    EXPECT_TRUE(dm.teikiList.empty());

    // A Teiki table of another layout is not this program's.
    ASSERT_EQ(sqlite3_open(older.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "DROP TABLE Teiki; CREATE TABLE Teiki (Id INTEGER PRIMARY KEY, Rule TEXT)", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    EXPECT_EQ(checkBook(older).verdict, BookVerdict::WrongSchema);
}

}  // namespace
