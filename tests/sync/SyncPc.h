#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "sync/SyncFolder.h"
#include "sync/SyncRound.h"

struct sqlite3;

// One PC in the sync tests: a book file of its own (the three tables as the
// program creates them, plus the sync tables), its own view of the sync
// folder, a settable wall clock, and the store's writes with device-assigned
// Ids. Every change is one recorded operation (a session on the three
// tables), logged and written to the folder as the program will do it.
class SyncPc {
public:
    // joining: a PC whose folder files arrive before this one claims its number.
    SyncPc(const std::string& dir, const Uuid& book, const std::string& name, const SyncPc* joining = nullptr);
    ~SyncPc();
    SyncPc(const SyncPc&) = delete;
    SyncPc& operator=(const SyncPc&) = delete;

    sqlite3* db = nullptr;
    SyncFolder folder;
    DeviceIdentity self;
    int64_t wallMs = 1'790'000'000'000;  // the PC's clock
    std::set<int64_t> madeEntries;       // entry Ids this PC created
    std::set<int64_t> deletedEntries;    // entry Ids a user of this PC deleted

    // The starter rows every book begins with (asset 1, category 2 with its
    // sub-item 3, income category 4 with 5): made before the PCs share a folder.
    void seedStarterRows();

    // The store's operations.
    int64_t addEntry(int64_t sisan, int64_t himoku, int64_t kind, int64_t amount, const std::string& hizuke);
    std::pair<int64_t, int64_t> addTransfer(int64_t from, int64_t to, int64_t amount, const std::string& hizuke);
    void editEntry(int64_t id, const std::string& column, const std::string& value);  // both rows of a transfer
    void deleteEntry(int64_t id);                                                      // both rows of a transfer
    int64_t addSisan(const std::string& namae, int64_t syokiKingaku);
    void renameSisan(int64_t id, const std::string& namae);
    void deleteSisanWithItems(int64_t id);
    int64_t addCategory(int64_t kind, const std::string& namae);
    int64_t addSubItem(int64_t category, const std::string& namae);
    void renameCategory(int64_t id, const std::string& namae);
    void deleteSubItem(int64_t id);
    void deleteCategory(int64_t id);

    // Applies what the folder holds; false when the round failed or the
    // device claims clash.
    bool sync(RoundResult* result = nullptr, std::string* error = nullptr, FolderScan* scan = nullptr);

    std::vector<int64_t> ids(const std::string& sql);  // first column of every row
    int64_t scalar(const std::string& sql);
    std::string dump();  // the three tables, every column, in Id order
    // What must hold in every book; an empty string when all does.
    std::string brokenRules();

private:
    void record(const std::string& label, const std::function<void()>& change);
    void exec(const std::string& sql);
    int64_t nextId(const std::string& table);
    void recomputeZankinOfAll();
};

// The file-sync tool between two PCs' views of the folder: copies the files
// that `to` lacks (all of them, or each with probability share).
void deliver(const SyncPc& from, const SyncPc& to, double share = 1.0, unsigned seed = 0);
