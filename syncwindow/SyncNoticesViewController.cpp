#include "syncwindow/SyncNoticesViewController.h"

#include <QDateTime>
#include <QHeaderView>

#include "store/DataModel.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_SyncNoticesViewController.h"

namespace {

const std::string kUndoLabel = "同期の調整を元に戻す";

QString qs(const std::string& text)
{
    return QString::fromStdString(text);
}

// Whether 元に戻す can take the case back: a lost edit written again, or an
// entry that was kept or brought back deleted.
bool undoable(const StoredNotice& stored)
{
    if (stored.undone) return false;
    const SyncNotice& n = stored.notice;
    switch (n.kind) {
    case NoticeKind::BothEdited:
        return true;
    case NoticeKind::EditKept:
    case NoticeKind::RestoredForNew:
    case NoticeKind::PartnerKept:
        return n.table == "Items";
    case NoticeKind::EditLost:
    case NoticeKind::ParentMissing:
        return false;
    }
    return false;
}

}  // namespace

SyncNoticesViewController::SyncNoticesViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::SyncNoticesViewController>())
{
    ui->setupUi(this);
    const auto at = [this](int row) { return notices[static_cast<size_t>(row)]; };
    model = new ListTableModel(
        [this] { return static_cast<int>(notices.size()); },
        {{"At", QStringLiteral("日時"), false,
          [at](int row) {
              return QDateTime::fromMSecsSinceEpoch(at(row).at).toString(QStringLiteral("yyyy/MM/dd HH:mm"));
          }},
         {"Text", QStringLiteral("調整"), false, [at](int row) { return qs(at(row).notice.text); }},
         {"Detail", QStringLiteral("対象"), false, [at](int row) { return qs(at(row).notice.detail); }},
         {"Undone", QStringLiteral("状態"), false,
          [at](int row) { return at(row).undone ? QStringLiteral("元に戻した") : QString(); }}},
        {}, this);
    ui->tblNotices->setModel(model);
    const QFontMetrics metrics(font());
    QHeaderView* header = ui->tblNotices->horizontalHeader();
    header->resizeSection(0, metrics.horizontalAdvance(QStringLiteral("0000/00/00 00:00")) + 24);
    header->resizeSection(1, metrics.horizontalAdvance(QStringLiteral("同じ支出が両方で編集されました: 新しい方を採用")) + 24);
    header->setSectionResizeMode(2, QHeaderView::Stretch);
    header->resizeSection(3, metrics.horizontalAdvance(QStringLiteral("元に戻した")) + 24);
    connect(ui->tblNotices->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SyncNoticesViewController::selectionChanged);
    connect(ui->btnUndoNotice, &QPushButton::clicked, this, &SyncNoticesViewController::btnUndoNotice);
    connect(ui->btnClose, &QPushButton::clicked, this, &QDialog::reject);
    reload();
    DM.runSyncWork(markNoticesSeen);
    if (!notices.empty()) ui->tblNotices->selectRow(0);
    ui->tblNotices->setFocus();
    selectionChanged();
}

SyncNoticesViewController::~SyncNoticesViewController() = default;

void SyncNoticesViewController::reload()
{
    std::vector<StoredNotice> read;
    if (DM.runSyncWork([&](sqlite3* db) { return readNotices(db, &read); })) notices = std::move(read);
    model->reload();
}

int SyncNoticesViewController::selectedRow() const
{
    const QModelIndexList rows = ui->tblNotices->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void SyncNoticesViewController::selectionChanged()
{
    const int row = selectedRow();
    ui->btnUndoNotice->setEnabled(row >= 0 && undoable(notices[static_cast<size_t>(row)]));
}

bool SyncNoticesViewController::undo(const StoredNotice& stored)
{
    const SyncNotice& n = stored.notice;
    if (n.kind == NoticeKind::BothEdited) return DM.rewriteRow(n.table, n.rowId, n.losing, kUndoLabel);
    // The entry that was kept or brought back goes, with its transfer partner.
    const std::shared_ptr<Items> entry = DM.readFromItem1Item(n.rowId);
    if (!entry) return true;  // already gone
    if (entry->IdouId > 0) return DM.itemDeleteIdouPair(entry->IdouId, entry->Id);
    return DM.itemDelete(entry->Id);
}

bool SyncNoticesViewController::btnUndoNotice()
{
    const int row = selectedRow();
    if (row < 0 || !undoable(notices[static_cast<size_t>(row)])) return false;
    const StoredNotice stored = notices[static_cast<size_t>(row)];
    if (!undo(stored)) return false;
    changed = true;
    DM.runSyncWork([&](sqlite3* db) { return markNoticeUndone(db, stored.id); });
    reload();
    ui->tblNotices->selectRow(row);
    selectionChanged();
    return true;
}
