#pragma once

#include <QString>
#include <initializer_list>
#include <vector>

class QPushButton;
class QTableView;
class QWidget;

// Table, box and keyboard habits the two editors share.

// A hidden widget keeps its place, so showing and hiding the editing box
// does not make the table jump.
void keepPlaceWhenHidden(QWidget* widget);

// Rows as high as the font needs, fixed (no per-row size computation).
void setRowHeights(QTableView* table);

// Widens the table so that its stretching name column shows the longest of
// `names` whole, next to `otherColumns` pixels of fixed columns. Very long
// names are elided beyond a sensible width.
void fitNameColumn(QTableView* table, int otherColumns, const std::vector<QString>& names);

// Makes each button wide enough for the longest of the titles it may get.
void fitButtonsTo(std::initializer_list<QPushButton*> buttons, std::initializer_list<QString> titles);

// The selected row of a single-selection table, or -1.
int selectedRow(const QTableView* table);
