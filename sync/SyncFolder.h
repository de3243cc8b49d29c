#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sync/OpFile.h"
#include "store/SyncLog.h"
#include "store/Uuid.h"

// A folder that a file-sync tool (Syncthing, Nextcloud, ...) keeps alike on
// every PC. Each PC writes only files of its own, so the tool never has two
// versions of one file to turn into a conflict copy:
//   book-id                      the book's id (written by the PC that set the folder up)
//   devices/<n>-<install>        installation <install> holds device number n (1..15);
//                                the file holds the PC's name
//   applied/<install>            what that installation has applied: "<install> <seq>" lines,
//                                and "at <ms>": when it last said so
//   retired/<install>            that installation no longer syncs; its operations up to the
//                                sequence the file holds are applied, later ones never
//   ops/<install>/<seq>.op       its operations, seq as ten digits; immutable once written
//   snapshots/<install>.sqlite   its newest copy of the whole book (Snapshot.h)
// Only names of exactly these forms are read: conflict copies the tool made
// ("0000000042.sync-conflict-20261123-101500-ABCDEFG.op", "0000000042 (conflicted
// copy).op"), temporary files and anything else are ignored.

struct DeviceClaim {
    int device = 0;
    Uuid install;
    std::string name;  // the PC's name as its user gave it
};

// One file that was refused, and why, in words for the user.
struct Refusal {
    std::string path;
    OpFileProblem problem = OpFileProblem::None;
    std::string message;
};

// What a scan found that this book has not applied yet.
struct FolderScan {
    std::vector<Op> ready;            // checked, per installation in sequence order without gaps
    std::vector<Refusal> refusals;    // each stops its installation's later operations
    std::map<Uuid, int64_t> waiting;  // installation -> the missing sequence its later files wait for
    int64_t largestTs = 0;            // the newest timestamp among the files read
};

class SyncFolder {
public:
    explicit SyncFolder(std::string root);

    const std::string& root() const { return root_; }
    std::string opPath(const Uuid& install, int64_t seq) const;
    std::string snapshotPath(const Uuid& install) const;

    // Creates the subfolders; false (*error) when the folder cannot be written.
    bool prepare(std::string* error) const;

    // The book id, nothing when the folder has none yet; false (*error) for a
    // file that is there but unreadable or malformed.
    bool readBookId(std::optional<Uuid>* book, std::string* error) const;
    bool writeBookId(const Uuid& book, std::string* error) const;

    // Writes one operation under its name, never replacing a file.
    bool writeOp(const Op& op, std::string* error) const;
    // The highest sequence of install's files in the folder, 0 when none.
    int64_t lastOpSeq(const Uuid& install) const;

    // Every claim in devices/, by device number then installation.
    std::vector<DeviceClaim> readClaims() const;
    // The device number install holds, or the lowest free one, claimed now
    // with name. Nothing (*error) when all 15 are taken or the file cannot be written.
    std::optional<int> claimDevice(const Uuid& install, const std::string& name, std::string* error) const;

    // Writes the claim of a number this installation holds already (after
    // its file went missing).
    bool reclaimDevice(const Uuid& install, int device, const std::string& name, std::string* error) const;

    bool publishApplied(const Uuid& install, const AppliedVector& applied, int64_t atMs, std::string* error) const;
    // Each installation's published vector.
    std::map<Uuid, AppliedVector> readApplied() const;
    // When each installation last published its vector (0: not said).
    std::map<Uuid, int64_t> readAppliedTimes() const;

    // Retires an installation: its operations up to lastSeq stay applied
    // everywhere, later ones are never read. A retirement is never undone.
    bool retire(const Uuid& install, int64_t lastSeq, std::string* error) const;
    // Every retired installation with the last sequence that is applied.
    std::map<Uuid, int64_t> readRetired() const;

    // The operations after `applied` that can be applied now. An
    // installation's files are taken from the next sequence on while each is
    // there and sound; its device number must be the one it claimed (a file
    // whose writer has no claim here yet waits). `self` is skipped.
    // A retired installation's files after its last sequence are left alone.
    FolderScan scan(const Uuid& book, const Uuid& self, const AppliedVector& applied,
                    const std::vector<DeviceClaim>& claims, const std::map<Uuid, int64_t>& retired = {}) const;

private:
    std::string root_;
};

// Messages for claims that break the one-number-one-PC rule: a number held
// by two installations, or an installation holding two numbers (a copied
// installation, two PCs joining at once). Syncing must stop while any is there.
std::vector<std::string> claimClashes(const std::vector<DeviceClaim>& claims);
