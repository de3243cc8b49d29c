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

void CairoCanvas::fillRect(const PageRect& rect, PageColor color)
{
    cairo_new_path(cr);
    cairo_set_source_rgb(cr, color.r, color.g, color.b);
    cairo_rectangle(cr, rect.x, pageHeight - (rect.y + rect.h), rect.w, rect.h);
    cairo_fill(cr);
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

void CairoCanvas::drawText(const std::string& text, const PageRect& rect, const PageFont& font, TextFit fit)
{
    if (text.empty()) return;
    const SizedLayout& sized = layoutFor(font);
    cairo_set_source_rgb(cr, 0, 0, 0);
    const double top = pageHeight - (rect.y + rect.h);
    if (fit == TextFit::Wrap) {
        drawWrapped(sized, text, rect, top);
    } else {
        drawOneLine(sized, text, rect, top + sized.baseline, fit == TextFit::ShrinkRight);
    }
}

void CairoCanvas::drawWrapped(const SizedLayout& sized, const std::string& text, const PageRect& rect, double top)
{
    PangoLayout* layout = sized.layout;
    pango_layout_set_width(layout, static_cast<int>(rect.w * PANGO_SCALE));
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    const int lines = pango_layout_get_line_count(layout);
    for (int i = 0; i < lines && (i + 1) * sized.lineHeight <= rect.h; ++i) {
        PangoLayoutLine* line = pango_layout_get_line_readonly(layout, i);
        PangoRectangle logical;
        pango_layout_line_get_extents(line, nullptr, &logical);
        cairo_move_to(cr, rect.x + static_cast<double>(logical.x) / PANGO_SCALE, top + i * sized.lineHeight + sized.baseline);
        pango_cairo_show_layout_line(cr, line);
    }
}

void CairoCanvas::drawOneLine(const SizedLayout& sized, const std::string& text, const PageRect& rect,
                              double baseline, bool rightAligned)
{
    double width = 0;
    if (sized.amounts && sized.amounts->layOut(text, width)) {
        showFitted(width, rect, baseline, rightAligned, [&] { sized.amounts->show(cr, text); });
        return;
    }
    PangoLayout* layout = sized.layout;
    pango_layout_set_width(layout, -1);  // no wrapping: the line is as long as the text
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    PangoLayoutLine* line = pango_layout_get_line_readonly(layout, 0);
    PangoRectangle logical;
    pango_layout_line_get_extents(line, nullptr, &logical);
    width = static_cast<double>(logical.width) / PANGO_SCALE;
    showFitted(width, rect, baseline, rightAligned, [&] { pango_cairo_show_layout_line(cr, line); });
}

template <typename Show>
void CairoCanvas::showFitted(double width, const PageRect& rect, double baseline, bool rightAligned, Show show)
{
    const double anchor = rightAligned ? rect.x + rect.w : rect.x;
    const double start = rightAligned ? -width : 0;
    if (width <= rect.w) {
        cairo_move_to(cr, anchor + start, baseline);
        show();
        return;
    }
    // Smaller, not cut: the whole text in the rectangle's width.
    const double scale = rect.w / width;
    cairo_save(cr);
    cairo_translate(cr, anchor, baseline);
    cairo_scale(cr, scale, scale);
    cairo_move_to(cr, start, 0);
    show();
    cairo_restore(cr);
}
