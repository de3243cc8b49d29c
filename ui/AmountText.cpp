#include "ui/AmountText.h"

#include <QChar>
#include <QList>

#include "store/Money.h"

QString trimmedAmountText(const QString& text)
{
    return text.trimmed();  // QChar::isSpace covers blanks, U+3000 and line breaks
}

bool isStringContainsOnlyNumbers(const QString& text)
{
    for (const char32_t c : text.toUcs4())
        if (!QChar::isDigit(c)) return false;
    return true;
}

std::optional<int64_t> kingakuFromText(const QString& text)
{
    if (text.isEmpty() || !isStringContainsOnlyNumbers(text)) return std::nullopt;
    int64_t value = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9') return std::nullopt;  // a digit of another script
        value = value * 10 + (c.unicode() - u'0');
        if (value > INT32_MAX) return std::nullopt;
    }
    return value;
}

QString groupedKingaku(int64_t value)
{
    return QString::fromStdString(formatWithGrouping(value));
}
