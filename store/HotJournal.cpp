#include "store/HotJournal.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <vector>

namespace {

constexpr unsigned char kJournalMagic[8] = {0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7};
constexpr size_t kBookHeaderSize = 100;
constexpr size_t kChangeCounterOffset = 24;

uint32_t bigEndian(const unsigned char* bytes, int count)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

// The file's creation and last modification times, in nanoseconds; a
// creation time of 0 where the file system does not record it.
struct Times {
    int64_t born = 0;
    int64_t modified = 0;
};

std::optional<Times> timesOf(const std::string& path)
{
    struct statx st {};
    if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME, &st) != 0) return std::nullopt;
    auto ns = [](const statx_timestamp& t) { return int64_t{t.tv_sec} * 1000000000 + t.tv_nsec; };
    return Times{(st.stx_mask & STATX_BTIME) ? ns(st.stx_btime) : 0, ns(st.stx_mtime)};
}

std::vector<unsigned char> readAt(std::ifstream& in, uint64_t offset, size_t count)
{
    std::vector<unsigned char> bytes(count);
    in.clear();
    in.seekg(static_cast<std::streamoff>(offset));
    if (!in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count))) bytes.clear();
    return bytes;
}

struct Journal {
    uint32_t pageSize = 0;
    std::vector<unsigned char> firstPageHeader;  // the book's header as the journal kept it; empty if not kept
};

// Reads the journal's header and looks through its page records for page 1.
std::optional<Journal> readJournal(const std::string& path, uint64_t size)
{
    std::ifstream in(path, std::ios::binary);
    const auto header = readAt(in, 0, 28);
    if (header.size() != 28 || std::memcmp(header.data(), kJournalMagic, sizeof kJournalMagic) != 0)
        return std::nullopt;
    Journal journal;
    journal.pageSize = bigEndian(&header[24], 4);
    const uint32_t records = bigEndian(&header[8], 4);  // 0xffffffff: as many as the file holds
    const uint32_t sectorSize = bigEndian(&header[20], 4);
    const uint64_t recordSize = uint64_t{journal.pageSize} + 8;
    if (journal.pageSize < 512 || sectorSize < 512) return journal;
    uint64_t end = size;
    if (records != 0 && records != 0xffffffff) end = std::min(end, sectorSize + records * recordSize);
    for (uint64_t offset = sectorSize; offset + recordSize <= end; offset += recordSize) {
        const auto number = readAt(in, offset, 4);
        if (number.size() != 4) break;
        if (bigEndian(number.data(), 4) != 1) continue;
        journal.firstPageHeader = readAt(in, offset + 4, kBookHeaderSize);
        break;
    }
    return journal;
}

JournalCheck foreign(const std::string& journal, std::string reason)
{
    return {JournalFit::Foreign, journal, std::move(reason)};
}

}  // namespace

JournalCheck checkHotJournal(const std::string& bookPath)
{
    const std::string path = bookPath + "-journal";
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0 || st.st_size == 0) return {JournalFit::None, path, {}};
    // SQLite ignores a journal without its header: nothing would be played back.
    const auto journal = readJournal(path, static_cast<uint64_t>(st.st_size));
    if (!journal) return {JournalFit::None, path, {}};

    const auto bookTimes = timesOf(bookPath);
    const auto journalTimes = timesOf(path);
    if (bookTimes && journalTimes && bookTimes->born > journalTimes->modified)
        return foreign(path, "the journal is older than the book file");

    std::ifstream in(bookPath, std::ios::binary);
    const auto book = readAt(in, 0, kBookHeaderSize);
    if (book.size() != kBookHeaderSize) return {JournalFit::Belongs, path, {}};
    uint32_t pageSize = bigEndian(&book[16], 2);
    if (pageSize == 1) pageSize = 65536;
    if (journal->pageSize != pageSize) return foreign(path, "the journal's page size is not the book's");
    if (journal->firstPageHeader.size() == kBookHeaderSize) {
        const uint32_t kept = bigEndian(&journal->firstPageHeader[kChangeCounterOffset], 4);
        const uint32_t now = bigEndian(&book[kChangeCounterOffset], 4);
        // The interrupted change had either not yet written the header or
        // written it with the counter one up.
        if (now != kept && now != kept + 1) return foreign(path, "the journal was written for another state of the file");
    }
    return {JournalFit::Belongs, path, {}};
}
