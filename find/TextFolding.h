#pragma once

#include <QString>

// The folding that makes search texts comparable: Unicode NFKC (half-width
// katakana become full-width, full-width letters, digits and blanks become
// ASCII), case folding, the dashes and half-width marks written for a
// katakana long vowel read as "ー", and a long-vowel mark at the end of a
// kana word dropped, so that コンピューター and コンピュータ, ｽｰﾊﾟｰ and スーパー,
// ＡＢＣ and abc match.
QString foldForSearch(const QString& text);

// Installs foldForSearch as the store's folding (TextFold.h).
void installTextFold();
