#include "household/TeikiKityouViewController.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>

#include "editors/EditorWidgets.h"
#include "household/TeikiKityouModel.h"
#include "store/DataModel.h"
#include "ui/BoxKeys.h"
#include "ui/FitToScreen.h"
#include "ui/MessageService.h"
#include "ui_TeikiKityouViewController.h"

TeikiKityouViewController::TeikiKityouViewController(DataModel& dm, const std::vector<TeikiOccurrence>& due,
                                                     const Date& today, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::TeikiKityouViewController>()), due(due), today(today)
{
    ui->setupUi(this);
    model = new TeikiKityouModel(DM, due, this);
    ui->tblTeikiKityou->setModel(model);
    ui->lblTeikiKityou->setText(
        QStringLiteral("期日が来た定期的な支出入が %1 件あります。記帳するものにチェックを付けてください"
                       "（Space キーで切り替え）。金額は選んで入力すると変えられます。")
            .arg(model->rowCount()));
    layOutColumns();
    connect(ui->btnTeikiKityou, &QPushButton::clicked, this, &TeikiKityouViewController::btnTeikiKityou);
    connect(ui->btnTeikiAtode, &QPushButton::clicked, this, &TeikiKityouViewController::btnTeikiAtode);
    ui->tblTeikiKityou->installEventFilter(this);
    ui->tblTeikiKityou->setFocus();
    ui->tblTeikiKityou->setCurrentIndex(model->index(0, TeikiKityouModel::kHizuke));
    fitToScreen(this);
}

TeikiKityouViewController::~TeikiKityouViewController() = default;

void TeikiKityouViewController::layOutColumns()
{
    const QFontMetrics metrics(font());
    QHeaderView* header = ui->tblTeikiKityou->horizontalHeader();
    const int kanji = metrics.horizontalAdvance(QChar(0x4E00));
    header->resizeSection(TeikiKityouModel::kHizuke, metrics.horizontalAdvance(QStringLiteral("0000-00-00（水）")) + 48);
    header->resizeSection(TeikiKityouModel::kSisan, 8 * kanji + 24);
    header->resizeSection(TeikiKityouModel::kSyubetu, 2 * kanji + 24);
    header->setSectionResizeMode(TeikiKityouModel::kNaiyou, QHeaderView::Stretch);
    header->resizeSection(TeikiKityouModel::kKingaku, metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24);
    setRowHeights(ui->tblTeikiKityou);
}

void TeikiKityouViewController::btnTeikiKityou()
{
    const auto& rows = model->rows();
    const bool miokuri = ui->rdbTeikiMiokuru->isChecked();
    std::vector<TeikiPosting> postings;
    std::vector<bool> dealtWith;
    for (size_t i = 0; i < rows.size(); ++i) {
        const auto& row = rows[i];
        const Occurrence& o = row.due.occurrence;
        dealtWith.push_back(row.checked || miokuri);
        if (!row.checked) {
            if (miokuri) postings.push_back({row.teiki.Id, o.scheduled.iso(), "", 0, true});
            continue;
        }
        const auto kingaku = TeikiKityouModel::kingakuOf(row);
        if (!kingaku) {
            ui->tblTeikiKityou->setCurrentIndex(model->index(static_cast<int>(i), TeikiKityouModel::kKingaku));
            messageService().someMessageWithAlert(QStringLiteral("金額の欄に不正なデータがあります"),
                                                  QStringLiteral("information"));
            return;
        }
        postings.push_back({row.teiki.Id, o.scheduled.iso(), o.posting.iso(), *kingaku, false});
    }
    std::vector<TeikiOccurrence> shown;
    for (const auto& row : rows) shown.push_back(row.due);
    if (!postings.empty()) {
        if (!DM.teikiKityou(postings, kakuninAfterPosting(shown, dealtWith, today))) return;
        writtenSw = true;
    }
    accept();
}

void TeikiKityouViewController::btnTeikiAtode()
{
    reject();
}

bool TeikiKityouViewController::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->tblTeikiKityou && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        // While an amount is typed, the keys go to its editor, not here.
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
            model->toggle(ui->tblTeikiKityou->currentIndex().row());
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void TeikiKityouViewController::keyPressEvent(QKeyEvent* event)
{
    // Enter in an amount being typed confirms that amount only; the editor
    // lets the key pass on, and it would post everything.
    const QWidget* focused = QApplication::focusWidget();
    if (isEnterKey(*event) && focused && focused != ui->tblTeikiKityou && ui->tblTeikiKityou->isAncestorOf(focused)) {
        event->accept();
        return;
    }
    if (!pressFocusedButton(*event)) QDialog::keyPressEvent(event);
}
