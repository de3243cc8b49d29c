#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "household/HouseholdMonths.h"
#include "store/BookValues.h"
#include "store/Card.h"
#include "store/Himoku.h"
#include "store/History.h"
#include "store/IdIndexMap.h"
#include "store/ImportRecords.h"
#include "store/Items.h"
#include "store/MonthEndHistory.h"
#include "store/SearchIndex.h"
#include "store/SearchQuery.h"
#include "store/Sisan.h"
#include "store/Statement.h"
#include "store/Teiki.h"
#include "store/Transaction.h"
#include "store/Yosan.h"

struct sqlite3;
class ItemsArena;
class RecordedStep;
class Transaction;
struct ApplyConflict;
struct ChangesetDigest;

// What an undo, a redo or a revert changed, for the screens to show: an
// entry of the ledger now in itemList, an asset row and a category row that
// the operation put back or changed (0 when none).
struct StepFocus {
    int64_t itemId = 0;
    int64_t sisanId = 0;
    int64_t himokuId = 0;
};

// One changed row of a recorded step, as the history window lists it.
struct HistoryRowView {
    std::string change;  // 追加, 削除, 変更前, 変更後
    std::string kind;    // 入力, 資産, 費目, 内訳, 定期 (a rule), 定期の記録 (an occurrence dealt with)
    std::string hizuke;
    std::string sisan;   // the asset (of an entry), or the asset itself
    std::string himoku;  // category, or the other asset of a transfer
    std::string nyuukin, syukkin;
    std::string bikou;   // the note, or what else the row says
};

// The ledger store: the one object that talks to the database. It holds the
// lists the screens show and performs every read and write of the tables
// Sisan, Items and Himoku. Operations that can fail report their failure
// through the message sink (MessageSink.h) and return false.
//
// Every write is one recorded step (RecordedStep.h): one transaction whose
// changes go, with a label, into the book's history table, so that it can
// be undone. On a failure the database, the history and the in-memory lists
// are as they were before the call, and the message is delivered after the
// transaction has closed. A read that meets an
// error before the end of its rows fails with a message; nothing computed
// from the rows it did get is kept. Amounts and other integers outside the
// signed 32-bit range are refused before any write; balances are 64-bit.
// Not thread-safe: one operation at a time, on one thread.
class DataModel {
public:
    // How long a statement waits for another connection's lock (a backup
    // tool, a sync client) before it fails as busy.
    static constexpr int kBusyTimeoutMs = 5000;
    // How long a correction of stored balances waits for a program reading
    // the book before leaving it for later.
    static constexpr int kCorrectionWaitMs = 200;

    // Opens (creating if missing) the database file at path, reads the asset
    // table, then the category table, then recomputes every balance from the
    // entries (recomputeAllSisanZankin), prunes the history (History.h's
    // limits) and reads the undo and redo lists from it. A statement waits
    // busyTimeoutMs for another connection's lock. Failures are reported,
    // not thrown. The values these reads take are checked on the way
    // (badValue); a book with one it cannot read gets no balance written.
    // With Corrections::Defer the corrected balances are not stored yet but
    // left pending (storePendingZankin), and the history is pruned then: the
    // book's check may still be running.
    enum class Corrections { Store, Defer };
    explicit DataModel(std::string path, int busyTimeoutMs = kBusyTimeoutMs,
                       Corrections corrections = Corrections::Store);
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

    // The first stored value the start could not read as the program's
    // integer (text, a fraction, out of range), with its table, row and
    // column; none when every value was readable.
    const std::optional<BadValue>& badValue() const { return badValueFound; }
    // True while corrected balances wait to be stored: deferred by the
    // start, or kept out by another program reading the book. The store
    // tries again after its next committed change and at the final balance
    // write.
    bool zankinWritePending() const { return !zankinPendingIds.empty(); }
    // Stores the pending balances, waiting only briefly for a reader, and
    // prunes the history when the start left that too; true when no
    // balance is pending any more.
    bool storePendingZankin();

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
    void openDB();
    void closeDB();
    // Re-reads assets, categories and the shown asset's entries, stopping at
    // the first failure.
    void readValue();
    // Reads the book again as the start does (assets, categories, every
    // balance, the history's undo and redo lists), after another connection
    // replaced what the file holds (a restored backup). The first asset
    // becomes the shown one; its entries are not read yet. The search index
    // is made or refreshed by the caller (openSearchIndex) or at the next
    // search.
    bool reopenBook();
    // The file the store works on (search connections of other threads open it too).
    const std::string& bookPath() const { return strPath; }
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

    // ---- statement import (ImportRecords.h, ImportTables.h) ------------------
    // rows := the asset's entries dated from..to (yyyy-MM-dd, both included),
    // each with the origin it was imported with. False after a message.
    bool readImportWindow(int64_t sisanId, const std::string& from, const std::string& to,
                          std::vector<ImportBookRow>& rows);
    // The learned categories, the assets remembered per layout and account,
    // the user's mapped layouts (by name), and the newest import of a file
    // with this SHA-256 (id 0 when none). Each replaces its output; false
    // after a message.
    bool readImportAssignments(std::vector<ImportAssignment>& assignments);
    bool readImportAccounts(std::vector<ImportAccountRow>& accounts);
    bool readImportProfiles(std::vector<ImportProfileRow>& profiles);
    bool findImportRecord(const std::string& fileHash, ImportRecordRow& record);
    // Keeps a mapped layout under its name, replacing one of the same name;
    // a recorded step.
    bool saveImportProfile(const std::string& namae, const std::string& mapping);
    // Writes a statement's chosen rows into batch.record.sisanId as one
    // recorded step, all or nothing: the entries (a transfer as both its
    // rows), their origins, the import record, the learned categories and
    // the asset remembered for the layout and account. The in-memory
    // balances of the assets it touched and GrandTotalSisan follow; itemList
    // is left as it was, for the caller to read the ledger it shows.
    // *outcome gets the new rows.
    bool importStatementEntries(const ImportBatch& batch, ImportOutcome* outcome);

    // ---- history: undo, redo, revert -----------------------------------------
    // Each undoes or redoes one recorded step as a recorded operation of its
    // own, in one transaction: the step's changeset inverted (undo, revert)
    // or again (redo). A conflict with what was changed since refuses it:
    // nothing changes, and the message names the later step that blocks it
    // and why; a conflict only in a derived value (a stored balance, a
    // category's sub-item count) is not one, those are brought right
    // afterwards. On success the balances follow the entries, the lists the
    // step touched are re-read, theSisanNo and itemList show the asset of the
    // change, and *focus (when given) says what to show.

    // The step 元に戻す would undo and the one やり直す would redo, or nullptr.
    const HistoryEntry* undoTarget() const { return undoStack.empty() ? nullptr : &undoStack.back(); }
    const HistoryEntry* redoTarget() const { return redoStack.empty() ? nullptr : &redoStack.back(); }
    // Undoes the newest step not undone; it moves to the redo list.
    bool undo(StepFocus* focus = nullptr);
    // Makes the newest undone step again; a new step empties the redo list.
    bool redo(StepFocus* focus = nullptr);
    // Reverts any recorded operation (この操作を取り消す) as a new step.
    bool revertStep(int64_t historyId, StepFocus* focus = nullptr);
    // historyList := the history, newest first; only the operations that
    // deleted rows when deletesOnly. On a failure the list is left as it was.
    bool readFromHistoryTable(bool deletesOnly);
    std::vector<HistoryEntry> historyList;
    // The rows an operation changed, before and after, with names.
    bool readHistoryRows(int64_t historyId, std::vector<HistoryRowView>& rows);
    // Called after every recorded operation, to bring menus up to date.
    void setHistoryListener(std::function<void()> listener) { historyListener = std::move(listener); }

    // ---- sync (DataModelSync.cpp) ---------------------------------------------
    // The book's sync record and other PCs' operations are read and written
    // by sync (sync/BookSync.h) through these, on the store's connection.

    // Called after every operation committed as a step of this PC (a change,
    // an undo, a redo): sync writes it to the folder then.
    void setCommitListener(std::function<void()> listener) { commitListener = std::move(listener); }
    // Runs work in one transaction: reads and writes of the sync record, not
    // of the three tables. False (rolled back) when work or the commit fails.
    bool runSyncWork(const std::function<bool(sqlite3*)>& work);
    // Runs work that brings changes made elsewhere into the three tables
    // (other PCs' operations), in one transaction, while a session records
    // their net effect; then brings the lists, balances and the shown ledger
    // up to date from it, the shown asset staying shown while it is there.
    // False (rolled back, nothing changed) when work or the commit fails.
    bool applyOutsideChanges(const std::function<bool(sqlite3*)>& work);
    // Writes values back into columns of one row of Sisan, Items or Himoku
    // (present values only) as a recorded step labelled label; the lists
    // and balances follow. The undo of a sync notice.
    bool rewriteRow(const std::string& table, int64_t id, const Row& values, const std::string& label);

    // ---- recurring entries (Teiki.h) --------------------------------------------
    // The rules in Id order, with their maps, rebuilt by every read. Read on
    // demand (readFromTeikiTable), not at the start.
    std::vector<std::shared_ptr<Teiki>> teikiList;
    IdIndexMap teikiId2Idx;
    IndexIdMap teikiIdx2Id;
    // Replaces teikiList with the table's rows; on a failure the list is left empty.
    bool readFromTeikiTable();
    // What makes the rule unusable, judged by sisanList and himokuList.
    TeikiFault teikiFault(const Teiki& teiki) const;
    // Adds a rule (the book assigns its Id), rewrites the rule with
    // teiki.Id, or deletes a rule with its record of occurrences, each one
    // recorded step; then re-reads teikiList. The values are written as given
    // (the caller sets Kakunin); integers outside 32 bits are refused.
    bool teikiInsert(const Teiki& teiki);
    bool teikiUpdate(const Teiki& teiki);
    bool teikiDelete(int64_t id);
    // The occurrences dealt with that a look for due ones can still meet:
    // those of each rule scheduled no more than a month before its Kakunin,
    // or later. On a failure rows is left as it was.
    bool readTeikiKiroku(std::vector<TeikiKiroku>& rows);
    // Deals with the occurrences in one recorded step: a posted one becomes an
    // entry of its rule's asset, kind, category or partner and note (a
    // transfer both linked rows), and each is recorded in TeikiKiroku; then
    // each rule of `kakunin` has its Kakunin moved forward to the day given.
    // A rule that is unknown or (for a posting) broken, an amount that is not
    // a whole yen amount of 32 bits, or an occurrence already recorded fails
    // it all with a message, nothing written. Afterwards the balances of the
    // assets it booked on are recomputed and the shown ledger is re-read.
    bool teikiKityou(const std::vector<TeikiPosting>& postings, const std::vector<TeikiKakunin>& kakunin);
    // Every entry dated after hizuke, asset by asset in date order, as its
    // move of the balance. On a failure rows is left as it was.
    bool readItemsAfter(const std::string& hizuke, std::vector<DatedAmount>& rows);

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

    // ---- household months, cards and budgets ---------------------------------
    // The book's household months (table BookSettings), cards (CardCycles,
    // CardSettlements) and budgets (Yosan) are read at the start and again
    // by each write of them. A book without these tables reads as calendar
    // months, no cards and no budgets; its first such write creates them.
    HouseholdMonths householdMonths;
    std::vector<Card> cardList;    // in SisanNo order
    std::vector<Yosan> yosanList;  // in HimokuNo, then Tuki order
    bool readHouseholdTables();
    // Keeps the setting in the book as one step; a start day of 29 to 31 (or
    // another setting that cannot work) is refused with its message.
    bool updateHouseholdMonthSetting(const HouseholdMonthSetting& setting);
    // The household year's figures (annualInOutFromItemsTable) and the
    // household years with entries (readYearsFromItemsTable) follow the
    // setting; with calendar months they are the calendar's.

    // The card of an asset, or nullptr.
    const Card* cardOf(int64_t sisanId) const;
    // The cards that draw on this asset.
    std::vector<const Card*> cardsPaidFrom(int64_t sisanId) const;
    // Marks the asset as a card or changes its card, in one step; a cycle
    // that cannot work is refused with its message. Periods withdrawn before
    // today are taken as settled (recorded by hand before): a new card, or a
    // changed cycle, follows its settlements from the next withdrawal on.
    bool cardUpdate(const Card& card, const Date& today);
    // Makes the asset an ordinary asset again (one step); its settlements stay noted.
    bool cardDelete(int64_t sisanId);
    // What the card's entries dated within `purchases` come to: expenses and
    // transfers out of it, less refunds (income on it).
    bool cardPeriodKingaku(int64_t sisanId, const DateRange& purchases, int64_t& kingaku);
    // Where the card stands today: its due settlements, its next withdrawal
    // and its open period, with what each comes to.
    bool cardOutlookOf(int64_t sisanId, const Date& today, CardOutlook& outlook);
    // Settles a period in one step: the transfer of kingaku from the paying
    // asset to the card on hizuke (note bikou), noted as the period's
    // settlement so that it is never offered again; the balances of both
    // assets follow and the shown ledger is re-read.
    bool cardSettlementInsert(int64_t sisanId, const YearMonth& closingMonth, const std::string& hizuke,
                              int64_t kingaku, const std::string& bikou);
    // Notes a period as settled without a transfer (recorded some other way).
    bool cardSettlementMark(int64_t sisanId, const YearMonth& closingMonth, int64_t kingaku);

    // The budget of a category, sub-item or the total (kYosanTotal) for month
    // tuki (1 to 12) of the year: that month's own amount, else the
    // every-month amount, else none.
    std::optional<int64_t> yosanOf(int64_t himokuNo, int64_t tuki) const;
    // Replaces the budget of one category, sub-item or the total, in one
    // step: the every-month amount and the months that differ from it (none:
    // no amount). Amounts are refused as the asset editor refuses them.
    bool yosanReplace(int64_t himokuNo, std::optional<int64_t> everyMonth,
                      const std::array<std::optional<int64_t>, 12>& months);
    // The budget against the spending of household month `month` (1 to 12)
    // of household year `year`, or of the whole year with month 0: the
    // expense categories in tree order, each followed by its sub-items that
    // have a budget of their own, and last the total. A category covers its
    // sub-items; the total's budget is the month's total budget, else the
    // sum of the categories' (a category without one counting its
    // sub-items'). One grouped read of the period's entries.
    bool yosanJissekiOf(int year, int month, std::vector<YosanRow>& rows);
    // The total budget and the total spending of each household month of the year.
    bool yosanMonthlyOf(int year, std::array<std::optional<int64_t>, 12>& yosan, std::array<int64_t, 12>& jisseki);

    // ---- search ----------------------------------------------------------------
    // The search index (SearchIndex.h) is made when the book is opened and
    // follows the entries in every recorded step, an undo or a redo included,
    // in the same transaction. False while it could not be made;
    // searchIndexError then says why.
    bool searchIndexReady = false;
    std::string searchIndexError;
    // Makes the index when it is missing (reporting progress; a large book
    // takes seconds once) and applies its queue. The constructor does it
    // with Corrections::Store; with Defer the caller does, once the book's
    // check has passed.
    bool openSearchIndex(const IndexProgress& progress = {});
    // Brings the index up to date with changes made by other programs (or
    // left queued by a failure), waiting only briefly for a program reading
    // the book; false when that failed.
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
    int64_t itemListSisanId = 0;             // the asset whose ledger itemList holds, 0 none
    // True while every in-memory balance is its opening amount plus its
    // entries: after a recompute of all, kept by each recorded step; a read
    // of the asset table brings back the stored copies and ends it.
    bool zankinExact = false;
    std::vector<HistoryEntry> undoStack;     // done steps, newest last
    std::vector<HistoryEntry> redoStack;     // undone steps, newest undone last
    std::function<void()> historyListener;
    std::function<void()> commitListener;
    bool unreadableValueSeen = false;  // set by the checked reads below
    std::optional<BadValue> badValueFound;
    std::set<int64_t> zankinPendingIds;  // assets whose stored balance waits to be corrected
    bool deferCorrections = false;
    bool historyPrunePending = false;  // the start left the pruning for storePendingZankin

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
    // The current row's integer column, noting a value the program cannot
    // read (BookValues.h); such a value is taken as SQLite converts it.
    int64_t checkedInt(int column, IntegerRange range);

    // Report a transaction that could not begin or commit; true otherwise.
    bool beganOrReport(const Transaction& tx);
    bool commitOrReport(Transaction& tx);
    bool beganOrReport(const RecordedStep& step);
    // Commits the step, reporting a failure, and brings the undo and redo
    // lists up to date.
    bool commitStep(RecordedStep& step);

    // What the start reads: the lists, every balance, the pruned history.
    bool readBook();
    void pruneOldHistory();

    // History.
    void loadUndoLists();
    void noteRecorded(const HistoryEntry& entry, bool notify);
    bool replay(int64_t historyId, HistoryKind kind, StepFocus* focus);
    void reportConflict(HistoryKind kind, const HistoryEntry& target, const ApplyConflict& conflict);
    // Turns the digest's updated entries into a removal and an addition each,
    // reading their unchanged columns (the same before and after) from the
    // book; an addition to the asset wholeRowsOf is kept whole.
    bool resolveUpdates(ChangesetDigest& digest, int64_t wholeRowsOf);
    // Names of the assets the digest touched: its own, else the listed ones.
    std::string sisanNamesOf(const ChangesetDigest& digest) const;
    // Moves the in-memory balances by the digest's entries and opening amounts.
    void applyZankinDeltas(const ChangesetDigest& digest);
    // After a replay: lists, balances and the shown ledger from what changed.
    // The asset of the change is shown (followChange), or the one shown
    // before while it is there.
    bool showEffects(const ChangesetDigest& digest, int64_t shownSisanId, bool exact,
                     const std::vector<std::pair<int64_t, int64_t>>& zankinBefore, StepFocus* focus,
                     bool followChange = true);
    // The Id of the asset shown now (theSisanNo), 0 when none.
    int64_t shownSisanId() const;
    int64_t focusSisanOf(const ChangesetDigest& digest, int64_t shownSisanId) const;
    // Replaces the rows of the ledger in itemList that a replay changed, in
    // date order, without reading the ledger again; false when it cannot.
    bool patchItemList(const ChangesetDigest& digest);
    std::string entryLabel(int64_t id, const char* verb);
    std::string entryLabel(const Items& item, const char* verb);

    // Applies the index queue inside the open step (a savepoint: a failure
    // there rolls back only the index work, the queue waits for the next).
    void keepSearchIndexInStep();

    // Re-reads the ledger of the asset at theSisanNo; with no such asset the
    // ledger is emptied and the read counts as done.
    bool rereadShownItems();
    // The category name (kinds 1, 2) or partner asset name (kinds 3, 4) an
    // entry shows, or "????"; valid until the list holding it is re-read.
    const std::string& namaeOfRow(int64_t syubetuNo, int64_t himokuNo, int64_t idouSisanNo) const;
    // Opening amount + sum of entries per listed asset, by position, from one
    // pass over the entries; only the asset with onlySisanId when given.
    bool sumZankinOfSisans(std::vector<int64_t>& zankin, const int64_t* onlySisanId = nullptr);
    // The balance of one asset from its entries; itemList is left as it is.
    bool recomputeSisanZankin(int64_t sisanId);
    // Every balance from the entries, in memory only; the positions whose
    // balance changed go to *changed when given.
    bool recomputeZankinInMemory(std::vector<size_t>* changed = nullptr);
    // Writes the balances of the assets at these positions in one transaction.
    bool storeZankinOf(const std::vector<size_t>& positions);
    // The UPDATE of one asset's stored balance.
    bool updateZankinRow(const Sisan& sisan);
    void clearSisanList();
    // The DELETE of an asset's rows and of the transfer rows naming it.
    bool deleteItemsOfSisan(int64_t sisanId);
    // The Id of a new row of table: the device's next one when the book
    // syncs, else 0 (SQLite picks it). False after a message when none can be had.
    bool newRowIdOr(const char* table, int64_t* id);
    // Binds a new row's Id, NULL for 0.
    bool bindIdOr(int index, int64_t id);
    // One ledger row; id 0 lets SQLite pick the Id.
    bool insertItemRow(const char* sql, const char* prepareMessage, int64_t id, const std::string& hizuke, int64_t nen,
                       int64_t tuki, int64_t hi, int64_t sisanNo, int64_t syubetuNo, int64_t partnerNo,
                       int64_t idouId, int64_t kingaku, const std::string& bikou);
    // Both rows of a transfer, linked, inside the caller's step; their Ids
    // go to *motoId and *sakiId when given.
    bool insertIdouPair(const std::string& hizuke, int64_t nen, int64_t tuki, int64_t hi, int64_t sisanNo,
                        int64_t syubetuNo, int64_t idouSisanNo, int64_t kingaku, const std::string& bikou,
                        int64_t* motoId = nullptr, int64_t* sakiId = nullptr);
    bool insertHimokuRow(int64_t id, int64_t syubetuNo, const std::string& namae, int64_t hno, int64_t ucount,
                         const char* prepareMessage, const char* stepMessage);
    bool renameRow(int64_t id, const std::string& namae, const char* preparePrefix, const char* stepPrefix);
    bool rereadAfterHimokuDelete();
    // One side of the year into names and data, which a failure leaves as they were.
    bool readAnnualSide(const std::string& nen, const char* column, int kind, const char* prepareMessage,
                        const char* stepMessage, std::vector<std::string>& names,
                        std::vector<std::vector<int64_t>>& data);
    void clearItemList();
    std::shared_ptr<ItemsArena> emptyItemsArena();

    // Household months, cards and budgets.
    // The sums of the expenses (kind 1, Syukkin) and, with income, incomes
    // (kind 2, Nyuukin) per sub-item in each of consecutive date ranges: one
    // grouped read over the listed assets' entries of the whole span.
    struct RangeSum {
        int64_t syubetuNo;
        int64_t himokuNo;
        size_t range;  // position in ranges
        int64_t kingaku;
    };
    bool readRangeSums(const std::vector<DateRange>& ranges, bool withIncome, std::vector<RangeSum>& sums);
    // The Ids of sisanList as a list for IN (...): with them a range of dates
    // is read through the (SisanNo, Hizuke) index, one short run per asset.
    // Entries of an asset no longer listed are left out, as in the balances.
    std::string listedSisanIds() const;
    bool householdTablesPresent();
    // Creates the household tables in the write transaction open on db.
    bool createHouseholdTablesOrReport();
    bool readBookSettings();
    bool readFromCardTable();
    bool readFromYosanTable();
    // The closing months of the card's settled periods from `from` on: those
    // with their transfer still in the book, and those noted without one.
    bool readSettledMonths(int64_t sisanId, const YearMonth& from, std::vector<YearMonth>& months);
    bool insertSettlementRow(int64_t sisanId, const YearMonth& closingMonth, std::optional<int64_t> itemId,
                             int64_t kingaku);
    // In the transaction of an asset's or a category's deletion: the rows of
    // the household tables that belong to it.
    bool deleteCardRowsOf(int64_t sisanId);
    bool deleteYosanOf(const std::vector<int64_t>& himokuIds);
    // The month's total budget: its own, else the categories' added up.
    std::optional<int64_t> totalYosanOf(int64_t tuki) const;
    // The household year's figures from date-range sums (annualInOutFromItemsTable).
    bool annualOfHouseholdYear(int year);
    bool readHouseholdYears();

    // Recurring entries.
    void clearTeikiList();
    // What a step's label calls the rule: its note, else its sub-item or transfer.
    std::string teikiNamae(const Teiki& teiki);
    // Binds the rule's columns after Id, in table order, from parameter 1.
    bool bindTeiki(const Teiki& teiki);
    // Writes the entry (or transfer pair) of a posting; its Ids go to *kiroku.
    bool postTeikiEntry(const Teiki& teiki, const TeikiPosting& posting, TeikiKiroku* kiroku);
    bool insertTeikiKiroku(const TeikiKiroku& kiroku);
};

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
