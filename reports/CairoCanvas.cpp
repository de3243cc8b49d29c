#include "reports/CairoCanvas.h"

#include <pango/pangocairo.h>

#include "reports/ReportFonts.h"

CairoCanvas::CairoCanvas(cairo_t* cr, PangoContext* context, double pageHeight)
    : cr(cr), context(context), pageHeight(pageHeight)
{
}

CairoCanvas::~CairoCanvas()
{
    for (auto& [size, sized] : layouts) g_object_unref(sized.layout);
}

void CairoCanvas::strokeLine(PagePoint from, PagePoint to, double width, double grey)
{
    cairo_new_path(cr);
    cairo_set_source_rgb(cr, grey, grey, grey);
    cairo_move_to(cr, from.x, pageHeight - from.y);
    cairo_line_to(cr, to.x, pageHeight - to.y);
    cairo_set_line_width(cr, width);
    cairo_stroke(cr);
}

const CairoCanvas::SizedLayout& CairoCanvas::layoutFor(const PageFont& font)
{
    // Every role the pages name is "Helvetica"; its faces come from ReportFonts.
    SizedLayout& sized = layouts[font.size];
    if (sized.layout) return sized;
    PangoLayout* layout = sized.layout = pango_layout_new(context);
    PangoFontDescription* description = pango_font_description_from_string(kHelveticaRoleFamilies);
    pango_font_description_set_absolute_size(description, font.size * PANGO_SCALE);
    pango_layout_set_font_description(layout, description);
    pango_font_description_free(description);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_text(layout, "名", -1);
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    sized.baseline = static_cast<double>(pango_layout_get_baseline(layout)) / PANGO_SCALE;
    sized.lineHeight = static_cast<double>(logical.height) / PANGO_SCALE;
    sized.amounts = AmountGlyphs::shape(layout);
    return sized;
}

void CairoCanvas::drawText(const std::string& text, const PageRect& rect, const PageFont& font,
                           std::optional<double> rightEdge)
{
    if (text.empty()) return;
    const SizedLayout& sized = layoutFor(font);
    cairo_set_source_rgb(cr, 0, 0, 0);
    const double top = pageHeight - (rect.y + rect.h);
    if (rightEdge && sized.amounts && sized.lineHeight <= rect.h &&
        sized.amounts->draw(cr, text, *rightEdge, top + sized.baseline))
        return;
    PangoLayout* layout = sized.layout;
    // An amount is a field of a few characters made to fit its column: it
    // stays on one line, where a wrap would put its last digit under it.
    pango_layout_set_width(layout, rightEdge ? -1 : static_cast<int>(rect.w * PANGO_SCALE));
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    const int lines = pango_layout_get_line_count(layout);
    for (int i = 0; i < lines && (i + 1) * sized.lineHeight <= rect.h; ++i) {
        PangoLayoutLine* line = pango_layout_get_line_readonly(layout, i);
        PangoRectangle logical;
        pango_layout_line_get_extents(line, nullptr, &logical);
        const double width = static_cast<double>(logical.width) / PANGO_SCALE;
        const double x = rightEdge ? *rightEdge - width : rect.x + static_cast<double>(logical.x) / PANGO_SCALE;
        cairo_move_to(cr, x, top + i * sized.lineHeight + sized.baseline);
        pango_cairo_show_layout_line(cr, line);
    }
}
