#include "import/MatchingText.h"

#include <QRegularExpression>
#include <algorithm>
#include <vector>

#include "import/UnicodeText.h"

namespace {

bool isKatakana(char16_t c)
{
    return (c >= 0x30A1 && c <= 0x30FA) || c == 0x30FC;
}

bool isDashLike(char16_t c)
{
    return c == u'-' || c == 0x2010 || c == 0x2012 || c == 0x2013 || c == 0x2014 || c == 0x2015 || c == 0x2212 ||
           c == 0x2500 || c == 0xFE63 || c == 0xFF0D || c == 0x30FC;
}

char16_t largeKana(char16_t c)
{
    static const std::u16string_view small = u"ぁぃぅぇぉっゃゅょゎァィゥェォッャュョヮヵヶ";
    static const std::u16string_view large = u"あいうえおつやゆよわアイウエオツヤユヨワカケ";
    const size_t at = small.find(c);
    return at == std::u16string_view::npos ? c : large[at];
}

// Prefixes and marks around the merchant's name, in their NFKC upper-case form.
const std::vector<QRegularExpression>& bankMarks()
{
    static const std::vector<QRegularExpression> marks = {
        QRegularExpression(QStringLiteral(R"(^V\d{6}\s*)")),
        QRegularExpression(QStringLiteral(R"(^VISAデビット\s*)")),
        QRegularExpression(QStringLiteral(R"(^デビット\d?\s*(\d{6}\s*)?)")),
        QRegularExpression(QStringLiteral(R"(^振込\s*[*＊]?\s*)")),
        QRegularExpression(QStringLiteral(R"(^\(カ\)|^カ\)|\(カ\)$|\(カ$)")),
        QRegularExpression(QStringLiteral(R"(/ID$)")),
    };
    return marks;
}

QString foldedCharacters(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar qc : text) {
        char16_t c = qc.unicode();
        if (qc.isSpace()) continue;
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
        if (isDashLike(c) && !out.isEmpty() && isKatakana(out.back().unicode())) c = 0x30FC;
        out.append(QChar(largeKana(c)));
    }
    return out;
}

std::vector<uint32_t> pairs(std::u32string_view s)
{
    std::vector<uint32_t> out;
    for (size_t i = 0; i + 1 < s.size(); ++i) out.push_back(static_cast<uint32_t>(s[i]) * 0x110000u + s[i + 1]);
    std::sort(out.begin(), out.end());
    return out;
}

}  // namespace

std::string matchingKey(std::string_view description)
{
    QString text = compatibilityForm(description).trimmed().toUpper();
    for (const QRegularExpression& mark : bankMarks()) {
        QString stripped = text;
        stripped.remove(mark);
        // A description that is nothing but a mark ("デビット 123456") keeps it.
        if (!stripped.trimmed().isEmpty()) text = stripped.trimmed();
    }
    return toUtf8(foldedCharacters(text));
}

bool keysAreSimilar(std::string_view a, std::string_view b)
{
    if (a.empty() || b.empty()) return false;
    if (a.find(b) != std::string_view::npos || b.find(a) != std::string_view::npos) return true;
    const std::u32string ua = QString::fromUtf8(a.data(), static_cast<qsizetype>(a.size())).toStdU32String();
    const std::u32string ub = QString::fromUtf8(b.data(), static_cast<qsizetype>(b.size())).toStdU32String();
    const std::vector<uint32_t> pa = pairs(ua), pb = pairs(ub);
    if (pa.empty() || pb.empty()) return false;
    std::vector<uint32_t> common;
    std::set_intersection(pa.begin(), pa.end(), pb.begin(), pb.end(), std::back_inserter(common));
    return 2 * common.size() >= (pa.size() + pb.size()) / 2;
}
