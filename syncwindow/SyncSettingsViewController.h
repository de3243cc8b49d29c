#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <string>

class SyncController;
namespace Ui {
class SyncSettingsViewController;
}

// ファイル → 同期の設定…: the sync folder (typed or chosen), a warning
// while the book lies inside it or inside any folder a sync tool keeps,
// this PC's name; この家計簿で同期を始める on the first PC, この同期フォルダ
// の家計簿を使う on the others (the PC's own book is kept aside), and
// 同期をやめる. After a change the controller starts again and onBookReplaced
// lets the window read a joined book.
class SyncSettingsViewController final : public QDialog {
    Q_OBJECT

public:
    SyncSettingsViewController(SyncController& controller, QWidget* parent = nullptr);
    ~SyncSettingsViewController() override;

    // Runs after joining replaced the book.
    std::function<void()> onBookReplaced;

    void btnChooseFolder();
    bool btnStart();
    bool btnJoin();
    bool btnStop();

private:
    std::unique_ptr<Ui::SyncSettingsViewController> ui;
    SyncController& controller;

    void showState();
    void folderEdited();
    std::string folder() const;
    std::string pcName() const;
};
