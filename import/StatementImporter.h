#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "import/ImportProfile.h"

class DataModel;
class ImportPlan;
class ImportPreviewDialog;
class QProgressDialog;
class QWidget;
struct Refusal;
struct StatementFile;
struct StatementReading;

// Imports statement files into the book, one after another, without ever
// blocking the window: each file is read on a worker thread (a progress
// dialog with 中止 appears when it takes a while), an unknown layout asks
// for the mapping step (kept in the book under its name), the rows are
// matched against the book on a worker thread, and the preview shows them
// for the asset the layout and account went to last time. 取り込む writes
// the file in one store operation; then `imported` shows the asset with its
// new rows, and the next file follows. A file that cannot be read or may
// not go into the chosen asset is said in a message naming it; after the
// last file a summary of every file is shown.
class StatementImporter final : public QObject {
    Q_OBJECT

public:
    StatementImporter(DataModel& dm, QWidget* window);
    ~StatementImporter() override;

    // Told after each file written: the asset and its new rows.
    std::function<void(int64_t sisanId, const std::vector<int64_t>& itemIds)> imported;
    // The asset proposed for a file the book remembers none for.
    std::function<int64_t()> shownSisan;
    // Asked before files dropped on the window are taken; false (after
    // saying why) leaves them.
    std::function<bool()> mayStart;

    // Starts importing the files; false (nothing done) while files are being imported.
    bool importFiles(const QStringList& paths);
    bool busy() const { return !queue.isEmpty() || current != nullptr; }
    // Lets the window take statement files dropped on it.
    void acceptDropsOn(QWidget* target);

signals:
    // The last file is done and the summary was shown.
    void finished();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct FileRun;
    DataModel& dm;
    QWidget* window;
    QStringList queue;
    int count = 0;
    std::unique_ptr<FileRun> current;
    int lastSerial = 0;
    QStringList summary;
    bool anyImported = false;

    void nextFile();
    void read();
    void onRead(std::shared_ptr<StatementReading> reading);
    void askMapping(const Refusal& refusal);
    void plan(int64_t sisanId);
    void onPlanned(std::shared_ptr<ImportPlan> plan, int generation);
    void showPreview();
    void write();
    // Ends the file with its line of the summary ("「file」" + outcome).
    void endFile(const QString& outcome, bool importedRows);
    void finishAll();
    QProgressDialog* makeProgress(const QString& label);
    std::vector<ImportProfile> savedProfiles();
};
