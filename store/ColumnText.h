#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

// The text of a result column; NULL reads as "".
inline std::string columnText(sqlite3_stmt* s, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, column));
    return text ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(s, column))) : std::string();
}

// A SUM column. A sum can pass the 32-bit range even when every entry fits;
// its decimal text keeps all 64 bits. NULL (nothing summed) reads as 0.
inline int64_t columnSum(sqlite3_stmt* s, int column)
{
    const std::string text = columnText(s, column);
    return text.empty() ? 0 : std::stoll(text);
}
