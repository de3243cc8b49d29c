// ViewController: start-up, the editor transitions and callbacks, message boxes.
#include "app/ViewController.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QKeySequence>
#include <QLocale>
#include <QShortcut>
#include <QStringListModel>
#include <QTimer>
#include <iostream>

#include "ui/ListTableModel.h"
#include "ui/StoreTableModels.h"
#include "editors/PrefsHimokuViewController.h"
#include "editors/PrefsSisanViewController.h"
#include "reports/AnnualReportViewController.h"
#include "reports/SisanReportViewController.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/BoxKeys.h"
#include "ui/Clock.h"
#include "ui/MessageService.h"
#include "ui_ViewController.h"

namespace {

const QString kSeguePrefsSisan = QStringLiteral("showPrefsSisanModal");
const QString kSeguePrefsHimoku = QStringLiteral("showPrefsHimokuModal");

}  // namespace

ViewController::ViewController(DataModel& dm, QWidget* parent)
    : QMainWindow(parent), DM(dm), ui(std::make_unique<Ui::ViewController>())
{
    ui->setupUi(this);
    viewDidLoad();
}

ViewController::~ViewController()
{
    DM.setHistoryListener({});
}

void ViewController::viewDidLoad()
{
    sisanModel = makeSisanTableModel(DM, this, [this](int row) { return afterWithdrawalsText(row); });
    itemModel = makeItemTableModel(DM, this);
    comboModel = new QStringListModel(this);
    ui->tblSisan->setModel(sisanModel);
    ui->tblItem->setModel(itemModel);
    ui->cmbItemDataHimomku->setModel(comboModel);
    layOutColumns();
    wireActions();
    wireFind();
    wireNoteSuggestions();

    showGrandTotal();
    showToday();
    if (!DM.sisanList.empty()) {
        selectSisanRowQuietly(0);
        sisanSelected(0);  // what the selection handler does: the first asset's entries
        ui->lblSisanmei->setText(QString::fromStdString(DM.sisanList.front()->Namae));
    }
    ui->itemDataDatePicker->setLocale(QLocale(QLocale::Japanese, QLocale::Japan));
    ui->itemDataDatePicker->setDate(currentDateTime().date());
    ui->rdbSisyutu->setChecked(true);
    rdbtnSelected(ui->rdbSisyutu);
    ui->itemData->hide();
    showHouseholdState();
    // Due recurring entries are offered once the window is up.
    QTimer::singleShot(0, this, &ViewController::lookForDueTeiki);
}

void ViewController::layOutColumns()
{
    // Widths from the font, never from the rows: sizing to contents would
    // visit every entry of a long ledger.
    const QFontMetrics metrics(font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    QHeaderView* sisanHeader = ui->tblSisan->horizontalHeader();
    sisanHeader->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column = 1; column <= 2; ++column) {
        sisanHeader->setSectionResizeMode(column, QHeaderView::Fixed);
        sisanHeader->resizeSection(column, amount);
    }
    QHeaderView* itemHeader = ui->tblItem->horizontalHeader();
    itemHeader->setSectionsClickable(true);
    itemHeader->resizeSection(0, metrics.horizontalAdvance(QStringLiteral("0000-00-00")) + 32);
    itemHeader->setSectionResizeMode(1, QHeaderView::Stretch);
    for (int column = 2; column < 5; ++column) itemHeader->resizeSection(column, amount);
    for (QTableView* table : {ui->tblSisan, ui->tblItem}) {
        table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setDefaultSectionSize(metrics.height() + 10);
    }
    ui->tblItem->setMinimumWidth(metrics.horizontalAdvance(QStringLiteral("0000-00-00")) + 3 * amount + 140);
    QFont title = ui->lblSisanmei->font();
    title.setPointSizeF(title.pointSizeF() * 1.3);
    title.setBold(true);
    ui->lblSisanmei->setFont(title);
    QFont total = ui->lblSisanSouGoukei->font();
    total.setBold(true);
    ui->lblSisanSouGoukei->setFont(total);
}

void ViewController::wireActions()
{
    connect(ui->tblSisan->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { tableViewSelectionDidChange(ui->tblSisan); });
    connect(ui->tblItem->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { tableViewSelectionDidChange(ui->tblItem); });
    connect(ui->tblSisan->horizontalHeader(), &QHeaderView::sectionClicked, this,
            [this](int column) { tableViewMouseDownInHeaderOf(ui->tblSisan, column); });
    connect(ui->tblItem->horizontalHeader(), &QHeaderView::sectionClicked, this,
            [this](int column) { tableViewMouseDownInHeaderOf(ui->tblItem, column); });
    connect(ui->tblItem, &QAbstractItemView::doubleClicked, this, &ViewController::editUpdateItem);

    for (QAbstractButton* kind : {static_cast<QAbstractButton*>(ui->rdbSisyutu), static_cast<QAbstractButton*>(ui->rdbSyuunyuu),
                                  static_cast<QAbstractButton*>(ui->rdbIdou)})
        connect(kind, &QAbstractButton::clicked, this, [this, kind] { rdbtnSelected(kind); });
    connect(ui->btnItemDataOK, &QPushButton::clicked, this, &ViewController::btnItemDataOK);
    connect(ui->btnItemDataCancel, &QPushButton::clicked, this, &ViewController::btnItemDataCancel);
    // Enter confirms the panel and Escape cancels it when its focused field
    // lets them pass: shortcuts would take them even from an open pop-up
    // list or calendar.
    bindBoxKeys(ui->itemData, [this] { btnItemDataOK(); }, [this] { btnItemDataCancel(); });

    connect(ui->btnNewItem, &QPushButton::clicked, this, &ViewController::newItem);
    connect(ui->btnEditUpdateItem, &QPushButton::clicked, this, &ViewController::editUpdateItem);
    connect(ui->btnDeleteItem, &QPushButton::clicked, this, &ViewController::deleteItem);
    connect(ui->mnuNewItem, &QAction::triggered, this, &ViewController::newItem);
    connect(ui->mnuEditUpdateItem, &QAction::triggered, this, &ViewController::editUpdateItem);
    connect(ui->mnuDeleteItem, &QAction::triggered, this, &ViewController::deleteItem);
    // The Delete key only: the standard Delete sequence also holds Ctrl+D,
    // which the menu's 削除 has, and an ambiguous key does nothing.
    connect(new QShortcut(QKeySequence(Qt::Key_Delete), ui->tblItem, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &ViewController::deleteItem);

    connect(ui->mnuShowPrefsSisan, &QAction::triggered, this, &ViewController::mnuShowPrefsSisan);
    connect(ui->mnuShowPrefsHimoku, &QAction::triggered, this, &ViewController::mnuShowPrefsHimoku);
    setSegueDestination(kSeguePrefsSisan, [this](QWidget* parent) { return new PrefsSisanViewController(DM, parent); });
    setSegueDestination(kSeguePrefsHimoku,
                        [this](QWidget* parent) { return new PrefsHimokuViewController(DM, parent); });
    connect(ui->mnuShowPrefsTeiki, &QAction::triggered, this, &ViewController::mnuShowPrefsTeiki);
    connect(ui->mnuShowAnnualReport, &QAction::triggered, this, &ViewController::mnuShowAnnualReport);
    connect(ui->mnuShowSisanReport, &QAction::triggered, this, &ViewController::mnuShowSisanReport);
    connect(ui->mnuShowYosanReport, &QAction::triggered, this, &ViewController::mnuShowYosanReport);
    connect(ui->mnuShowHouseholdSettings, &QAction::triggered, this, &ViewController::mnuShowHouseholdSettings);
    connect(ui->mnuShowYosan, &QAction::triggered, this, &ViewController::mnuShowYosan);
    connect(ui->mnuQuit, &QAction::triggered, this, &QWidget::close);
    connect(ui->mnuBackupNow, &QAction::triggered, this, &ViewController::mnuBackupNow);
    connect(ui->mnuRestoreBackup, &QAction::triggered, this, &ViewController::mnuRestoreBackup);
    wireUndo();
    wireImport();
    wireSync();
}

void ViewController::showGrandTotal()
{
    ui->lblSisanSouGoukei->setText(groupedKingaku(DM.GrandTotalSisan));
}

void ViewController::showToday()
{
    shownToday = currentDateTime().date();
    ui->lblToday->setText(dateStamp(shownToday));
}

void ViewController::todayChanged()
{
    const QDate before = shownToday;
    showToday();
    // A date the user chose stays; the default moves with the day.
    if (ui->itemDataDatePicker->date() == before) ui->itemDataDatePicker->setDate(shownToday);
    // A new day: another household month perhaps, withdrawal days, and due
    // recurring entries.
    putOff.clear();
    showHouseholdState();
    offerCardSettlements();
    lookForDueTeiki();
}

void ViewController::setSegueDestination(const QString& identifier, SegueDestination destination)
{
    const bool present = static_cast<bool>(destination);
    segueDestinations[identifier] = std::move(destination);
    if (identifier == kSeguePrefsSisan) ui->mnuShowPrefsSisan->setEnabled(present);
    if (identifier == kSeguePrefsHimoku) ui->mnuShowPrefsHimoku->setEnabled(present);
}

void ViewController::mnuShowPrefsSisan()
{
    performSegue(kSeguePrefsSisan);
}

void ViewController::mnuShowPrefsHimoku()
{
    performSegue(kSeguePrefsHimoku);
}

void ViewController::mnuShowAnnualReport()
{
    AnnualReportViewController report(DM, this);
    report.exec();
}

void ViewController::mnuShowSisanReport()
{
    SisanReportViewController report(DM, this);
    report.exec();
}

void ViewController::performSegue(const QString& identifier)
{
    const auto found = segueDestinations.find(identifier);
    std::unique_ptr<ModalEditor> destination(
        found != segueDestinations.end() && found->second ? found->second(this) : nullptr);
    if (!prepare(identifier, destination.get())) return;
    destination->exec();  // the editor calls back through its delegate as it closes
}

bool ViewController::prepare(const QString& identifier, ModalEditor* destination)
{
    if (identifier.isEmpty()) return false;
    if ((identifier != kSeguePrefsSisan && identifier != kSeguePrefsHimoku) || !destination) {
        std::cout << "prepare failed" << std::endl;
        return false;
    }
    destination->delegate = this;
    return true;
}

void ViewController::sisanKoumokuChanged(bool changed)
{
    if (!changed) return;
    // The editors' re-read of the asset table brought back the stored
    // balances, and a deletion may have removed entries of any asset.
    DM.recomputeAllSisanZankin();
    // An editor may have deleted the shown asset (the store then points
    // theSisanNo at the first one) or changed its opening amount: select the
    // asset at theSisanNo and read its entries, so that the selection, the
    // name, the entries and the balance all belong to the same asset.
    if (DM.theSisanNo < 0 || DM.theSisanNo >= static_cast<int64_t>(DM.sisanList.size())) DM.theSisanNo = 0;
    reloadSisanList();
    if (DM.sisanList.empty()) {
        ui->lblSisanmei->clear();
        tblItemReload();
    } else {
        sisanSelected(static_cast<int>(DM.theSisanNo));
    }
    dropVanishedEdit();
    refreshComboItems();
    // A card set up or changed in the asset editor may have a withdrawal due.
    QTimer::singleShot(0, this, &ViewController::offerCardSettlements);
    findFollowsBook();
}

void ViewController::refreshComboItems()
{
    // The panel may be open behind the editor: offer only what still exists,
    // keeping the chosen item when it does.
    if (DM.theSyubetuNo < kSyubetuSisyutu || DM.theSyubetuNo > kSyubetuIdouMoto) return;
    const int index = ui->cmbItemDataHimomku->currentIndex();
    const int64_t chosen = index >= 0 ? cmbItemDataIdArray[static_cast<size_t>(index)] : -1;
    setComboItemData(DM.theSyubetuNo);
    if (const auto again = comboBoxId2Idx(chosen)) ui->cmbItemDataHimomku->setCurrentIndex(*again);
}

void ViewController::himokuKoumokuChanged(bool changed)
{
    sisanKoumokuChanged(changed);
}

void ViewController::keyPressEvent(QKeyEvent* event)
{
    if (!pressFocusedButton(*event)) QMainWindow::keyPressEvent(event);
}

void ViewController::someMessageWithAlert(const QString& message, const QString& informative)
{
    messageService().someMessageWithAlert(message, informative);
}

bool ViewController::yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no)
{
    return messageService().yesNoMessageWithAlert(message, yes, no);
}
