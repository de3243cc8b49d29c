#include "store/Money.h"

std::string formatWithGrouping(int64_t value)
{
    // Work on the magnitude as unsigned so INT64_MIN has a magnitude too.
    uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    char buf[32];
    char* p = buf + sizeof buf;
    int digits = 0;
    do {
        if (digits > 0 && digits % 3 == 0) *--p = ',';
        *--p = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
        ++digits;
    } while (magnitude != 0);
    if (value < 0) *--p = '-';
    return std::string(p, buf + sizeof buf);
}
