#include "import/CardStatementCheck.h"

#include "household/HouseholdLabels.h"
#include "import/ImportPlan.h"
#include "store/DataModel.h"
#include "store/Money.h"

namespace {

Date dateOf(const ImportDate& d)
{
    return {d.nen(), d.tuki(), d.hi()};
}

}  // namespace

bool readCardStatementPeriod(DataModel& dm, const StatementFile& statement, int64_t sisanId,
                             std::optional<CardStatementPeriod>& out)
{
    out.reset();
    const Card* card = dm.cardOf(sisanId);
    if (!card) return true;
    ImportDate latest;
    for (const StatementRow& r : statement.rows)
        if (r.kind == RowKind::Entry && !r.date.isNull() && latest < r.date) latest = r.date;
    if (latest.isNull()) return true;
    const Checked<CardCycle> cycle = CardCycle::make(card->cycle);
    if (!cycle) return true;
    CardStatementPeriod found;
    found.period = cycle.value().periodOf(dateOf(latest));
    if (!dm.cardPeriodKingaku(sisanId, found.period.purchases, found.bookKingaku)) return false;
    out = found;
    return true;
}

CardStatementCheck checkCardStatement(const ImportPlan& plan, const CardStatementPeriod& period)
{
    CardStatementCheck check;
    const BilledTotalCheck billed = checkBilledTotal(plan.statement());
    check.statementKingaku = billed.stated ? billed.statedTotal : billed.rowsTotal;
    check.bookKingaku = period.bookKingaku;
    // The ticked rows dated within the period join the book's figure the way
    // the card's line counts them: money out adds, a refund subtracts, money
    // coming in from another asset (a settlement) does not count.
    for (size_t i = 0; i < plan.rows().size(); ++i) {
        const PlannedRow& p = plan.rows()[i];
        const StatementRow& r = plan.source(i);
        if (!p.checked || r.date.isNull() || !period.period.purchases.contains(dateOf(r.date))) continue;
        if (r.kingaku < 0 || p.partnerSisanId == 0) check.bookKingaku -= r.kingaku;
    }
    return check;
}

std::string CardStatementCheck::message(const CardPeriod& period) const
{
    return "カードの" + monthDayText(period.purchases.last, true) + "締め（" + periodLabel(period.purchases) +
           "の利用・" + monthDayText(period.withdrawal) + "引落）: 明細の請求 " +
           formatWithGrouping(statementKingaku) + "円、取り込み後の帳簿 " + formatWithGrouping(bookKingaku) +
           "円、差額 " + formatWithGrouping(difference()) + "円";
}
