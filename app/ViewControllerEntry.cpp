// ViewController: the entry panel (new, edit and delete of entries).
#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QStandardItemModel>
#include <QDate>
#include <QStringListModel>
#include <QTableView>

#include "app/ViewController.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui_ViewController.h"

namespace {

const QString kNoSisan = QStringLiteral("資産がありません。先に「設定」の「資産の設定」で資産を追加してください。");
const QString kKingakuInvalid = QStringLiteral("金額の欄に不正なデータがあります");
const QString kRedBorder = QStringLiteral("QLineEdit { border: 2px solid red; }");

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

// The entry's date fields from the date picker's day.
struct DateFields {
    std::string hizuke;  // "yyyy-MM-dd"
    int64_t nen, tuki, hi;
};

DateFields dateFieldsOf(const QDate& date)
{
    return {date.toString(QStringLiteral("yyyy-MM-dd")).toStdString(), date.year(), date.month(), date.day()};
}

}  // namespace

void ViewController::rdbtnSelected(QAbstractButton* sender)
{
    const int64_t kind = sender->property("tag").toInt() + 1;
    setComboItemData(kind);
    proposeLastUsed(kind);
}

void ViewController::setComboItemData(int64_t kind)
{
    cmbItemDataNamae.clear();
    cmbItemDataIdArray.clear();
    DM.theSyubetuNo = kind;
    if (kind == kSyubetuSisyutu || kind == kSyubetuSyuunyuu) {
        ui->lblHimokuTitle->setText(QStringLiteral("費目"));
        for (const auto& himoku : DM.himokuList) {
            if (himoku->SyubetuNo != kind || himoku->Ucount != 0) continue;
            cmbItemDataIdArray.push_back(himoku->Id);
            cmbItemDataNamae.push_back(himoku->Namae);
        }
    } else if (kind == kSyubetuIdouMoto) {
        ui->lblHimokuTitle->setText(QStringLiteral("移動先資産"));
        for (const auto& sisan : DM.sisanList) {
            cmbItemDataIdArray.push_back(sisan->Id);
            cmbItemDataNamae.push_back(sisan->Namae);
        }
    } else {
        someMessageWithAlert(QStringLiteral("error rdbtnSelected"));
        return;
    }
    QStringList items;
    for (int i = 0; i < numberOfItems(); ++i) items.push_back(q(cmbItemDataNamae[static_cast<size_t>(i)]));
    comboModel->setStringList(items);
    ui->cmbItemDataHimomku->setCurrentIndex(-1);
}

int ViewController::numberOfItems() const
{
    return DM.theSyubetuNo >= 1 && DM.theSyubetuNo <= 4 ? static_cast<int>(cmbItemDataNamae.size()) : 0;
}

std::optional<int> ViewController::comboBoxId2Idx(int64_t id) const
{
    for (size_t i = 0; i < cmbItemDataIdArray.size(); ++i)
        if (cmbItemDataIdArray[i] == id) return static_cast<int>(i);
    return std::nullopt;
}

void ViewController::openPanel(const QString& title, int64_t syoriNo)
{
    ui->itemData->show();
    ui->itemDataSyubetu->setTitle(title);
    theItemDataSyoriNo = syoriNo;
}

void ViewController::setListsEnabled(bool enabled)
{
    // While an entry is edited, the asset list is held too: the update must
    // go to the asset the entry was loaded from.
    ui->tblItem->setEnabled(enabled);
    ui->tblSisan->setEnabled(enabled);
}

const Sisan* ViewController::selectedSisanOrSay()
{
    const Sisan* sisan = selectedSisan();
    if (!sisan) someMessageWithAlert(kNoSisan);
    return sisan;
}

void ViewController::newItem()
{
    if (!selectedSisanOrSay()) return;
    openPanel(QStringLiteral("新規追加"), 1);
    ui->rdbSisyutu->setChecked(true);
    setComboItemData(kSyubetuSisyutu);
    proposeLastUsed(kSyubetuSisyutu);
    ui->rdbSisyutu->setFocus();
}

void ViewController::editUpdateItem()
{
    const int row = selectedRow(ui->tblItem);
    if (row < 0) {
        someMessageWithAlert(QStringLiteral("データ行を選択してから編集してください。"));
        return;
    }
    const std::shared_ptr<Items> item = DM.itemList[static_cast<size_t>(row)];
    if (item->SyubetuNo != kSyubetuSisyutu && item->SyubetuNo != kSyubetuSyuunyuu) {
        someMessageWithAlert(
            QStringLiteral("資産移動したデータは編集できません。必要なら、削除してから新規にデータを追加してください。"));
        return;
    }
    openPanel(QStringLiteral("編集更新"), 2);
    setListsEnabled(false);
    // OK updates the entry loaded here, whatever the lists do meanwhile.
    theItemDataSelectedId = item->Id;
    edited = EditedEntry{selectedSisan()->Id, item->Id};  // a listed entry implies a shown asset
    const bool sisyutu = item->SyubetuNo == kSyubetuSisyutu;
    (sisyutu ? ui->rdbSisyutu : ui->rdbSyuunyuu)->setChecked(true);
    setComboItemData(item->SyubetuNo);
    ui->txtItemDataKingaku->setText(QString::number(sisyutu ? item->Syukkin : item->Nyuukin));
    if (const auto index = comboBoxId2Idx(item->HimokuNo)) {
        ui->cmbItemDataHimomku->setCurrentIndex(*index);
        const QDate date = QDate::fromString(q(item->Hizuke), QStringLiteral("yyyy-MM-dd"));
        if (date.isValid()) ui->itemDataDatePicker->setDate(date);  // a malformed stored date keeps the picker's
        ui->txtItemDataBikou->setText(q(item->Bikou));
    }
    (sisyutu ? ui->rdbSisyutu : ui->rdbSyuunyuu)->setFocus();
}

void ViewController::deleteItem()
{
    closePanel();  // a new entry or an edit in progress is abandoned
    const int row = selectedRow(ui->tblItem);
    if (row < 0) {
        someMessageWithAlert(QStringLiteral("データ行を選択してから削除してください。"));
        return;
    }
    const std::shared_ptr<Items> item = DM.itemList[static_cast<size_t>(row)];
    const QString sakujyo = QStringLiteral("削除する"), sinai = QStringLiteral("しない");
    if (item->SyubetuNo != kSyubetuIdouMoto && item->SyubetuNo != kSyubetuIdouSaki) {
        if (!yesNoMessageWithAlert(QStringLiteral("選択した行のデータを削除しますか？"), sakujyo, sinai)) return;
        if (!DM.itemDelete(item->Id)) return;
    } else {
        const std::shared_ptr<Items> partner = DM.readFromItem1Item(item->IdouId);
        if (!partner) return;
        const QString side = item->SyubetuNo == kSyubetuIdouMoto ? QStringLiteral("移動先:") : QStringLiteral("移動元:");
        const auto partnerSisan = DM.sisanId2Idx.find(partner->SisanNo);
        const QString namae = partnerSisan ? q(DM.sisanList[static_cast<size_t>(*partnerSisan)]->Namae) : QString();
        if (!yesNoMessageWithAlert(QStringLiteral("選択された行のデータと、") + side + namae, sakujyo, sinai)) return;
        // Both sides go in one transaction, the partner first.
        if (!DM.itemDeleteIdouPair(partner->Id, item->Id)) return;
    }
    refreshAfterStore();
}

void ViewController::btnItemDataOK()
{
    if (ui->itemData->isHidden()) return;
    // The lists stay as they are: a refused entry keeps the panel, and an
    // edit its entry, until OK succeeds or Cancel is pressed.
    if (theItemDataSyoriNo == 1) {
        itemDataSinki();
    } else if (theItemDataSyoriNo == 2) {
        itemDataHensyuu();
    }
    resetPanelToExpense();
}

void ViewController::resetPanelToExpense()
{
    ui->rdbSisyutu->setChecked(true);
    setComboItemData(kSyubetuSisyutu);
    ui->cmbItemDataHimomku->setCurrentIndex(-1);
    ui->txtItemDataKingaku->clear();
    ui->txtItemDataBikou->clear();
}

void ViewController::btnItemDataCancel()
{
    closePanel();
}

void ViewController::closePanel()
{
    // A pop-up is a window of its own: hiding the panel would leave it open.
    if (QWidget* popup = QApplication::activePopupWidget()) {
        QWidget* owner = popup;
        while (owner && owner != ui->itemData) owner = owner->parentWidget();
        if (owner) popup->close();
    }
    // Suggestions belong to the note being typed: the next entry starts without.
    noteCompleter->popup()->hide();
    noteSuggestions.clear();
    noteModel->clear();
    ui->itemData->hide();
    edited.reset();
    setListsEnabled(true);
}

void ViewController::dropVanishedEdit()
{
    if (edited && !DM.itemId2Idx.find(edited->itemId)) closePanel();
}

std::optional<int64_t> ViewController::validatedKingaku()
{
    const auto kingaku = kingakuFromText(trimmedAmountText(ui->txtItemDataKingaku->text()));
    if (!kingaku) {
        ui->txtItemDataKingaku->setStyleSheet(kRedBorder);
        someMessageWithAlert(kKingakuInvalid);
        return std::nullopt;
    }
    ui->txtItemDataKingaku->setStyleSheet(QString());  // an accepted amount clears the mark
    return kingaku;
}

std::optional<int64_t> ViewController::selectedComboId()
{
    const int index = ui->cmbItemDataHimomku->currentIndex();
    if (index >= 0 && index < static_cast<int>(cmbItemDataIdArray.size()))
        return cmbItemDataIdArray[static_cast<size_t>(index)];
    someMessageWithAlert(DM.theSyubetuNo == kSyubetuIdouMoto ? QStringLiteral("移動先資産を選択してください。")
                                                            : QStringLiteral("費目を選択してください。"));
    return std::nullopt;
}

void ViewController::itemDataSinki()
{
    const Sisan* sisan = selectedSisanOrSay();
    if (!sisan) return;
    const auto comboId = selectedComboId();
    if (!comboId) return;
    if (DM.theSyubetuNo > kSyubetuSyuunyuu && sisan->Id == *comboId) {
        someMessageWithAlert(QStringLiteral("移動元と移動先が同じです。処理を中止します。"));
        return;
    }
    const auto kingaku = validatedKingaku();
    if (!kingaku) return;
    const DateFields d = dateFieldsOf(ui->itemDataDatePicker->date());
    const std::string bikou = ui->txtItemDataBikou->text().toStdString();
    const bool stored =
        DM.theSyubetuNo == kSyubetuSisyutu || DM.theSyubetuNo == kSyubetuSyuunyuu
            ? DM.itemNyuukinSyukkinInsert(d.hizuke, d.nen, d.tuki, d.hi, sisan->Id, DM.theSyubetuNo, *comboId,
                                          *kingaku, bikou)
            : DM.itemIdouSisanInsert(d.hizuke, d.nen, d.tuki, d.hi, sisan->Id, DM.theSyubetuNo, *comboId, *kingaku,
                                     bikou);
    if (!stored) return;
    refreshAfterStore();
    closePanel();
}

void ViewController::itemDataHensyuu()
{
    if (!edited) return;
    const auto kingaku = validatedKingaku();
    if (!kingaku) return;
    const auto comboId = selectedComboId();
    if (!comboId) return;
    const DateFields d = dateFieldsOf(ui->itemDataDatePicker->date());
    if (!DM.itemUpdate(edited->itemId, d.hizuke, d.nen, d.tuki, d.hi, edited->sisanId, DM.theSyubetuNo, *comboId,
                       *kingaku, ui->txtItemDataBikou->text().toStdString()))
        return;
    // The store re-read the edited asset's ledger: show that asset with it.
    const int64_t* row = DM.sisanId2Idx.find(edited->sisanId);
    if (row && *row != DM.theSisanNo) {
        selectSisanRowQuietly(static_cast<int>(*row));
        sisanSelected(static_cast<int>(*row));
    }
    refreshAfterStore();
    closePanel();
}

void ViewController::refreshAfterStore()
{
    tblItemReload();
    reloadSisanList();
    findFollowsBook();
}
