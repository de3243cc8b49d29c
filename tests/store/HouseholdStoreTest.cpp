// The household calendar in the store: household years and their figures,
// budgets against spending, cards and their settlements, and the tables
// that keep them.
#include <sqlite3.h>

#include <map>
#include <random>

#include "household/HouseholdMonths.h"
#include "store/BookCheck.h"
#include "store/HouseholdTables.h"
#include "store/Provisioning.h"
#include "tests/store/StoreFixture.h"

namespace {

const HouseholdMonthSetting kPayday{25, HolidayShift::Before, MonthNaming::ByEndMonth};

using Cells = std::vector<int64_t>;

Cells cells(std::map<int, int64_t> months)
{
    Cells row(13, 0);
    for (const auto& [m, v] : months) {
        row[static_cast<size_t>(m - 1)] = v;
        row[12] += v;
    }
    return row;
}

class HouseholdStoreTest : public StoreFixture {
protected:
    // A card (asset 3) closing on the 15th, withdrawn on the 10th of the
    // month after (the business day after a holiday) from asset 1.
    Card card15() const
    {
        Card card;
        card.SisanNo = 3;
        card.cycle = {15, 10, 1, HolidayShift::After};
        card.PayingSisanNo = 1;
        return card;
    }
};

// Household months named by their end, starting on the 25th or the business
// day before it (the table of tests/household worked out by hand): the entries
// on the edges of the months fall on the right sides, and the year's first
// month begins in December of the year before.
TEST_F(HouseholdStoreTest, HouseholdYearsSumTheirOwnMonthsAcrossTheYearEnd)
{
    addSmallBook();
    for (const auto& [day, amount] : std::vector<std::pair<const char*, int64_t>>{{"2025-12-24", 1},
                                                                                  {"2025-12-25", 10},
                                                                                  {"2026-01-22", 100},
                                                                                  {"2026-01-23", 1000},
                                                                                  {"2026-10-23", 10000},
                                                                                  {"2026-12-24", 100000},
                                                                                  {"2026-12-25", 1000000}})
        addEntry(1, day, 1, 3, amount);
    addEntry(2, "2025-12-25", 2, 5, 300000);
    addEntry(1, "2026-03-01", 3, 0, 5);  // a transfer counts nowhere
    DataModel& dm = open();
    ASSERT_TRUE(dm.updateHouseholdMonthSetting(kPayday));

    ASSERT_TRUE(dm.readYearsFromItemsTable());
    EXPECT_EQ(dm.yearsList, (std::vector<std::string>{"2025", "2026", "2027"}));
    ASSERT_TRUE(dm.annualInOutFromItemsTable("2026"));
    EXPECT_EQ(dm.annualInNameList, (std::vector<std::string>{"給与/その他"}));
    EXPECT_EQ(dm.annualInDataList, (std::vector<Cells>{cells({{1, 300000}})}));
    EXPECT_EQ(dm.annualOutNameList, (std::vector<std::string>{"食費/外食"}));
    EXPECT_EQ(dm.annualOutDataList, (std::vector<Cells>{cells({{1, 110}, {2, 1000}, {11, 10000}, {12, 100000}})}));
    EXPECT_EQ(dm.annualTotalDataList[2][0], 300000 - 110);

    // The setting is the book's: a new store reads it again, and start day 1
    // brings back the calendar year.
    DataModel& again = open();
    EXPECT_EQ(again.householdMonths.setting(), kPayday);
    ASSERT_TRUE(again.updateHouseholdMonthSetting({}));
    ASSERT_TRUE(again.annualInOutFromItemsTable("2026"));
    EXPECT_EQ(again.annualOutDataList, (std::vector<Cells>{cells({{1, 1100}, {10, 10000}, {12, 1100000}})}));
}

// A start day of 29 to 31 has no day in February: it is refused with the
// message, and the book keeps what it had.
TEST_F(HouseholdStoreTest, AStartDayThatSomeMonthsLackIsRefusedAndNothingChanges)
{
    DataModel& dm = open();
    ASSERT_TRUE(dm.updateHouseholdMonthSetting(kPayday));
    const std::string before = dump("BookSettings");
    for (int day : {29, 31, 0}) EXPECT_FALSE(dm.updateHouseholdMonthSetting({day, HolidayShift::SameDay, MonthNaming::ByEndMonth}));
    EXPECT_EQ(takeMessages().front().first,
              "月の始まりは1日から28日までの日にしてください。29日から31日は、その日がない月があるため選べません。");
    EXPECT_EQ(dump("BookSettings"), before);
    EXPECT_EQ(dm.householdMonths.setting(), kPayday);
}

// Figures per household month and budgets against spending, each against a
// plain sum over every entry of a generated book placed by its date.
TEST_F(HouseholdStoreTest, HouseholdFiguresAndBudgetsMatchABruteForceSumOverAGeneratedBook)
{
    addSisan("A", 0, 0);
    addSisan("B", 0, 0);
    const int64_t food = addCategory(1, "食費", {"外食", "おやつ"});
    const int64_t home = addCategory(1, "住居費");
    const int64_t pay = addCategory(2, "給与");
    const std::vector<int64_t> expense{food + 1, food + 2, food + 3, home + 1};
    struct Entry {
        Date date;
        int64_t kind, himoku, amount;
    };
    std::vector<Entry> entries;
    std::mt19937 rng(7);
    exec("BEGIN");
    for (int i = 0; i < 3000; ++i) {
        const Date date = Date{2024, 11, 1}.addDays(static_cast<int>(rng() % 900));
        const int64_t kind = 1 + rng() % 3;
        const int64_t himoku = kind == 1 ? expense[rng() % expense.size()] : pay + 1;
        const int64_t amount = 1 + rng() % 50000;
        addEntry(1 + rng() % 2, date.iso(), kind, kind == 3 ? 0 : himoku, amount);
        entries.push_back({date, kind, himoku, amount});
    }
    exec("COMMIT");
    DataModel& dm = open();
    ASSERT_TRUE(dm.yosanReplace(food, 50000, {}));

    for (const HouseholdMonthSetting& setting :
         {HouseholdMonthSetting{}, HouseholdMonthSetting{10, HolidayShift::Before, MonthNaming::ByStartMonth},
          HouseholdMonthSetting{25, HolidayShift::After, MonthNaming::ByEndMonth},
          HouseholdMonthSetting{28, HolidayShift::SameDay, MonthNaming::ByEndMonth}}) {
        SCOPED_TRACE(setting.startDay);
        ASSERT_TRUE(dm.updateHouseholdMonthSetting(setting));
        const HouseholdMonths& months = dm.householdMonths;
        std::map<std::pair<int64_t, YearMonth>, int64_t> sums;  // (sub-item, household month)
        for (const Entry& e : entries)
            if (e.kind != 3) sums[{e.himoku, months.monthOf(e.date)}] += e.amount;

        ASSERT_TRUE(dm.annualInOutFromItemsTable("2025"));
        for (size_t r = 0; r < dm.annualOutDataList.size(); ++r) {
            const int64_t himoku = expense[r];  // every sub-item has entries, in Id order
            for (int m = 1; m <= 12; ++m)
                EXPECT_EQ(dm.annualOutDataList[r][static_cast<size_t>(m - 1)], (sums[{himoku, YearMonth{2025, m}}]));
        }
        EXPECT_EQ(dm.annualInDataList.at(0)[6], (sums[{pay + 1, YearMonth{2025, 7}}]));

        std::vector<YosanRow> rows;
        ASSERT_TRUE(dm.yosanJissekiOf(2025, 7, rows));
        const int64_t foodSpent = sums[{food + 1, {2025, 7}}] + sums[{food + 2, {2025, 7}}] + sums[{food + 3, {2025, 7}}];
        ASSERT_EQ(rows.front().name, "食費");
        EXPECT_EQ(rows.front().jisseki, foodSpent);
        EXPECT_EQ(rows.front().difference(), 50000 - foodSpent);
        EXPECT_EQ(rows.back().jisseki, (foodSpent + sums[{home + 1, {2025, 7}}]));
    }
}

// A category's budget covers its sub-items; a month of its own replaces the
// every-month amount; the month's total is its own or the categories' added
// up; a month without entries shows zeros; a year adds its months.
TEST_F(HouseholdStoreTest, BudgetRowsFollowTheTreeTheMonthsAndTheTotal)
{
    addSmallBook();
    const int64_t home = addCategory(1, "住居費");
    addEntry(1, "2026-07-03", 1, 2, 20000);
    addEntry(1, "2026-07-20", 1, 3, 12000);
    addEntry(1, "2026-07-21", 2, 5, 300000);
    DataModel& dm = open();
    std::array<std::optional<int64_t>, 12> july{};
    july[6] = 40000;
    ASSERT_TRUE(dm.yosanReplace(1, 30000, july));
    ASSERT_TRUE(dm.yosanReplace(3, 10000, {}));
    ASSERT_TRUE(dm.yosanReplace(home + 1, 80000, {}));

    std::vector<YosanRow> rows;
    ASSERT_TRUE(dm.yosanJissekiOf(2026, 7, rows));
    const auto line = [](const YosanRow& r) {
        return r.name + "|" + (r.yosan ? std::to_string(*r.yosan) : "-") + "|" + std::to_string(r.jisseki);
    };
    std::vector<std::string> shown;
    for (const auto& r : rows) shown.push_back(line(r));
    EXPECT_EQ(shown, (std::vector<std::string>{"食費|40000|32000", "食費/外食|10000|12000", "住居費|-|0",
                                               "住居費/その他|80000|0", "合\u3000計|120000|32000"}));
    EXPECT_TRUE(rows[1].over());
    EXPECT_EQ(*rows[0].share(), 0.8);

    ASSERT_TRUE(dm.yosanReplace(kYosanTotal, 100000, {}));
    ASSERT_TRUE(dm.yosanJissekiOf(2026, 8, rows));
    EXPECT_EQ(line(rows.front()), "食費|30000|0");
    EXPECT_EQ(line(rows.back()), "合\u3000計|100000|0");
    ASSERT_TRUE(dm.yosanJissekiOf(2026, 0, rows));
    EXPECT_EQ(line(rows.front()), "食費|370000|32000");

    std::array<std::optional<int64_t>, 12> yosan;
    std::array<int64_t, 12> jisseki;
    ASSERT_TRUE(dm.yosanMonthlyOf(2026, yosan, jisseki));
    EXPECT_EQ(jisseki[6], 32000);
    EXPECT_EQ(yosan[6], 100000);
}

// Budgets are refused as the asset editor refuses amounts, and they go with
// their category: an Id used again never inherits one.
TEST_F(HouseholdStoreTest, BadBudgetsAreRefusedAndADeletedCategoryTakesItsBudgetsAlong)
{
    addSmallBook();
    DataModel& dm = open();
    ASSERT_TRUE(dm.yosanReplace(1, 30000, {}));
    ASSERT_TRUE(dm.yosanReplace(3, 5000, {}));
    const std::string before = dump("Yosan");
    std::array<std::optional<int64_t>, 12> months{};
    months[0] = int64_t{INT32_MAX} + 1;
    EXPECT_FALSE(dm.yosanReplace(1, -1, {}));
    EXPECT_FALSE(dm.yosanReplace(1, 1, months));
    EXPECT_EQ(takeMessages(), (Messages{{"金額の欄に不正なデータがあります", "information"},
                                        {"金額の欄に不正なデータがあります", "information"}}));
    EXPECT_EQ(dump("Yosan"), before);

    ASSERT_TRUE(dm.deleteUtiwakeHimoku(3, 1, 2));
    EXPECT_EQ(dm.yosanOf(3, 1), std::nullopt);
    ASSERT_TRUE(dm.deleteHimokuHimoku(1, {2}));
    EXPECT_EQ(scalar("SELECT count(*) FROM Yosan"), 0);
    EXPECT_TRUE(dm.yosanList.empty());
}

// Closing on the 15th, withdrawn on the 10th of the month after: on the
// 12th of October 2026 the September period (withdrawn on Tuesday the 13th,
// the 10th being a Saturday and the 12th Sports Day) is next, the October
// one open; from the 13th it is due, and once settled it is never offered
// again, until its transfer is deleted.
TEST_F(HouseholdStoreTest, ACardsPeriodsAreDueNextOrOpenAndASettlementIsOfferedOnce)
{
    addSmallBook();
    addSisan("カード", 0, 0);
    addEntry(3, "2026-08-16", 1, 2, 1000);
    addEntry(3, "2026-09-15", 1, 3, 2000);
    addEntry(3, "2026-09-16", 1, 2, 400);
    addEntry(3, "2026-09-20", 2, 5, 150);  // a refund
    addEntry(3, "2026-09-21", 3, 0, 50);   // charged onto e-money
    DataModel& dm = open();
    // Set up after the August period's withdrawal: September's is the first followed.
    ASSERT_TRUE(dm.cardUpdate(card15(), {2026, 9, 11}));
    EXPECT_EQ(dm.cardOf(3)->firstClosing, (YearMonth{2026, 9}));

    CardOutlook o;
    ASSERT_TRUE(dm.cardOutlookOf(3, {2026, 10, 12}, o));
    EXPECT_TRUE(o.due.empty());
    ASSERT_TRUE(o.next && o.open);
    EXPECT_EQ(o.next->period.withdrawal, (Date{2026, 10, 13}));
    EXPECT_EQ(o.next->kingaku, 3000);
    EXPECT_EQ(o.open->kingaku, 300);
    EXPECT_EQ(o.comingKingaku, 3000);

    ASSERT_TRUE(dm.cardOutlookOf(3, {2026, 10, 13}, o));
    ASSERT_EQ(o.due.size(), 1u);
    ASSERT_TRUE(dm.cardSettlementInsert(3, o.due[0].period.closingMonth, "2026-10-13", 2900, "8月16日〜9月15日分の引落"));
    EXPECT_EQ(dm.sisanList[0]->Zankin, 10000 - 2900);
    EXPECT_EQ(dm.sisanList[2]->Zankin, -3000 - 300 + 2900);
    ASSERT_TRUE(dm.cardOutlookOf(3, {2026, 11, 20}, o));
    ASSERT_EQ(o.due.size(), 1u);  // only October's
    EXPECT_EQ(o.due[0].period.closingMonth, (YearMonth{2026, 10}));
    ASSERT_TRUE(dm.cardSettlementMark(3, {2026, 10}, 300));
    ASSERT_TRUE(dm.cardOutlookOf(3, {2026, 11, 20}, o));
    EXPECT_TRUE(o.due.empty());
    EXPECT_EQ(o.comingKingaku, 0);

    // The settlement's transfer deleted, its period is due again.
    const int64_t saki = scalar("SELECT ItemId FROM CardSettlements WHERE ClosingMonth = 202609");
    ASSERT_TRUE(dm.itemDeleteIdouPair(scalar("SELECT IdouId FROM Items WHERE Id = " + std::to_string(saki)), saki));
    ASSERT_TRUE(dm.cardOutlookOf(3, {2026, 11, 20}, o));
    ASSERT_EQ(o.due.size(), 1u);
    EXPECT_EQ(o.due[0].period.closingMonth, (YearMonth{2026, 9}));
}

// The transfer and the note of its period are one step: a failure on the
// note leaves no transfer behind.
TEST_F(HouseholdStoreTest, ASettlementThatFailsHalfwayLeavesTheBookAsItWas)
{
    addSmallBook();
    addSisan("カード", 0, 0);
    addEntry(3, "2026-09-01", 1, 2, 1000);
    DataModel& dm = open();
    ASSERT_TRUE(dm.cardUpdate(card15(), {2026, 9, 1}));
    armFailure("CardSettlements", "INSERT", "1");
    const std::string before = dumpAll() + dump("CardSettlements");
    EXPECT_FALSE(dm.cardSettlementInsert(3, {2026, 9}, "2026-10-13", 1000, ""));
    EXPECT_EQ(takeMessages(), (Messages{{"failure inserting card settlement: boom", "information"}}));
    EXPECT_EQ(dumpAll() + dump("CardSettlements"), before);
}

// Deleting the paying asset leaves the card without one (never pointing at
// an asset that takes its Id later); deleting the card takes its rows along.
TEST_F(HouseholdStoreTest, DeletedPayingAssetsAndCardsLeaveNoStaleRows)
{
    addSmallBook();
    addSisan("カード", 0, 0);
    DataModel& dm = open();
    Card card = card15();
    card.PayingSisanNo = 3;
    EXPECT_FALSE(dm.cardUpdate(card, {2026, 9, 1}));  // a card does not pay itself
    card.cycle.closingDay = 29;
    card.PayingSisanNo = 1;
    EXPECT_FALSE(dm.cardUpdate(card, {2026, 9, 1}));
    EXPECT_EQ(takeMessages(), (Messages{{"引落口座には、このカードとは別の資産を選んでください。", "information"},
                                        {"締め日は1日から28日まで、または末日にしてください。", "information"}}));
    ASSERT_TRUE(dm.cardUpdate(card15(), {2026, 9, 1}));
    ASSERT_TRUE(dm.cardSettlementMark(3, {2026, 9}, 100));

    ASSERT_TRUE(dm.sisanDeleteWithItems(1));
    EXPECT_EQ(dm.cardOf(3)->PayingSisanNo, 0);
    ASSERT_TRUE(dm.sisanDeleteWithItems(3));
    EXPECT_TRUE(dm.cardList.empty());
    EXPECT_EQ(scalar("SELECT count(*) FROM CardCycles") + scalar("SELECT count(*) FROM CardSettlements"), 0);
}

// A book of an earlier version opens with calendar months, no cards and no
// budgets; opening it in the program adds the tables, which the book check
// knows, and a table of the wrong shape is refused.
TEST_F(HouseholdStoreTest, AnOlderBookGainsTheTablesAndTheCheckKnowsThem)
{
    for (const char* table : kHouseholdTableNames) exec(std::string("DROP TABLE ") + table);
    addSmallBook();
    DataModel& dm = open();
    EXPECT_TRUE(dm.householdMonths.isCalendarMonths() && dm.cardList.empty() && dm.yosanList.empty());
    EXPECT_TRUE(takeMessages().empty());
    store.reset();
    std::string error;
    ASSERT_TRUE(provisionBook(path, &error)) << error;
    EXPECT_EQ(scalar("SELECT count(*) FROM sqlite_master WHERE name IN ('BookSettings','CardCycles','CardSettlements','Yosan')"), 4);
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Ready);

    exec("DROP TABLE Yosan");
    exec("CREATE TABLE Yosan (Id INTEGER PRIMARY KEY, HimokuNo INTEGER, Tuki INTEGER)");
    const BookCheck check = checkBook(path);
    EXPECT_EQ(check.verdict, BookVerdict::WrongSchema);
    EXPECT_NE(check.detail.find("Yosan"), std::string::npos) << check.detail;
}

// Each change of the household tables is one step of the history, named
// for the menu; undone, the book and the store's lists are as before it, and
// a redo makes it again.
TEST_F(HouseholdStoreTest, EveryHouseholdChangeIsOneUndoableStep)
{
    addSmallBook();
    addSisan("カード", 0, 0);
    addEntry(3, "2026-09-01", 1, 2, 1000);
    DataModel& dm = open();
    const std::string before = dumpAll();
    ASSERT_TRUE(dm.updateHouseholdMonthSetting(kPayday));
    ASSERT_TRUE(dm.yosanReplace(1, 30000, {}));
    ASSERT_TRUE(dm.cardUpdate(card15(), {2026, 9, 11}));
    ASSERT_TRUE(dm.cardSettlementInsert(3, {2026, 9}, "2026-10-13", 1000, ""));
    ASSERT_TRUE(dm.cardSettlementMark(3, {2026, 10}, 0));

    const std::vector<std::string> labels{"カード『カード』の引落 0円の記録済み", "カード『カード』の引落 1,000円の記録",
                                          "資産『カード』のカード設定", "予算『食費』の変更", "家計の設定の変更"};
    for (const std::string& label : labels) {
        ASSERT_NE(dm.undoTarget(), nullptr);
        EXPECT_EQ(dm.undoTarget()->Label, label);
        ASSERT_TRUE(dm.undo());
    }
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(scalar("SELECT count(*) FROM BookSettings") + scalar("SELECT count(*) FROM Yosan") +
                  scalar("SELECT count(*) FROM CardCycles") + scalar("SELECT count(*) FROM CardSettlements"),
              0);
    EXPECT_TRUE(dm.householdMonths.isCalendarMonths() && dm.yosanList.empty() && dm.cardList.empty());
    EXPECT_EQ(dm.sisanList[0]->Zankin, 10000);

    for (size_t i = 0; i < labels.size(); ++i) ASSERT_TRUE(dm.redo());
    EXPECT_EQ(dm.householdMonths.setting(), kPayday);
    EXPECT_EQ(dm.yosanOf(1, 5), 30000);
    EXPECT_EQ(dm.sisanList[0]->Zankin, 9000);
    CardOutlook o;
    ASSERT_TRUE(dm.cardOutlookOf(3, {2026, 11, 20}, o));
    EXPECT_TRUE(o.due.empty());
}

}  // namespace
