#pragma once

#include <QString>
#include <string>
#include <string_view>

// NFKC of UTF-8 text: full-width digits and Latin letters become ASCII,
// half-width katakana full-width, "（円）" "(円)". ASCII text is returned
// without going through the normaliser.
QString compatibilityForm(std::string_view utf8);

// The text of a cell without blanks around it (ASCII blanks and U+3000).
std::string_view trimmedCell(std::string_view cell);

// True when a cell stands for "nothing": empty, blanks only, or a lone dash
// (the files write "-", "−" or "－" in empty cells).
bool isEmptyCell(std::string_view cell);

std::string toUtf8(const QString& text);
