#include "import/TextDecoding.h"

const char* encodingName(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8: return "UTF-8";
    case TextEncoding::Utf8Bom: return "UTF-8 (BOM付き)";
    case TextEncoding::Cp932: return "Shift_JIS (CP932)";
    }
    return "";
}

size_t utf8BomLength(std::string_view bytes)
{
    return bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
}

namespace {

// Qt's "Shift_JIS" goes through ICU, which decodes the Windows code page 932
// (NEC and IBM extensions, 0x8160 as U+FF5E): what Japanese Windows writes.
QStringDecoder makeDecoder(TextEncoding encoding)
{
    // Stateless: each piece is whole, so an incomplete sequence at its end is an error.
    const auto flags = QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom;
    if (encoding == TextEncoding::Cp932) return QStringDecoder("Shift_JIS", flags);
    return QStringDecoder(QStringConverter::Utf8, flags);
}

}  // namespace

PieceDecoder::PieceDecoder(TextEncoding encoding) : decoder_(makeDecoder(encoding)) {}

bool PieceDecoder::isValid() const
{
    return decoder_.isValid();
}

bool PieceDecoder::decode(std::string_view bytes, QString& out)
{
    out.append(decoder_.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size()))));
    return !decoder_.hasError();
}

qsizetype findReplacementCharacter(const QString& text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c == 0xFFFD) return i;
    }
    return -1;
}

bool looksGarbled(const QString& text)
{
    if (text.contains(QLatin1String("???"))) return true;
    // UTF-8 Japanese read as CP932 puts a kanji before a half-width katakana
    // (the next byte) again and again, and 縺 繧 繝 for the kana's lead bytes.
    qsizetype nonAscii = 0;
    qsizetype doubled = 0;
    QChar previous;
    for (const QChar c : text) {
        if (c.unicode() >= 0x80) ++nonAscii;
        const bool halfKana = c.unicode() >= 0xFF61 && c.unicode() <= 0xFF9F;
        doubled += c == QChar(0x7E3A) || c == QChar(0x7E67) || c == QChar(0x7E5D) ||  // 縺 繧 繝
                   (halfKana && previous.script() == QChar::Script_Han);
        previous = c;
    }
    return doubled >= 3 && doubled * 5 >= nonAscii;
}
