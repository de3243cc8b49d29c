#include "find/TextFolding.h"

#include <string>
#include <string_view>

#include "store/TextFold.h"

namespace {

constexpr char16_t kChouon = u'ー';  // U+30FC, the katakana long-vowel mark

bool isHiragana(char16_t c)
{
    return c >= 0x3041 && c <= 0x3096;
}

bool isKatakana(char16_t c)
{
    return c >= 0x30A1 && c <= 0x30FA;
}

bool isKana(char16_t c)
{
    return isHiragana(c) || isKatakana(c);
}

bool sameScript(char16_t a, char16_t b)
{
    return (isHiragana(a) && isHiragana(b)) || (isKatakana(a) && isKatakana(b));
}

// Characters written for a long vowel after kana: hyphens, dashes, minus signs.
bool isDashLike(char16_t c)
{
    switch (c) {
    case u'-':
    case 0x2010:
    case 0x2011:
    case 0x2012:
    case 0x2013:
    case 0x2014:
    case 0x2015:
    case 0x2212:
    case kChouon:
        return true;
    default:
        return false;
    }
}

// Reads a run of dash-like marks after kana as one "ー" and drops it where it
// ends a word (the next character is not kana of the same script, as in
// スーパーで): the spelling of a final long vowel varies (サーバー, サーバ).
QString foldLongVowels(const QString& text)
{
    QString out;
    out.reserve(text.size());
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = text[i].unicode();
        const char16_t before = out.isEmpty() ? 0 : out.back().unicode();
        if (!isDashLike(c) || !isKana(before)) {
            out += QChar(c);
            continue;
        }
        qsizetype last = i;
        while (last + 1 < n && isDashLike(text[last + 1].unicode())) ++last;
        if (last + 1 < n && sameScript(before, text[last + 1].unicode())) out += QChar(kChouon);
        i = last;
    }
    return out;
}

bool isAscii(std::string_view text)
{
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    return true;
}

std::string foldUtf8(std::string_view text)
{
    if (isAscii(text)) {
        // NFKC leaves ASCII as it is, and its case folding is lowercasing.
        std::string out(text);
        for (char& c : out)
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        return out;
    }
    return foldForSearch(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))).toStdString();
}

}  // namespace

QString foldForSearch(const QString& text)
{
    return foldLongVowels(text.normalized(QString::NormalizationForm_KC).toCaseFolded());
}

void installTextFold()
{
    setTextFold(foldUtf8, "nfkc-casefold-chouon-1");
}
