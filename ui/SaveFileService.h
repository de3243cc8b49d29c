#pragma once

#include <QString>
#include <QStringList>

// The save dialog: asks where to write a file. The application shows a
// QFileDialog; tests and the benchmark install a service that answers at
// once, so no test needs a screen.
class SaveFileService {
public:
    virtual ~SaveFileService() = default;
    // Asks for a path to save to, offering the file types (extensions without
    // the dot, the first the default), proposing no name and allowing new
    // folders. Returns the chosen path, or an empty text when the user
    // cancelled. The returned path is taken as given; see savePathWithExtension.
    virtual QString askSavePath(const QStringList& fileTypes) = 0;
};

// The service in use: the installed one, or the QFileDialog one.
SaveFileService& saveFileService();

// Installs a service (not owned); nullptr restores the QFileDialog one.
void setSaveFileService(SaveFileService* service);

// Asks the service in use; a name typed without one of the offered
// extensions gets the first of them (".csv", ".pdf", ".png"). Empty when
// the user cancelled.
QString savePathWithExtension(const QStringList& fileTypes);
