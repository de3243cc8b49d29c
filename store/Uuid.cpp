#include "store/Uuid.h"

#include <random>

Uuid Uuid::generate()
{
    std::random_device source;
    Uuid id;
    for (size_t i = 0; i < id.bytes.size(); i += 4) {
        const uint32_t word = source();
        for (size_t b = 0; b < 4; ++b) id.bytes[i + b] = static_cast<uint8_t>(word >> (8 * b));
    }
    id.bytes[6] = static_cast<uint8_t>((id.bytes[6] & 0x0f) | 0x40);  // version 4
    id.bytes[8] = static_cast<uint8_t>((id.bytes[8] & 0x3f) | 0x80);  // RFC 4122 variant
    return id;
}

namespace {

bool isDashPosition(size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;  // upper case is not the written form: one id, one name
}

}  // namespace

std::optional<Uuid> Uuid::parse(const std::string& text)
{
    if (text.size() != 36) return std::nullopt;
    Uuid id;
    size_t nibble = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int v = hexValue(text[i]);
        if (v < 0) return std::nullopt;
        uint8_t& byte = id.bytes[nibble / 2];
        byte = static_cast<uint8_t>(nibble % 2 == 0 ? v << 4 : byte | v);
        ++nibble;
    }
    return id;
}

std::string Uuid::text() const
{
    static const char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(36);
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        out += kHex[bytes[i] >> 4];
        out += kHex[bytes[i] & 0x0f];
    }
    return out;
}

bool Uuid::isNil() const
{
    for (uint8_t b : bytes)
        if (b != 0) return false;
    return true;
}
