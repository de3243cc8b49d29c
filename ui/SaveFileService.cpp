#include "ui/SaveFileService.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>

namespace {

class FileDialogService final : public SaveFileService {
public:
    QString askSavePath(const QStringList& fileTypes) override
    {
        QStringList patterns;
        for (const QString& type : fileTypes) patterns.push_back(QStringLiteral("*.") + type);
        QFileDialog dialog(QApplication::activeWindow());
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setFileMode(QFileDialog::AnyFile);
        dialog.setNameFilter(patterns.join(QLatin1Char(' ')));
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
        return dialog.selectedFiles().front();
    }
};

SaveFileService* installed = nullptr;

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

QString savePathWithExtension(const QStringList& fileTypes)
{
    const QString path = saveFileService().askSavePath(fileTypes);
    if (path.isEmpty() || fileTypes.isEmpty()) return path;
    const QString suffix = QFileInfo(path).suffix();
    for (const QString& type : fileTypes)
        if (suffix == type) return path;
    return path + QLatin1Char('.') + fileTypes.front().toLower();
}
