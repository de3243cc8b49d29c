#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "store/Himoku.h"
#include "store/IdIndexMap.h"
#include "store/Items.h"
#include "store/Sisan.h"

struct sqlite3;
struct sqlite3_stmt;
class ItemsArena;
class Transaction;

// The ledger store: the one object that talks to the database. It holds the
// lists the screens show and performs every read and write of the tables
// Sisan, Items and Himoku. Operations that can fail report their failure
// through the message sink (MessageSink.h) and return false.
//
// Every write of several statements runs in one transaction: on a failure the
// database and the in-memory lists are as they were before the call.
// Integers outside the signed 32-bit range are refused before any write.
// Not thread-safe: one operation at a time, on one thread.
class DataModel {
public:
    // Opens (creating if missing) the database file at path and reads the
    // asset table, then the category table. Failures are reported, not thrown.
    explicit DataModel(std::string path);
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
    int64_t theSyubetuNo = 0;  // kind the entry panel works with
    int64_t theSisanNo = 0;    // position (not Id) in sisanList of the shown asset

    // ---- lifecycle and statement helpers ---------------------------------
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
    // and stored balances.
    bool readFromSisanTable();
    // GrandTotalSisan := sum of the in-memory balances.
    void totalOfZankinFrom_sisanList();
    // Recomputes every asset's in-memory balance from its entries: a re-read
    // of the asset table brings back the stored copies, which lag behind the
    // entries until the program ends. GrandTotalSisan follows.
    bool recomputeAllSisanZankin();
    // Sets the in-memory balance of the asset with this Id.
    void updateSisanZankinList(int64_t id, int64_t zankin);
    // Writes every in-memory balance to the table in one transaction. On a
    // failure the assets before the failing one stay written; returns false.
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
    // itemList and sets the asset's in-memory balance to the last one.
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

private:
    sqlite3* db = nullptr;
    sqlite3_stmt* stmt = nullptr;  // the statement in use; finalized before the next
    std::string strPath;
    std::shared_ptr<ItemsArena> itemsArena;  // storage of itemList's rows

    // Prepares sql into stmt; on failure reports prefix + SQLite's message.
    bool prepare(const std::string& sql, const char* failurePrefix, const char* informative);
    // Steps stmt once expecting completion; on failure reports prefix + SQLite's message.
    bool stepDone(const char* failurePrefix, const char* informative = "information");
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

    // Re-reads the ledger of the asset at theSisanNo; with no such asset the
    // ledger is emptied and the read counts as done.
    bool rereadShownItems();
    // Runs the ledger statement of the asset, calling onRow(kind, Nyuukin,
    // Syukkin, running balance) per row in date order, then stores the
    // asset's balance.
    template <typename OnRow>
    bool walkLedger(int64_t sisanId, OnRow onRow);
    // The balance half of a ledger read: itemList is left as it is.
    bool recomputeSisanZankin(int64_t sisanId);
    // The DELETE of an asset's rows and of the transfer rows naming it.
    bool deleteItemsOfSisan(int64_t sisanId);
    bool insertItemRow(const char* sql, const char* prepareMessage, const std::string& hizuke, int64_t nen,
                       int64_t tuki, int64_t hi, int64_t sisanNo, int64_t syubetuNo, int64_t partnerNo,
                       int64_t idouId, int64_t kingaku, const std::string& bikou);
    bool insertHimokuRow(int64_t syubetuNo, const std::string& namae, int64_t hno, int64_t ucount,
                         const char* prepareMessage, const char* stepMessage);
    bool renameRow(int64_t id, const std::string& namae, const char* preparePrefix, const char* stepPrefix);
    bool rereadAfterHimokuDelete();
    bool readAnnualSide(const std::string& nen, const char* column, int kind, const char* prepareMessage,
                        std::vector<std::string>& names, std::vector<std::vector<int64_t>>& data);
    void clearItemList();
    std::shared_ptr<ItemsArena> emptyItemsArena();
};
