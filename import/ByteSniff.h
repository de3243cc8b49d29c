#pragma once

#include <string_view>

// What the first bytes of a file say before any decoding.
enum class ByteContent {
    Text,      // may be a CSV file
    Pdf,       // a PDF document, whatever its name
    Archive,   // a ZIP container: an .xlsx workbook or a compressed download
    OldExcel,  // an .xls workbook (OLE compound file)
    Utf16,     // text with a UTF-16 byte order mark
    Binary,    // NUL bytes or control characters no text file has
};

// Looks at the start of a file (a few kilobytes are enough).
ByteContent sniffBytes(std::string_view head);
