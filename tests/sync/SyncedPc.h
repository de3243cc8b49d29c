#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "store/DataModel.h"
#include "sync/BookSync.h"

struct sqlite3;

// One PC in the sync tests: a book of its own driven through the store
// (DataModel operations, as the windows call them), BookSync on it as the
// program runs it, its own view of the shared folder, and a clock of its
// own. Store messages fail the test unless a test takes them.
class SyncedPc {
public:
    // A PC with a new starter book (現金, expense and income categories).
    SyncedPc(const std::string& dir, const std::string& name);
    ~SyncedPc();
    SyncedPc(const SyncedPc&) = delete;
    SyncedPc& operator=(const SyncedPc&) = delete;

    std::string name;
    std::string bookPath;
    std::string folderPath;  // this PC's view of the sync folder
    std::unique_ptr<DataModel> dm;
    std::unique_ptr<BookSync> sync;
    int64_t wallMs = 1'790'000'000'000;  // this PC's clock
    std::set<int64_t> madeEntries;       // entry Ids this PC created
    std::set<int64_t> deletedEntries;    // entry Ids a user of this PC deleted, or may have by an undo
    std::vector<std::string> messages;   // store messages taken while this PC acted

    // This PC's clock and message sink hold for what follows.
    void use();
    // The book becomes the folder's (with a snapshot for the next PCs).
    void setUp();
    // Takes the folder's book (its view must hold the first PC's files).
    void join();
    // A round; false when it did not run (the report says why).
    bool round(RoundReport* report = nullptr);
    SyncStatus status();

    // The store's operations; new rows' Ids are returned.
    int64_t addEntry(int64_t sisan, int64_t himoku, int64_t amount, const std::string& hizuke,
                     const std::string& bikou = "");
    std::pair<int64_t, int64_t> addTransfer(int64_t from, int64_t to, int64_t amount, const std::string& hizuke);
    // Changes one field of an expense or income: "Amount", "Bikou" or "Hizuke".
    void editEntry(int64_t id, const std::string& field, const std::string& value);
    void deleteEntry(int64_t id);  // both rows of a transfer
    int64_t addSisan(const std::string& namae, int64_t syokiKingaku);
    void renameSisan(int64_t id, const std::string& namae);
    void deleteSisan(int64_t id);
    int64_t addCategory(int64_t kind, const std::string& namae);
    int64_t addSubItem(int64_t category, const std::string& namae);
    void renameCategory(int64_t id, const std::string& namae);
    void deleteSubItem(int64_t id);
    void deleteCategory(int64_t id);
    bool undo();
    bool redo();

    // Reads through a connection of its own.
    std::vector<int64_t> ids(const std::string& sql);  // first column of every row
    int64_t scalar(const std::string& sql);
    std::string text(const std::string& sql);
    // The three tables, every column, in Id order, with the balances stored
    // as the quit stores them.
    std::string dump();
    // What must hold in every book; an empty string when all does.
    std::string brokenRules();
    // The sub-item with this name ("食費/その他").
    int64_t himokuId(const std::string& namae);

private:
    sqlite3* side_ = nullptr;
    int64_t newestId(const char* table);
    void after(const char* what);
    void noteUndone();
};

// The file-sync tool between two PCs' views of the folder: copies the files
// that `to` lacks or that changed (all of them, or each with probability
// share). Operation files and the book id are never replaced.
void deliver(const SyncedPc& from, const SyncedPc& to, double share = 1.0, unsigned seed = 0);
