#pragma once

#include <QString>
#include <functional>

class DataModel;
class ListTableModel;
class QObject;

// The asset list: name ("sisanNamae") and balance ("sisanZankin") of every
// asset of the store's sisanList; with afterWithdrawals a third column
// ("sisanHikiotosigo", 引落後) of its text per row: the balance after the
// card withdrawals still to come from the asset.
ListTableModel* makeSisanTableModel(const DataModel& dm, QObject* parent,
                                    std::function<QString(int row)> afterWithdrawals = {});

// The entry list of the shown asset, over the store's itemList in its
// current order: date, category (or partner asset), income, expense and the
// running balance. The note shows as the row's tool tip.
ListTableModel* makeItemTableModel(const DataModel& dm, QObject* parent);
