#pragma once

#include <cstdint>
#include <string>

#include "reports/PageCanvas.h"

// The line colour of the report frames: dark grey, one third of white.
inline constexpr double kDarkGrey = 1.0 / 3.0;

// An amount in a field of at least `digits` characters: blanks, then the
// amount with "," between groups of three (1234567 -> " 1,234,567"). An
// amount longer than the field is kept whole (123456789 -> "123,456,789"):
// a figure is never cut. digits < 1 counts as 1.
std::string int2stringWithComma(int64_t integer, int digits = 10);

// A top-down point (x, y) as a PDF rectangle of a page of this height:
// origin (x, pageHeight - y), extending upward by h.
PageRect makeRect(double pageHeight, double x, double y, int w, int h);

// Strokes a dark grey line between two top-down points of a page of this
// height, drawn from `to` towards `from`.
void drawLine(PageCanvas& canvas, double pageHeight, double linewidth, PagePoint from, PagePoint to);
