#pragma once

#include <string>

typedef struct _PangoFontMap PangoFontMap;

// The faces the report PDFs embed: Nimbus Sans for the "Helvetica" role
// (metric-compatible, from fonts-urw-base35) and Noto Sans CJK JP for the
// Japanese characters. The font map knows these two faces and nothing else,
// so a document comes out the same whatever else is installed.
//
// Returns the process-wide map, or nullptr with a description in *error when
// a face cannot be found. Not thread-safe.
PangoFontMap* reportFontMap(std::string* error);

// The Pango family list that fills the "Helvetica" role.
inline constexpr const char* kHelveticaRoleFamilies = "Nimbus Sans,Noto Sans CJK JP";
