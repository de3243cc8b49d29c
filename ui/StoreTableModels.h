#pragma once

class DataModel;
class ListTableModel;
class QObject;

// The asset list: name ("sisanNamae") and balance ("sisanZankin") of every
// asset of the store's sisanList.
ListTableModel* makeSisanTableModel(const DataModel& dm, QObject* parent);

// The entry list of the shown asset, over the store's itemList in its
// current order: date, category (or partner asset), income, expense and the
// running balance. The note shows as the row's tool tip.
ListTableModel* makeItemTableModel(const DataModel& dm, QObject* parent);
