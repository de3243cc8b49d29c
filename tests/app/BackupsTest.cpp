// Daily backups that keep up with a program left open.
#include <QDateEdit>
#include <QSignalSpy>
#include <filesystem>
#include <fstream>

#include "app/DailyBackup.h"
#include "app/DayWatcher.h"
#include "store/Backup.h"
#include "tests/app/AppFixture.h"

namespace fs = std::filesystem;

namespace {

using BackupsTest = AppFixture;

TEST_F(BackupsTest, AFailedDailyBackupIsReportedOnce)
{
    std::ofstream(dir + "/backups") << "a file where the folder should be";
    DailyBackup backup(path, dir + "/backups");
    QSignalSpy finished(&backup, &DailyBackup::finished);
    backup.start();
    ASSERT_TRUE(finished.wait(10000));
    const Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(QString::fromStdString(told[0].first).contains(QString::fromStdString(dir + "/backups")));
}

// Past midnight the window shows the new day, new entries default to it
// unless another date was chosen, and the new day gets its backup.
TEST_F(BackupsTest, AProgramLeftOpenPastMidnightMovesToTheNewDayAndBacksItUp)
{
    addSmallBook();
    setClockTo({2026, 11, 23}, {23, 59});
    ViewController& w = start();
    const std::string backups = dir + "/backups";
    DailyBackup backup(path, backups);
    QSignalSpy finished(&backup, &DailyBackup::finished);
    backup.start();
    ASSERT_TRUE(finished.wait(10000));
    DayWatcher day(20);
    QObject::connect(&day, &DayWatcher::dayChanged, &w, &ViewController::todayChanged);
    QObject::connect(&day, &DayWatcher::dayChanged, &backup, &DailyBackup::start);

    setClockTo({2026, 11, 24}, {0, 1});
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(label("lblToday"), "2026年11月24日");
    EXPECT_EQ(find<QDateEdit>("itemDataDatePicker")->date(), QDate(2026, 11, 24));
    EXPECT_EQ(listBackups(backups),
              (std::vector<std::string>{backupPath(backups, "20261124"), backupPath(backups, "20261123")}));

    // A date the user picked for the next entries stays as it is.
    find<QDateEdit>("itemDataDatePicker")->setDate({2026, 11, 1});
    setClockTo({2026, 11, 25}, {0, 1});
    ASSERT_TRUE(finished.wait(10000));
    EXPECT_EQ(label("lblToday"), "2026年11月25日");
    EXPECT_EQ(find<QDateEdit>("itemDataDatePicker")->date(), QDate(2026, 11, 1));
    EXPECT_TRUE(fs::exists(backupPath(backups, "20261125")));
}

}  // namespace
