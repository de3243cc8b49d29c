#include "editors/PrefsSisanViewController.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeySequence>
#include <QShortcut>
#include <QSignalBlocker>

#include "editors/EditorUndo.h"
#include "editors/EditorWidgets.h"
#include "editors/KoumokuNamae.h"
#include "household/HouseholdLabels.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "ui/AmountText.h"
#include "ui/BoxKeys.h"
#include "ui/HouseholdDates.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_PrefsSisanViewController.h"

namespace {

const QString kKousinUnselected = QStringLiteral("編集更新する資産の行データを選択してからにしてください。");
const QString kSakujyoUnselected = QStringLiteral("削除する資産の行データを選択してからにしてください。");
const QString kKingakuInvalid = QStringLiteral("金額の欄に不正なデータがあります");
const QString kNamaeTaken = QStringLiteral("同じ名前の資産がすでにあります。別の名前にしてください。");
const QString kRedBorder = QStringLiteral("QLineEdit { border: 2px solid red; }");
const QString kCardUnselected = QStringLiteral("カード設定する資産の行データを選択してからにしてください。");
const QString kPayingMissing = QStringLiteral("引落口座を選んでください。");
const QString kRedCombo = QStringLiteral("QComboBox { border: 2px solid red; }");

// The usual card: closing at the month's end, withdrawn on the 27th of the
// next month, on the business day after a holiday.
const CardCycleSetting kUsualCycle{};

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
    // The two boxes share one place beside the table; one shows at a time.
    keepPlaceWhenHidden(ui->sisanKoumokuBox);
    keepPlaceWhenHidden(ui->cardBox);
    ui->sisanKoumokuBox->hide();
    ui->cardBox->hide();
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
    connect(ui->btnSisanKoumokuCard, &QPushButton::clicked, this, &PrefsSisanViewController::btnSisanKoumokuCard);
    connect(ui->btnCardOK, &QPushButton::clicked, this, &PrefsSisanViewController::btnCardOK);
    connect(ui->btnCardCancel, &QPushButton::clicked, this, &PrefsSisanViewController::btnCardCancel);
    bindBoxKeys(ui->cardBox, [this] { btnCardOK(); }, [this] { btnCardCancel(); });
    connect(ui->chkCardUse, &QCheckBox::toggled, this, &PrefsSisanViewController::cardFieldsChanged);
    for (QComboBox* combo : {ui->cmbCardClosingDay, ui->cmbCardWithdrawalDay, ui->cmbCardMonthsAfter, ui->cmbCardShift,
                             ui->cmbCardPayingSisan})
        connect(combo, &QComboBox::currentIndexChanged, this, &PrefsSisanViewController::cardFieldsChanged);
    undoKeys = new EditorUndo(DM, this, [this](const StepFocus& focus) { showUndone(focus); });
}

void PrefsSisanViewController::prepareBox(SyoriNo syoriNo, const QString& title, const QString& ok,
                                          const QString& cancel)
{
    sisanKoumokuSyoriNo = syoriNo;
    hideCardBox();
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
    askForPayingAsset();
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
    // Cards paid from it lose their paying asset; each asks for another.
    std::vector<int64_t> paidCards;
    for (const Card* card : DM.cardsPaidFrom(id)) paidCards.push_back(card->SisanNo);
    // Entries, the partner rows of its transfers and the asset go together.
    if (!DM.sisanDeleteWithItems(id)) return false;
    cardsToAskPaying.insert(cardsToAskPaying.end(), paidCards.begin(), paidCards.end());
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

void PrefsSisanViewController::fillCardCombos()
{
    const auto fill = [](QComboBox* combo, const std::vector<std::pair<QString, int>>& items) {
        const QSignalBlocker quiet(combo);
        combo->clear();
        for (const auto& [text, value] : items) combo->addItem(text, value);
    };
    std::vector<std::pair<QString, int>> closing, withdrawal;
    for (int day = 1; day <= 28; ++day) closing.emplace_back(qText(dayText(day)), day);
    closing.emplace_back(qText(dayText(kLastDay)), kLastDay);
    for (int day = 1; day <= 30; ++day) withdrawal.emplace_back(qText(dayText(day)), day);
    withdrawal.emplace_back(qText(dayText(kLastDay)), kLastDay);
    fill(ui->cmbCardClosingDay, closing);
    fill(ui->cmbCardWithdrawalDay, withdrawal);
    fill(ui->cmbCardMonthsAfter,
         {{QStringLiteral("当月"), 0}, {QStringLiteral("翌月"), 1}, {QStringLiteral("翌々月"), 2}, {QStringLiteral("3か月後"), 3}});
    std::vector<std::pair<QString, int>> shifts;
    for (HolidayShift shift : {HolidayShift::After, HolidayShift::Before, HolidayShift::SameDay})
        shifts.emplace_back(qText("土日祝は" + holidayShiftName(shift)), static_cast<int>(shift));
    fill(ui->cmbCardShift, shifts);
    // Any other asset may pay; the card itself may not.
    std::vector<std::pair<QString, int>> paying;
    for (const auto& sisan : DM.sisanList)
        if (!preparedSisanId || sisan->Id != *preparedSisanId) paying.emplace_back(q(sisan->Namae), static_cast<int>(sisan->Id));
    fill(ui->cmbCardPayingSisan, paying);
}

void PrefsSisanViewController::btnSisanKoumokuCard()
{
    const Sisan* sisan = selectedSisanOrSay(kCardUnselected);
    if (sisan) prepareCardBox(*sisan, false);
}

void PrefsSisanViewController::prepareCardBox(const Sisan& sisan, bool askPaying)
{
    preparedSisanId = sisan.Id;
    sisanKoumokuSyoriNo = kNone;
    ui->sisanKoumokuBox->hide();
    fillCardCombos();
    const Card* card = DM.cardOf(sisan.Id);
    const CardCycleSetting cycle = card ? card->cycle : kUsualCycle;
    const auto select = [](QComboBox* combo, int value) {
        const QSignalBlocker quiet(combo);
        combo->setCurrentIndex(combo->findData(value));
    };
    select(ui->cmbCardClosingDay, cycle.closingDay);
    select(ui->cmbCardWithdrawalDay, cycle.withdrawalDay);
    select(ui->cmbCardMonthsAfter, cycle.monthsAfterClosing);
    select(ui->cmbCardShift, static_cast<int>(cycle.shift));
    select(ui->cmbCardPayingSisan, card && !askPaying ? static_cast<int>(card->PayingSisanNo) : -1);
    ui->cmbCardPayingSisan->setStyleSheet(askPaying ? kRedCombo : QString());
    {
        const QSignalBlocker quiet(ui->chkCardUse);
        ui->chkCardUse->setChecked(card != nullptr || askPaying);
    }
    ui->cardBox->setTitle(q(sisan.Namae) + QStringLiteral("のカード設定"));
    ui->cardBox->show();
    cardFieldsChanged();
    (askPaying ? static_cast<QWidget*>(ui->cmbCardPayingSisan) : ui->chkCardUse)->setFocus();
}

Card PrefsSisanViewController::shownCard() const
{
    Card card;
    card.SisanNo = preparedSisanId.value_or(0);
    card.cycle.closingDay = ui->cmbCardClosingDay->currentData().toInt();
    card.cycle.withdrawalDay = ui->cmbCardWithdrawalDay->currentData().toInt();
    card.cycle.monthsAfterClosing = ui->cmbCardMonthsAfter->currentData().toInt();
    card.cycle.shift = static_cast<HolidayShift>(ui->cmbCardShift->currentData().toInt());
    card.PayingSisanNo = ui->cmbCardPayingSisan->currentIndex() >= 0 ? ui->cmbCardPayingSisan->currentData().toInt() : 0;
    return card;
}

void PrefsSisanViewController::cardFieldsChanged()
{
    const bool use = ui->chkCardUse->isChecked();
    for (QWidget* field : {static_cast<QWidget*>(ui->cmbCardClosingDay), static_cast<QWidget*>(ui->cmbCardWithdrawalDay),
                           static_cast<QWidget*>(ui->cmbCardMonthsAfter), static_cast<QWidget*>(ui->cmbCardShift),
                           static_cast<QWidget*>(ui->cmbCardPayingSisan)})
        field->setEnabled(use);
    if (ui->cmbCardPayingSisan->currentIndex() >= 0) ui->cmbCardPayingSisan->setStyleSheet({});
    if (!use) {
        ui->lblCardCycle->setText(QStringLiteral("クレジットカードではない資産です。"));
        return;
    }
    const Checked<CardCycle> cycle = CardCycle::make(shownCard().cycle);
    if (!cycle) {
        ui->lblCardCycle->setText(qText(cycle.refusal()));
        return;
    }
    const CardPeriod next = cycle->nextWithdrawal(householdToday());
    ui->lblCardCycle->setText(qText(cardCycleLabel(cycle->setting())) + QStringLiteral("\n次の引落: ") +
                              dayWithWeekday(next.withdrawal) + QStringLiteral("（") +
                              qText(periodLabel(next.purchases)) + QStringLiteral("分）"));
}

void PrefsSisanViewController::btnCardOK()
{
    if (!preparedSisanOrSay(kCardUnselected)) return;
    const Card card = shownCard();
    bool done = false;
    if (!ui->chkCardUse->isChecked()) {
        done = !DM.cardOf(card.SisanNo) || DM.cardDelete(card.SisanNo);
    } else if (card.PayingSisanNo == 0) {
        ui->cmbCardPayingSisan->setStyleSheet(kRedCombo);
        ui->cmbCardPayingSisan->setFocus();
        messageService().someMessageWithAlert(kPayingMissing, QStringLiteral("information"));
        return;
    } else {
        done = DM.cardUpdate(card, householdToday());
    }
    if (!done) return;
    std::erase(cardsToAskPaying, card.SisanNo);
    sisanKoumokuChangedSw = true;
    hideCardBox();
    askForPayingAsset();
}

void PrefsSisanViewController::btnCardCancel()
{
    // A card left without a paying asset stays so; the main window says it.
    if (preparedSisanId) std::erase(cardsToAskPaying, *preparedSisanId);
    preparedSisanId.reset();
    deselect();
    hideCardBox();
    askForPayingAsset();
}

void PrefsSisanViewController::hideCardBox()
{
    ui->cardBox->hide();
    ui->tblSisanKoumoku->setFocus();
}

void PrefsSisanViewController::askForPayingAsset()
{
    while (!cardsToAskPaying.empty()) {
        const int64_t id = cardsToAskPaying.front();
        const Sisan* card = findById(DM.sisanList, DM.sisanId2Idx, id);
        if (!card || !DM.cardOf(id)) {
            cardsToAskPaying.erase(cardsToAskPaying.begin());
            continue;
        }
        messageService().someMessageWithAlert(
            QStringLiteral("「%1」の引落口座が削除されました。別の引落口座を選んでください。").arg(q(card->Namae)),
            QStringLiteral("information"));
        prepareCardBox(*card, true);
        return;
    }
}
