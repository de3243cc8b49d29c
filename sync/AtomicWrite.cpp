#include "sync/AtomicWrite.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

namespace {

bool fail(std::string* error, const std::string& what)
{
    if (error) *error = what;
    return false;
}

bool writeAll(int fd, const std::string& bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

std::string temporaryPath(const fs::path& path)
{
    return (path.parent_path() / ("." + path.filename().string() + ".tmp")).string();
}

}  // namespace

bool writeFileAtomically(const std::string& path, const std::string& bytes, bool replace, std::string* error)
{
    std::error_code ec;
    if (!replace && fs::exists(path, ec)) return fail(error, path + ": すでにあります");
    const std::string temp = temporaryPath(path);
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0) return fail(error, temp + ": " + std::strerror(errno));
    const bool written = writeAll(fd, bytes) && ::fsync(fd) == 0;
    const int writeErrno = errno;
    const bool closed = ::close(fd) == 0;
    if (!written || !closed) {
        fs::remove(temp, ec);
        return fail(error, temp + ": " + std::strerror(written ? errno : writeErrno));
    }
    fs::rename(temp, path, ec);
    if (ec) {
        const std::string why = path + ": " + ec.message();
        fs::remove(temp, ec);
        return fail(error, why);
    }
    return true;
}

bool readWholeFile(const std::string& path, std::string* bytes, std::string* error)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) return fail(error, path + ": " + std::strerror(errno));
    bytes->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) return fail(error, path + ": 読み込めません");
    return true;
}
