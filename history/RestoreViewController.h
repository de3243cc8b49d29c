#pragma once

#include <QDialog>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/BackupRestore.h"

class DataModel;
class ListTableModel;
class QThread;
namespace Ui {
class RestoreViewController;
}

// ファイル → バックアップから復元…: the daily backups, newest first, with
// their size, number of entries and grand total (read on a worker thread
// without changing them, as they arrive); for the chosen one what differs
// from the book now; and このバックアップに戻す, which asks once, keeps the
// book aside, puts the backup in its place with a progress dialog and then
// lets the window read the book again (onRestored) before it closes.
class RestoreViewController final : public QDialog {
    Q_OBJECT

public:
    RestoreViewController(DataModel& dm, std::string backupDir, QWidget* parent = nullptr);
    // Stops the readers still running and waits for them.
    ~RestoreViewController() override;

    DataModel& DM;
    // Runs after a restore, while the progress dialog still shows: the
    // window reads the book again.
    std::function<void()> onRestored;

    // Shows the comparison of the backup at this row with the book.
    void backupSelected(int row);
    // Restores the selected backup after asking; true when it was restored.
    bool btnRestore();

    // After a restore: where the book before it was kept.
    const std::string& keptPath() const { return kept; }
    // True once every backup's summary and the comparison shown are read.
    bool idle() const;

private:
    struct Row {
        std::string path;
        std::optional<BackupSummary> summary;  // none until read
    };

    std::unique_ptr<Ui::RestoreViewController> ui;
    ListTableModel* backupsModel = nullptr;
    ListTableModel* differenceModel = nullptr;
    std::string backupDir;
    std::vector<Row> rows;
    BackupDifference difference;
    std::string kept;

    QThread* summaries = nullptr;
    QThread* comparison = nullptr;
    std::atomic<bool> stop{false};
    std::atomic<bool> stopComparison{false};
    bool comparing = false;  // a comparison is running or its result not shown yet

    void layOutColumns();
    void readSummaries();
    void stopComparing();
    int selectedRow() const;
    RestoreResult restoreWithProgress(const std::string& backup, std::string* error);
};
