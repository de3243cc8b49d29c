#include "ui/SaveFileService.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <cerrno>
#include <cstring>

#include "ui/MessageService.h"

namespace {

const QString kReportFolderKey = QStringLiteral("reports/folder");

class FileDialogService final : public SaveFileService {
public:
    QString askSavePath(const QStringList& fileTypes, const QString& proposedPath) override
    {
        QStringList patterns;
        for (const QString& type : fileTypes) patterns.push_back(QStringLiteral("*.") + type);
        QFileDialog dialog(QApplication::activeWindow());
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        dialog.setNameFilter(patterns.join(QLatin1Char(' ')));
        if (!fileTypes.isEmpty()) dialog.setDefaultSuffix(fileTypes.front().toLower());
        const QFileInfo proposed(proposedPath);
        dialog.setDirectory(proposed.absolutePath());
        dialog.selectFile(proposed.fileName());
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
        return dialog.selectedFiles().front();
    }
};

SaveFileService* installed = nullptr;

// The program's one settings file (~/.config/Zenvora/Zenvora.conf).
QSettings settings()
{
    return QSettings(QStringLiteral("Zenvora"), QStringLiteral("Zenvora"));
}

QString reasonOf(int errorNumber)
{
    switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
        return QStringLiteral("保存先のフォルダがありません。");
    case EACCES:
    case EPERM:
        return QStringLiteral("保存先に書き込む権限がありません。");
    case EROFS:
        return QStringLiteral("保存先は読み取り専用です。");
    case ENOSPC:
    case EDQUOT:
        return QStringLiteral("ディスクの空き容量が足りません。");
    case EISDIR:
        return QStringLiteral("同じ名前のフォルダがあります。");
    case ENAMETOOLONG:
        return QStringLiteral("ファイル名が長すぎます。");
    default:
        return QStringLiteral("システムのエラーです（%1）。").arg(QString::fromLocal8Bit(std::strerror(errorNumber)));
    }
}

// The folder the next save dialog starts in: the last one saved to while it
// exists, else the documents folder, else home.
QString reportFolder()
{
    const QString last = settings().value(kReportFolderKey).toString();
    if (!last.isEmpty() && QFileInfo(last).isDir()) return last;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

}  // namespace

SaveFileService& saveFileService()
{
    static FileDialogService dialogs;
    return installed ? *installed : dialogs;
}

void setSaveFileService(SaveFileService* service)
{
    installed = service;
}

QString savePathWithExtension(const QStringList& fileTypes, const QString& proposedName)
{
    QString path = saveFileService().askSavePath(fileTypes, QDir(reportFolder()).filePath(proposedName));
    if (path.isEmpty()) return path;
    const QString suffix = QFileInfo(path).suffix();
    if (!fileTypes.isEmpty() && !fileTypes.contains(suffix)) path += QLatin1Char('.') + fileTypes.front().toLower();
    settings().setValue(kReportFolderKey, QFileInfo(path).absolutePath());
    return path;
}

void tellSaveFailed(const QString& path, int errorNumber, const QString& detail)
{
    messageService().someMessageWithAlert(QStringLiteral("「%1」を保存できませんでした。").arg(path),
                                          errorNumber != 0 ? reasonOf(errorNumber) : detail);
}
