#include "store/BookLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;

namespace {

constexpr int kMaxLinks = 40;  // as the kernel's own limit on a chain of links
constexpr auto kFolderWait = std::chrono::seconds(2);
constexpr auto kFolderRetry = std::chrono::milliseconds(20);

std::optional<FileIdentity> identityOfFd(int fd)
{
    struct stat st {};
    if (::fstat(fd, &st) != 0) return std::nullopt;
    return FileIdentity{st.st_dev, st.st_ino};
}

// The folder lock: held only while a book is located, created or replaced,
// never while anybody is asked anything. Where the file system refuses
// flock() on a folder the work goes on unguarded.
class FolderGuard {
public:
    explicit FolderGuard(const std::string& folder)
        : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        if (fd_ < 0) return;
        const auto deadline = std::chrono::steady_clock::now() + kFolderWait;
        while (::flock(fd_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(kFolderRetry);
    }
    ~FolderGuard()
    {
        if (fd_ >= 0) ::close(fd_);
    }
    FolderGuard(const FolderGuard&) = delete;
    FolderGuard& operator=(const FolderGuard&) = delete;

private:
    int fd_;
};

std::string folderOf(const std::string& path)
{
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? "." : parent.string();
}

}  // namespace

BookPath resolveBookPath(const std::string& given)
{
    std::error_code ec;
    fs::path path = fs::absolute(given, ec).lexically_normal();
    BookPath result;
    // A link to nothing would otherwise be taken for a missing book and
    // silently replaced by a new one.
    if (fs::is_symlink(fs::symlink_status(path, ec)) && !fs::exists(path, ec)) {
        fs::path target = path;
        for (int hops = 0; hops < kMaxLinks && fs::is_symlink(fs::symlink_status(target, ec)); ++hops) {
            const fs::path next = fs::read_symlink(target, ec);
            if (ec) break;
            target = (next.is_absolute() ? next : target.parent_path() / next).lexically_normal();
        }
        result.danglingLink = path.string();
        result.missingTarget = target.string();
    }
    const fs::path resolved = fs::weakly_canonical(path, ec);
    result.path = ec ? path.string() : resolved.string();
    return result;
}

std::optional<FileIdentity> identityOf(const std::string& path)
{
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return std::nullopt;
    return FileIdentity{st.st_dev, st.st_ino};
}

BookLock::BookLock(std::string bookPath) : path_(std::move(bookPath))
{
    FolderGuard guard(folderOf(path_));
    lockFileAtPath();
}

BookLock::~BookLock()
{
    release();
}

void BookLock::release()
{
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void BookLock::lockFileAtPath()
{
    release();
    // The file may be replaced between open and flock by a program that
    // does not take the folder lock (a restore by hand): lock again until
    // the locked file is the one at the path.
    for (int attempt = 0; attempt < 5; ++attempt) {
        // flock() needs no write access: a read-only book is locked too, and
        // the book check then says why it cannot be used.
        fd_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0) {
            state_ = errno == ENOENT ? State::NoBook : State::Unlockable;
            return;
        }
        if (::flock(fd_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            release();
            state_ = State::HeldElsewhere;
            return;
        }
        // Any other failure of flock (a file system without it) leaves the
        // book usable, unguarded, as before locks existed.
        state_ = State::Held;
        if (identityOfFd(fd_) == identityOf(path_)) return;
        release();
    }
    state_ = State::Unlockable;
}

std::optional<FileIdentity> BookLock::identity() const
{
    if (state_ != State::Held || fd_ < 0) return std::nullopt;
    return identityOfFd(fd_);
}

bool BookLock::replaceBook(const std::function<bool()>& makeBook)
{
    FolderGuard guard(folderOf(path_));
    const bool made = makeBook();
    lockFileAtPath();
    return made;
}

pid_t BookLock::holderOf(const std::string& path)
{
    const auto id = identityOf(path);
    if (!id) return 0;
    // Lines read "1: FLOCK  ADVISORY  WRITE 1234 fd:01:5678 0 EOF"; a
    // waiting lock has "->" after the number.
    std::ifstream locks("/proc/locks");
    std::string line;
    while (std::getline(locks, line)) {
        std::istringstream fields(line);
        std::string number, type, advisory, mode, where;
        pid_t pid = 0;
        fields >> number >> type;
        if (type == "->") continue;
        fields >> advisory >> mode >> pid >> where;
        unsigned major = 0, minor = 0;
        unsigned long long inode = 0;
        if (type != "FLOCK" || std::sscanf(where.c_str(), "%x:%x:%llu", &major, &minor, &inode) != 3) continue;
        if (inode == id->inode && major == ::major(id->device) && minor == ::minor(id->device)) return pid;
    }
    return 0;
}
