#include "reports/AmountGlyphs.h"

#include <pango/pangocairo.h>

#include <cstring>

namespace {

constexpr const char* kAmountCharacters = " 0123456789,-";

}  // namespace

std::unique_ptr<AmountGlyphs> AmountGlyphs::shape(PangoLayout* layout)
{
    const int count = static_cast<int>(std::strlen(kAmountCharacters));
    pango_layout_set_width(layout, -1);
    pango_layout_set_text(layout, kAmountCharacters, count);
    PangoLayoutLine* line = pango_layout_get_line_readonly(layout, 0);
    if (!line || !line->runs || line->runs->next) return nullptr;
    const auto* run = static_cast<const PangoGlyphItem*>(line->runs->data);
    if (run->glyphs->num_glyphs != count || run->item->offset != 0) return nullptr;

    std::unique_ptr<AmountGlyphs> glyphs(new AmountGlyphs);
    glyphs->glyphOf.fill(-1);
    for (int g = 0; g < count; ++g) {
        const int byte = run->glyphs->log_clusters[g];
        if (byte < 0 || byte >= count) return nullptr;
        glyphs->glyphOf[static_cast<unsigned char>(kAmountCharacters[byte])] = g;
    }
    glyphs->shaped = pango_glyph_string_copy(run->glyphs);
    glyphs->item = pango_item_copy(run->item);
    glyphs->scratch = pango_glyph_string_new();
    return glyphs;
}

AmountGlyphs::~AmountGlyphs()
{
    if (scratch) pango_glyph_string_free(scratch);
    if (shaped) pango_glyph_string_free(shaped);
    if (item) pango_item_free(item);
}

bool AmountGlyphs::layOut(const std::string& text, double& width)
{
    const int count = static_cast<int>(text.size());
    pango_glyph_string_set_size(scratch, count);
    int units = 0;
    for (int i = 0; i < count; ++i) {
        const auto c = static_cast<unsigned char>(text[static_cast<size_t>(i)]);
        const int g = c < glyphOf.size() ? glyphOf[c] : -1;
        if (g < 0) return false;
        scratch->glyphs[i] = shaped->glyphs[g];
        scratch->glyphs[i].attr.is_cluster_start = 1;
        scratch->log_clusters[i] = i;  // one byte, one glyph
        units += scratch->glyphs[i].geometry.width;
    }
    width = static_cast<double>(units) / PANGO_SCALE;
    return true;
}

void AmountGlyphs::show(cairo_t* cr, const std::string& text)
{
    const int count = static_cast<int>(text.size());
    item->offset = 0;
    item->length = count;
    item->num_chars = count;
    PangoGlyphItem run{};
    run.item = item;
    run.glyphs = scratch;
    pango_cairo_show_glyph_item(cr, text.c_str(), &run);
}
