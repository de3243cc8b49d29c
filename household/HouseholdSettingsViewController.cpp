#include "household/HouseholdSettingsViewController.h"

#include <QPushButton>

#include "household/HouseholdLabels.h"
#include "store/DataModel.h"
#include "ui/HouseholdDates.h"
#include "ui/MessageService.h"
#include "ui_HouseholdSettingsViewController.h"

namespace {

// The choices of the shift list, in the order of HolidayShift's numbers.
constexpr HolidayShift kShifts[] = {HolidayShift::SameDay, HolidayShift::Before, HolidayShift::After};

}  // namespace

HouseholdSettingsViewController::HouseholdSettingsViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::HouseholdSettingsViewController>())
{
    ui->setupUi(this);
    for (HolidayShift shift : kShifts) ui->cmbMonthStartShift->addItem(qText("土日祝は" + holidayShiftName(shift)));
    ui->rdbNamingByEnd->setText(ui->rdbNamingByEnd->text() + QStringLiteral("（11月25日〜12月24日は12月分）"));
    ui->rdbNamingByStart->setText(ui->rdbNamingByStart->text() + QStringLiteral("（11月25日〜12月24日は11月分）"));
    showSetting(DM.householdMonths.setting());
    connect(ui->spnMonthStartDay, &QSpinBox::valueChanged, this, &HouseholdSettingsViewController::fieldsChanged);
    connect(ui->cmbMonthStartShift, &QComboBox::currentIndexChanged, this,
            &HouseholdSettingsViewController::fieldsChanged);
    connect(ui->rdbNamingByEnd, &QRadioButton::toggled, this, &HouseholdSettingsViewController::fieldsChanged);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &HouseholdSettingsViewController::btnOK);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    ui->spnMonthStartDay->setFocus();
    ui->spnMonthStartDay->selectAll();
}

HouseholdSettingsViewController::~HouseholdSettingsViewController() = default;

void HouseholdSettingsViewController::showSetting(const HouseholdMonthSetting& setting)
{
    ui->spnMonthStartDay->setValue(setting.startDay);
    ui->cmbMonthStartShift->setCurrentIndex(static_cast<int>(setting.shift));
    (setting.naming == MonthNaming::ByStartMonth ? ui->rdbNamingByStart : ui->rdbNamingByEnd)->setChecked(true);
    fieldsChanged();
}

HouseholdMonthSetting HouseholdSettingsViewController::shownSetting() const
{
    HouseholdMonthSetting setting;
    setting.startDay = ui->spnMonthStartDay->value();
    const int shift = ui->cmbMonthStartShift->currentIndex();
    setting.shift = shift >= 0 ? kShifts[shift] : HolidayShift::SameDay;
    setting.naming = ui->rdbNamingByStart->isChecked() ? MonthNaming::ByStartMonth : MonthNaming::ByEndMonth;
    return setting;
}

void HouseholdSettingsViewController::fieldsChanged()
{
    const HouseholdMonthSetting setting = shownSetting();
    const bool ownMonths = setting.startDay != 1;
    ui->cmbMonthStartShift->setEnabled(ownMonths);
    ui->rdbNamingByEnd->setEnabled(ownMonths);
    ui->rdbNamingByStart->setEnabled(ownMonths);
    const Checked<HouseholdMonths> months = HouseholdMonths::make(setting);
    if (!months) {
        ui->lblMonthPreview->setText(qText(months.refusal()));
        return;
    }
    const YearMonth now = months->monthOf(householdToday());
    ui->lblMonthPreview->setText(QStringLiteral("今月は ") + qText(householdMonthLabel(months.value(), now)) +
                                 (ownMonths ? QString() : QStringLiteral("（暦どおりの月）")));
}

void HouseholdSettingsViewController::btnOK()
{
    const HouseholdMonthSetting setting = shownSetting();
    const Checked<HouseholdMonths> months = HouseholdMonths::make(setting);
    if (!months) {
        messageService().someMessageWithAlert(qText(months.refusal()), QStringLiteral("information"));
        ui->spnMonthStartDay->setFocus();
        ui->spnMonthStartDay->selectAll();
        return;
    }
    // Start day 1 is the calendar months whatever else is chosen: nothing to keep then.
    if (months->setting() == DM.householdMonths.setting() ||
        (months->isCalendarMonths() && DM.householdMonths.isCalendarMonths())) {
        accept();
        return;
    }
    if (DM.updateHouseholdMonthSetting(setting)) accept();
}
