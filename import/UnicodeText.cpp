#include "import/UnicodeText.h"

#include <algorithm>

namespace {

constexpr std::string_view kIdeographicSpace = "\u3000";

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

QString compatibilityForm(std::string_view utf8)
{
    const QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return isAscii(utf8) ? text : text.normalized(QString::NormalizationForm_KC);
}

std::string_view trimmedCell(std::string_view cell)
{
    for (;;) {
        if (cell.starts_with(' ') || cell.starts_with('\t')) cell.remove_prefix(1);
        else if (cell.starts_with(kIdeographicSpace)) cell.remove_prefix(kIdeographicSpace.size());
        else if (cell.ends_with(' ') || cell.ends_with('\t')) cell.remove_suffix(1);
        else if (cell.ends_with(kIdeographicSpace)) cell.remove_suffix(kIdeographicSpace.size());
        else return cell;
    }
}

bool isEmptyCell(std::string_view cell)
{
    cell = trimmedCell(cell);
    return cell.empty() || cell == "-" || cell == "\u2212" || cell == "\uFF0D";
}

std::string toUtf8(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}
