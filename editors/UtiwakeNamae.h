#pragma once

#include <string>

// The two parts of a sub-item's stored name "category/sub-item".
struct UtiwakeNamae {
    std::string himoku;   // the category part
    std::string utiwake;  // the sub-item part
};

// Splits a sub-item's stored name at every "/", dropping empty pieces: the
// first piece is the category part, the second the sub-item part. A name
// that gives fewer than two pieces (a category named with "/" alone, say)
// falls back on its category's name: when the stored name starts with it and
// a "/", the rest is the sub-item part; otherwise the missing parts are empty.
UtiwakeNamae splitUtiwakeNamae(const std::string& stored, const std::string& himokuNamae);
