#include "import/StatementAmount.h"

#include <QRegularExpression>
#include <algorithm>

#include "import/UnicodeText.h"
#include "store/Money.h"

namespace {

AmountReading refuse(std::string_view text, const char* what)
{
    return {AmountReading::Kind::Error, 0, "「" + std::string(trimmedCell(text)) + "」" + what};
}

}  // namespace

AmountReading readStatementAmount(std::string_view text)
{
    if (isEmptyCell(text)) return {};
    // Sign, an optional yen sign (a CP932 file's 0x5C decodes as a backslash),
    // digits grouped by commas or not, an optional fraction, an optional 円.
    static const QRegularExpression shape(
        QStringLiteral(R"(^([-+\x{2212}]?)\s*[¥\\]?\s*(\d{1,3}(?:,\d{3})+|\d+)(?:\.(\d+))?\s*円?$)"));
    const QString cell = compatibilityForm(trimmedCell(text)).trimmed();
    const QRegularExpressionMatch m = shape.match(cell);
    if (!m.hasMatch()) return refuse(text, "は金額として読めません");
    const QString fraction = m.captured(3);
    if (std::any_of(fraction.begin(), fraction.end(), [](QChar c) { return c != u'0'; }))
        return refuse(text, "は円未満の端数がある金額です");
    QString digits = m.captured(2);
    digits.remove(u',');
    while (digits.size() > 1 && digits.front() == u'0') digits.remove(0, 1);
    bool ok = false;
    const qlonglong magnitude = digits.size() <= 12 ? digits.toLongLong(&ok) : 0;
    const int64_t value = m.captured(1).isEmpty() || m.captured(1) == u"+" ? magnitude : -magnitude;
    if (!ok || !fitsInt32(value)) return refuse(text, "は大きすぎる金額です");
    return {AmountReading::Kind::Value, value, {}};
}
