#pragma once

#include <string>

// A point or a rectangle on a report page. Pages compute in a top-down
// system (y from the top edge); what they hand to a canvas is in PDF space
// (origin at the bottom-left corner, y upward), in points.
struct PagePoint {
    double x = 0;
    double y = 0;
    bool operator==(const PagePoint&) const = default;
};

// A rectangle whose origin is its bottom-left corner; it extends upward by h.
struct PageRect {
    double x = 0;
    double y = 0;
    double w = 0;
    double h = 0;
    bool operator==(const PageRect&) const = default;
};

// A font by its role name ("Helvetica") and size in points. The canvas that
// writes the file decides which face fills the role.
struct PageFont {
    std::string family;
    double size = 0;
    bool operator==(const PageFont&) const = default;
};

// A colour of a filled area, each part from 0 to 1.
struct PageColor {
    double r = 0;
    double g = 0;
    double b = 0;
    bool operator==(const PageColor&) const = default;
};

// How a text sits in its rectangle (PDF space).
enum class TextFit {
    // Lines from the rectangle's top-left corner, wrapped at its width;
    // lines that do not fit its height are not drawn.
    Wrap,
    // One line from the left edge, or ending at the right edge, on the
    // baseline a wrapped first line would have. A text wider than the
    // rectangle is drawn in a smaller size, so that it fits whole.
    ShrinkLeft,
    ShrinkRight,
};

// What a report page draws on: the cairo canvas writes a PDF, the recording
// canvas keeps every call for the tests.
class PageCanvas {
public:
    virtual ~PageCanvas() = default;
    // Strokes a straight segment from `from` to `to` (PDF space) with the
    // given width in the given grey (0 black, 1 white).
    virtual void strokeLine(PagePoint from, PagePoint to, double width, double grey) = 0;
    // Lays black text out in the rectangle (PDF space) from its top edge.
    virtual void drawText(const std::string& text, const PageRect& rect, const PageFont& font,
                          TextFit fit = TextFit::Wrap) = 0;
    // Fills the rectangle (PDF space) with the colour (a bar of a chart).
    virtual void fillRect(const PageRect& rect, PageColor color) = 0;
};
