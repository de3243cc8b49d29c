#pragma once

#include <string>
#include <string_view>

#include "import/ImportDate.h"

// The date shapes a layout accepts; a profile names the ones its files use.
namespace DateShape {
enum : unsigned {
    Slashed = 1,  // 2026/7/2, 2026/07/02, 2026.07.02, 2026-07-02
    Compact = 2,  // 20260702
    Kanji = 4,    // 2026年7月2日
    Wareki = 8,   // R8.1.5, H31.04.30, 令和 08 年 02 月 06 日, R元.5.1
    Any = Slashed | Compact | Kanji | Wareki,
};
}

// A date read from a statement cell, or the reason it was not read.
struct DateReading {
    ImportDate date;     // null when the text is no date of the allowed shapes
    std::string reason;  // Japanese, naming the text; empty on success
};

// Reads a date in one of `shapes`. Blanks (also U+3000) around the text and
// a time after it ("2025/02/11 19:24:02") are allowed; full-width digits are
// read as digits. A day that does not exist (2026/02/30) or a Japanese era
// date outside its era is refused, never corrected. The last year of an era
// is accepted after the change within that calendar year (H31.05.07 is
// 2019-05-07: systems kept printing the old era for a while).
DateReading readStatementDate(std::string_view text, unsigned shapes = DateShape::Any);
