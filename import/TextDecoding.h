#pragma once

#include <QString>
#include <QStringDecoder>
#include <string_view>

// The encodings statement files arrive in.
enum class TextEncoding : uint8_t { Utf8, Utf8Bom, Cp932 };

// "UTF-8", "UTF-8 (BOM付き)", "Shift_JIS (CP932)": for the preview's file line.
const char* encodingName(TextEncoding encoding);

// The length of a UTF-8 byte order mark at the start of `bytes` (0 or 3).
size_t utf8BomLength(std::string_view bytes);

// Decodes a file piece by piece, each piece ending at a line feed (or at the
// end of the file), so that no character is split between two pieces: 0x0A
// is never part of a multi-byte character in UTF-8 or CP932. Strict: any
// invalid sequence, an incomplete one at the end included, is an error.
class PieceDecoder {
public:
    explicit PieceDecoder(TextEncoding encoding);
    bool isValid() const;  // false when the CP932 converter is missing from Qt's build
    // Appends the text of `bytes` to `out`; false when the bytes are not valid in this encoding.
    bool decode(std::string_view bytes, QString& out);

private:
    QStringDecoder decoder_;
};

// The position of a U+FFFD, the character an editor or converter puts in
// place of what it could not read, or -1. (A CP932 converter's own
// substitutes are caught by its error flag.)
qsizetype findReplacementCharacter(const QString& text);

// True when the text looks like the lost or doubly-decoded text of a garbled
// file: runs of "?" where Japanese text was, or UTF-8 Japanese read as CP932
// (縺 繧 繝, kanji followed by half-width katakana) making up much of it.
bool looksGarbled(const QString& text);
