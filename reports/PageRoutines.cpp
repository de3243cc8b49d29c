#include "reports/PageRoutines.h"

#include <algorithm>

#include "store/Money.h"

std::string int2stringWithComma(int64_t integer, int digits)
{
    const size_t width = static_cast<size_t>(std::max(digits, 1));
    const std::string amount = formatWithGrouping(integer);  // ASCII only, so a character is a byte
    return std::string(width - std::min(width, amount.size()), ' ') + amount;
}

PageRect makeRect(double pageHeight, double x, double y, int w, int h)
{
    return {x, pageHeight - y, static_cast<double>(w), static_cast<double>(h)};
}

void drawLine(PageCanvas& canvas, double pageHeight, double linewidth, PagePoint from, PagePoint to)
{
    canvas.strokeLine({to.x, pageHeight - to.y}, {from.x, pageHeight - from.y}, linewidth, kDarkGrey);
}
