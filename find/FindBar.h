#pragma once

#include <QDate>
#include <QWidget>
#include <cstdint>
#include <memory>

#include "store/SearchQuery.h"

class DataModel;
class FoundItemsModel;
class QKeyEvent;
class SearchRunner;
namespace Ui {
class FindBar;
}

// The find bar above the entry list: words, an amount or a range of
// amounts, a period (with 今月, 先月, 今年, 昨年), a kind and an asset, and
// the entries found in every asset, newest first, with their number and
// sums. It searches again at every change, on a worker thread; Enter or a
// double click on a result asks the main window to show that entry, and
// Escape closes the bar.
class FindBar final : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(DataModel& dm, QWidget* parent = nullptr);
    ~FindBar() override;

    // Shows the bar with the words selected for typing, and searches.
    void open();
    // Hides the bar and drops a search in flight.
    void closeBar();
    // The book changed (an entry, an asset, a category): the asset list and
    // the results are brought up to date.
    void bookChanged();

    // The conditions as typed, or a reason why they cannot be searched.
    SearchCriteria criteria(QString* problem) const;

signals:
    void jumpRequested(int64_t sisanId, int64_t itemId);
    void closed();
    // A search has delivered its results (tests wait for it).
    void searched();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    DataModel& DM;
    std::unique_ptr<Ui::FindBar> ui;
    FoundItemsModel* model;
    SearchRunner* runner;
    bool settingPeriod = false;  // the period fields are being set by the code

    void wire();
    void layOutColumns();
    void reloadSisanChoices();
    void periodChosen();
    void runSearch();
    void showFound(std::shared_ptr<const FoundItems> items, const QString& error);
    void showSummary();
    void saveCsv();
    void activated(const QModelIndex& index);
};
