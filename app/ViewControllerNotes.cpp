// ViewController: typing less in the entry panel. Past notes are offered
// while the note is typed, and a new entry starts from the category last used.
#include <QAbstractItemView>
#include <QCompleter>
#include <QStandardItemModel>

#include "app/ViewController.h"
#include "find/SearchRunner.h"
#include "store/DataModel.h"
#include "store/TextFold.h"
#include "ui/AmountText.h"
#include "ui_ViewController.h"

namespace {

constexpr size_t kSuggestions = 8;
// The role that holds the note itself; the list shows more.
constexpr int kNoteRole = Qt::UserRole + 1;
constexpr int kSuggestionRole = Qt::UserRole + 2;

}  // namespace

void ViewController::wireNoteSuggestions()
{
    noteRunner = new SearchRunner(DM.bookPath(), this);
    noteModel = new QStandardItemModel(this);
    noteCompleter = new QCompleter(noteModel, this);
    noteCompleter->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    noteCompleter->setCompletionRole(kNoteRole);
    noteCompleter->setMaxVisibleItems(static_cast<int>(kSuggestions));
    ui->txtItemDataBikou->setCompleter(noteCompleter);
    connect(ui->txtItemDataBikou, &QLineEdit::textEdited, this, &ViewController::noteTyped);
    connect(noteRunner, &SearchRunner::suggested, this,
            [this](std::shared_ptr<const std::vector<NoteSuggestion>> notes) { showNoteSuggestions(*notes); });
    connect(noteCompleter, qOverload<const QModelIndex&>(&QCompleter::activated), this,
            [this](const QModelIndex& index) { noteChosen(index.data(kSuggestionRole).toInt()); });
}

void ViewController::noteTyped(const QString& text)
{
    if (ui->itemData->isHidden() || text.trimmed().isEmpty() || !DM.refreshSearchIndex()) {
        noteRunner->cancel();
        noteSuggestions.clear();
        noteModel->clear();
        noteCompleter->popup()->hide();
        return;
    }
    noteRunner->suggest(foldText(text.toStdString()), kSuggestions);
}

void ViewController::showNoteSuggestions(const std::vector<NoteSuggestion>& notes)
{
    if (ui->itemData->isHidden() || !ui->txtItemDataBikou->hasFocus()) return;
    noteSuggestions = notes;
    noteModel->clear();
    for (size_t i = 0; i < notes.size(); ++i) {
        const NoteSuggestion& n = notes[i];
        // What choosing it fills in, beside the note.
        const QString detail = QString::fromStdString(DM.getHimokuNamaeFromHimokuRowNo(n.SyubetuNo, n.HimokuNo,
                                                                                        n.IdouSisanNo)) +
                               QStringLiteral("  ") + groupedKingaku(n.Kingaku);
        auto* item = new QStandardItem(QString::fromStdString(n.Bikou) + QStringLiteral("　（") + detail +
                                       QStringLiteral("）"));
        item->setData(QString::fromStdString(n.Bikou), kNoteRole);
        item->setData(static_cast<int>(i), kSuggestionRole);
        noteModel->appendRow(item);
    }
    if (notes.empty()) {
        noteCompleter->popup()->hide();
        return;
    }
    noteCompleter->setCompletionPrefix(ui->txtItemDataBikou->text());
    noteCompleter->complete();
}

void ViewController::noteChosen(int suggestion)
{
    if (suggestion < 0 || suggestion >= static_cast<int>(noteSuggestions.size())) return;
    const NoteSuggestion n = noteSuggestions[static_cast<size_t>(suggestion)];
    ui->txtItemDataBikou->setText(QString::fromStdString(n.Bikou));
    const Sisan* sisan = selectedSisan();
    const int64_t here = sisan ? sisan->Id : 0;
    int64_t kind = n.SyubetuNo;
    int64_t choice = n.HimokuNo;
    if (kind == kSyubetuIdouMoto || kind == kSyubetuIdouSaki) {
        // A transfer repeats from its source: from this asset to the other one.
        const int64_t source = kind == kSyubetuIdouMoto ? n.SisanNo : n.IdouSisanNo;
        choice = kind == kSyubetuIdouMoto ? n.IdouSisanNo : n.SisanNo;
        kind = source == here && choice != here ? int64_t{kSyubetuIdouMoto} : int64_t{0};
    }
    // An edit stays an expense or an income.
    if (theItemDataSyoriNo == 2 && kind != kSyubetuSisyutu && kind != kSyubetuSyuunyuu) kind = 0;
    if (kind == 0) return;  // only the note fits here
    QAbstractButton* button = kind == kSyubetuSisyutu    ? static_cast<QAbstractButton*>(ui->rdbSisyutu)
                              : kind == kSyubetuSyuunyuu ? static_cast<QAbstractButton*>(ui->rdbSyuunyuu)
                                                         : static_cast<QAbstractButton*>(ui->rdbIdou);
    button->setChecked(true);
    setComboItemData(kind);
    if (const auto index = comboBoxId2Idx(choice)) ui->cmbItemDataHimomku->setCurrentIndex(*index);
    ui->txtItemDataKingaku->setText(QString::number(n.Kingaku));
}

void ViewController::proposeLastUsed(int64_t kind)
{
    if (theItemDataSyoriNo != 1) return;
    // The entry entered last (the highest Id) of this kind, whatever the list's order.
    int64_t newest = -1, choice = 0;
    for (const auto& item : DM.itemList) {
        if (item->SyubetuNo != kind || item->Id <= newest) continue;
        newest = item->Id;
        choice = kind == kSyubetuIdouMoto ? item->IdouSisanNo : item->HimokuNo;
    }
    if (const auto index = comboBoxId2Idx(choice); newest >= 0 && index)
        ui->cmbItemDataHimomku->setCurrentIndex(*index);
}
