#include "household/CardSettlementDialog.h"

#include "household/HouseholdLabels.h"
#include "ui/AmountText.h"
#include "ui/HouseholdDates.h"
#include "ui/MessageService.h"
#include "ui_CardSettlementDialog.h"

CardSettlementDialog::CardSettlementDialog(const QString& card, const QString& paying, const CardPeriodKingaku& due,
                                           QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::CardSettlementDialog>())
{
    ui->setupUi(this);
    const CardPeriod& period = due.period;
    ui->lblSettlementText->setText(
        QStringLiteral("%1の引落日 %2 になりました。%3に使った分の引落を、%4からの振替として記録しますか？"
                       "明細の金額と違うときは、金額を直してから記録してください。")
            .arg(card, dayWithWeekday(period.withdrawal), qText(periodLabel(period.purchases)), paying));
    ui->lblSettlementPaying->setText(paying + QStringLiteral(" → ") + card);
    ui->lblSettlementDate->setText(dayWithWeekday(period.withdrawal));
    ui->txtSettlementKingaku->setText(groupedKingaku(due.kingaku));
    ui->txtSettlementKingaku->selectAll();
    ui->txtSettlementKingaku->setFocus();
    connect(ui->btnSettlementPost, &QPushButton::clicked, this, &CardSettlementDialog::btnSettlementPost);
    connect(ui->btnSettlementMark, &QPushButton::clicked, this, &CardSettlementDialog::btnSettlementMark);
    connect(ui->btnSettlementLater, &QPushButton::clicked, this, &CardSettlementDialog::btnSettlementLater);
    adjustSize();
}

CardSettlementDialog::~CardSettlementDialog() = default;

void CardSettlementDialog::btnSettlementPost()
{
    const auto kingaku = kingakuFromText(trimmedAmountText(ui->txtSettlementKingaku->text()).remove(u','));
    if (!kingaku || *kingaku <= 0) {
        ui->txtSettlementKingaku->setStyleSheet(QStringLiteral("QLineEdit { border: 2px solid red; }"));
        messageService().someMessageWithAlert(QStringLiteral("金額の欄に不正なデータがあります"),
                                              QStringLiteral("information"));
        return;
    }
    amount = *kingaku;
    chosen = Choice::Post;
    accept();
}

void CardSettlementDialog::btnSettlementMark()
{
    chosen = Choice::Mark;
    accept();
}

void CardSettlementDialog::btnSettlementLater()
{
    chosen = Choice::Later;
    reject();
}
