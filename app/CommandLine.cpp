#include "app/CommandLine.h"

#include <string_view>

namespace {

constexpr std::string_view kBookOption = "--book";

}  // namespace

CommandLine parseCommandLine(int argc, const char* const* argv)
{
    CommandLine line;
    const auto fail = [&line](std::string error) {
        line.action = CommandLine::Action::Error;
        line.error = std::move(error);
        return line;
    };
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            line.action = CommandLine::Action::Help;
            return line;
        }
        if (arg == "--version") {
            line.action = CommandLine::Action::Version;
            return line;
        }
        if (arg == kBookOption || arg.starts_with("--book=")) {
            std::string_view path;
            if (arg == kBookOption) {
                if (i + 1 >= argc) return fail("--book needs the path of a book file");
                path = argv[++i];
            } else {
                path = arg.substr(kBookOption.size() + 1);
            }
            if (path.empty()) return fail("--book needs the path of a book file");
            line.book = path;
            continue;
        }
        if (arg.starts_with("--")) return fail("unknown option " + std::string(arg));
        // Anything else (Qt's single-dash options and their values) is Qt's.
    }
    return line;
}

std::string usageText(const std::string& program)
{
    return "Usage: " + program +
           " [--book PATH]\n"
           "Zenvora, a household account book (家計簿).\n"
           "\n"
           "  --book PATH  open the book at PATH instead of the default one\n"
           "               ($XDG_DATA_HOME/Zenvora/Zenvora.sql); a missing book is\n"
           "               created with a starter set of assets and categories\n"
           "  --help       show this text and exit\n"
           "  --version    show the version and exit\n";
}
