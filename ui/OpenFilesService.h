#pragma once

#include <QString>
#include <QStringList>

// The open dialog: asks which files to read. The application shows a
// QFileDialog; tests install a service that answers at once.
class OpenFilesService {
public:
    virtual ~OpenFilesService() = default;
    // Asks for one or more existing files, offering the name filters (the
    // first one chosen), with the title. Empty when the user cancelled.
    virtual QStringList askOpenPaths(const QString& title, const QStringList& nameFilters) = 0;
};

// The service in use: the installed one, or the QFileDialog one.
OpenFilesService& openFilesService();

// Installs a service (not owned); nullptr restores the QFileDialog one.
void setOpenFilesService(OpenFilesService* service);
