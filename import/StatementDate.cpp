#include "import/StatementDate.h"

#include <QRegularExpression>
#include <QString>

#include "import/UnicodeText.h"

namespace {

struct Era {
    const char16_t* letter;
    const char16_t* kanji;
    int startNen, startTuki, startHi;
};

// Each era ends the day before the next one starts.
constexpr Era kEras[] = {
    {u"M", u"明治", 1868, 1, 25},
    {u"T", u"大正", 1912, 7, 30},
    {u"S", u"昭和", 1926, 12, 25},
    {u"H", u"平成", 1989, 1, 8},
    {u"R", u"令和", 2019, 5, 1},
};

const QString kTime = QStringLiteral(R"((?:\s+\d{1,2}:\d{2}(?::\d{2})?)?$)");

DateReading refuse(std::string_view text, const char* what)
{
    return {ImportDate(), "「" + std::string(trimmedCell(text)) + "」" + what};
}

DateReading checkedDate(int nen, int tuki, int hi, std::string_view text)
{
    if (!ImportDate::isValidDay(nen, tuki, hi)) return refuse(text, "は存在しない日付です");
    return {ImportDate(nen, tuki, hi), {}};
}

DateReading warekiDate(const QRegularExpressionMatch& m, std::string_view text)
{
    const QString era = m.captured(1).toUpper();
    const QString eraNen = m.captured(2);
    // Groups 3 and 4 hold "R8.1.5"'s month and day, 5 and 6 "令和8年1月5日"'s.
    const bool kanjiForm = m.captured(3).isEmpty();
    const int tuki = m.captured(kanjiForm ? 5 : 3).toInt();
    const int hi = m.captured(kanjiForm ? 6 : 4).toInt();
    const int n = eraNen == u"元" ? 1 : eraNen.toInt();
    const int count = static_cast<int>(std::size(kEras));
    for (int i = 0; i < count; ++i) {
        const Era& e = kEras[i];
        if (era != QStringView(e.letter) && era != QStringView(e.kanji)) continue;
        if (n < 1) return refuse(text, "は元号の年が読めません");
        const int nen = e.startNen + n - 1;
        DateReading r = checkedDate(nen, tuki, hi, text);
        if (r.date.isNull()) return r;
        if (r.date < ImportDate(e.startNen, e.startTuki, e.startHi)) return refuse(text, "は元号の始まる前の日付です");
        if (i + 1 < count && nen > kEras[i + 1].startNen) return refuse(text, "は元号の終わった後の日付です");
        return r;
    }
    return refuse(text, "は日付として読めません");
}

}  // namespace

DateReading readStatementDate(std::string_view text, unsigned shapes)
{
    static const QRegularExpression slashed(QStringLiteral(R"(^(\d{4})([/.\-])(\d{1,2})\2(\d{1,2}))") + kTime);
    static const QRegularExpression compact(QStringLiteral(R"(^(\d{4})(\d{2})(\d{2}))") + kTime);
    static const QRegularExpression kanji(QStringLiteral(R"(^(\d{4})\s*年\s*(\d{1,2})\s*月\s*(\d{1,2})\s*日)") + kTime);
    static const QRegularExpression wareki(
        QStringLiteral(R"(^([MTSHR]|明治|大正|昭和|平成|令和)\s*(\d{1,2}|元)\s*)"
                       R"((?:[/.\-]\s*(\d{1,2})\s*[/.\-]\s*(\d{1,2})|年\s*(\d{1,2})\s*月\s*(\d{1,2})\s*日))") +
            kTime,
        QRegularExpression::CaseInsensitiveOption);

    const QString cell = compatibilityForm(text).trimmed();
    if (cell.isEmpty()) return {ImportDate(), "日付がありません"};
    QRegularExpressionMatch m;
    if ((shapes & DateShape::Slashed) && (m = slashed.match(cell)).hasMatch())
        return checkedDate(m.captured(1).toInt(), m.captured(3).toInt(), m.captured(4).toInt(), text);
    if ((shapes & DateShape::Compact) && (m = compact.match(cell)).hasMatch())
        return checkedDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt(), text);
    if ((shapes & DateShape::Kanji) && (m = kanji.match(cell)).hasMatch())
        return checkedDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt(), text);
    if ((shapes & DateShape::Wareki) && (m = wareki.match(cell)).hasMatch()) return warekiDate(m, text);
    return refuse(text, "は日付として読めません");
}
