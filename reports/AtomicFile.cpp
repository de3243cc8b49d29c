#include "reports/AtomicFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

bool fail(std::string* error, int* errorNumber, const std::string& what)
{
    if (error) *error = what + ": " + std::strerror(errno);
    if (errorNumber) *errorNumber = errno;
    return false;
}

bool writeAll(int fd, const std::string& bytes)
{
    const char* p = bytes.data();
    size_t left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        left -= static_cast<size_t>(n);
    }
    return true;
}

// Creates a new file beside path, with the permissions a new file gets
// (0666 less the umask). Returns its descriptor, or -1.
int createTemporary(const std::string& path, std::string& temporary)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(attempt);
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
}

}  // namespace

bool writeFileAtomically(const std::string& path, const std::string& bytes, std::string* error, int* errorNumber)
{
    std::string temporary;
    const int fd = createTemporary(path, temporary);
    if (fd < 0) return fail(error, errorNumber, "cannot create a temporary file beside " + path);
    const bool written = writeAll(fd, bytes);
    const int writeErrno = errno;
    if (::close(fd) != 0 || !written) {
        if (!written) errno = writeErrno;
        const bool reported = fail(error, errorNumber, "cannot write " + temporary);
        ::unlink(temporary.c_str());
        return reported;
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        const bool reported = fail(error, errorNumber, "cannot replace " + path);
        ::unlink(temporary.c_str());
        return reported;
    }
    return true;
}
