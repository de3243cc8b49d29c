#include "history/RestoreViewController.h"

#include <QDate>
#include <QDir>
#include <QEventLoop>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLocale>
#include <QProgressDialog>
#include <QThread>

#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/Clock.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_RestoreViewController.h"

namespace {

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

// "20261101" as 2026年11月01日.
QString dayText(const std::string& day)
{
    const QDate date = QDate::fromString(q(day), QStringLiteral("yyyyMMdd"));
    return date.isValid() ? dateStamp(date) : q(day);
}

QString optionalKingaku(const std::optional<int64_t>& value)
{
    return value ? groupedKingaku(*value) : QStringLiteral("—");
}

}  // namespace

RestoreViewController::RestoreViewController(DataModel& dm, std::string dir, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::RestoreViewController>()), backupDir(std::move(dir))
{
    ui->setupUi(this);
    for (const std::string& path : listBackups(backupDir)) rows.push_back({path, std::nullopt});
    const auto summary = [this](int r) -> const std::optional<BackupSummary>& {
        return rows[static_cast<size_t>(r)].summary;
    };
    const auto read = [summary](int r, const std::function<QString(const BackupSummary&)>& text) {
        const auto& s = summary(r);
        if (!s) return QStringLiteral("…");
        return s->error.empty() ? text(*s) : QString();
    };
    backupsModel = new ListTableModel(
        [this] { return static_cast<int>(rows.size()); },
        {{"day", QStringLiteral("日付"), false,
          [this](int r) {
              const std::string file = QDir(q(rows[static_cast<size_t>(r)].path)).dirName().toStdString();
              return dayText(file.substr(8, 8));
          }},
         {"bytes", QStringLiteral("大きさ"), true,
          [read](int r) {
              return read(r, [](const BackupSummary& s) {
                  return QLocale(QLocale::Japanese).formattedDataSize(s.bytes, 1, QLocale::DataSizeTraditionalFormat);
              });
          }},
         {"entries", QStringLiteral("入力の件数"), true,
          [read](int r) { return read(r, [](const BackupSummary& s) { return groupedKingaku(s.entries); }); }},
         {"grandTotal", QStringLiteral("資産合計"), true,
          [read](int r) { return read(r, [](const BackupSummary& s) { return groupedKingaku(s.grandTotal); }); }},
         {"error", QStringLiteral("状態"), false,
          [summary](int r) {
              const auto& s = summary(r);
              return s && !s->error.empty() ? QStringLiteral("読めません: ") + q(s->error) : QString();
          }}},
        {}, this);
    differenceModel = new ListTableModel(
        [this] { return static_cast<int>(difference.balances.size()); },
        {{"namae", QStringLiteral("資産"), false,
          [this](int r) { return q(difference.balances[static_cast<size_t>(r)].namae); }},
         {"then", QStringLiteral("その時の残高"), true,
          [this](int r) { return optionalKingaku(difference.balances[static_cast<size_t>(r)].then); }},
         {"now", QStringLiteral("今の残高"), true,
          [this](int r) { return optionalKingaku(difference.balances[static_cast<size_t>(r)].now); }},
         {"change", QStringLiteral("差"), true,
          [this](int r) {
              const auto& b = difference.balances[static_cast<size_t>(r)];
              return b.then && b.now ? groupedKingaku(*b.now - *b.then) : QString();
          }}},
        {}, this);
    ui->tblBackups->setModel(backupsModel);
    ui->tblDifference->setModel(differenceModel);
    ui->lblBackupFolder->setText(rows.empty() ? QStringLiteral("バックアップはまだありません: ") + q(backupDir)
                                              : QStringLiteral("バックアップのフォルダ: ") + q(backupDir));
    layOutColumns();
    connect(ui->tblBackups->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { backupSelected(current.row()); });
    connect(ui->btnRestore, &QPushButton::clicked, this, &RestoreViewController::btnRestore);
    connect(ui->btnClose, &QPushButton::clicked, this, &QDialog::reject);
    ui->btnRestore->setEnabled(false);
    readSummaries();
    if (!rows.empty()) ui->tblBackups->setCurrentIndex(backupsModel->index(0, 0));
    ui->tblBackups->setFocus();
}

RestoreViewController::~RestoreViewController()
{
    stop = true;
    stopComparing();
    if (summaries) {
        summaries->wait();
        delete summaries;
    }
}

void RestoreViewController::layOutColumns()
{
    const QFontMetrics metrics(font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    QHeaderView* backups = ui->tblBackups->horizontalHeader();
    backups->resizeSection(0, metrics.horizontalAdvance(QStringLiteral("0000年00月00日")) + 24);
    backups->resizeSection(1, metrics.horizontalAdvance(QStringLiteral("000.0 MB")) + 24);
    backups->resizeSection(2, metrics.horizontalAdvance(QStringLiteral("入力の件数 000")) + 24);
    backups->resizeSection(3, amount);
    backups->setStretchLastSection(true);
    QHeaderView* difference = ui->tblDifference->horizontalHeader();
    difference->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int c = 1; c < 4; ++c) difference->resizeSection(c, amount);
    for (QTableView* table : {ui->tblBackups, ui->tblDifference}) {
        table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setDefaultSectionSize(metrics.height() + 10);
    }
}

void RestoreViewController::readSummaries()
{
    // One worker reads the backups in turn; each result reaches the list on
    // this thread as soon as it is read.
    std::vector<std::string> paths;
    for (const Row& row : rows) paths.push_back(row.path);
    summaries = QThread::create([this, paths] {
        for (size_t i = 0; i < paths.size() && !stop; ++i) {
            BackupSummary summary = readBackupSummary(paths[i]);
            QMetaObject::invokeMethod(
                this,
                [this, i, summary] {
                    rows[i].summary = summary;
                    emit backupsModel->dataChanged(backupsModel->index(static_cast<int>(i), 0),
                                                   backupsModel->index(static_cast<int>(i), 4));
                    if (static_cast<int>(i) == selectedRow()) ui->btnRestore->setEnabled(summary.error.empty());
                },
                Qt::QueuedConnection);
        }
    });
    summaries->start(QThread::LowPriority);
}

void RestoreViewController::stopComparing()
{
    if (!comparison) return;
    stopComparison = true;
    comparison->wait();
    delete comparison;
    comparison = nullptr;
    stopComparison = false;
    comparing = false;
}

int RestoreViewController::selectedRow() const
{
    const QModelIndex current = ui->tblBackups->currentIndex();
    return current.isValid() ? current.row() : -1;
}

bool RestoreViewController::idle() const
{
    for (const Row& row : rows)
        if (!row.summary) return false;
    return !comparing;
}

void RestoreViewController::backupSelected(int row)
{
    stopComparing();
    difference = BackupDifference{};
    differenceModel->reload();
    const bool chosen = row >= 0 && row < static_cast<int>(rows.size());
    const auto& summary = chosen ? rows[static_cast<size_t>(row)].summary : std::nullopt;
    ui->btnRestore->setEnabled(chosen && (!summary || summary->error.empty()));
    if (!chosen) {
        ui->lblDifference->clear();
        return;
    }
    ui->lblDifference->setText(QStringLiteral("今の帳簿と比べています…"));
    const std::string backup = rows[static_cast<size_t>(row)].path;
    const std::string book = DM.bookPath();
    auto result = std::make_shared<BackupDifference>();
    comparison = QThread::create([this, backup, book, result] {
        *result = compareWithBackup(book, backup, &stopComparison);
    });
    comparing = true;
    connect(comparison, &QThread::finished, this, [this, result, row] {
        if (result->error == "cancelled" || row != selectedRow()) return;
        comparing = false;
        if (!result->error.empty()) {
            ui->lblDifference->setText(QStringLiteral("比べられませんでした: ") + q(result->error));
            return;
        }
        difference = *result;
        differenceModel->reload();
        ui->lblDifference->setText(QStringLiteral("この日から追加された入力 %1 件、削除された入力 %2 件"
                                                  "（変更された入力は両方に数えます）")
                                       .arg(groupedKingaku(difference.added), groupedKingaku(difference.removed)));
    });
    comparison->start(QThread::LowPriority);
}

bool RestoreViewController::btnRestore()
{
    const int row = selectedRow();
    if (row < 0) return false;
    const std::string backup = rows[static_cast<size_t>(row)].path;
    const QString day = dayText(QDir(q(backup)).dirName().mid(8, 8).toStdString());
    const std::string keep =
        keptBookPath(DM.bookPath(), currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toStdString());
    if (!messageService().yesNoMessageWithAlert(
            day + QStringLiteral("のバックアップに戻しますか？\n今の帳簿は次の名前で残します:\n") + q(keep),
            QStringLiteral("戻す"), QStringLiteral("やめる")))
        return false;
    stop = true;  // the summaries are not needed any more
    stopComparing();
    std::string error;
    kept = keep;
    const RestoreResult result = restoreWithProgress(backup, &error);
    if (result == RestoreResult::Restored) {
        accept();
        return true;
    }
    kept.clear();
    messageService().someMessageWithAlert(
        result == RestoreResult::Cancelled ? QStringLiteral("復元を中止しました。今の帳簿はそのままです。")
                                           : QStringLiteral("バックアップから戻せませんでした。今の帳簿はそのままです。"),
        q(error));
    return false;
}

RestoreResult RestoreViewController::restoreWithProgress(const std::string& backup, std::string* error)
{
    // The copy runs on a worker with connections of its own; the store's
    // connection stays idle meanwhile, behind the modal progress dialog.
    QProgressDialog progress(QStringLiteral("バックアップから戻しています…"), QStringLiteral("中止"), 0, 100, this);
    progress.setWindowTitle(windowTitle());
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(0);
    progress.setValue(0);
    std::atomic<bool> cancel{false};
    // 中止, and a quit that closes every modal window, leave the book as it was.
    connect(&progress, &QProgressDialog::canceled, this, [&cancel] { cancel = true; });
    connect(&progress, &QDialog::rejected, this, [&cancel] { cancel = true; });
    RestoreResult result = RestoreResult::Failed;
    const std::string book = DM.bookPath();
    QEventLoop loop;
    std::unique_ptr<QThread> worker(QThread::create([&] {
        result = restoreBackupInPlace(backup, book, kept, error, [&](int done, int total) {
            QMetaObject::invokeMethod(
                &progress, [&progress, done, total] { progress.setValue(total ? 100 * done / total : 0); },
                Qt::QueuedConnection);
        }, &cancel);
    }));
    connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    loop.exec();
    worker->wait();
    QCoreApplication::removePostedEvents(&progress);
    if (result == RestoreResult::Restored) {
        progress.setCancelButton(nullptr);
        progress.setLabelText(QStringLiteral("帳簿を開き直しています…"));
        progress.setValue(100);
        QCoreApplication::processEvents();
        if (onRestored) onRestored();
    }
    return result;
}
