#include "editors/EditorWidgets.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <algorithm>

namespace {

constexpr int kMaxNameWidth = 480;  // beyond this a name is elided, not the dialog widened

}  // namespace

void keepPlaceWhenHidden(QWidget* widget)
{
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

void setRowHeights(QTableView* table)
{
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 10);
}

void fitNameColumn(QTableView* table, int otherColumns, const std::vector<QString>& names)
{
    const QFontMetrics metrics(table->font());
    int widest = 10 * metrics.horizontalAdvance(QChar(0x4E00));  // ten kanji at the least
    for (const QString& name : names) widest = std::max(widest, metrics.horizontalAdvance(name));
    const int name = std::min(widest, kMaxNameWidth) + 24;  // cell margins
    const int chrome = 2 * table->frameWidth() + table->verticalScrollBar()->sizeHint().width();
    table->setMinimumWidth(name + otherColumns + chrome);
}

void fitButtonsTo(std::initializer_list<QPushButton*> buttons, std::initializer_list<QString> titles)
{
    for (QPushButton* button : buttons) {
        int widest = 0;
        for (const QString& title : titles) widest = std::max(widest, button->fontMetrics().horizontalAdvance(title));
        button->setMinimumWidth(widest + 32);  // the style's bevel and padding
    }
}

int selectedRow(const QTableView* table)
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}
