#include "store/TextFold.h"

#include <utility>

namespace {

std::string asciiLowercase(std::string_view text)
{
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

struct Installed {
    TextFold fold = asciiLowercase;
    std::string version = "ascii-case";
};

Installed& installed()
{
    static Installed i;
    return i;
}

}  // namespace

void setTextFold(TextFold fold, std::string version)
{
    if (fold) {
        installed() = {std::move(fold), std::move(version)};
    } else {
        installed() = Installed{};
    }
}

std::string foldText(std::string_view text)
{
    return installed().fold(text);
}

const std::string& textFoldVersion()
{
    return installed().version;
}
