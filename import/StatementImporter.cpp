#include "import/StatementImporter.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QMimeData>
#include <QProgressDialog>
#include <QUrl>
#include <QWidget>
#include <QtConcurrent/QtConcurrentRun>

#include "import/AssetChoice.h"
#include "import/CardStatementCheck.h"
#include "import/ImportMappingDialog.h"
#include "import/ImportPlan.h"
#include "import/ImportPreviewDialog.h"
#include "import/StatementReader.h"
#include "store/DataModel.h"
#include "ui/Clock.h"
#include "ui/MessageService.h"

namespace {

constexpr int kProgressSteps = 1000;
constexpr int kProgressDelayMs = 400;

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

// For a card asset, the statement against the card's period with the rows
// written: "\n　カードの…締め…差額 0円"; "" for other assets.
QString cardCheckLine(const ImportPlan& plan)
{
    const std::optional<CardStatementPeriod>& card = plan.context().cardPeriod;
    if (!card) return {};
    return QStringLiteral("\n　") + q(checkCardStatement(plan, *card).message(card->period));
}

// Runs work on a worker thread and then done(result) on the importer's thread.
template <typename Result, typename Work, typename Done>
std::function<void()> runAside(QObject* context, Work work, Done done)
{
    auto* watcher = new QFutureWatcher<Result>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context, [watcher, done] {
        done(watcher->result());
        watcher->deleteLater();
    });
    QFuture<Result> future = QtConcurrent::run(std::move(work));
    watcher->setFuture(future);
    return [future]() mutable { future.waitForFinished(); };
}

}  // namespace

// The file being imported and what was made of it so far.
struct StatementImporter::FileRun {
    int serial = 0;  // work finishing after its file has ended is dropped
    QString path;
    int position = 0;
    std::optional<ImportProfile> chosenProfile;  // from the mapping step
    uint32_t chosenHeaderLine = 0;
    std::shared_ptr<const StatementFile> statement;
    std::shared_ptr<ImportPlan> plan;
    int generation = 0;  // plans for an asset chosen before the last choice are dropped
    std::shared_ptr<std::atomic<bool>> cancel = std::make_shared<std::atomic<bool>>(false);
    QPointer<QProgressDialog> progress;
    QPointer<ImportPreviewDialog> preview;
    std::function<void()> waitForWork;

    QString name() const { return QFileInfo(path).fileName(); }
    void closeProgress()
    {
        if (progress) progress->deleteLater();
        progress = nullptr;
    }
};

StatementImporter::StatementImporter(DataModel& dm, QWidget* window) : QObject(window), dm(dm), window(window) {}

StatementImporter::~StatementImporter()
{
    // A worker still reading or matching stops at its next piece; nothing
    // it touches belongs to the window.
    if (current) {
        *current->cancel = true;
        if (current->waitForWork) current->waitForWork();
    }
}

bool StatementImporter::importFiles(const QStringList& paths)
{
    if (busy() || paths.isEmpty()) return false;
    queue = paths;
    count = static_cast<int>(paths.size());
    summary.clear();
    anyImported = false;
    nextFile();
    return true;
}

void StatementImporter::nextFile()
{
    if (queue.isEmpty()) return finishAll();
    current = std::make_unique<FileRun>();
    current->serial = ++lastSerial;
    current->path = queue.takeFirst();
    current->position = count - static_cast<int>(queue.size());
    read();
}

QProgressDialog* StatementImporter::makeProgress(const QString& label)
{
    auto* progress = new QProgressDialog(label, QStringLiteral("中止"), 0, kProgressSteps, window);
    progress->setWindowTitle(QStringLiteral("明細の取り込み"));
    progress->setWindowModality(Qt::WindowModal);
    progress->setMinimumDuration(kProgressDelayMs);
    progress->setAutoReset(false);
    progress->setValue(0);
    const std::shared_ptr<std::atomic<bool>> cancel = current->cancel;
    connect(progress, &QProgressDialog::canceled, this, [cancel] { *cancel = true; });
    return progress;
}

std::vector<ImportProfile> StatementImporter::savedProfiles()
{
    std::vector<ImportProfileRow> rows;
    std::vector<ImportProfile> profiles;
    if (dm.readImportProfiles(rows))
        for (const ImportProfileRow& r : rows) profiles.push_back(profileFromMapping(mappingFromJson(r.mapping)));
    return profiles;
}

void StatementImporter::read()
{
    FileRun& run = *current;
    run.progress = makeProgress(QStringLiteral("「%1」を読み込んでいます…").arg(run.name()));
    ReadOptions options;
    options.savedProfiles = savedProfiles();
    options.chosenProfile = run.chosenProfile;
    options.chosenHeaderLine = run.chosenHeaderLine;
    // The reading runs aside and reports its progress to the dialog here.
    QPointer<QProgressDialog> progress = run.progress;
    options.progress = [progress, cancel = run.cancel](uint64_t done, uint64_t total) {
        const int value = total ? static_cast<int>(done * kProgressSteps / total) : 0;
        QMetaObject::invokeMethod(
            progress, [progress, value] { if (progress) progress->setValue(value); }, Qt::QueuedConnection);
        return !*cancel;
    };
    const std::string path = QFile::encodeName(run.path).toStdString();
    run.waitForWork = runAside<std::shared_ptr<StatementReading>>(
        this, [path, options] { return std::make_shared<StatementReading>(readStatementFile(path, options)); },
        [this, serial = run.serial](std::shared_ptr<StatementReading> reading) {
            if (current && current->serial == serial) onRead(std::move(reading));
        });
}

void StatementImporter::onRead(std::shared_ptr<StatementReading> reading)
{
    FileRun& run = *current;
    run.waitForWork = nullptr;
    run.closeProgress();
    if (!reading->ok()) {
        const Refusal& refusal = *reading->refusal;
        if (refusal.reason == RefusalReason::Unrecognised && !run.chosenProfile) return askMapping(refusal);
        if (refusal.reason == RefusalReason::Cancelled) return endFile(QStringLiteral(": 読み込みを中止しました"), false);
        // The first lines as decoded show the user what is wrong with the file.
        QStringList start;
        for (const std::string& line : refusal.firstLines) start << q(line);
        messageService().someMessageWithAlert(
            q(refusal.message),
            start.isEmpty() ? QStringLiteral("information") : QStringLiteral("ファイルの先頭:\n") + start.join(u'\n'));
        return endFile(QStringLiteral(": 取り込みませんでした"), false);
    }
    run.statement = std::make_shared<const StatementFile>(std::move(reading->statement));
    std::vector<ImportAccountRow> accounts;
    if (!dm.readImportAccounts(accounts)) return endFile(QStringLiteral(": 取り込みませんでした"), false);
    std::vector<int64_t> existing;
    for (const auto& s : dm.sisanList) existing.push_back(s->Id);
    const int64_t fallback = shownSisan ? shownSisan() : (existing.empty() ? 0 : existing.front());
    plan(proposedSisan(run.statement->layout.profile.id, statementAccount(*run.statement), accounts, existing,
                       fallback));
}

void StatementImporter::askMapping(const Refusal& refusal)
{
    auto* mapping = new ImportMappingDialog(q(refusal.message), refusal.firstRecords, window);
    mapping->setAttribute(Qt::WA_DeleteOnClose);
    connect(mapping, &QDialog::rejected, this, [this] {
        messageService().someMessageWithAlert(
            QStringLiteral("「%1」は形式が指定されなかったため、取り込みませんでした。").arg(current->name()),
            QStringLiteral("information"));
        endFile(QStringLiteral(": 形式を指定しませんでした"), false);
    });
    connect(mapping, &QDialog::accepted, this, [this, mapping] {
        const UserMapping m = mapping->mapping();
        if (!dm.saveImportProfile(m.name, mappingToJson(m))) return endFile(QStringLiteral(": 取り込みませんでした"), false);
        current->chosenProfile = profileFromMapping(m);
        current->chosenHeaderLine = static_cast<uint32_t>(m.headerLine);
        read();
    });
    mapping->open();
}

void StatementImporter::plan(int64_t sisanId)
{
    FileRun& run = *current;
    ImportContext context;
    if (!loadImportContext(dm, *run.statement, sisanId, context)) return endFile(QStringLiteral(": 取り込みませんでした"), false);
    const int generation = ++run.generation;
    if (run.preview) run.preview->showPlan(nullptr);
    run.plan.reset();
    run.progress = makeProgress(QStringLiteral("「%1」を家計簿と照合しています…").arg(run.name()));
    run.progress->setRange(0, 0);
    run.waitForWork = runAside<std::shared_ptr<ImportPlan>>(
        this,
        [statement = run.statement, context = std::move(context)]() mutable {
            return std::make_shared<ImportPlan>(statement, std::move(context));
        },
        [this, serial = run.serial, generation](std::shared_ptr<ImportPlan> made) {
            if (current && current->serial == serial) onPlanned(std::move(made), generation);
        });
}

void StatementImporter::onPlanned(std::shared_ptr<ImportPlan> made, int generation)
{
    FileRun& run = *current;
    if (generation != run.generation) return;
    run.waitForWork = nullptr;
    run.closeProgress();
    if (*run.cancel) return endFile(QStringLiteral(": 照合を中止しました"), false);
    // A file with nothing left to import needs no preview.
    if (const std::string nothing = made->nothingToImport(); !nothing.empty() && !run.preview) {
        messageService().someMessageWithAlert(q(nothing), QStringLiteral("information"));
        return endFile(QStringLiteral(": 取り込みませんでした"), false);
    }
    run.plan = std::move(made);
    showPreview();
}

void StatementImporter::showPreview()
{
    FileRun& run = *current;
    const StatementFile& s = *run.statement;
    if (!run.preview) {
        run.preview = new ImportPreviewDialog(window);
        QString details = QStringLiteral("ファイル: %1　文字コード: %2").arg(run.name(), QString::fromUtf8(encodingName(s.encoding)));
        if (const std::string account = statementAccount(s); !account.empty())
            details += QStringLiteral("　口座・カード番号: %1").arg(q(account));
        run.preview->showFile(q(s.displayName), details, run.position, count);
        connect(run.preview, &QDialog::accepted, this, &StatementImporter::write);
        connect(run.preview, &QDialog::rejected, this, [this] { endFile(QStringLiteral(": 取り込みませんでした"), false); });
        connect(run.preview, &ImportPreviewDialog::sisanChosen, this, &StatementImporter::plan);
        run.preview->open();
    }
    run.preview->showSisans(run.plan->context().sisans, run.plan->context().sisanId);
    run.preview->showPlan(run.plan.get());
}

void StatementImporter::write()
{
    const ImportPlan& plan = *current->plan;
    const ImportSummary s = plan.summary();
    const std::string now = currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString();
    ImportOutcome outcome;
    if (!dm.importStatementEntries(plan.batch(now), &outcome))
        return endFile(QStringLiteral(": 書き込めませんでした"), false);  // the store has said why
    const int64_t sisanId = plan.context().sisanId;
    if (imported) imported(sisanId, outcome.itemIds);
    const ContextSisan* sisan = plan.context().sisan(sisanId);
    endFile(QStringLiteral("を資産「%1」に取り込みました: 読み込み %2行・取り込み %3行・取込済み %4行・読めない行 %5行")
                .arg(sisan ? q(sisan->namae) : QString())
                .arg(s.read)
                .arg(outcome.itemIds.size())
                .arg(s.already)
                .arg(s.refused) +
                cardCheckLine(plan),
            true);
}

void StatementImporter::endFile(const QString& outcome, bool importedRows)
{
    FileRun& run = *current;
    run.closeProgress();
    if (run.preview) {
        run.preview->showPlan(nullptr);
        run.preview->deleteLater();
    }
    summary << QStringLiteral("「%1」%2").arg(run.name(), outcome);
    anyImported = anyImported || importedRows;
    current.reset();
    nextFile();
}

void StatementImporter::finishAll()
{
    // Refusals were said file by file; the summary follows once something was written.
    if (anyImported) messageService().someMessageWithAlert(summary.join(u'\n'), QStringLiteral("information"));
    summary.clear();
    count = 0;
    emit finished();
}

void StatementImporter::acceptDropsOn(QWidget* target)
{
    target->setAcceptDrops(true);
    target->installEventFilter(this);
}

bool StatementImporter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop) return QObject::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event);
    QStringList paths;
    if (drop->mimeData()->hasUrls())
        for (const QUrl& url : drop->mimeData()->urls())
            if (url.isLocalFile()) paths << url.toLocalFile();
    if (paths.isEmpty() || busy()) return false;
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop && (!mayStart || mayStart())) importFiles(paths);
    return true;
}
