#pragma once

#include <sqlite3.h>

#include <string>

// The text of a result column; NULL reads as "".
inline std::string columnText(sqlite3_stmt* s, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, column));
    return text ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(s, column))) : std::string();
}
