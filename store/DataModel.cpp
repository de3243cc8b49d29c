// DataModel: start-up, connection, statement helpers and message reporting.
#include "store/DataModel.h"

#include <sqlite3.h>

#include "store/DeviceIds.h"
#include "store/MessageSink.h"
#include "store/Money.h"
#include "store/Provisioning.h"
#include "store/SearchIndex.h"
#include "store/SyncLog.h"
#include "store/Transaction.h"

DataModel::DataModel(std::string path, int busyTimeoutMs, Corrections corrections)
    : itemSortASC{{"Hizuke", true}, {"HimokuNo", true}, {"Nyuukin", true}, {"Syukkin", true}, {"Zankin", true}},
      annualTotalNameList{"収　入　計", "支　出　計", "差　引　合　計"},
      strPath(std::move(path)),
      busyTimeoutMs(busyTimeoutMs)
{
    // Whatever the book holds, no step records the search index.
    declareSearchIndexDerived();
    openDB();
    // The stored balances lag behind the entries when the last run did not
    // end cleanly: every screen shows the recomputed ones from the start.
    deferCorrections = true;
    readBook();
    deferCorrections = false;
    if (unreadableValueSeen) {
        badValueFound = findBadValue(db);
    } else if (corrections == Corrections::Store) {
        storePendingZankin();
        openSearchIndex();
    }
}

bool DataModel::readBook()
{
    if (!readFromSisanTable() || !readFromHimokuTable()) return false;
    const bool recomputed = recomputeAllSisanZankin();
    readHouseholdTables();
    // Pruning writes: while the start's check may still read the book, it
    // waits with the balances' corrections (storePendingZankin).
    if (deferCorrections)
        historyPrunePending = true;
    else
        pruneOldHistory();
    loadUndoLists();
    return recomputed;
}

void DataModel::pruneOldHistory()
{
    historyPrunePending = false;
    // Operations sync may still rewind or take deleted rows from stay.
    int64_t keepFrom = 0;
    if (!oldestLoggedHistoryId(db, &keepFrom) || !pruneHistory(db, historyNowMs(), {}, keepFrom))
        someMessageWithAlert(errorText("failure pruning the history: "));
}

bool DataModel::reopenBook()
{
    finalize();
    clearItemList();
    theSisanNo = 0;
    unreadableValueSeen = false;
    badValueFound.reset();
    const bool read = readBook();
    if (unreadableValueSeen) badValueFound = findBadValue(db);
    searchIndexReady = false;  // the book now may be one of an older version
    if (historyListener) historyListener();
    return read;
}

DataModel::~DataModel()
{
    finalize();
    sqlite3_close(db);
}

DataModel& DataModel::sharedInstance(const std::string& path)
{
    static DataModel instance(path);
    return instance;
}

std::string DataModel::defaultBookPath()
{
    return resourceDirectory() + "/Zenvora.sql";
}

void DataModel::openDB()
{
    // The connection is only ever used from one thread, so SQLite's
    // per-call locking of it is skipped (NOMUTEX).
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(strPath.c_str(), &db, flags, nullptr) != SQLITE_OK) {
        someMessageWithAlert(errorText("error open database : "), "stop the app");
        return;
    }
    sqlite3_busy_timeout(db, busyTimeoutMs);
}

void DataModel::closeDB()
{
    finalize();
    if (sqlite3_close(db) != SQLITE_OK) {
        someMessageWithAlert(errorText("error close database table: "), "stop the app");
        return;
    }
    db = nullptr;
}

void DataModel::readValue()
{
    if (!readFromSisanTable() || !readFromHimokuTable()) return;
    rereadShownItems();
}

bool DataModel::bind_text(int index, const std::string& text)
{
    if (stmt.bindText(index, text) == SQLITE_OK) return true;
    someMessageWithAlert(errorText("failure binding text: "));
    return false;
}

bool DataModel::bind_int(int index, int64_t value)
{
    if (!fitsInt32(value)) {
        someMessageWithAlert("failure binding int: " + std::to_string(value) + " does not fit 32 bits");
        return false;
    }
    if (stmt.bindInt(index, static_cast<int>(value)) == SQLITE_OK) return true;
    someMessageWithAlert(errorText("failure binding int: "));
    return false;
}

void DataModel::someMessageWithAlert(const std::string& message, const std::string& informative)
{
    deliverMessage(message, informative);
}

std::string DataModel::errorText(const char* prefix) const
{
    return std::string(prefix) + (db ? sqlite3_errmsg(db) : "out of memory");
}

bool DataModel::prepare(const std::string& sql, const char* failurePrefix, const char* informative)
{
    if (stmt.prepare(db, sql)) return true;
    someMessageWithAlert(errorText(failurePrefix), informative);
    return false;
}

bool DataModel::stepDone(const char* failurePrefix, const char* informative)
{
    if (stmt.step() == Step::Done) return true;
    someMessageWithAlert(errorText(failurePrefix), informative);
    return false;
}

void DataModel::finalize()
{
    stmt.finalize();
}

bool DataModel::runWrite(const std::string& sql, const char* preparePrefix, const char* prepareInformative,
                         const char* stepPrefix, const char* stepInformative)
{
    if (!prepare(sql, preparePrefix, prepareInformative)) return false;
    const bool done = stepDone(stepPrefix, stepInformative);
    finalize();
    return done;
}

bool DataModel::newRowIdOr(const char* table, int64_t* id)
{
    switch (newRowId(db, table, id)) {
    case NewRowId::Assigned:
    case NewRowId::BySqlite:
        return true;
    case NewRowId::Exhausted:
        someMessageWithAlert("これ以上データを追加できません。", "行の番号を使い切りました。");
        return false;
    case NewRowId::Failed:
        break;
    }
    someMessageWithAlert(errorText("failure assigning an Id: "));
    return false;
}

bool DataModel::bindIdOr(int index, int64_t id)
{
    if ((id ? stmt.bindInt64(index, id) : stmt.bindNull(index)) == SQLITE_OK) return true;
    someMessageWithAlert(errorText("failure binding int: "));
    return false;
}

bool DataModel::bindIntOr(int index, int64_t value, const char* columnMessage)
{
    if (bind_int(index, value)) return true;
    someMessageWithAlert(columnMessage);
    return false;
}

bool DataModel::bindTextOr(int index, const std::string& text, const char* columnMessage)
{
    if (bind_text(index, text)) return true;
    someMessageWithAlert(columnMessage);
    return false;
}

bool DataModel::allFitInt32(std::initializer_list<int64_t> values)
{
    for (int64_t v : values) {
        if (!fitsInt32(v)) {
            someMessageWithAlert("金額の欄に不正なデータがあります");
            return false;
        }
    }
    return true;
}

bool DataModel::beganOrReport(const Transaction& tx)
{
    if (tx.began()) return true;
    someMessageWithAlert(errorText("failure beginning a transaction: "));
    return false;
}

bool DataModel::commitOrReport(Transaction& tx)
{
    if (!tx.commit()) {
        someMessageWithAlert(errorText("failure committing a transaction: "));
        return false;
    }
    // The book takes writes again: balances a reader kept out go in now.
    storePendingZankin();
    return true;
}

int64_t DataModel::checkedInt(int column, IntegerRange range)
{
    if (const auto value = stmt.columnReadable(column, range)) return *value;
    unreadableValueSeen = true;
    return stmt.columnInt(column);
}
