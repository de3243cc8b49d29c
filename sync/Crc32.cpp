#include "sync/Crc32.h"

#include <array>

namespace {

// The byte-at-a-time table of the reflected polynomial 0xEDB88320.
constexpr std::array<uint32_t, 256> makeTable()
{
    std::array<uint32_t, 256> table{};
    for (uint32_t n = 0; n < 256; ++n) {
        uint32_t c = n;
        for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}

constexpr std::array<uint32_t, 256> kTable = makeTable();

}  // namespace

uint32_t crc32(const void* data, size_t size, uint32_t crc)
{
    const auto* p = static_cast<const uint8_t*>(data);
    crc = ~crc;
    for (size_t i = 0; i < size; ++i) crc = kTable[(crc ^ p[i]) & 0xff] ^ (crc >> 8);
    return ~crc;
}
