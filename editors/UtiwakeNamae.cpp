#include "editors/UtiwakeNamae.h"

#include <algorithm>
#include <vector>

namespace {

std::vector<std::string> nonEmptyPieces(const std::string& text)
{
    std::vector<std::string> pieces;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t slash = std::min(text.find('/', start), text.size());
        if (slash > start) pieces.push_back(text.substr(start, slash - start));
        start = slash + 1;
    }
    return pieces;
}

}  // namespace

UtiwakeNamae splitUtiwakeNamae(const std::string& stored, const std::string& himokuNamae)
{
    const std::vector<std::string> pieces = nonEmptyPieces(stored);
    if (pieces.size() >= 2) return {pieces[0], pieces[1]};
    const std::string prefix = himokuNamae + "/";
    if (stored.starts_with(prefix)) return {himokuNamae, stored.substr(prefix.size())};
    return {pieces.empty() ? std::string() : pieces[0], std::string()};
}
