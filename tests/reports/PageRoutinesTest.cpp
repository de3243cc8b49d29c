#include <gtest/gtest.h>

#include "reports/PageRoutines.h"
#include "reports/RecordingCanvas.h"

TEST(PageRoutinesTest, AnAmountFillsItsFieldFromTheRightAndLosesItsLeftmostCharacters)
{
    const struct {
        int64_t amount;
        int digits;
        const char* field;
    } cases[] = {
        {0, 10, "         0"},          {-500, 10, "      -500"},   {1234567, 10, " 1,234,567"},
        {123456789, 10, "23,456,789"},  {-10000000, 10, "10,000,000"}, {1234, 3, "234"},
        {7, 0, "7"},
    };
    for (const auto& c : cases) EXPECT_EQ(int2stringWithComma(c.amount, c.digits), c.field) << c.amount;
    EXPECT_EQ(int2stringWithComma(-500), "      -500");  // 10 by default
}

TEST(PageRoutinesTest, TopDownPointsBecomePdfSpace)
{
    EXPECT_EQ(makeRect(595, 50, 50, 300, 30), (PageRect{50, 545, 300, 30}));
    RecordingCanvas canvas;
    drawLine(canvas, 840, 0.3, {50, 300}, {350, 300});
    // Drawn from the second point to the first, in dark grey.
    EXPECT_EQ(canvas.lines, (std::vector<RecordingCanvas::Line>{{{350, 540}, {50, 540}, 0.3, 1.0 / 3.0}}));
}
