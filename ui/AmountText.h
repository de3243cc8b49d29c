#pragma once

#include <QString>
#include <cstdint>
#include <optional>

// The text of an amount field without leading and trailing white space and
// line breaks (the ideographic space included).
QString trimmedAmountText(const QString& text);

// True when every character is a decimal digit of any script (so also for
// an empty text): removing digits from both ends leaves nothing.
bool isStringContainsOnlyNumbers(const QString& text);

// The amount a trimmed text stands for: a non-empty run of ASCII digits
// (leading zeros allowed) whose value fits a signed 32-bit integer. Anything
// else, full-width digits included, has no amount.
std::optional<int64_t> kingakuFromText(const QString& text);

// An amount as the lists show it: decimal with "," between groups of three.
QString groupedKingaku(int64_t value);
