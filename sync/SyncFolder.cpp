#include "sync/SyncFolder.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <set>
#include <sstream>
#include <system_error>

#include "sync/AtomicWrite.h"

namespace fs = std::filesystem;

namespace {

constexpr size_t kSeqDigits = 10;
const char* const kOpSuffix = ".op";

bool allDigits(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "0000000042.op" -> 42; nothing for any other name.
std::optional<int64_t> seqOfName(const std::string& name)
{
    if (name.size() != kSeqDigits + 3 || name.compare(kSeqDigits, 3, kOpSuffix) != 0) return std::nullopt;
    const std::string digits = name.substr(0, kSeqDigits);
    if (!allDigits(digits)) return std::nullopt;
    const int64_t seq = std::stoll(digits);
    return seq > 0 ? std::optional<int64_t>(seq) : std::nullopt;
}

// "3-<uuid>" -> (3, uuid); the number without leading zeros, 1..15.
std::optional<DeviceClaim> claimOfName(const std::string& name)
{
    const size_t dash = name.find('-');
    if (dash == std::string::npos || dash == 0 || dash > 2) return std::nullopt;
    const std::string number = name.substr(0, dash);
    if (!allDigits(number) || number[0] == '0') return std::nullopt;
    const int device = std::stoi(number);
    const std::optional<Uuid> install = Uuid::parse(name.substr(dash + 1));
    if (device > 15 || !install) return std::nullopt;
    return DeviceClaim{device, *install, {}};
}

std::vector<fs::directory_entry> entriesOf(const fs::path& dir)
{
    std::vector<fs::directory_entry> entries;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(dir, ec)) entries.push_back(entry);
    return entries;
}

bool fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

std::string trimmed(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text;
}

}  // namespace

SyncFolder::SyncFolder(std::string root) : root_(std::move(root)) {}

std::string SyncFolder::opPath(const Uuid& install, int64_t seq) const
{
    char name[32];
    std::snprintf(name, sizeof name, "%010lld%s", static_cast<long long>(seq), kOpSuffix);
    return (fs::path(root_) / "ops" / install.text() / name).string();
}

std::string SyncFolder::snapshotPath(const Uuid& install) const
{
    return (fs::path(root_) / "snapshots" / (install.text() + ".sqlite")).string();
}

bool SyncFolder::prepare(std::string* error) const
{
    std::error_code ec;
    for (const char* sub : {"devices", "applied", "ops", "snapshots", "retired"}) {
        fs::create_directories(fs::path(root_) / sub, ec);
        if (ec) return fail(error, (fs::path(root_) / sub).string() + ": " + ec.message());
    }
    return true;
}

bool SyncFolder::readBookId(std::optional<Uuid>* book, std::string* error) const
{
    const fs::path path = fs::path(root_) / "book-id";
    std::error_code ec;
    book->reset();
    if (!fs::exists(path, ec)) return true;
    std::string text;
    if (!readWholeFile(path.string(), &text, error)) return false;
    *book = Uuid::parse(trimmed(text));
    return *book ? true : fail(error, path.string() + ": 家計簿の識別子が読めません");
}

bool SyncFolder::writeBookId(const Uuid& book, std::string* error) const
{
    return writeFileAtomically((fs::path(root_) / "book-id").string(), book.text() + "\n", false, error);
}

bool SyncFolder::writeOp(const Op& op, std::string* error) const
{
    const std::string path = opPath(op.meta.install, op.meta.seq);
    std::error_code ec;
    fs::create_directories(fs::path(path).parent_path(), ec);
    if (ec) return fail(error, fs::path(path).parent_path().string() + ": " + ec.message());
    return writeFileAtomically(path, encodeOpFile(op), false, error);
}

int64_t SyncFolder::lastOpSeq(const Uuid& install) const
{
    int64_t last = 0;
    for (const auto& file : entriesOf(fs::path(root_) / "ops" / install.text()))
        if (const auto seq = seqOfName(file.path().filename().string())) last = std::max(last, *seq);
    return last;
}

std::vector<DeviceClaim> SyncFolder::readClaims() const
{
    std::vector<DeviceClaim> claims;
    for (const auto& entry : entriesOf(fs::path(root_) / "devices")) {
        std::optional<DeviceClaim> claim = claimOfName(entry.path().filename().string());
        std::error_code ec;
        if (!claim || !entry.is_regular_file(ec)) continue;
        std::string name;
        readWholeFile(entry.path().string(), &name, nullptr);
        claim->name = trimmed(name);
        claims.push_back(std::move(*claim));
    }
    std::sort(claims.begin(), claims.end(), [](const DeviceClaim& a, const DeviceClaim& b) {
        return std::tie(a.device, a.install) < std::tie(b.device, b.install);
    });
    return claims;
}

std::optional<int> SyncFolder::claimDevice(const Uuid& install, const std::string& name, std::string* error) const
{
    const std::vector<DeviceClaim> claims = readClaims();
    std::set<int> taken;
    for (const DeviceClaim& claim : claims) {
        if (claim.install == install) return claim.device;
        taken.insert(claim.device);
    }
    for (int device = 1; device <= 15; ++device) {
        if (taken.count(device)) continue;
        std::error_code ec;
        fs::create_directories(fs::path(root_) / "devices", ec);
        const std::string path =
            (fs::path(root_) / "devices" / (std::to_string(device) + "-" + install.text())).string();
        if (!writeFileAtomically(path, name + "\n", true, error)) return std::nullopt;
        return device;
    }
    if (error) *error = "この同期フォルダには PC が 15 台まで登録済みで、これ以上は加えられません。";
    return std::nullopt;
}

bool SyncFolder::reclaimDevice(const Uuid& install, int device, const std::string& name, std::string* error) const
{
    std::error_code ec;
    fs::create_directories(fs::path(root_) / "devices", ec);
    const std::string path = (fs::path(root_) / "devices" / (std::to_string(device) + "-" + install.text())).string();
    return writeFileAtomically(path, name + "\n", true, error);
}

bool SyncFolder::publishApplied(const Uuid& install, const AppliedVector& applied, int64_t atMs,
                                std::string* error) const
{
    std::string text = "at " + std::to_string(atMs) + "\n";
    for (const auto& [writer, seq] : applied) text += writer.text() + " " + std::to_string(seq) + "\n";
    std::error_code ec;
    fs::create_directories(fs::path(root_) / "applied", ec);
    return writeFileAtomically((fs::path(root_) / "applied" / install.text()).string(), text, true, error);
}

std::map<Uuid, AppliedVector> SyncFolder::readApplied() const
{
    std::map<Uuid, AppliedVector> all;
    for (const auto& entry : entriesOf(fs::path(root_) / "applied")) {
        const std::optional<Uuid> install = Uuid::parse(entry.path().filename().string());
        std::string text;
        if (!install || !readWholeFile(entry.path().string(), &text, nullptr)) continue;
        // A line that cannot be read counts as nothing applied: pruning then
        // keeps more, never less.
        AppliedVector& vector = all[*install];
        std::istringstream lines(text);
        std::string writer, seq;
        while (lines >> writer >> seq) {
            const std::optional<Uuid> id = Uuid::parse(writer);
            if (id && allDigits(seq) && seq.size() < 19) vector[*id] = std::stoll(seq);
        }
    }
    return all;
}

std::map<Uuid, int64_t> SyncFolder::readAppliedTimes() const
{
    std::map<Uuid, int64_t> times;
    for (const auto& entry : entriesOf(fs::path(root_) / "applied")) {
        const std::optional<Uuid> install = Uuid::parse(entry.path().filename().string());
        std::string text;
        if (!install || !readWholeFile(entry.path().string(), &text, nullptr)) continue;
        std::istringstream lines(text);
        std::string word, ms;
        times[*install] = lines >> word >> ms && word == "at" && allDigits(ms) && ms.size() < 19 ? std::stoll(ms) : 0;
    }
    return times;
}

bool SyncFolder::retire(const Uuid& install, int64_t lastSeq, std::string* error) const
{
    std::error_code ec;
    fs::create_directories(fs::path(root_) / "retired", ec);
    const std::string path = (fs::path(root_) / "retired" / install.text()).string();
    if (fs::exists(path, ec)) return true;
    return writeFileAtomically(path, std::to_string(lastSeq) + "\n", false, error);
}

std::map<Uuid, int64_t> SyncFolder::readRetired() const
{
    std::map<Uuid, int64_t> retired;
    for (const auto& entry : entriesOf(fs::path(root_) / "retired")) {
        const std::optional<Uuid> install = Uuid::parse(entry.path().filename().string());
        std::string text;
        if (!install || !readWholeFile(entry.path().string(), &text, nullptr)) continue;
        text = trimmed(text);
        // An unreadable number retires everything after what is applied already.
        retired[*install] = allDigits(text) && text.size() < 19 ? std::stoll(text) : 0;
    }
    return retired;
}

FolderScan SyncFolder::scan(const Uuid& book, const Uuid& self, const AppliedVector& applied,
                            const std::vector<DeviceClaim>& claims, const std::map<Uuid, int64_t>& retired) const
{
    FolderScan result;
    for (const auto& dir : entriesOf(fs::path(root_) / "ops")) {
        const std::optional<Uuid> install = Uuid::parse(dir.path().filename().string());
        std::error_code ec;
        if (!install || *install == self || !dir.is_directory(ec)) continue;
        const auto claim = std::find_if(claims.begin(), claims.end(),
                                        [&](const DeviceClaim& c) { return c.install == *install; });
        std::set<int64_t> present;
        for (const auto& file : entriesOf(dir.path()))
            if (const auto seq = seqOfName(file.path().filename().string()); seq && file.is_regular_file(ec))
                present.insert(*seq);
        const auto done = applied.find(*install);
        const auto retiredAt = retired.find(*install);
        const int64_t last = retiredAt == retired.end() ? INT64_MAX : retiredAt->second;
        int64_t next = (done == applied.end() ? 0 : done->second) + 1;
        for (; next <= last && present.count(next); ++next) {
            const std::string path = opPath(*install, next);
            Op op;
            std::string bytes;
            OpFileProblem problem = readWholeFile(path, &bytes, nullptr) ? decodeOpFile(bytes, book, &op)
                                                                          : OpFileProblem::Unreadable;
            if (problem == OpFileProblem::None && (op.meta.install != *install || op.meta.seq != next))
                problem = OpFileProblem::Misplaced;
            if (problem == OpFileProblem::None && claim != claims.end() && op.meta.device != claim->device)
                problem = OpFileProblem::Misplaced;
            if (problem != OpFileProblem::None) {
                result.refusals.push_back({path, problem, opFileRefusal(problem, path, op.meta.schemaVersion)});
                break;
            }
            if (claim == claims.end()) break;  // its claim has not arrived yet
            result.largestTs = std::max(result.largestTs, op.meta.ts);
            result.ready.push_back(std::move(op));
        }
        if (next <= last && !present.empty() && *present.rbegin() > next && !present.count(next))
            result.waiting[*install] = next;
    }
    return result;
}

std::vector<std::string> claimClashes(const std::vector<DeviceClaim>& claims)
{
    std::vector<std::string> messages;
    std::map<int, std::vector<const DeviceClaim*>> byDevice;
    std::map<Uuid, std::vector<int>> byInstall;
    for (const DeviceClaim& claim : claims) {
        byDevice[claim.device].push_back(&claim);
        byInstall[claim.install].push_back(claim.device);
    }
    for (const auto& [device, holders] : byDevice) {
        if (holders.size() < 2) continue;
        std::string names;
        for (const DeviceClaim* holder : holders) names += (names.empty() ? "「" : "、「") + holder->name + "」";
        messages.push_back("PC 番号 " + std::to_string(device) + " を " + std::to_string(holders.size()) +
                           " 台の PC (" + names + ") が使っています。同期を止めました。");
    }
    for (const auto& [install, devices] : byInstall) {
        if (devices.size() < 2) continue;
        messages.push_back("同じ PC (" + install.text() + ") が PC 番号を " + std::to_string(devices.size()) +
                           " つ持っています。同期を止めました。");
    }
    return messages;
}
