#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "store/Himoku.h"
#include "store/IdIndexMap.h"
#include "store/Items.h"
#include "store/MonthEndHistory.h"
#include "store/SearchQuery.h"
#include "store/Sisan.h"
#include "store/Statement.h"
#include "store/Transaction.h"

struct sqlite3;
class ItemsArena;
class Transaction;

// The ledger store: the one object that talks to the database. It holds the
// lists the screens show and performs every read and write of the tables
// Sisan, Items and Himoku. Operations that can fail report their failure
// through the message sink (MessageSink.h) and return false.
//
// Every write of several statements runs in one transaction: on a failure the
// database and the in-memory lists are as they were before the call, and the
// message is delivered after the transaction has closed. A read that meets an
// error before the end of its rows fails with a message; nothing computed
// from the rows it did get is kept. Amounts and other integers outside the
// signed 32-bit range are refused before any write; balances are 64-bit.
// Not thread-safe: one operation at a time, on one thread.
class DataModel {
public:
    // How long a statement waits for another connection's lock (a backup
    // tool, a sync client) before it fails as busy.
    static constexpr int kBusyTimeoutMs = 5000;

    // Opens (creating if missing) the database file at path, reads the asset
    // table, then the category table, then recomputes every balance from the
    // entries (recomputeAllSisanZankin). A statement waits busyTimeoutMs for
    // another connection's lock. Failures are reported, not thrown.
    explicit DataModel(std::string path, int busyTimeoutMs = kBusyTimeoutMs);
    // Finalizes any open statement and closes the connection.
    ~DataModel();
    DataModel(const DataModel&) = delete;
    DataModel& operator=(const DataModel&) = delete;

    // The application's store, created on first use (thread-safe one-time
    // initialisation) on the book at path, by default
    // resourceDirectory()/Zenvora.sql; later calls return the same store.
    static DataModel& sharedInstance(const std::string& path = defaultBookPath());
    // resourceDirectory()/Zenvora.sql.
    static std::string defaultBookPath();

    // ---- lists shown by the screens -------------------------------------
    // Each list comes with a map from row Id to position (Id2Idx) and one
    // from position to row Id (Idx2Id), both rebuilt with every read.
    std::vector<std::shared_ptr<Sisan>> sisanList;  // table order
    IdIndexMap sisanId2Idx;
    IndexIdMap sisanIdx2Id;
    std::vector<std::shared_ptr<Items>> itemList;  // one asset's ledger, date order
    IdIndexMap itemId2Idx;
    IndexIdMap itemIdx2Id;
    // Sort direction per entry-list column; all reset to true by every ledger read.
    std::map<std::string, bool> itemSortASC;
    std::vector<std::shared_ptr<Himoku>> himokuList;  // kind, then category, then sub-items
    IdIndexMap himokuId2Idx;
    IndexIdMap himokuIdx2Id;
    int64_t GrandTotalSisan = 0;
    std::vector<std::string> yearsList;
    std::vector<std::string> annualInNameList;
    std::vector<std::vector<int64_t>> annualInDataList;
    std::vector<std::string> annualOutNameList;
    std::vector<std::vector<int64_t>> annualOutDataList;
    std::vector<std::string> annualTotalNameList;
    std::vector<std::vector<int64_t>> annualTotalDataList;
    MonthEndHistory sisanHistory;  // filled by sisanHistoryFromItemsTable
    int64_t theSyubetuNo = 0;  // kind the entry panel works with
    int64_t theSisanNo = 0;    // position (not Id) in sisanList of the shown asset

    // ---- lifecycle and statement helpers ---------------------------------
    // The path of the book, for connections of other threads.
    const std::string& bookPath() const { return strPath; }
    void openDB();
    void closeDB();
    // Re-reads assets, categories and the shown asset's entries, stopping at
    // the first failure.
    void readValue();
    // Bind to parameter index (1-based) of the current statement; on failure
    // report "failure binding ...: " + SQLite's message and return false.
    bool bind_text(int index, const std::string& text);
    bool bind_int(int index, int64_t value);  // refuses values outside 32 bits
    // Hands both texts to the message sink and returns when it is done.
    void someMessageWithAlert(const std::string& message, const std::string& informative = "information");

    // ---- assets and balances ---------------------------------------------
    // Replaces sisanList, its maps and GrandTotalSisan with the table's rows
    // and stored balances; on a failure the list is left empty.
    bool readFromSisanTable();
    // GrandTotalSisan := sum of the in-memory balances.
    void totalOfZankinFrom_sisanList();
    // Sets every listed asset's balance to its opening amount plus the sum of
    // its entries (one pass over the entries), GrandTotalSisan following, and
    // writes the balances that changed into the table in one transaction. On
    // a failed read the balances stay as they were; false after one message.
    bool recomputeAllSisanZankin();
    // Sets the in-memory balance of the asset with this Id.
    void updateSisanZankinList(int64_t id, int64_t zankin);
    // Writes every in-memory balance (64-bit) to the table in one
    // transaction. On a failure the assets before the failing one stay
    // written; returns false.
    bool updateSisanZankinTable();
    bool sisanInsert(const std::string& namae, int64_t syokiKingaku);
    bool sisanUpdate(int64_t id, const std::string& namae, int64_t syokiKingaku, int64_t zankin);
    // Deletes the asset row only (see sisanDeleteWithItems).
    bool sisanDelete(int64_t id);
    // Deletes the asset's entries, the transfer rows of other assets naming
    // it, and the asset itself, all or nothing; then re-reads the shown
    // asset's entries and the asset table.
    bool sisanDeleteWithItems(int64_t id);
    // Name of the asset with this Id, or "????".
    std::string getSisanNamaeFromNo(int64_t id);

    // ---- ledger entries and transfers -------------------------------------
    // Reads the asset's entries in date order with running balances into
    // itemList and sets the asset's in-memory balance to the last one. On a
    // failure itemList is empty and the balance is left as it was.
    bool readFromItemsTable(int64_t sisanId);
    // One entry, or an empty pointer when there is none.
    std::shared_ptr<Items> readFromItem1Item(int64_t id);
    std::string getHimokuNamaeFromHimokuRowNo(int64_t syubetuNo, int64_t himokuNo, int64_t idouSisanNo);
    std::string getHimokuNamaeFromNo(int64_t id);
    // An expense (kind 1) or income (kind 2); re-reads the shown asset.
    bool itemNyuukinSyukkinInsert(const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi,
                                  int64_t sisanNo, int64_t syubetuNo, int64_t himokuNo, int64_t kingaku,
                                  const std::string& bikou);
    // A transfer as a linked pair of rows, all or nothing; re-reads the
    // destination, then the source (itemList ends as the source's ledger).
    bool itemIdouSisanInsert(const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi,
                             int64_t sisanNo, int64_t syubetuNo, int64_t idouSisanNo, int64_t kingaku,
                             const std::string& bikou);
    // Rewrites an expense or income; any other kind is refused silently.
    // Re-reads the ledger of the given asset.
    bool itemUpdate(int64_t id, const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi,
                    int64_t sisanNo, int64_t syubetuNo, int64_t himokuNo, int64_t kingaku,
                    const std::string& bikou);
    // Deletes one row; re-reads the shown asset.
    bool itemDelete(int64_t id);
    // Deletes both rows of a transfer, the partner first, all or nothing;
    // re-reads the shown asset.
    bool itemDeleteIdouPair(int64_t partnerId, int64_t id);
    // Deletes the asset's rows and the transfer rows elsewhere naming it;
    // re-reads the shown asset.
    bool itemDeleteWhereSisanNo(int64_t sisanId);

    // ---- category tree -----------------------------------------------------
    bool readFromHimokuTable();
    // A category with its "その他" sub-item; re-reads the tree.
    bool insertHimokuOfHiimoku(int64_t syubetuNo, const std::string& namae);
    // A sub-item (full stored name) and the category's count + 1; re-reads the tree.
    bool insertUtiwakeOfHimoku(int64_t syubetuno, const std::string& utiwake, int64_t hno, int64_t ucount0);
    // Sets one row's Hno; does not re-read.
    bool updateHnoOfHimoku(int64_t id, int64_t hno);
    // Renames a category and rewrites its listed sub-items' stored names;
    // re-reads the tree and the shown asset's entries.
    bool updateNamaeOfHimoku(int64_t id, const std::string& himokuNamae, const std::vector<int64_t>& utiwakeids,
                             const std::vector<std::string>& utiwakeNamaes);
    bool updateNamaeOfUtiwakeHimoku(int64_t id, const std::string& namae);
    // Deletes a sub-item, counts its category down and deletes its entries
    // on every asset; re-reads the tree, the shown asset's entries, the assets.
    bool deleteUtiwakeHimoku(int64_t id, int64_t hno, int64_t ucount);
    // Deletes a category with all its sub-items and the entries filed under
    // the listed ids; re-reads as deleteUtiwakeHimoku.
    bool deleteHimokuHimoku(int64_t himokuid, const std::vector<int64_t>& utiwakeids);

    // ---- annual aggregation -------------------------------------------------
    // yearsList := the distinct years that have entries, ascending.
    bool readYearsFromItemsTable();
    // Fills the income, expense and summary lists of the year (decimal text).
    bool annualInOutFromItemsTable(const std::string& nen);
    // sisanHistory := every listed asset's balance at the end of each month
    // from the month of the first entry to the month nen/tuki (the caller's
    // today), from the opening amounts and one grouped read of the monthly
    // sums. Entries of later months are left out; empty without entries.
    // On a failure the history is left as it was.
    bool sisanHistoryFromItemsTable(int64_t nen, int64_t tuki);

    // ---- search ----------------------------------------------------------------
    // The search index (SearchIndex.h) is made when the book is opened and
    // follows every entry write in the same transaction. False while it could
    // not be made; searchIndexError then says why.
    bool searchIndexReady = false;
    std::string searchIndexError;
    // Brings the index up to date with changes made by other programs (or
    // left queued by a failure); false when that failed.
    bool refreshSearchIndex();
    // The words of a search text, folded, each with the sub-items and assets
    // whose folded names contain it.
    std::vector<SearchWord> searchWords(const std::string& text) const;

private:
    sqlite3* db = nullptr;
    Statement stmt;  // the statement in use; finalized before the next
    std::string strPath;
    int busyTimeoutMs;
    std::shared_ptr<ItemsArena> itemsArena;  // storage of itemList's rows

    // Prepares sql into stmt; on failure reports prefix + SQLite's message.
    bool prepare(const std::string& sql, const char* failurePrefix, const char* informative);
    // Steps stmt once expecting completion; on failure reports prefix + SQLite's message.
    bool stepDone(const char* failurePrefix, const char* informative = "information");
    // Steps stmt through all its rows, calling onRow() at each, then
    // finalizes it. True only when the rows ended; a step that fails is
    // reported as failurePrefix + SQLite's message and the read has failed.
    template <typename OnRow>
    bool readRows(const char* failurePrefix, const char* informative, OnRow onRow);
    void finalize();
    // prepare + stepDone + finalize for a statement without parameters.
    bool runWrite(const std::string& sql, const char* preparePrefix, const char* prepareInformative,
                  const char* stepPrefix, const char* stepInformative = "information");
    bool bindIntOr(int index, int64_t value, const char* columnMessage);
    bool bindTextOr(int index, const std::string& text, const char* columnMessage);
    // Reports an integer that does not fit 32 bits; true when all fit.
    bool allFitInt32(std::initializer_list<int64_t> values);
    std::string errorText(const char* prefix) const;

    // Report a transaction that could not begin or commit; true otherwise.
    bool beganOrReport(const Transaction& tx);
    bool commitOrReport(Transaction& tx);

    // Makes the search index when missing and applies its queue.
    void openSearchIndex();
    // Applies the index queue inside the open transaction (a savepoint: a
    // failure there rolls back only the index work).
    void keepSearchIndexInStep();
    // Runs write (statements on Items) in one transaction that the search
    // index follows; false, with the message of whatever failed, otherwise.
    template <typename Write>
    bool writeItems(Write write);

    // Re-reads the ledger of the asset at theSisanNo; with no such asset the
    // ledger is emptied and the read counts as done.
    bool rereadShownItems();
    // Opening amount + sum of entries per listed asset, by position, from one
    // pass over the entries; only the asset with onlySisanId when given.
    bool sumZankinOfSisans(std::vector<int64_t>& zankin, const int64_t* onlySisanId = nullptr);
    // The balance of one asset from its entries; itemList is left as it is.
    bool recomputeSisanZankin(int64_t sisanId);
    // Writes the balances of the assets at these positions in one transaction.
    bool storeZankinOf(const std::vector<size_t>& positions);
    // The UPDATE of one asset's stored balance.
    bool updateZankinRow(const Sisan& sisan);
    void clearSisanList();
    // The DELETE of an asset's rows and of the transfer rows naming it.
    bool deleteItemsOfSisan(int64_t sisanId);
    bool insertItemRow(const char* sql, const char* prepareMessage, const std::string& hizuke, int64_t nen,
                       int64_t tuki, int64_t hi, int64_t sisanNo, int64_t syubetuNo, int64_t partnerNo,
                       int64_t idouId, int64_t kingaku, const std::string& bikou);
    bool insertHimokuRow(int64_t syubetuNo, const std::string& namae, int64_t hno, int64_t ucount,
                         const char* prepareMessage, const char* stepMessage);
    bool renameRow(int64_t id, const std::string& namae, const char* preparePrefix, const char* stepPrefix);
    bool rereadAfterHimokuDelete();
    // One side of the year into names and data, which a failure leaves as they were.
    bool readAnnualSide(const std::string& nen, const char* column, int kind, const char* prepareMessage,
                        const char* stepMessage, std::vector<std::string>& names,
                        std::vector<std::vector<int64_t>>& data);
    void clearItemList();
    std::shared_ptr<ItemsArena> emptyItemsArena();
};

template <typename Write>
bool DataModel::writeItems(Write write)
{
    Transaction tx(db);
    if (!beganOrReport(tx) || !write()) return false;
    keepSearchIndexInStep();
    return commitOrReport(tx);
}

template <typename OnRow>
bool DataModel::readRows(const char* failurePrefix, const char* informative, OnRow onRow)
{
    for (;;) {
        switch (stmt.step()) {
        case Step::Row:
            onRow();
            break;
        case Step::Done:
            finalize();
            return true;
        case Step::Error:
            someMessageWithAlert(errorText(failurePrefix), informative);
            finalize();
            return false;
        }
    }
}
