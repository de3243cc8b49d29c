#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "sync/SyncNotice.h"

class DataModel;
class ListTableModel;
namespace Ui {
class SyncNoticesViewController;
}

// ファイル → 同期で調整した変更…: every case the conflict rules settled, newest
// first, once each; 元に戻す takes the selected one back as a new step,
// which goes to the other PCs like any change: the losing edit written
// again, or the row that was kept or brought back deleted. Opening the list
// marks its cases seen.
class SyncNoticesViewController final : public QDialog {
    Q_OBJECT

public:
    SyncNoticesViewController(DataModel& dm, QWidget* parent = nullptr);
    ~SyncNoticesViewController() override;

    DataModel& DM;
    // True when the selected case was taken back.
    bool btnUndoNotice();
    // True when anything was taken back while the list was open.
    bool changedBook() const { return changed; }

private:
    std::unique_ptr<Ui::SyncNoticesViewController> ui;
    ListTableModel* model = nullptr;
    std::vector<StoredNotice> notices;
    bool changed = false;

    void reload();
    int selectedRow() const;
    void selectionChanged();
    bool undo(const StoredNotice& stored);
};
