#pragma once

#include <array>
#include <memory>
#include <string>

typedef struct _cairo cairo_t;
typedef struct _PangoLayout PangoLayout;
typedef struct _PangoItem PangoItem;
typedef struct _PangoGlyphString PangoGlyphString;
typedef struct _PangoGlyphInfo PangoGlyphInfo;

// The glyphs of the characters an amount field is made of (" 0123456789,-"),
// shaped once for a font and size. An annual report holds thousands of
// amounts; drawing each as a run of these glyphs spares Pango's itemizing,
// shaping and line breaking, while the text still travels with the glyphs,
// so the PDF's text layer stays exact.
class AmountGlyphs {
public:
    // Shapes the characters with the layout's font description (the layout's
    // text and width are changed). Null when they do not come out as one
    // run of one glyph each, in which case amounts take the general path.
    static std::unique_ptr<AmountGlyphs> shape(PangoLayout* layout);
    ~AmountGlyphs();
    AmountGlyphs(const AmountGlyphs&) = delete;
    AmountGlyphs& operator=(const AmountGlyphs&) = delete;

    // Lays text out as one run of the glyphs and gives its width in points.
    // False when text has a character not among the glyphs.
    bool layOut(const std::string& text, double& width);
    // Shows the run last laid out, for that same text, from the current point.
    void show(cairo_t* cr, const std::string& text);

private:
    AmountGlyphs() = default;

    PangoItem* item = nullptr;              // font, script and language of the run
    PangoGlyphString* scratch = nullptr;    // the run laid out last, reused for every amount
    std::array<int, 128> glyphOf{};         // character -> index into shaped, or -1
    PangoGlyphString* shaped = nullptr;     // one glyph per amount character
};
