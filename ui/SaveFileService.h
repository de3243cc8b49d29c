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
    // the dot, the first the default), starting at proposedPath (a folder and
    // a file name) and allowing new folders. Returns the chosen path, or an
    // empty text when the user cancelled. The returned path is taken as
    // given; see savePathWithExtension.
    virtual QString askSavePath(const QStringList& fileTypes, const QString& proposedPath) = 0;
};

// The service in use: the installed one, or the QFileDialog one.
SaveFileService& saveFileService();

// Installs a service (not owned); nullptr restores the QFileDialog one.
void setSaveFileService(SaveFileService* service);

// Asks the service in use, proposing proposedName in the folder a report was
// last saved to (the user's documents folder before the first save). A name
// typed without one of the offered extensions gets the first of them
// (".csv", ".pdf", ".png"). The folder of the chosen path is remembered for
// the next report. Empty when the user cancelled.
QString savePathWithExtension(const QStringList& fileTypes, const QString& proposedName);

// Tells the user that the file at path could not be saved, and why: the
// system's error number errorNumber in plain words, or detail when the
// failure has no such number (0).
void tellSaveFailed(const QString& path, int errorNumber, const QString& detail = {});
