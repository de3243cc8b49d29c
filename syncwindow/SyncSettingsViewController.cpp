#include "syncwindow/SyncSettingsViewController.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QProgressDialog>
#include <QSysInfo>

#include <atomic>

#include "store/BackupRestore.h"
#include "store/DataModel.h"
#include "sync/FolderPlacement.h"
#include "syncwindow/SyncController.h"
#include "ui/Clock.h"
#include "ui/MessageService.h"
#include "ui_SyncSettingsViewController.h"

namespace {

QString qs(const std::string& text)
{
    return QString::fromStdString(text);
}

}  // namespace

SyncSettingsViewController::SyncSettingsViewController(SyncController& controller, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::SyncSettingsViewController>()), controller(controller)
{
    ui->setupUi(this);
    connect(ui->btnChooseFolder, &QPushButton::clicked, this, &SyncSettingsViewController::btnChooseFolder);
    connect(ui->btnStart, &QPushButton::clicked, this, &SyncSettingsViewController::btnStart);
    connect(ui->btnJoin, &QPushButton::clicked, this, &SyncSettingsViewController::btnJoin);
    connect(ui->btnStop, &QPushButton::clicked, this, &SyncSettingsViewController::btnStop);
    connect(ui->btnClose, &QPushButton::clicked, this, &QDialog::reject);
    connect(ui->edtFolder, &QLineEdit::textChanged, this, &SyncSettingsViewController::folderEdited);
    const auto& identity = controller.sync().identity();
    ui->edtFolder->setText(identity ? qs(identity->folder) : QString());
    ui->edtPcName->setText(identity ? qs(identity->name) : QSysInfo::machineHostName());
    showState();
    folderEdited();
}

SyncSettingsViewController::~SyncSettingsViewController() = default;

std::string SyncSettingsViewController::folder() const
{
    const QString typed = ui->edtFolder->text().trimmed();
    return typed.isEmpty() ? std::string() : QDir::cleanPath(QDir(typed).absolutePath()).toStdString();
}

std::string SyncSettingsViewController::pcName() const
{
    return ui->edtPcName->text().trimmed().toStdString();
}

void SyncSettingsViewController::showState()
{
    BookSync& sync = controller.sync();
    const bool syncing = sync.syncing();
    ui->edtFolder->setReadOnly(syncing);
    ui->btnChooseFolder->setEnabled(!syncing);
    ui->edtPcName->setReadOnly(syncing);
    ui->btnStart->setEnabled(!syncing);
    ui->btnStop->setEnabled(syncing);
    if (!syncing) {
        ui->lblState->setText(QStringLiteral("この家計簿は同期していません。"));
        return;
    }
    const SyncIdentity& self = *sync.identity();
    QString state = QStringLiteral("同期しています: 「%1」 (PC 番号 %2)").arg(qs(self.name)).arg(self.device);
    const QString line = controller.statusText();
    if (!line.isEmpty()) state += QStringLiteral("\n") + line;
    const QString more = controller.statusToolTip();
    if (!more.isEmpty() && !line.contains(more)) state += QStringLiteral("\n") + more;
    ui->lblState->setText(state);
}

void SyncSettingsViewController::folderEdited()
{
    const std::string chosen = folder();
    const std::string bookPath = controller.bookPath();
    QString warning;
    if (!chosen.empty() && isInsideFolder(bookPath, chosen)) {
        warning = QStringLiteral("家計簿のファイルがこのフォルダの中にあります。同期ソフトが開いている家計簿を"
                                 "書き換えると壊れることがあるため、家計簿は同期フォルダの外に移してください。");
    } else if (const std::string around = syncedFolderAround(bookPath); !around.empty()) {
        warning = QStringLiteral("家計簿のファイルが同期ソフトの同期するフォルダ (%1) の中にあります。"
                                 "家計簿は同期フォルダの外に置いてください。")
                      .arg(qs(around));
    }
    ui->lblFolderWarning->setText(warning);
    ui->lblFolderWarning->setVisible(!warning.isEmpty());
}

void SyncSettingsViewController::btnChooseFolder()
{
    const QString chosen = QFileDialog::getExistingDirectory(this, QStringLiteral("同期フォルダを選ぶ"),
                                                             ui->edtFolder->text().isEmpty() ? QDir::homePath()
                                                                                             : ui->edtFolder->text());
    if (!chosen.isEmpty()) ui->edtFolder->setText(chosen);
}

bool SyncSettingsViewController::btnStart()
{
    std::string error;
    if (!controller.sync().setUp(folder(), pcName(), &error)) {
        messageService().someMessageWithAlert(QStringLiteral("同期を始められませんでした。"), qs(error));
        return false;
    }
    // The next PC starts from a copy of the book.
    if (!BookSync::writeSnapshotOf(controller.bookPath(), folder(), controller.sync().identity()->install,
                                   &error))
        messageService().someMessageWithAlert(QStringLiteral("同期フォルダに家計簿の写しを置けませんでした。"),
                                              qs(error));
    controller.restart();
    showState();
    messageService().someMessageWithAlert(
        QStringLiteral("同期を始めました。ほかの PC では同じフォルダを選び、「この同期フォルダの家計簿を使う」を"
                       "押してください。"),
        QStringLiteral("information"));
    return true;
}

bool SyncSettingsViewController::btnJoin()
{
    const bool ok = messageService().yesNoMessageWithAlert(
        QStringLiteral("この PC の家計簿を脇に残し、同期フォルダの家計簿に置き換えます。よろしいですか?"),
        QStringLiteral("置き換える"), QStringLiteral("キャンセル"));
    if (!ok) return false;
    BookSync& sync = controller.sync();
    // A copied book or a PC told to rebuild starts afresh from the folder.
    if (sync.syncing() && !sync.forget()) {
        messageService().someMessageWithAlert(QStringLiteral("家計簿の同期の設定を消せませんでした。"),
                                              QStringLiteral("information"));
        return false;
    }
    const std::string kept =
        keptBookPath(controller.bookPath(), currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toStdString());
    std::string error;
    // Copying the folder's snapshot of a large book takes a while: the
    // window keeps painting behind a progress dialog whose 中止 leaves this
    // PC's book as it was. The copy works on connections of its own; the
    // store's lists stay as they are until the book is read again.
    QProgressDialog progress(QStringLiteral("同期フォルダの家計簿を読み込んでいます…"), QStringLiteral("中止"), 0, 100,
                             this);
    progress.setWindowTitle(windowTitle());
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(500);
    std::atomic<bool> cancel{false};
    connect(&progress, &QProgressDialog::canceled, this, [&cancel] { cancel = true; });
    connect(&progress, &QDialog::rejected, this, [&cancel] { cancel = true; });
    const auto copied = [&progress](int done, int total) {
        progress.setValue(total ? 100 * done / total : 0);
        QCoreApplication::processEvents();
    };
    const bool joined = sync.join(folder(), pcName(), kept, &error, copied, &cancel);
    progress.reset();
    if (onBookReplaced) onBookReplaced();
    controller.restart();
    showState();
    if (!joined) {
        messageService().someMessageWithAlert(QStringLiteral("同期フォルダの家計簿を使えませんでした。"), qs(error));
        return false;
    }
    messageService().someMessageWithAlert(
        QStringLiteral("同期フォルダの家計簿に置き換えました。元の家計簿は次の名前で残してあります:\n") + qs(kept),
        QStringLiteral("information"));
    return true;
}

bool SyncSettingsViewController::btnStop()
{
    const bool ok = messageService().yesNoMessageWithAlert(
        QStringLiteral("この PC の同期をやめます。家計簿はこの PC にそのまま残ります。よろしいですか?"),
        QStringLiteral("やめる"), QStringLiteral("キャンセル"));
    if (!ok) return false;
    std::string error;
    const bool stopped = controller.sync().stop(&error);
    controller.restart();
    showState();
    if (!stopped) messageService().someMessageWithAlert(QStringLiteral("同期をやめられませんでした。"), qs(error));
    return stopped;
}
