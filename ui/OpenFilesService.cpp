#include "ui/OpenFilesService.h"

#include <QApplication>
#include <QFileDialog>

namespace {

class FileDialogService final : public OpenFilesService {
public:
    QStringList askOpenPaths(const QString& title, const QStringList& nameFilters) override
    {
        QFileDialog dialog(QApplication::activeWindow(), title);
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
        dialog.setFileMode(QFileDialog::ExistingFiles);
        dialog.setNameFilters(nameFilters);
        if (!lastFolder.isEmpty()) dialog.setDirectory(lastFolder);
        if (dialog.exec() != QDialog::Accepted) return {};
        lastFolder = dialog.directory().absolutePath();
        return dialog.selectedFiles();
    }

private:
    QString lastFolder;  // the next statements are usually downloaded to the same place
};

OpenFilesService* installed = nullptr;

}  // namespace

OpenFilesService& openFilesService()
{
    static FileDialogService dialogs;
    return installed ? *installed : dialogs;
}

void setOpenFilesService(OpenFilesService* service)
{
    installed = service;
}
