#include "editors/PrefsSisanViewController.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeySequence>
#include <QShortcut>

#include "editors/EditorUndo.h"
#include "editors/EditorWidgets.h"
#include "editors/KoumokuNamae.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "ui/AmountText.h"
#include "ui/BoxKeys.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_PrefsSisanViewController.h"

namespace {

const QString kKousinUnselected = QStringLiteral("編集更新する資産の行データを選択してからにしてください。");
const QString kSakujyoUnselected = QStringLiteral("削除する資産の行データを選択してからにしてください。");
const QString kKingakuInvalid = QStringLiteral("金額の欄に不正なデータがあります");
const QString kNamaeTaken = QStringLiteral("同じ名前の資産がすでにあります。別の名前にしてください。");
const QString kRedBorder = QStringLiteral("QLineEdit { border: 2px solid red; }");

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

ListTableModel* makeSisanKoumokuModel(const DataModel& dm, QObject* parent)
{
    const auto sisan = [&dm](int row) -> const Sisan& { return *dm.sisanList[static_cast<size_t>(row)]; };
    return new ListTableModel(
        [&dm] { return static_cast<int>(dm.sisanList.size()); },
        {{"sisanMeisyou", QStringLiteral("資産名"), false, [sisan](int r) { return q(sisan(r).Namae); }},
         {"sisanSyokikingaku", QStringLiteral("初期金額"), true,
          [sisan](int r) { return groupedKingaku(sisan(r).SyokiKingaku); }}},
        {}, parent);
}

}  // namespace

PrefsSisanViewController::PrefsSisanViewController(DataModel& dm, QWidget* parent)
    : ModalEditor(parent), DM(dm), ui(std::make_unique<Ui::PrefsSisanViewController>())
{
    ui->setupUi(this);
    viewDidLoad();
}

PrefsSisanViewController::~PrefsSisanViewController() = default;

void PrefsSisanViewController::viewDidLoad()
{
    model = makeSisanKoumokuModel(DM, this);
    ui->tblSisanKoumoku->setModel(model);
    layOutColumns();
    wireActions();
    keepPlaceWhenHidden(ui->sisanKoumokuBox);
    ui->sisanKoumokuBox->hide();
}

void PrefsSisanViewController::layOutColumns()
{
    QTableView* table = ui->tblSisanKoumoku;
    const QFontMetrics metrics(table->font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    QHeaderView* header = table->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    header->setSectionResizeMode(1, QHeaderView::Fixed);
    header->resizeSection(1, amount);
    setRowHeights(table);
    // The box's buttons carry the longest titles the actions give them.
    fitButtonsTo({ui->btnSisanKoumokuOKTitle, ui->btnSisanKoumokuCancelTitle},
                 {QStringLiteral("この新規追加の実行"), QStringLiteral("この編集更新の実行"),
                  QStringLiteral("この新規追加取消"), QStringLiteral("この編集更新取消")});
    reloadTable();
}

void PrefsSisanViewController::reloadTable()
{
    model->reload();
    std::vector<QString> names;
    names.reserve(DM.sisanList.size());
    for (const auto& sisan : DM.sisanList) names.push_back(q(sisan->Namae));
    fitNameColumn(ui->tblSisanKoumoku, ui->tblSisanKoumoku->horizontalHeader()->sectionSize(1), names);
}

void PrefsSisanViewController::wireActions()
{
    connect(ui->btnSisanKoumokuTuika, &QPushButton::clicked, this, &PrefsSisanViewController::btnSisanKoumokuTuika);
    connect(ui->btnSisanKoumokuKousin, &QPushButton::clicked, this, &PrefsSisanViewController::btnSisanKoumokuKousin);
    connect(ui->btnSisanKoumokuSakujyo, &QPushButton::clicked, this,
            &PrefsSisanViewController::btnSisanKoumokuSakujyo);
    connect(ui->btnSisanKoumokuOKTitle, &QPushButton::clicked, this, &PrefsSisanViewController::btnSisanKoumokuOK);
    connect(ui->btnSisanKoumokuCancelTitle, &QPushButton::clicked, this,
            &PrefsSisanViewController::btnSisanKoumokuCancel);
    connect(ui->btnSisanModalClose, &QPushButton::clicked, this, &PrefsSisanViewController::btnSisanModalClose);
    connect(ui->tblSisanKoumoku, &QAbstractItemView::doubleClicked, this,
            &PrefsSisanViewController::btnSisanKoumokuKousin);
    connect(new QShortcut(QKeySequence(Qt::Key_Delete), ui->tblSisanKoumoku, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &PrefsSisanViewController::btnSisanKoumokuSakujyo);
    bindBoxKeys(ui->sisanKoumokuBox, [this] { btnSisanKoumokuOK(); }, [this] { btnSisanKoumokuCancel(); });
    undoKeys = new EditorUndo(DM, this, [this](const StepFocus& focus) { showUndone(focus); });
}

void PrefsSisanViewController::prepareBox(SyoriNo syoriNo, const QString& title, const QString& ok,
                                          const QString& cancel)
{
    sisanKoumokuSyoriNo = syoriNo;
    ui->sisanKoumokuBox->setTitle(title);
    ui->btnSisanKoumokuOKTitle->setText(ok);
    ui->btnSisanKoumokuCancelTitle->setText(cancel);
    ui->sisanKoumokuBox->show();
    if (syoriNo == kSakujyo)
        ui->btnSisanKoumokuOKTitle->setFocus();
    else
        ui->txtSisanKoumokuNamae->setFocus();
}

bool PrefsSisanViewController::fillFromSelection(const QString& unselected)
{
    const Sisan* sisan = selectedSisanOrSay(unselected);
    if (!sisan) return false;
    preparedSisanId = sisan->Id;
    ui->txtSisanKoumokuNamae->setText(q(sisan->Namae));
    ui->txtSisanKoumokuSyokikingaku->setText(groupedKingaku(sisan->SyokiKingaku));
    return true;
}

void PrefsSisanViewController::btnSisanKoumokuTuika()
{
    preparedSisanId.reset();
    prepareBox(kTuika, QStringLiteral("新規追加"), QStringLiteral("この新規追加の実行"),
               QStringLiteral("この新規追加取消"));
}

void PrefsSisanViewController::btnSisanKoumokuKousin()
{
    if (!fillFromSelection(kKousinUnselected)) return;
    prepareBox(kKousin, QStringLiteral("編集更新"), QStringLiteral("この編集更新の実行"),
               QStringLiteral("この編集更新取消"));
}

void PrefsSisanViewController::btnSisanKoumokuSakujyo()
{
    if (!fillFromSelection(kSakujyoUnselected)) return;
    prepareBox(kSakujyo, QStringLiteral("削除"), QStringLiteral("この削除の実行"), QStringLiteral("この削除 取消"));
}

std::optional<int64_t> PrefsSisanViewController::validatedKingaku()
{
    const QString text = trimmedAmountText(ui->txtSisanKoumokuSyokikingaku->text()).remove(u',');
    const auto kingaku = kingakuFromText(text);
    if (!kingaku) {
        // The mark stays for the editor's life, as a reminder of the field's rules.
        ui->txtSisanKoumokuSyokikingaku->setStyleSheet(kRedBorder);
        messageService().someMessageWithAlert(kKingakuInvalid, QStringLiteral("information"));
    }
    return kingaku;
}

const Sisan* PrefsSisanViewController::selectedSisanOrSay(const QString& unselected)
{
    const int row = selectedRow(ui->tblSisanKoumoku);
    if (row < 0 || row >= static_cast<int>(DM.sisanList.size())) {
        messageService().someMessageWithAlert(unselected, QStringLiteral("information"));
        return nullptr;
    }
    return DM.sisanList[static_cast<size_t>(row)].get();
}

void PrefsSisanViewController::btnSisanKoumokuOK()
{
    const auto kingaku = validatedKingaku();
    if (!kingaku) return;
    bool done = false;
    switch (sisanKoumokuSyoriNo) {
    case kTuika:
        done = executeTuika(*kingaku);
        break;
    case kKousin:
        done = executeKousin(*kingaku);
        break;
    case kSakujyo:
        done = executeSakujyo();
        break;
    default:
        return;
    }
    if (!done) return;
    undoKeys->stepMade();
    sisanKoumokuChangedSw = true;
    reloadTable();
    hideBox();
}

void PrefsSisanViewController::showUndone(const StepFocus& focus)
{
    sisanKoumokuChangedSw = true;
    hideBox();
    reloadTable();
    const int64_t* row = focus.sisanId ? DM.sisanId2Idx.find(focus.sisanId) : nullptr;
    if (row) ui->tblSisanKoumoku->selectRow(static_cast<int>(*row));
}

bool PrefsSisanViewController::namaeFreeOrSay(const QString& namae, const Sisan* own)
{
    // An asset keeps its own name, even one that an older book gave twice.
    if (own && sameNamae(namae, own->Namae)) return true;
    for (const auto& sisan : DM.sisanList) {
        if (!sameNamae(namae, sisan->Namae)) continue;
        messageService().someMessageWithAlert(kNamaeTaken, QStringLiteral("information"));
        return false;
    }
    return true;
}

bool PrefsSisanViewController::executeTuika(int64_t kingaku)
{
    if (!namaeFreeOrSay(ui->txtSisanKoumokuNamae->text(), nullptr)) return false;
    if (!DM.sisanInsert(ui->txtSisanKoumokuNamae->text().toStdString(), kingaku)) return false;
    ui->txtSisanKoumokuNamae->clear();
    ui->txtSisanKoumokuSyokikingaku->clear();
    return true;
}

const Sisan* PrefsSisanViewController::preparedSisanOrSay(const QString& unselected)
{
    const Sisan* sisan = preparedSisanId ? findById(DM.sisanList, DM.sisanId2Idx, *preparedSisanId) : nullptr;
    if (!sisan) messageService().someMessageWithAlert(unselected, QStringLiteral("information"));
    return sisan;
}

bool PrefsSisanViewController::executeKousin(int64_t kingaku)
{
    const Sisan* sisan = preparedSisanOrSay(kKousinUnselected);
    if (!sisan || !namaeFreeOrSay(ui->txtSisanKoumokuNamae->text(), sisan)) return false;
    // The stored balance starts again from the new opening amount; the main
    // window recomputes it from the entries when the editor closes.
    if (!DM.sisanUpdate(sisan->Id, ui->txtSisanKoumokuNamae->text().toStdString(), kingaku, kingaku)) return false;
    deselect();
    return true;
}

bool PrefsSisanViewController::executeSakujyo()
{
    const Sisan* sisan = preparedSisanOrSay(kSakujyoUnselected);
    if (!sisan) return false;
    const int64_t id = sisan->Id;
    if (!messageService().yesNoMessageWithAlert(
            QStringLiteral("この資産での支出／収入のデータも削除されます。\n 削除してもいいですか？"),
            QStringLiteral("削除する"), QStringLiteral("しない"))) {
        hideBox();
        return false;
    }
    // Entries, the partner rows of its transfers and the asset go together.
    if (!DM.sisanDeleteWithItems(id)) return false;
    deselect();
    DM.theSisanNo = 0;
    return true;
}

void PrefsSisanViewController::btnSisanKoumokuCancel()
{
    sisanKoumokuSyoriNo = kNone;
    preparedSisanId.reset();
    deselect();
    hideBox();
}

void PrefsSisanViewController::deselect()
{
    ui->tblSisanKoumoku->selectionModel()->clearSelection();
}

void PrefsSisanViewController::btnSisanModalClose()
{
    accept();
}

void PrefsSisanViewController::viewWillDisappear()
{
    if (delegate) delegate->sisanKoumokuChanged(sisanKoumokuChangedSw);
}

void PrefsSisanViewController::hideBox()
{
    ui->sisanKoumokuBox->hide();
    ui->tblSisanKoumoku->setFocus();  // the keyboard goes on from the list
}
