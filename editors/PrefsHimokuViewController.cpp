#include "editors/PrefsHimokuViewController.h"

#include <QHeaderView>
#include <QKeySequence>
#include <QShortcut>
#include <algorithm>
#include <iterator>

#include "editors/EditorUndo.h"
#include "editors/EditorWidgets.h"
#include "editors/KoumokuNamae.h"
#include "editors/UtiwakeNamae.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "ui/BoxKeys.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_PrefsHimokuViewController.h"

namespace {

using SyoriNo = PrefsHimokuViewController::SyoriNo;

// What a preparing button does to the box besides filling its fields.
struct BoxSetup {
    SyoriNo syoriNo;
    const char16_t* title;
    bool syubetu, himoku, utiwake;  // the inputs enabled
    const char16_t* ok;
    const char16_t* cancel;
};

constexpr BoxSetup kBoxSetups[] = {
    {PrefsHimokuViewController::kHimokuTuika, u"費目の追加", true, true, false, u"この費目の追加の実行",
     u"この追加の取消"},
    {PrefsHimokuViewController::kUtiwakeTuika, u"内訳の追加", false, false, true, u"この内訳の追加の実行",
     u"この追加の取消"},
    {PrefsHimokuViewController::kHimokuHensyuu, u"費目名称の編集", false, true, false, u"この費目の編集更新の実行",
     u"この更新の取消"},
    {PrefsHimokuViewController::kUtiwakeHensyuu, u"内訳項目の編集", false, false, true, u"この内訳の編集更新の実行",
     u"この更新の取消"},
    {PrefsHimokuViewController::kHimokuSakujyo, u"費目の削除", false, false, false, u"この費目の削除の実行",
     u"この削除の取消"},
    {PrefsHimokuViewController::kUtiwakeSakujyo, u"内訳項目の削除", false, false, false, u"この内訳の削除の実行",
     u"この削除の取消"},
};

const QString kNoKind = QStringLiteral("種別番号が不正です");
const QString kNoHimokuName = QStringLiteral("費目の名前がありません？");
const QString kNoUtiwakeName = QStringLiteral("内訳の名前がありません？");

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

bool isHimoku(const Himoku& row)
{
    return row.Ucount > 0;
}

// The integer a number field holds; 0 for an empty or unreadable text.
int64_t integerValue(const QLineEdit* field)
{
    return field->text().toLongLong();
}

ListTableModel* makeHimokuKoumokuModel(const DataModel& dm, QObject* parent)
{
    const auto row = [&dm](int r) -> const Himoku& { return *dm.himokuList[static_cast<size_t>(r)]; };
    return new ListTableModel(
        [&dm] { return static_cast<int>(dm.himokuList.size()); },
        {{"himokuMark", QString(), false, [row](int r) { return isHimoku(row(r)) ? QStringLiteral("＊") : QString(); }},
         {"himokuMeisyou", QStringLiteral("費目／内訳"), false, [row](int r) { return q(row(r).Namae); }},
         {"himokuSyubetuNo", QStringLiteral("種別"), true, [row](int r) { return QString::number(row(r).SyubetuNo); }}},
        [row](int r) {
            const int64_t kind = row(r).SyubetuNo;
            return kind == 1 ? QStringLiteral("支出") : kind == 2 ? QStringLiteral("収入") : QString();
        },
        parent);
}

}  // namespace

PrefsHimokuViewController::PrefsHimokuViewController(DataModel& dm, QWidget* parent)
    : ModalEditor(parent), DM(dm), ui(std::make_unique<Ui::PrefsHimokuViewController>())
{
    ui->setupUi(this);
    viewDidLoad();
}

PrefsHimokuViewController::~PrefsHimokuViewController() = default;

void PrefsHimokuViewController::viewDidLoad()
{
    model = makeHimokuKoumokuModel(DM, this);
    ui->tblHimokuKoumoku->setModel(model);
    layOutColumns();
    wireActions();
    keepPlaceWhenHidden(ui->himokuKoumokuBox);
    ui->himokuKoumokuBox->hide();
}

void PrefsHimokuViewController::layOutColumns()
{
    QTableView* table = ui->tblHimokuKoumoku;
    const QFontMetrics metrics(table->font());
    QHeaderView* header = table->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::Fixed);
    header->resizeSection(0, metrics.horizontalAdvance(QStringLiteral("＊")) + 16);
    header->setSectionResizeMode(1, QHeaderView::Stretch);
    header->setSectionResizeMode(2, QHeaderView::Fixed);
    header->resizeSection(2, metrics.horizontalAdvance(QStringLiteral("種別")) + 24);
    setRowHeights(table);
    fitButtonsTo({ui->btnHimokuKoumokuOkLabel, ui->btnHimokuKoumokuCancelLabel},
                 {QStringLiteral("この内訳の編集更新の実行"), QStringLiteral("この費目の編集更新の実行")});
    reloadTable();
}

void PrefsHimokuViewController::reloadTable()
{
    model->reload();
    std::vector<QString> names;
    names.reserve(DM.himokuList.size());
    for (const auto& row : DM.himokuList) names.push_back(q(row->Namae));
    const QHeaderView* header = ui->tblHimokuKoumoku->horizontalHeader();
    fitNameColumn(ui->tblHimokuKoumoku, header->sectionSize(0) + header->sectionSize(2), names);
}

void PrefsHimokuViewController::wireActions()
{
    connect(ui->btnClose, &QPushButton::clicked, this, &PrefsHimokuViewController::btnClose);
    connect(ui->btnHimokuTuika, &QPushButton::clicked, this, &PrefsHimokuViewController::btnHimokuTuika);
    connect(ui->btnUtiwakeTuika, &QPushButton::clicked, this, &PrefsHimokuViewController::btnUtiwakeTuika);
    connect(ui->btnHimokuHensyuu, &QPushButton::clicked, this, &PrefsHimokuViewController::btnHimokuHensyuu);
    connect(ui->btnHimokuSakujyo, &QPushButton::clicked, this, &PrefsHimokuViewController::btnHimokuSakujyo);
    connect(ui->btnHimokuKoumokuOkLabel, &QPushButton::clicked, this, &PrefsHimokuViewController::btnHimokuKoumokuOk);
    connect(ui->btnHimokuKoumokuCancelLabel, &QPushButton::clicked, this,
            &PrefsHimokuViewController::btnHimokuKoumokuCancel);
    connect(ui->tblHimokuKoumoku, &QAbstractItemView::doubleClicked, this, &PrefsHimokuViewController::btnHimokuHensyuu);
    connect(new QShortcut(QKeySequence(Qt::Key_Delete), ui->tblHimokuKoumoku, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &PrefsHimokuViewController::btnHimokuSakujyo);
    bindBoxKeys(ui->himokuKoumokuBox, [this] { btnHimokuKoumokuOk(); }, [this] { btnHimokuKoumokuCancel(); });
    undoKeys = new EditorUndo(DM, this, [this](const StepFocus& focus) { showUndone(focus); });
}

void PrefsHimokuViewController::btnClose()
{
    accept();
}

void PrefsHimokuViewController::viewWillDisappear()
{
    if (delegate) delegate->himokuKoumokuChanged(himokuKoumokuChangedSw);
}

void PrefsHimokuViewController::himokuKoumokuEditable(bool syubetu, bool himoku, bool utiwake)
{
    ui->cmbHimokuSyubetuNo->setEnabled(syubetu);
    ui->txtHimokuMeisyou->setEnabled(himoku);
    ui->txtUtiwakeMeisyou->setEnabled(utiwake);
}

void PrefsHimokuViewController::prepareBox(SyoriNo syoriNo)
{
    const BoxSetup& setup = *std::find_if(std::begin(kBoxSetups), std::end(kBoxSetups),
                                          [syoriNo](const BoxSetup& s) { return s.syoriNo == syoriNo; });
    theHimokuKoumokuSyoriNo = syoriNo;
    ui->himokuKoumokuBox->setTitle(QString::fromUtf16(setup.title));
    himokuKoumokuEditable(setup.syubetu, setup.himoku, setup.utiwake);
    ui->btnHimokuKoumokuOkLabel->setText(QString::fromUtf16(setup.ok));
    ui->btnHimokuKoumokuCancelLabel->setText(QString::fromUtf16(setup.cancel));
    ui->himokuKoumokuBox->show();
    // The keyboard starts at the first input the operation uses.
    QWidget* first = setup.syubetu  ? static_cast<QWidget*>(ui->cmbHimokuSyubetuNo)
                     : setup.himoku ? static_cast<QWidget*>(ui->txtHimokuMeisyou)
                     : setup.utiwake ? static_cast<QWidget*>(ui->txtUtiwakeMeisyou)
                                     : static_cast<QWidget*>(ui->btnHimokuKoumokuOkLabel);
    first->setFocus();
}

const Himoku* PrefsHimokuViewController::selectedHimokuOrSay(const QString& unselected)
{
    const int row = selectedRow(ui->tblHimokuKoumoku);
    if (row < 0 || row >= static_cast<int>(DM.himokuList.size())) {
        say(unselected);
        return nullptr;
    }
    return DM.himokuList[static_cast<size_t>(row)].get();
}

void PrefsHimokuViewController::fillCategory(const Himoku& himoku)
{
    ui->cmbHimokuSyubetuNo->setCurrentIndex(static_cast<int>(himoku.SyubetuNo - 1));
    ui->txtHimokuMeisyou->setText(q(himoku.Namae));
    ui->txtHimokuKoumokuId->setText(QString::number(himoku.Id));
    ui->txtHno->setText(QString::number(himoku.Hno));
    ui->txtUcount->setText(QString::number(himoku.Ucount));
}

void PrefsHimokuViewController::fillUtiwake(const Himoku& utiwake, std::optional<int64_t> ucount)
{
    const Himoku* category = findById(DM.himokuList, DM.himokuId2Idx, utiwake.Hno);
    const UtiwakeNamae parts = splitUtiwakeNamae(utiwake.Namae, category ? category->Namae : std::string());
    ui->cmbHimokuSyubetuNo->setCurrentIndex(static_cast<int>(utiwake.SyubetuNo - 1));
    ui->txtHimokuMeisyou->setText(q(parts.himoku));
    ui->txtUtiwakeMeisyou->setText(q(parts.utiwake));
    ui->txtHimokuKoumokuId->setText(QString::number(utiwake.Id));
    ui->txtHno->setText(QString::number(utiwake.Hno));
    if (ucount) ui->txtUcount->setText(QString::number(*ucount));
}

void PrefsHimokuViewController::btnHimokuTuika()
{
    ui->cmbHimokuSyubetuNo->setCurrentIndex(-1);
    ui->txtHimokuMeisyou->clear();
    ui->txtUtiwakeMeisyou->clear();
    prepareBox(kHimokuTuika);
}

void PrefsHimokuViewController::btnUtiwakeTuika()
{
    const QString unselected = QStringLiteral("追加先の費目を選択してからにしてください ");
    const Himoku* himoku = selectedHimokuOrSay(unselected);
    if (!himoku) return;
    if (!isHimoku(*himoku)) {
        say(unselected);
        return;
    }
    fillCategory(*himoku);
    ui->txtUtiwakeMeisyou->clear();
    prepareBox(kUtiwakeTuika);
}

void PrefsHimokuViewController::btnHimokuHensyuu()
{
    const Himoku* row = selectedHimokuOrSay(QStringLiteral("編集する費目または内訳項目を選択してからにしてください "));
    if (!row) return;
    if (isHimoku(*row)) {
        fillCategory(*row);
        prepareBox(kHimokuHensyuu);
    } else {
        fillUtiwake(*row, std::nullopt);
        prepareBox(kUtiwakeHensyuu);
    }
}

void PrefsHimokuViewController::btnHimokuSakujyo()
{
    const Himoku* row = selectedHimokuOrSay(QStringLiteral("削除する費目または内訳項目を選択してからにしてください "));
    if (!row) return;
    if (isHimoku(*row)) {
        fillCategory(*row);
        prepareBox(kHimokuSakujyo);
        return;
    }
    const Himoku* category = findById(DM.himokuList, DM.himokuId2Idx, row->Hno);
    if (category && !isHimoku(*category)) category = nullptr;
    // A sub-item whose category is gone may go; a category keeps its last one.
    if (category && category->Ucount <= 1) {
        say(QStringLiteral("費目には１つ以上の内訳が必要なので、この内訳の削除はできません。"));
        return;
    }
    fillUtiwake(*row, category ? category->Ucount : 0);
    prepareBox(kUtiwakeSakujyo);
}

void PrefsHimokuViewController::btnHimokuKoumokuCancel()
{
    hideBox();
}

void PrefsHimokuViewController::btnHimokuKoumokuOk()
{
    const int64_t syubetu = ui->cmbHimokuSyubetuNo->currentIndex() + 1;
    if (syubetu <= 0) {
        say(kNoKind);
        return;
    }
    if (!execute(syubetu)) return;
    undoKeys->stepMade();
    reloadTable();
    himokuKoumokuChangedSw = true;
    hideBox();
}

void PrefsHimokuViewController::showUndone(const StepFocus& focus)
{
    himokuKoumokuChangedSw = true;
    hideBox();
    reloadTable();
    const int64_t* row = focus.himokuId ? DM.himokuId2Idx.find(focus.himokuId) : nullptr;
    if (row) {
        ui->tblHimokuKoumoku->selectRow(static_cast<int>(*row));
        ui->tblHimokuKoumoku->scrollTo(model->index(static_cast<int>(*row), 0));
    }
}

bool PrefsHimokuViewController::execute(int64_t syubetu)
{
    const QString himoku = ui->txtHimokuMeisyou->text().trimmed();
    const QString utiwake = ui->txtUtiwakeMeisyou->text().trimmed();
    const bool needsHimoku = theHimokuKoumokuSyoriNo == kHimokuTuika || theHimokuKoumokuSyoriNo == kHimokuHensyuu;
    const bool needsUtiwake = theHimokuKoumokuSyoriNo == kUtiwakeTuika || theHimokuKoumokuSyoriNo == kUtiwakeHensyuu;
    if (needsHimoku && himoku.isEmpty()) {
        say(kNoHimokuName);
        return false;
    }
    if (needsUtiwake && utiwake.isEmpty()) {
        say(kNoUtiwakeName);
        return false;
    }
    if (!namaeAllowedOrSay(syubetu, himoku, utiwake)) return false;
    switch (theHimokuKoumokuSyoriNo) {
    case kHimokuTuika:
        return DM.insertHimokuOfHiimoku(syubetu, himoku.toStdString());
    case kUtiwakeTuika:
        return DM.insertUtiwakeOfHimoku(syubetu, (himoku + u'/' + utiwake).toStdString(), integerValue(ui->txtHno),
                                        integerValue(ui->txtUcount));
    case kHimokuHensyuu:
        return executeHimokuHensyuu(himoku);
    case kUtiwakeHensyuu:
        // The sub-item keeps the blanks typed around it.
        return DM.updateNamaeOfUtiwakeHimoku(
            integerValue(ui->txtHimokuKoumokuId),
            (ui->txtHimokuMeisyou->text() + u'/' + ui->txtUtiwakeMeisyou->text()).toStdString());
    case kHimokuSakujyo:
        return executeHimokuSakujyo();
    case kUtiwakeSakujyo:
        return executeUtiwakeSakujyo();
    default:
        say(QStringLiteral("error in IBAction func btnHimokuKoumokuOk"));
        return false;
    }
}

bool PrefsHimokuViewController::namaeAllowedOrSay(int64_t syubetu, const QString& himoku, const QString& utiwake)
{
    const int64_t id = integerValue(ui->txtHimokuKoumokuId);
    const int64_t hno = integerValue(ui->txtHno);
    switch (theHimokuKoumokuSyoriNo) {
    case kHimokuTuika:
        return noSlashOrSay(himoku) && himokuFreeOrSay(syubetu, himoku, std::nullopt);
    case kHimokuHensyuu:
        return noSlashOrSay(himoku) && himokuFreeOrSay(syubetu, himoku, id);
    case kUtiwakeTuika:
        return noSlashOrSay(utiwake) && utiwakeFreeOrSay(hno, utiwake, std::nullopt);
    case kUtiwakeHensyuu:
        return noSlashOrSay(utiwake) && utiwakeFreeOrSay(hno, utiwake, id);
    default:
        return true;
    }
}

bool PrefsHimokuViewController::noSlashOrSay(const QString& namae)
{
    if (!hasSlash(namae)) return true;
    say(QStringLiteral("費目と内訳の名前には「/」を使えません。"));
    return false;
}

bool PrefsHimokuViewController::himokuFreeOrSay(int64_t syubetu, const QString& namae, std::optional<int64_t> ownId)
{
    const Himoku* own = ownId ? findById(DM.himokuList, DM.himokuId2Idx, *ownId) : nullptr;
    if (own && sameNamae(namae, own->Namae)) return true;  // a book may hold it twice already
    for (const auto& row : DM.himokuList) {
        if (!isHimoku(*row) || row->SyubetuNo != syubetu || !sameNamae(namae, row->Namae)) continue;
        say(QStringLiteral("同じ種別に同じ名前の費目がすでにあります。別の名前にしてください。"));
        return false;
    }
    return true;
}

bool PrefsHimokuViewController::utiwakeFreeOrSay(int64_t himokuId, const QString& namae, std::optional<int64_t> ownId)
{
    std::vector<int64_t> ids;
    std::vector<std::string> names;
    utiwakeOf(himokuId, ids, names);
    for (size_t i = 0; i < ids.size(); ++i)
        if (ownId && ids[i] == *ownId && sameNamae(namae, names[i])) return true;  // a book may hold it twice already
    for (const std::string& name : names) {
        if (!sameNamae(namae, name)) continue;
        say(QStringLiteral("この費目には同じ名前の内訳がすでにあります。別の名前にしてください。"));
        return false;
    }
    return true;
}

void PrefsHimokuViewController::utiwakeOf(int64_t himokuId, std::vector<int64_t>& ids,
                                          std::vector<std::string>& names) const
{
    const Himoku* category = findById(DM.himokuList, DM.himokuId2Idx, himokuId);
    const std::string himokuNamae = category ? category->Namae : std::string();
    for (const auto& row : DM.himokuList) {
        if (row->Hno != himokuId || row->Ucount != 0) continue;
        ids.push_back(row->Id);
        names.push_back(splitUtiwakeNamae(row->Namae, himokuNamae).utiwake);
    }
}

bool PrefsHimokuViewController::executeHimokuHensyuu(const QString& himoku)
{
    const int64_t id = integerValue(ui->txtHimokuKoumokuId);
    std::vector<int64_t> ids;
    std::vector<std::string> names;
    utiwakeOf(id, ids, names);
    return DM.updateNamaeOfHimoku(id, himoku.toStdString(), ids, names);
}

bool PrefsHimokuViewController::executeHimokuSakujyo()
{
    if (!askDelete(QStringLiteral("この費目と内訳、それらの支出入データが全て削除されます。削除処理を続行しますか？")))
        return false;
    const int64_t hno = integerValue(ui->txtHno);
    std::vector<int64_t> ids;  // the category row and its sub-items
    for (const auto& row : DM.himokuList)
        if (row->Hno == hno) ids.push_back(row->Id);
    return DM.deleteHimokuHimoku(integerValue(ui->txtHimokuKoumokuId), ids);
}

bool PrefsHimokuViewController::executeUtiwakeSakujyo()
{
    if (!askDelete(QStringLiteral("この内訳、その支出入データが全て削除されます。削除処理を続行しますか？")))
        return false;
    return DM.deleteUtiwakeHimoku(integerValue(ui->txtHimokuKoumokuId), integerValue(ui->txtHno),
                                  integerValue(ui->txtUcount));
}

bool PrefsHimokuViewController::askDelete(const QString& question)
{
    return messageService().yesNoMessageWithAlert(question, QStringLiteral("削除する"),
                                                  QStringLiteral("削除を中止する"));
}

void PrefsHimokuViewController::say(const QString& message)
{
    messageService().someMessageWithAlert(message, QStringLiteral("information"));
}

void PrefsHimokuViewController::hideBox()
{
    ui->himokuKoumokuBox->hide();
    ui->tblHimokuKoumoku->setFocus();  // the keyboard goes on from the list
}
