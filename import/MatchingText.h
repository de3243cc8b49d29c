#pragma once

#include <string>
#include <string_view>

// The key a description is matched by, for duplicates across files and for
// learning categories: NFKC (half-width katakana and full-width Latin meet
// their usual forms), Latin letters in upper case, every long-vowel variant
// after katakana as "ー", small kana as large ones (banks print ﾌｱﾐﾘ-ﾏ-ﾄ for
// ファミリーマート), no blanks, and without the prefixes and marks banks put
// around a merchant (V123456, デビット, 振込＊, ｶ), ／ｉＤ).
// ﾌｱﾐﾘ-ﾏ-ﾄ, ファミリーマート and ﾌｧﾐﾘｰﾏｰﾄ all give "フアミリーマート".
std::string matchingKey(std::string_view description);

// True when two matching keys plausibly name the same merchant: equal, one
// inside the other, or sharing at least half of their character pairs.
bool keysAreSimilar(std::string_view a, std::string_view b);
