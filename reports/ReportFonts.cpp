#include "reports/ReportFonts.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <memory>

namespace {

// The file of a family's regular face as the system's fontconfig finds it;
// the family must match exactly (no substitute).
std::string fileOfFamily(const char* family)
{
    std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> pattern(FcPatternCreate(), FcPatternDestroy);
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
    FcPatternAddString(pattern.get(), FC_STYLE, reinterpret_cast<const FcChar8*>("Regular"));
    // Pango lays text out with HarfBuzz, which reads OpenType, not Type 1.
    FcPatternAddString(pattern.get(), FC_FONTFORMAT, reinterpret_cast<const FcChar8*>("CFF"));
    std::unique_ptr<FcObjectSet, decltype(&FcObjectSetDestroy)> objects(FcObjectSetBuild(FC_FILE, nullptr),
                                                                        FcObjectSetDestroy);
    std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)> found(FcFontList(nullptr, pattern.get(), objects.get()),
                                                                  FcFontSetDestroy);
    FcChar8* file = nullptr;
    if (!found || found->nfont == 0 || FcPatternGetString(found->fonts[0], FC_FILE, 0, &file) != FcResultMatch)
        return {};
    return reinterpret_cast<const char*>(file);
}

PangoFontMap* makeFontMap(std::string& error)
{
    if (!FcInit()) {
        error = "fontconfig cannot start";
        return nullptr;
    }
    FcConfig* config = FcConfigCreate();
    for (const char* family : {"Nimbus Sans", "Noto Sans CJK JP"}) {
        const std::string file = fileOfFamily(family);
        if (file.empty() || !FcConfigAppFontAddFile(config, reinterpret_cast<const FcChar8*>(file.c_str()))) {
            error = std::string("the font \"") + family + "\" is not installed";
            FcConfigDestroy(config);
            return nullptr;
        }
    }
    PangoFontMap* map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map), config);  // takes a reference
    FcConfigDestroy(config);
    return map;
}

}  // namespace

PangoFontMap* reportFontMap(std::string* error)
{
    static std::string failure;
    static PangoFontMap* map = makeFontMap(failure);
    if (!map && error) *error = failure;
    return map;
}
