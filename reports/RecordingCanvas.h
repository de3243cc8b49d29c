#pragma once

#include <string>
#include <vector>

#include "reports/PageCanvas.h"

// A canvas that keeps every call, in order, for tests to compare.
class RecordingCanvas final : public PageCanvas {
public:
    struct Line {
        PagePoint from, to;
        double width;
        double grey;
        bool operator==(const Line&) const = default;
    };
    struct Text {
        std::string text;
        PageRect rect;
        PageFont font;
        TextFit fit;
        bool operator==(const Text&) const = default;
    };

    struct Fill {
        PageRect rect;
        PageColor color;
        bool operator==(const Fill&) const = default;
    };

    std::vector<Line> lines;
    std::vector<Text> texts;
    std::vector<Fill> fills;

    void strokeLine(PagePoint from, PagePoint to, double width, double grey) override
    {
        lines.push_back({from, to, width, grey});
    }
    void drawText(const std::string& text, const PageRect& rect, const PageFont& font, TextFit fit) override
    {
        texts.push_back({text, rect, font, fit});
    }
    void fillRect(const PageRect& rect, PageColor color) override { fills.push_back({rect, color}); }
};
