#include "import/ByteSniff.h"

ByteContent sniffBytes(std::string_view head)
{
    if (head.starts_with("%PDF-")) return ByteContent::Pdf;
    if (head.starts_with("PK\x03\x04")) return ByteContent::Archive;
    if (head.starts_with("\xD0\xCF\x11\xE0")) return ByteContent::OldExcel;
    if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF")) return ByteContent::Utf16;
    size_t controls = 0;
    for (const char c : head) {
        const auto b = static_cast<unsigned char>(c);
        if (b == 0) return ByteContent::Binary;
        // Tab, line feed, form feed and carriage return occur in text; an
        // end-of-file mark (0x1A) too, as the last byte of old DOS files.
        if (b < 0x20 && b != '\t' && b != '\n' && b != '\f' && b != '\r' && b != 0x1A) ++controls;
    }
    return controls * 100 > head.size() ? ByteContent::Binary : ByteContent::Text;
}
