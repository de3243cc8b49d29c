#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "store/SyncLog.h"
#include "sync/SyncFolder.h"
#include "sync/SyncNotice.h"

class DataModel;

// Where sync stands, for the status line.
struct SyncStatus {
    enum class State {
        Off,      // the book does not sync
        Synced,   // everything of every PC is applied, and every PC has this PC's changes
        Pending,  // changes of this PC that another PC has not applied yet
        Problem,  // syncing stopped or failed: `problem` says why and what to do
    };
    State state = State::Off;
    int64_t lastRoundMs = 0;    // the last round that went through
    int64_t pendingChanges = 0; // Pending: how many
    std::string waitingFor;     // Pending: the PCs that lack them
    std::string problem;
    int64_t unseenNotices = 0;  // cases the list has not shown yet
};

// What one round did.
struct RoundReport {
    bool ran = false;         // false: the book does not sync, or a problem stopped the round
    size_t arrived = 0;       // operations of other PCs applied
    std::vector<SyncNotice> notices;
    std::vector<std::string> refusals;  // files refused, in words naming them
};

// One book kept on several PCs through a sync folder (SyncFolder.h), on the
// store's connection: setting it up, joining it from the folder, writing
// each step of this PC to the folder, and rounds that bring in the other
// PCs' operations (SyncRound.h). Without Qt: the program's window drives it
// from a folder watcher and a timer, the tests from their own loop.
class BookSync {
public:
    // machine: what tells this computer apart (thisMachine()); a book set up
    // on another machine (a copy of the book file) does not sync here.
    explicit BookSync(DataModel& dm, std::string machine = thisMachine());

    // Reads this PC's identity from the book; false on a database error.
    bool load();
    bool syncing() const { return identity_.has_value(); }
    const std::optional<SyncIdentity>& identity() const { return identity_; }

    // The book becomes the folder's book: a new book id, this PC's number,
    // a snapshot of the book for the next PC. The folder must hold no book
    // yet (or this one's), and the book must not lie inside it.
    bool setUp(const std::string& folder, const std::string& pcName, std::string* error);

    // Replaces the book with the folder's: its newest snapshot copied into
    // the book's place (the book as it was kept at keptPath), this PC
    // claimed, and the operations after the snapshot applied. The steps in
    // the snapshot's history are the other PCs' own: they are not on this
    // PC's undo list. progress and cancel as in restoreBackupInPlace.
    bool join(const std::string& folder, const std::string& pcName, const std::string& keptPath, std::string* error,
              const std::function<void(int, int)>& progress = {}, const std::atomic<bool>* cancel = nullptr);

    // This PC stops syncing: it is retired in the folder (the other PCs keep
    // what it made and stop waiting for it) and the book forgets its record.
    bool stop(std::string* error);
    // The book forgets its record of sync without a word to the folder: a
    // copy of the book from another computer, or a PC told to rebuild, that
    // is about to join the folder afresh.
    bool forget();

    // Writes this PC's operations the folder does not hold yet (after every
    // step). False when the folder cannot take them; they go with a later call.
    bool publish(std::string* error = nullptr);

    // Brings in what the folder holds from the other PCs, then says what
    // this PC has applied, prunes what every PC has seen, and retires a PC
    // not heard of for longer than the history is kept.
    RoundReport round();

    SyncStatus status();

    // A snapshot is due: this PC has none in the folder yet, or its own is
    // older than a week.
    bool snapshotDue() const;
    // Writes this PC's snapshot (a worker thread may run it: it opens its
    // own connection); false with *error when it failed.
    static bool writeSnapshotOf(const std::string& bookPath, const std::string& folder, const Uuid& install,
                                std::string* error, const std::atomic<bool>* cancel = nullptr);

    // What tells this computer apart: /etc/machine-id, else the host name.
    static std::string thisMachine();

    // How long a PC may stay away before it is retired and told to rebuild.
    static constexpr int64_t kAbsenceMs = int64_t{180} * 24 * 3600 * 1000;

private:
    DataModel& dm_;
    std::string machine_;
    std::optional<SyncIdentity> identity_;
    int64_t published_ = -1;  // the last sequence of this PC the folder holds; -1: not read yet
    std::string problem_;
    int64_t lastRoundMs_ = 0;

    SyncFolder folder() const { return SyncFolder(identity_->folder); }
    bool fail(std::string* error, const std::string& what);
    // The problem that keeps this PC from syncing now, "" when none.
    std::string checkReady();
    bool applyFolder(RoundReport* report);
    void pruneAndRetire();
};
