#pragma once

#include <QDialog>
#include <memory>

#include "household/HouseholdMonths.h"

class DataModel;
namespace Ui {
class HouseholdSettingsViewController;
}

// 設定 → 家計の設定: the first day of the household month, what a first day
// on a Saturday, Sunday or holiday does, and which month names a household
// month. A preview shows the month today falls in. OK keeps the setting in
// the book as one step; a setting that cannot work (a start day of 29 to
// 31) is refused with its message and the window stays open.
class HouseholdSettingsViewController final : public QDialog {
    Q_OBJECT

public:
    explicit HouseholdSettingsViewController(DataModel& dm, QWidget* parent = nullptr);
    ~HouseholdSettingsViewController() override;

    // The setting as the fields hold it.
    HouseholdMonthSetting shownSetting() const;
    // Stores the shown setting; closes the window when it was kept (or
    // nothing changed), and leaves it open after a refusal.
    void btnOK();

private:
    DataModel& DM;
    std::unique_ptr<Ui::HouseholdSettingsViewController> ui;

    void showSetting(const HouseholdMonthSetting& setting);
    // The fields that only mean something with a start day other than the
    // 1st follow the day; the preview follows every field.
    void fieldsChanged();
};
