#include "reports/PdfDocument.h"

#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include "reports/AtomicFile.h"
#include "reports/CairoCanvas.h"
#include "reports/ReportFonts.h"

namespace {

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length)
{
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// A Pango context for cr on the report fonts: 72 units to the inch, so a
// font size is in points, and unhinted, unrounded metrics, so that widths
// are the fonts' own.
PangoContext* textContext(PangoFontMap* fonts, cairo_t* cr)
{
    PangoContext* context = pango_font_map_create_context(fonts);
    pango_cairo_update_context(cr, context);
    pango_cairo_context_set_resolution(context, 72.0);
    pango_context_set_round_glyph_positions(context, FALSE);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_language(context, pango_language_from_string("ja"));
    return context;
}

}  // namespace

void PdfDocument::insertPage(std::unique_ptr<ReportPage> page, size_t index)
{
    pages.insert(pages.begin() + static_cast<ptrdiff_t>(std::min(index, pages.size())), std::move(page));
}

bool PdfDocument::render(std::string& pdf, std::string* error) const
{
    PangoFontMap* fonts = reportFontMap(error);
    if (!fonts) return false;
    pdf.clear();
    const PageSize first = pages.empty() ? PageSize{595, 842} : pages.front()->bounds();
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendTo, &pdf, first.width, first.height);
    cairo_t* cr = cairo_create(surface);
    PangoContext* context = textContext(fonts, cr);
    for (const auto& page : pages) {
        const PageSize size = page->bounds();
        cairo_pdf_surface_set_size(surface, size.width, size.height);
        {
            CairoCanvas canvas(cr, context, size.height);
            page->draw(canvas);
        }
        cairo_show_page(cr);
    }
    g_object_unref(context);
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    const cairo_status_t status = cairo_surface_status(surface);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) {
        if (error) *error = cairo_status_to_string(status);
        return false;
    }
    return true;
}

bool PdfDocument::writeToFile(const std::string& path, std::string* error, int* errorNumber) const
{
    if (errorNumber) *errorNumber = 0;
    std::string pdf;
    return render(pdf, error) && writeFileAtomically(path, pdf, error, errorNumber);
}
