// ViewController: household months, cards and budgets in the main window.
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QTableView>
#include <QTimer>
#include <algorithm>

#include "app/ViewController.h"
#include "household/CardSettlementDialog.h"
#include "household/HouseholdLabels.h"
#include "household/HouseholdSettingsViewController.h"
#include "household/YosanViewController.h"
#include "reports/YosanReport.h"
#include "reports/YosanReportViewController.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "ui/AmountText.h"
#include "ui/HouseholdDates.h"
#include "ui/ListTableModel.h"
#include "ui_ViewController.h"

namespace {

constexpr int kAfterWithdrawalsColumn = 2;
// How long an offer waits before looking again whether another window still is open.
constexpr int kOfferRetryMs = 1000;
const QString kOverStyle = QStringLiteral("QProgressBar::chunk { background-color: #e15759; }");

QString yen(int64_t amount)
{
    return groupedKingaku(amount) + QStringLiteral("円");
}

// "2026年12月10日（木）　45,600円（10月16日〜11月15日分）"
QString periodLine(const CardPeriodKingaku& figure)
{
    return dayWithWeekday(figure.period.withdrawal) + QStringLiteral("\u3000") + yen(figure.kingaku) +
           QStringLiteral("（") + qText(periodLabel(figure.period.purchases)) + QStringLiteral("分") +
           (figure.closed ? QString() : QStringLiteral("・集計中")) + QStringLiteral("）");
}

}  // namespace

void ViewController::mnuShowHouseholdSettings()
{
    HouseholdSettingsViewController settings(DM, this);
    if (settings.exec() == QDialog::Accepted) showHouseholdState();
}

void ViewController::mnuShowYosan()
{
    YosanViewController yosan(DM, this);
    yosan.exec();
    if (yosan.changed()) showYosanSummary();
}

void ViewController::mnuShowYosanReport()
{
    YosanReportViewController report(DM, this);
    report.exec();
}

void ViewController::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (shownOnce) return;
    shownOnce = true;
    // After the window is on the screen, not in the middle of showing it.
    QTimer::singleShot(0, this, &ViewController::offerCardSettlements);
}

void ViewController::showHouseholdState()
{
    computeComingWithdrawals();
    // The third column widens the list so that names still show.
    const bool third = !comingBySisan.empty();
    QTableView* list = ui->tblSisan;
    list->setColumnHidden(kAfterWithdrawalsColumn, !third);
    const int name = 8 * list->fontMetrics().horizontalAdvance(QChar(0x4E00));
    const int figures = list->horizontalHeader()->sectionSize(1) * (third ? 2 : 1);
    list->setMinimumWidth(std::max(240, name + figures + 2 * list->frameWidth() + 20));
    list->setMaximumWidth(third ? name + figures + 200 : 340);
    sisanModel->reorder();  // the same rows, with other figures after the withdrawals
    showYosanSummary();
    showCardInfo();
}

void ViewController::computeComingWithdrawals()
{
    comingBySisan.clear();
    const Date today = householdToday();
    for (const Card& card : DM.cardList) {
        if (!findById(DM.sisanList, DM.sisanId2Idx, card.PayingSisanNo)) continue;
        CardOutlook outlook;
        if (!DM.cardOutlookOf(card.SisanNo, today, outlook)) return;
        comingBySisan[card.PayingSisanNo] += outlook.comingKingaku;
    }
}

QString ViewController::afterWithdrawalsText(int row) const
{
    const Sisan& sisan = *DM.sisanList[static_cast<size_t>(row)];
    const auto coming = comingBySisan.find(sisan.Id);
    if (coming == comingBySisan.end()) return {};
    return groupedKingaku(sisan.Zankin - coming->second);
}

void ViewController::showYosanSummary()
{
    const YearMonth month = DM.householdMonths.monthOf(householdToday());
    ui->lblYosanMonth->setText(qText(householdMonthLabel(DM.householdMonths, month)));
    std::vector<YosanRow> rows;
    if (!DM.yosanJissekiOf(month.year, month.month, rows) || rows.empty()) return;
    const YosanRow& total = rows.back();
    ui->prgYosan->setVisible(total.yosan.has_value());
    if (!total.yosan) {
        ui->lblYosanSummary->setText(QStringLiteral("支出 ") + yen(total.jisseki) +
                                     QStringLiteral("\n予算は 設定 → 予算… で決められます"));
        return;
    }
    const double share = total.share().value_or(total.over() ? 1.0 : 0.0);
    ui->prgYosan->setRange(0, 1000);
    ui->prgYosan->setValue(static_cast<int>(std::min(share, 1.0) * 1000));
    ui->prgYosan->setStyleSheet(total.over() ? kOverStyle : QString());
    const int64_t rest = *total.difference();
    ui->lblYosanSummary->setText(QStringLiteral("支出 ") + yen(total.jisseki) + QStringLiteral(" ／ 予算 ") +
                                 yen(*total.yosan) + QStringLiteral("\n") +
                                 (rest >= 0 ? QStringLiteral("残り ") + yen(rest)
                                            : QStringLiteral("予算超過 ") + yen(-rest)) +
                                 (total.share() ? QStringLiteral("（使用率 ") + qText(yosanShareText(total)) +
                                                      QStringLiteral("）")
                                                : QString()));
}

void ViewController::showCardInfo()
{
    const Sisan* shown = selectedSisan();
    const Card* card = shown ? DM.cardOf(shown->Id) : nullptr;
    ui->lblCardInfo->setVisible(card != nullptr);
    if (!card) return;
    QStringList lines;
    const Sisan* paying = findById(DM.sisanList, DM.sisanId2Idx, card->PayingSisanNo);
    lines << qText(cardCycleLabel(card->cycle)) + QStringLiteral("\u3000引落口座: ") +
                 (paying ? qText(paying->Namae) : QStringLiteral("（未設定: 設定 → 資産の設定 で選んでください）"));
    CardOutlook outlook;
    const Date today = householdToday();
    if (DM.cardOutlookOf(card->SisanNo, today, outlook)) {
        for (const CardPeriodKingaku& due : outlook.due)
            if (due.period.withdrawal < today) lines << QStringLiteral("未精算の引落: ") + periodLine(due);
        if (outlook.next) lines << QStringLiteral("次回の引落: ") + periodLine(*outlook.next);
        if (outlook.open)
            lines << QStringLiteral("利用中: ") + qText(periodLabel(outlook.open->period.purchases)) +
                         QStringLiteral("\u3000") + yen(outlook.open->kingaku);
    }
    ui->lblCardInfo->setText(lines.join(u'\n'));
}

void ViewController::offerCardSettlements()
{
    if (offering) return;  // a dialog's own event loop may bring the day's change
    // An editor, a report or the recurring entries' posting is open: the
    // offer comes when it has closed, not over it.
    if (QApplication::activeModalWidget()) {
        if (!offerWaiting) {
            offerWaiting = true;
            QTimer::singleShot(kOfferRetryMs, this, [this] {
                offerWaiting = false;
                offerCardSettlements();
            });
        }
        return;
    }
    const QScopedValueRollback busy(offering, true);
    const Date today = householdToday();
    bool recorded = false;
    // A copy: every settlement re-reads the store's lists.
    for (const Card card : std::vector<Card>(DM.cardList)) {
        if (!findById(DM.sisanList, DM.sisanId2Idx, card.PayingSisanNo)) continue;
        CardOutlook outlook;
        if (!DM.cardOutlookOf(card.SisanNo, today, outlook)) break;
        for (const CardPeriodKingaku& due : outlook.due) {
            // Nothing to withdraw (no purchases, or refunds only) is nothing to record.
            if (due.kingaku <= 0 || putOff.count({card.SisanNo, due.period.closingMonth})) continue;
            CardSettlementDialog dialog(qText(DM.getSisanNamaeFromNo(card.SisanNo)),
                                        qText(DM.getSisanNamaeFromNo(card.PayingSisanNo)), due, this);
            dialog.exec();
            const YearMonth& month = due.period.closingMonth;
            switch (dialog.choice()) {
            case CardSettlementDialog::Choice::Post:
                recorded = DM.cardSettlementInsert(card.SisanNo, month, due.period.withdrawal.iso(), dialog.kingaku(),
                                                   periodLabel(due.period.purchases) + "分の引落") ||
                           recorded;
                break;
            case CardSettlementDialog::Choice::Mark:
                recorded = DM.cardSettlementMark(card.SisanNo, month, due.kingaku) || recorded;
                break;
            case CardSettlementDialog::Choice::Later:
                putOff.insert({card.SisanNo, month});
                break;
            }
        }
    }
    if (recorded) {
        tblItemReload();
        reloadSisanList();
    }
}
