// DataModel: the household tables as a whole, and the household month setting.
#include <sqlite3.h>

#include "store/DataModel.h"
#include "store/HouseholdTables.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

// The names the setting's three values are kept under in BookSettings.
constexpr const char* kMonthStartDay = "MonthStartDay";
constexpr const char* kMonthStartShift = "MonthStartShift";
constexpr const char* kMonthNaming = "MonthNaming";

const char* const kUpsertSetting =
    "INSERT INTO BookSettings (Name, Value) VALUES (?, ?) ON CONFLICT(Name) DO UPDATE SET Value = excluded.Value";

}  // namespace

bool DataModel::householdTablesPresent()
{
    std::string names;
    for (const char* name : kHouseholdTableNames) names += std::string(names.empty() ? "'" : ",'") + name + "'";
    if (!prepare("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name IN (" + names + ")",
                 "error prepare select household tables: ", "stop the app"))
        return false;
    int64_t found = 0;
    if (!readRows("error step select household tables: ", "stop the app", [&] { found = stmt.columnInt(0); }))
        return false;
    return found == static_cast<int64_t>(std::size(kHouseholdTableNames));
}

bool DataModel::createHouseholdTablesOrReport()
{
    finalize();
    if (createHouseholdTables(db)) return true;
    someMessageWithAlert(errorText("failure creating the household tables: "));
    return false;
}

bool DataModel::readHouseholdTables()
{
    if (!householdTablesPresent()) {
        householdMonths = HouseholdMonths();
        cardList.clear();
        yosanList.clear();
        return true;
    }
    return readBookSettings() && readFromCardTable() && readFromYosanTable();
}

bool DataModel::readBookSettings()
{
    if (!prepare("SELECT Name, Value FROM BookSettings", "error prepare select book settings: ", "stop the app"))
        return false;
    HouseholdMonthSetting setting;
    const bool read = readRows("error step select book settings: ", "stop the app", [&] {
        const std::string name = stmt.columnText(0);
        const int value = static_cast<int>(stmt.columnInt(1));
        if (name == kMonthStartDay) setting.startDay = value;
        if (name == kMonthStartShift) setting.shift = static_cast<HolidayShift>(value);
        if (name == kMonthNaming) setting.naming = static_cast<MonthNaming>(value);
    });
    if (!read) return false;
    // A setting the program cannot work with (written by hand, say) leaves
    // the calendar months; the settings window shows them and can replace it.
    const Checked<HouseholdMonths> months = HouseholdMonths::make(setting);
    householdMonths = months ? months.value() : HouseholdMonths();
    return true;
}

bool DataModel::updateHouseholdMonthSetting(const HouseholdMonthSetting& setting)
{
    const Checked<HouseholdMonths> months = HouseholdMonths::make(setting);
    if (!months) {
        someMessageWithAlert(months.refusal());
        return false;
    }
    {
        RecordedStep step(db, settingsStepLabel());
        if (!beganOrReport(step) || !createHouseholdTablesOrReport()) return false;
        const std::pair<const char*, int> values[] = {{kMonthStartDay, setting.startDay},
                                                      {kMonthStartShift, static_cast<int>(setting.shift)},
                                                      {kMonthNaming, static_cast<int>(setting.naming)}};
        for (const auto& [name, value] : values) {
            if (!prepare(kUpsertSetting, "error prepare update book settings: ", "information")) return false;
            const bool done = bind_text(1, name) && bind_int(2, value) && stepDone("failure updating book settings: ");
            finalize();
            if (!done) return false;
        }
        if (!commitStep(step)) return false;
    }
    householdMonths = months.value();
    return true;
}
