#pragma once

#include <map>
#include <memory>
#include <string>

#include "reports/AmountGlyphs.h"
#include "reports/PageCanvas.h"

typedef struct _cairo cairo_t;
typedef struct _PangoContext PangoContext;
typedef struct _PangoLayout PangoLayout;

// Draws a page onto a cairo context (a page of a PDF surface) with Pango
// laying the text out, in the faces of ReportFonts.h. The context's y runs
// downward from the top of a page of the given height.
class CairoCanvas final : public PageCanvas {
public:
    // context: a Pango context on the report font map, updated for cr.
    CairoCanvas(cairo_t* cr, PangoContext* context, double pageHeight);
    ~CairoCanvas() override;
    CairoCanvas(const CairoCanvas&) = delete;
    CairoCanvas& operator=(const CairoCanvas&) = delete;

    void strokeLine(PagePoint from, PagePoint to, double width, double grey) override;
    void drawText(const std::string& text, const PageRect& rect, const PageFont& font, TextFit fit) override;
    void fillRect(const PageRect& rect, PageColor color) override;

private:
    cairo_t* cr;
    PangoContext* context;
    double pageHeight;
    // One layout per font size, reused for every text, with the line box of
    // a Japanese line: every line of the size gets it, so that a line of
    // digits sits on the same baseline as a label beside it.
    struct SizedLayout {
        PangoLayout* layout = nullptr;
        double baseline = 0;
        double lineHeight = 0;
        std::unique_ptr<AmountGlyphs> amounts;  // null: amounts take the general path
    };
    std::map<double, SizedLayout> layouts;

    const SizedLayout& layoutFor(const PageFont& font);
    void drawWrapped(const SizedLayout& sized, const std::string& text, const PageRect& rect, double top);
    void drawOneLine(const SizedLayout& sized, const std::string& text, const PageRect& rect, double baseline,
                     bool rightAligned);
    // Shows a line of this width (show() draws it from the current point) at
    // the rectangle's left or right edge on the baseline, scaled down about
    // that edge when it is wider than the rectangle.
    template <typename Show>
    void showFitted(double width, const PageRect& rect, double baseline, bool rightAligned, Show show);
};
