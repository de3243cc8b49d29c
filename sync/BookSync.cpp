#include "sync/BookSync.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "store/BackupRestore.h"
#include "store/DataModel.h"
#include "store/History.h"
#include "store/Statement.h"
#include "sync/FolderPlacement.h"
#include "sync/Snapshot.h"
#include "sync/SyncRound.h"

namespace fs = std::filesystem;

namespace {

constexpr int64_t kSnapshotEveryMs = int64_t{7} * 24 * 3600 * 1000;

const char* const kBookInFolder =
    "家計簿のファイルが同期フォルダの中にあります。同期ソフトが開いている家計簿を書き換えると壊れることがあるため、"
    "家計簿は同期フォルダの外に置いてください。";

std::string nameOr(const std::string& name, int device)
{
    return name.empty() ? "PC " + std::to_string(device) : name;
}

// When the file was last written, milliseconds since 1970; 0 when it is not there.
int64_t fileTimeMs(const fs::path& path)
{
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return 0;
    return int64_t{info.st_mtim.tv_sec} * 1000 + info.st_mtim.tv_nsec / 1000000;
}

// Empties a feature's table; a book that never had it is left as it is.
bool clearIfPresent(sqlite3* db, const std::string& table)
{
    Statement exists;
    if (!exists.prepare(db, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?") ||
        exists.bindText(1, table) != SQLITE_OK)
        return false;
    switch (exists.step()) {
    case Step::Done:
        return true;
    case Step::Error:
        return false;
    case Step::Row:
        break;
    }
    // The name is one of the program's own, never the user's.
    Statement clear;
    return clear.prepare(db, "DELETE FROM " + table) && clear.run();
}

}  // namespace

BookSync::BookSync(DataModel& dm, std::string machine) : dm_(dm), machine_(std::move(machine)) {}

std::string BookSync::thisMachine()
{
    for (const char* file : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        std::ifstream in(file);
        std::string id;
        if (in >> id && !id.empty()) return id;
    }
    char host[256] = {};
    return gethostname(host, sizeof host - 1) == 0 ? std::string(host) : std::string();
}

bool BookSync::fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

bool BookSync::load()
{
    std::optional<SyncIdentity> identity;
    if (!dm_.runSyncWork([&](sqlite3* db) { return readSyncIdentity(db, &identity); })) return false;
    identity_ = identity;
    published_ = -1;
    problem_.clear();
    return true;
}

bool BookSync::setUp(const std::string& folderPath, const std::string& pcName, std::string* error)
{
    if (syncing()) return fail(error, "この家計簿はすでに同期しています。");
    if (pcName.empty()) return fail(error, "この PC の名前を入れてください。");
    if (folderPath.empty()) return fail(error, "同期フォルダを選んでください。");
    if (isInsideFolder(dm_.bookPath(), folderPath)) return fail(error, kBookInFolder);
    SyncFolder f(folderPath);
    std::string why;
    if (!f.prepare(&why)) return fail(error, "同期フォルダに書き込めません。\n" + why);
    std::optional<Uuid> existing;
    if (!f.readBookId(&existing, &why)) return fail(error, why);
    if (existing)
        return fail(error, "この同期フォルダにはすでに家計簿があります。ほかの PC の家計簿を使うときは"
                           "「この同期フォルダの家計簿を使う」を選んでください。");
    SyncIdentity identity{Uuid::generate(), Uuid::generate(), 0, pcName, folderPath, machine_};
    const std::optional<int> device = f.claimDevice(identity.install, pcName, &why);
    if (!device) return fail(error, why);
    identity.device = *device;
    const auto unclaim = [&] {
        std::error_code ec;
        fs::remove(fs::path(folderPath) / "devices" / (std::to_string(*device) + "-" + identity.install.text()), ec);
    };
    if (!dm_.runSyncWork([&](sqlite3* db) { return writeSyncIdentity(db, identity); })) {
        unclaim();
        return fail(error, "家計簿に同期の設定を書き込めませんでした。");
    }
    if (!f.writeBookId(identity.book, &why)) {
        unclaim();
        dm_.runSyncWork(forgetSync);
        return fail(error, why);
    }
    identity_ = identity;
    published_ = 0;
    problem_.clear();
    f.publishApplied(identity.install, {}, historyNowMs(), nullptr);
    return true;
}

bool BookSync::join(const std::string& folderPath, const std::string& pcName, const std::string& keptPath,
                    std::string* error, const std::function<void(int, int)>& progress,
                    const std::atomic<bool>* cancel)
{
    if (syncing()) return fail(error, "この家計簿はすでに同期しています。");
    if (pcName.empty()) return fail(error, "この PC の名前を入れてください。");
    if (folderPath.empty()) return fail(error, "同期フォルダを選んでください。");
    if (isInsideFolder(dm_.bookPath(), folderPath)) return fail(error, kBookInFolder);
    SyncFolder f(folderPath);
    std::optional<Uuid> book;
    std::string why;
    if (!f.readBookId(&book, &why)) return fail(error, why);
    if (!book)
        return fail(error, "この同期フォルダにはまだ家計簿がありません。先にほかの PC で同期を設定してください。");
    const std::vector<SnapshotInfo> snapshots = listSnapshots(f, *book);
    if (snapshots.empty())
        return fail(error, "同期フォルダに家計簿の写しがまだ届いていません。ほかの PC で同期を設定したあと、"
                           "写しが届くまで待ってからやり直してください。");
    if (restoreBackupInPlace(snapshots.front().path, dm_.bookPath(), keptPath, &why, progress, cancel) !=
        RestoreResult::Restored)
        return fail(error, "同期フォルダの家計簿を読み込めませんでした。\n" + why);

    SyncIdentity identity{*book, Uuid::generate(), 0, pcName, folderPath, machine_};
    const std::optional<int> device = f.claimDevice(identity.install, pcName, &why);
    const bool claimed = device.has_value();
    identity.device = claimed ? *device : 0;
    // The snapshot's steps were made on other PCs: kept in the history, off
    // this PC's undo list. Its notices were shown there. Recurring rules and
    // card cycles post on the PC they were made on only (their tables never
    // travel), so the snapshot's are not taken over: two PCs would post each
    // occurrence and each card's settlement twice.
    const bool written = claimed && dm_.runSyncWork([&](sqlite3* db) {
        Statement s;
        for (const char* sql : {"UPDATE History SET Kind = 5 WHERE Kind <> 5", "DELETE FROM SyncNotice"})
            if (!s.prepare(db, sql) || !s.run()) return false;
        for (const char* table : {"TeikiKiroku", "Teiki", "CardSettlements", "CardCycles"})
            if (!clearIfPresent(db, table)) return false;
        return writeSyncIdentity(db, identity);
    });
    if (!written) dm_.runSyncWork(forgetSync);
    dm_.reopenBook();
    if (!written) return fail(error, claimed ? "家計簿に同期の設定を書き込めませんでした。" : why);
    identity_ = identity;
    published_ = 0;
    problem_.clear();
    round();
    return true;
}

bool BookSync::stop(std::string* error)
{
    if (!syncing()) return true;
    publish();
    AppliedVector applied;
    dm_.runSyncWork([&](sqlite3* db) { return readApplied(db, &applied); });
    std::string why;
    if (fs::is_directory(identity_->folder) && !folder().retire(identity_->install, applied[identity_->install], &why))
        return fail(error, "同期フォルダに書き込めません。\n" + why);
    if (!dm_.runSyncWork(forgetSync)) return fail(error, "家計簿の同期の設定を消せませんでした。");
    identity_.reset();
    problem_.clear();
    return true;
}

bool BookSync::forget()
{
    if (!dm_.runSyncWork(forgetSync)) return false;
    identity_.reset();
    problem_.clear();
    return true;
}

std::string BookSync::checkReady()
{
    const SyncIdentity& self = *identity_;
    if (!self.machine.empty() && self.machine != machine_)
        return "この家計簿は別のコンピューターで同期を設定したもののコピーです。同期を止めています。"
               "このコンピューターで同期するには、同期の設定で「この同期フォルダの家計簿を使う」を選んでください。";
    std::error_code ec;
    if (!fs::is_directory(self.folder, ec))
        return "同期フォルダが見つかりません: " + self.folder + "\nフォルダがつながったら、また同期します。";
    const SyncFolder f = folder();
    std::optional<Uuid> book;
    std::string why;
    if (!f.readBookId(&book, &why)) return why;
    if (book != self.book)
        return "同期フォルダ " + self.folder + " は別の家計簿のものです。同期を止めています。";
    if (f.readRetired().count(self.install))
        return "この PC は同期から外されています (長い間同期しなかったか、同期をやめたため)。同期の設定で"
               "「この同期フォルダの家計簿を使う」を選び、家計簿を作り直してください。";
    const std::vector<DeviceClaim> claims = f.readClaims();
    const bool claimed = std::any_of(claims.begin(), claims.end(), [&](const DeviceClaim& c) {
        return c.install == self.install && c.device == self.device;
    });
    if (!claimed && !f.reclaimDevice(self.install, self.device, self.name, &why))
        return "同期フォルダに書き込めません。\n" + why;
    const std::vector<std::string> clashes = claimClashes(f.readClaims());
    if (!clashes.empty())
        return clashes.front() + "\nあとから加わった PC で、同期の設定から「この同期フォルダの家計簿を使う」を"
                                 "選び直してください。";
    return {};
}

bool BookSync::publish(std::string* error)
{
    if (!syncing() || !checkReady().empty()) return false;
    const SyncFolder f = folder();
    if (published_ < 0) published_ = f.lastOpSeq(identity_->install);
    int64_t last = published_;
    bool written = false;
    std::string why;
    // The files are written while the log is read; the transaction writes nothing.
    const bool read = dm_.runSyncWork([&](sqlite3* db) {
        written = publishOwnOps(db, f, *identity_, published_, &last, &why);
        return true;
    });
    published_ = last;
    if (read && written) return true;
    return fail(error, "同期フォルダに書き込めません。\n" + why);
}

bool BookSync::applyFolder(RoundReport* report)
{
    const SyncIdentity& self = *identity_;
    const SyncFolder f = folder();
    AppliedVector applied;
    int64_t folderTs = 0;
    if (!dm_.runSyncWork([&](sqlite3* db) { return readApplied(db, &applied) && readFolderTs(db, &folderTs); }))
        return false;
    const std::vector<DeviceClaim> claims = f.readClaims();
    const FolderScan scan = f.scan(self.book, self.install, applied, claims, f.readRetired());
    for (const Refusal& refusal : scan.refusals) report->refusals.push_back(refusal.message);
    const int64_t newestTs = std::max(folderTs, scan.largestTs);
    if (scan.ready.empty()) {
        return newestTs == folderTs || dm_.runSyncWork([&](sqlite3* db) { return writeFolderTs(db, newestTs); });
    }
    std::map<Uuid, std::string> names;
    for (const DeviceClaim& claim : claims) names[claim.install] = nameOr(claim.name, claim.device);
    RoundResult result;
    std::string why;
    const int64_t now = historyNowMs();
    const bool applied_ = dm_.applyOutsideChanges([&](sqlite3* db) {
        return applyArrived(db, self.install, scan.ready, names, &result, &why) == RoundProblem::None &&
               saveNotices(db, result.notices, now) && writeFolderTs(db, newestTs);
    });
    if (!applied_) {
        problem_ = "ほかの PC の変更を適用できませんでした。" + (why.empty() ? std::string() : "\n" + why);
        return false;
    }
    report->arrived = result.arrived;
    report->notices = std::move(result.notices);
    return true;
}

void BookSync::pruneAndRetire()
{
    const SyncIdentity& self = *identity_;
    const SyncFolder f = folder();
    const int64_t now = historyNowMs();
    std::map<Uuid, int64_t> retired = f.readRetired();
    const std::vector<DeviceClaim> claims = f.readClaims();
    // A PC absent for longer than the history is kept stops holding the
    // history back: it is retired, and told to rebuild when it returns.
    // Absent means that its vector has not changed for that long, as this
    // PC's clock saw it (the other PC's clock may be far off), while an
    // operation it has not applied is older than that.
    const std::map<Uuid, int64_t> times = f.readAppliedTimes();
    const std::map<Uuid, AppliedVector> said = f.readApplied();
    std::vector<LoggedKey> logged;
    dm_.runSyncWork([&](sqlite3* db) { return readLogKeys(db, &logged); });
    for (const DeviceClaim& claim : claims) {
        if (claim.install == self.install || retired.count(claim.install)) continue;
        const auto stampOf = times.find(claim.install);
        const int64_t stamp = stampOf == times.end() ? 0 : stampOf->second;
        const std::string key = "Heard." + claim.install.text();
        Value heard;  // "<its stamp> <when this PC first saw it>"
        if (!dm_.runSyncWork([&](sqlite3* db) { return readSyncState(db, key, &heard); })) continue;
        const std::string seen = heard.asText();
        const size_t space = seen.find(' ');
        if (space == std::string::npos || seen.substr(0, space) != std::to_string(stamp)) {
            const Value first = {Value::Type::Text, 0, 0, std::to_string(stamp) + " " + std::to_string(now)};
            dm_.runSyncWork([&](sqlite3* db) { return writeSyncState(db, key, first); });
            continue;
        }
        if (now - std::stoll(seen.substr(space + 1)) <= kAbsenceMs) continue;
        const auto vector = said.find(claim.install);
        const bool missesOld = std::any_of(logged.begin(), logged.end(), [&](const LoggedKey& op) {
            if (op.key.ts >= now - kAbsenceMs) return false;
            if (vector == said.end()) return true;
            const auto seq = vector->second.find(op.install);
            return seq == vector->second.end() || seq->second < op.key.seq;
        });
        if (missesOld && f.retire(claim.install, f.lastOpSeq(claim.install), nullptr)) retired[claim.install] = 0;
    }
    // Every PC that holds a number and is not retired is known; one that has
    // said nothing yet has seen nothing.
    std::map<Uuid, AppliedVector> known;
    for (const DeviceClaim& claim : claims) {
        if (retired.count(claim.install)) continue;
        const auto vector = said.find(claim.install);
        known[claim.install] = vector == said.end() ? AppliedVector{} : vector->second;
    }
    dm_.runSyncWork([&](sqlite3* db) {
        AppliedVector here;
        std::vector<LoggedKey> keys;
        OpKey horizon, newest;
        if (!readApplied(db, &here) || !readLogKeys(db, &keys) || !readHorizon(db, &horizon) ||
            !newestKey(db, &newest))
            return false;
        // The order keeps as long a stretch as the history keeps.
        const OpKey upTo = prunableUpTo(keys, known, here, newest.ts - HistoryLimits{}.maxAgeMs);
        return upTo <= horizon || pruneLog(db, upTo);
    });
}

RoundReport BookSync::round()
{
    RoundReport report;
    if (!syncing()) return report;
    problem_ = checkReady();
    if (!problem_.empty()) return report;
    std::string why;
    if (!publish(&why)) {
        problem_ = why;
        return report;
    }
    if (!applyFolder(&report)) {
        if (problem_.empty()) problem_ = "家計簿から同期の記録を読めませんでした。";
        return report;
    }
    AppliedVector applied;
    dm_.runSyncWork([&](sqlite3* db) { return readApplied(db, &applied); });
    const SyncFolder f = folder();
    const int64_t now = historyNowMs();
    if (!f.publishApplied(identity_->install, applied, now, &why)) {
        problem_ = "同期フォルダに書き込めません。\n" + why;
        return report;
    }
    pruneAndRetire();
    if (!report.refusals.empty()) problem_ = report.refusals.front();
    lastRoundMs_ = now;
    report.ran = true;
    return report;
}

SyncStatus BookSync::status()
{
    SyncStatus status;
    if (!syncing()) return status;
    status.lastRoundMs = lastRoundMs_;
    dm_.runSyncWork([&](sqlite3* db) { return countUnseenNotices(db, &status.unseenNotices); });
    if (!problem_.empty()) {
        status.state = SyncStatus::State::Problem;
        status.problem = problem_;
        return status;
    }
    const SyncIdentity& self = *identity_;
    AppliedVector here;
    dm_.runSyncWork([&](sqlite3* db) { return readApplied(db, &here); });
    const int64_t made = here[self.install];
    const SyncFolder f = folder();
    const std::map<Uuid, AppliedVector> said = f.readApplied();
    const std::map<Uuid, int64_t> retired = f.readRetired();
    for (const DeviceClaim& claim : f.readClaims()) {
        if (claim.install == self.install || retired.count(claim.install)) continue;
        int64_t seen = 0;
        if (const auto vector = said.find(claim.install); vector != said.end()) {
            if (const auto mine = vector->second.find(self.install); mine != vector->second.end()) seen = mine->second;
        }
        if (seen >= made) continue;
        status.pendingChanges = std::max(status.pendingChanges, made - seen);
        status.waitingFor += (status.waitingFor.empty() ? "「" : "、「") + nameOr(claim.name, claim.device) + "」";
    }
    status.state = status.pendingChanges > 0 ? SyncStatus::State::Pending : SyncStatus::State::Synced;
    return status;
}

bool BookSync::snapshotDue() const
{
    if (!identity_) return false;
    const int64_t written = fileTimeMs(folder().snapshotPath(identity_->install));
    return written == 0 || historyNowMs() - written > kSnapshotEveryMs;
}

bool BookSync::writeSnapshotOf(const std::string& bookPath, const std::string& folderPath, const Uuid& install,
                               std::string* error, const std::atomic<bool>* cancel)
{
    return writeSnapshot(bookPath, SyncFolder(folderPath), install, error, cancel);
}
