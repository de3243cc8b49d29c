// DataModel: assets used as credit cards, their periods and settlements.
#include <sqlite3.h>

#include <algorithm>

#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/Money.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

// A closing month as the book keeps it: 202611 for November 2026.
int64_t monthNumberOf(const YearMonth& month)
{
    return int64_t{month.year} * 100 + month.month;
}

YearMonth yearMonthOfNumber(int64_t number)
{
    return {static_cast<int>(number / 100), static_cast<int>(number % 100)};
}

// The most months a card's outlook looks past the open period for a
// withdrawal not settled yet (periods settled ahead of time are skipped).
constexpr int kMonthsAhead = 4;

}  // namespace

bool DataModel::readFromCardTable()
{
    cardList.clear();
    if (!householdTablesPresent()) return true;
    if (!prepare("SELECT SisanNo, ClosingDay, WithdrawalDay, MonthsAfterClosing, WithdrawalShift, PayingSisanNo, "
                 "FirstClosingMonth FROM CardCycles ORDER BY SisanNo",
                 "error prepare select card cycles: ", "stop the app"))
        return false;
    std::vector<Card> cards;
    const bool read = readRows("error step select card cycles: ", "stop the app", [&] {
        Card card;
        card.SisanNo = stmt.columnInt(0);
        card.cycle = {static_cast<int>(stmt.columnInt(1)), static_cast<int>(stmt.columnInt(2)),
                      static_cast<int>(stmt.columnInt(3)), static_cast<HolidayShift>(stmt.columnInt(4))};
        card.PayingSisanNo = stmt.columnInt(5);
        card.firstClosing = yearMonthOfNumber(stmt.columnInt(6));
        // A cycle the program cannot work with (written by hand) makes no
        // card; the asset editor can set it again.
        if (CardCycle::make(card.cycle)) cards.push_back(card);
    });
    if (!read) return false;
    cardList = std::move(cards);
    return true;
}

const Card* DataModel::cardOf(int64_t sisanId) const
{
    for (const Card& card : cardList)
        if (card.SisanNo == sisanId) return &card;
    return nullptr;
}

std::vector<const Card*> DataModel::cardsPaidFrom(int64_t sisanId) const
{
    std::vector<const Card*> cards;
    for (const Card& card : cardList)
        if (card.PayingSisanNo == sisanId) cards.push_back(&card);
    return cards;
}

bool DataModel::cardUpdate(const Card& card, const Date& today)
{
    const Checked<CardCycle> cycle = CardCycle::make(card.cycle);
    if (!cycle) {
        someMessageWithAlert(cycle.refusal());
        return false;
    }
    if (!findById(sisanList, sisanId2Idx, card.SisanNo) || card.PayingSisanNo == card.SisanNo ||
        (card.PayingSisanNo != 0 && !findById(sisanList, sisanId2Idx, card.PayingSisanNo))) {
        someMessageWithAlert("引落口座には、このカードとは別の資産を選んでください。");
        return false;
    }
    if (!allFitInt32({card.SisanNo, card.PayingSisanNo})) return false;
    // Settlements are followed from the next withdrawal on; a card whose
    // cycle stays keeps the periods it already follows.
    const Card* before = cardOf(card.SisanNo);
    const YearMonth first = before && before->cycle == card.cycle ? before->firstClosing
                                                                   : cycle->nextWithdrawal(today).closingMonth;
    const std::string paying = card.PayingSisanNo ? std::to_string(card.PayingSisanNo) : "NULL";
    const std::string values = std::to_string(card.SisanNo) + "," + std::to_string(card.cycle.closingDay) + "," +
                               std::to_string(card.cycle.withdrawalDay) + "," +
                               std::to_string(card.cycle.monthsAfterClosing) + "," +
                               std::to_string(static_cast<int>(card.cycle.shift)) + "," + paying + "," +
                               std::to_string(monthNumberOf(first));
    {
        RecordedStep step(db, sisanStepLabel(getSisanNamaeFromNo(card.SisanNo), "カード設定"));
        if (!beganOrReport(step) || !createHouseholdTablesOrReport()) return false;
        if (!runWrite("INSERT INTO CardCycles (SisanNo, ClosingDay, WithdrawalDay, MonthsAfterClosing, "
                      "WithdrawalShift, PayingSisanNo, FirstClosingMonth) VALUES (" + values +
                          ") ON CONFLICT(SisanNo) DO UPDATE SET ClosingDay = excluded.ClosingDay, WithdrawalDay = "
                          "excluded.WithdrawalDay, MonthsAfterClosing = excluded.MonthsAfterClosing, WithdrawalShift "
                          "= excluded.WithdrawalShift, PayingSisanNo = excluded.PayingSisanNo, FirstClosingMonth = "
                          "excluded.FirstClosingMonth",
                      "error prepare update card cycle: ", "information", "failure updating card cycle: "))
            return false;
        if (!commitStep(step)) return false;
    }
    return readFromCardTable();
}

bool DataModel::cardDelete(int64_t sisanId)
{
    if (!allFitInt32({sisanId}) || !householdTablesPresent()) return false;
    {
        RecordedStep step(db, sisanStepLabel(getSisanNamaeFromNo(sisanId), "カード設定の解除"));
        if (!beganOrReport(step)) return false;
        if (!runWrite("DELETE FROM CardCycles WHERE SisanNo = " + std::to_string(sisanId),
                      "error prepare delete card cycle: ", "information", "failure deleting card cycle: "))
            return false;
        if (!commitStep(step)) return false;
    }
    return readFromCardTable();
}

bool DataModel::deleteCardRowsOf(int64_t sisanId)
{
    if (!householdTablesPresent()) return true;
    // The asset's own card goes with it; a card that drew on it has no
    // paying asset until the user chooses another (an Id used again later
    // must not make another asset pay).
    const std::string id = std::to_string(sisanId);
    const char* const prepareMessage = "error preparing delete card of sisan: ";
    const char* const stepMessage = "failure deleting card of sisan: ";
    return runWrite("DELETE FROM CardCycles WHERE SisanNo = " + id, prepareMessage, "information", stepMessage) &&
           runWrite("DELETE FROM CardSettlements WHERE SisanNo = " + id, prepareMessage, "information", stepMessage) &&
           runWrite("UPDATE CardCycles SET PayingSisanNo = NULL WHERE PayingSisanNo = " + id, prepareMessage,
                    "information", stepMessage);
}

bool DataModel::cardPeriodKingaku(int64_t sisanId, const DateRange& purchases, int64_t& kingaku)
{
    if (!allFitInt32({sisanId})) return false;
    if (!prepare("SELECT SUM(CASE WHEN SyubetuNo IN (1,3) THEN Syukkin WHEN SyubetuNo = 2 THEN -Nyuukin END) "
                 "FROM Items WHERE SisanNo = " + std::to_string(sisanId) + " AND Hizuke BETWEEN ? AND ?",
                 "error prepare select card period: ", "stop the app"))
        return false;
    if (!bind_text(1, purchases.first.iso()) || !bind_text(2, purchases.last.iso())) {
        finalize();
        return false;
    }
    int64_t sum = 0;
    if (!readRows("error step select card period: ", "stop the app", [&] { sum = stmt.columnSum(0); })) return false;
    kingaku = sum;
    return true;
}

bool DataModel::readSettledMonths(int64_t sisanId, const YearMonth& from, std::vector<YearMonth>& months)
{
    months.clear();
    if (!householdTablesPresent()) return true;
    // A settlement whose transfer was deleted since no longer counts.
    if (!prepare("SELECT ClosingMonth FROM CardSettlements WHERE SisanNo = " + std::to_string(sisanId) +
                     " AND ClosingMonth >= " + std::to_string(monthNumberOf(from)) +
                     " AND (ItemId IS NULL OR ItemId IN (SELECT Id FROM Items)) ORDER BY ClosingMonth",
                 "error prepare select card settlements: ", "stop the app"))
        return false;
    return readRows("error step select card settlements: ", "stop the app",
                    [&] { months.push_back(yearMonthOfNumber(stmt.columnInt(0))); });
}

bool DataModel::cardOutlookOf(int64_t sisanId, const Date& today, CardOutlook& outlook)
{
    outlook = CardOutlook{};
    outlook.sisanId = sisanId;
    const Card* card = cardOf(sisanId);
    if (!card) return false;
    const CardCycle cycle = CardCycle::make(card->cycle).value();
    std::vector<YearMonth> settled;
    if (!readSettledMonths(sisanId, card->firstClosing, settled)) return false;
    const auto isSettled = [&](const YearMonth& m) { return std::binary_search(settled.begin(), settled.end(), m); };
    const auto withKingaku = [&](const CardPeriod& period, CardPeriodKingaku& out) {
        out = {period, 0, CardCycle::isClosed(period, today)};
        return cardPeriodKingaku(sisanId, period.purchases, out.kingaku);
    };
    const CardPeriod current = cycle.periodOf(today);
    const YearMonth last = current.closingMonth.addMonths(kMonthsAhead);
    for (YearMonth month = card->firstClosing; month <= last; month = month.addMonths(1)) {
        if (isSettled(month)) continue;
        const CardPeriod period = cycle.period(month);
        const bool closed = CardCycle::isClosed(period, today);
        const bool dueOrNext = (closed && period.withdrawal <= today) || (!outlook.next && period.withdrawal >= today);
        // Open periods beyond the next withdrawal are of no interest yet.
        if (!closed && !dueOrNext) break;
        CardPeriodKingaku figure;
        if (!withKingaku(period, figure)) return false;
        if (closed) outlook.comingKingaku += figure.kingaku;
        if (closed && period.withdrawal <= today) outlook.due.push_back(figure);
        if (!outlook.next && period.withdrawal >= today) outlook.next = figure;
    }
    if (!outlook.next || outlook.next->period.closingMonth != current.closingMonth) {
        CardPeriodKingaku open;
        if (!withKingaku(current, open)) return false;
        outlook.open = open;
    }
    return true;
}

bool DataModel::insertSettlementRow(int64_t sisanId, const YearMonth& closingMonth, std::optional<int64_t> itemId,
                                    int64_t kingaku)
{
    const std::string item = itemId ? std::to_string(*itemId) : "NULL";
    return runWrite("INSERT INTO CardSettlements (SisanNo, ClosingMonth, ItemId, Kingaku) VALUES (" +
                        std::to_string(sisanId) + "," + std::to_string(monthNumberOf(closingMonth)) + "," + item +
                        "," + std::to_string(kingaku) + ")",
                    "error prepare insert card settlement: ", "information", "failure inserting card settlement: ");
}

bool DataModel::cardSettlementInsert(int64_t sisanId, const YearMonth& closingMonth, const std::string& hizuke,
                                     int64_t kingaku, const std::string& bikou)
{
    const Card* card = cardOf(sisanId);
    const std::optional<Date> date = Date::fromIso(hizuke);
    if (!card || !date) return false;
    const int64_t paying = card->PayingSisanNo;
    if (!findById(sisanList, sisanId2Idx, paying)) {
        someMessageWithAlert("このカードの引落口座が選ばれていません。資産の設定で選んでください。");
        return false;
    }
    if (kingaku <= 0 || !allFitInt32({kingaku, sisanId, paying})) {
        if (kingaku <= 0) someMessageWithAlert("金額の欄に不正なデータがあります");
        return false;
    }
    {
        // The transfer and the note of its period go together: a period is
        // settled exactly when its transfer is in the book.
        RecordedStep step(db, cardStepLabel(getSisanNamaeFromNo(sisanId), kingaku, "記録"));
        if (!beganOrReport(step) || !createHouseholdTablesOrReport()) return false;
        int64_t sakiId = 0;
        if (!insertIdouPair(hizuke, date->year, date->month, date->day, paying, kSyubetuIdouMoto, sisanId, kingaku,
                            bikou, nullptr, &sakiId) ||
            !insertSettlementRow(sisanId, closingMonth, sakiId, kingaku))
            return false;
        if (!commitStep(step)) return false;
    }
    return recomputeSisanZankin(sisanId) && recomputeSisanZankin(paying) && rereadShownItems();
}

bool DataModel::cardSettlementMark(int64_t sisanId, const YearMonth& closingMonth, int64_t kingaku)
{
    if (!cardOf(sisanId) || !allFitInt32({sisanId, kingaku})) return false;
    RecordedStep step(db, cardStepLabel(getSisanNamaeFromNo(sisanId), kingaku, "記録済み"));
    if (!beganOrReport(step) || !createHouseholdTablesOrReport()) return false;
    if (!insertSettlementRow(sisanId, closingMonth, std::nullopt, kingaku)) return false;
    return commitStep(step);
}
