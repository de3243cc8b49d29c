#include "app/CommandLine.h"

#include <string_view>

namespace {

constexpr std::string_view kBookOption = "--book";

// The import's options only make sense together.
CommandLine checkedImport(CommandLine line)
{
    const bool importing = !line.importFiles.empty();
    std::string error;
    if (importing && line.asset.empty()) error = "--import needs --asset NAME, the asset the statements belong to";
    if (!importing && (!line.asset.empty() || line.dryRun || line.acceptCandidates))
        error = "--asset, --dry-run and --accept-candidates go with --import FILE...";
    if (!error.empty()) {
        line.action = CommandLine::Action::Error;
        line.error = error;
    } else if (importing) {
        line.action = CommandLine::Action::Import;
    }
    return line;
}

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
        if (arg == "--import") {
            while (i + 1 < argc && !std::string_view(argv[i + 1]).starts_with("--")) line.importFiles.emplace_back(argv[++i]);
            if (line.importFiles.empty()) return fail("--import needs one or more statement files");
            continue;
        }
        if (arg == "--asset") {
            if (i + 1 >= argc || std::string_view(argv[i + 1]).empty()) return fail("--asset needs the name of an asset");
            line.asset = argv[++i];
            continue;
        }
        if (arg == "--dry-run" || arg == "--accept-candidates") {
            (arg == "--dry-run" ? line.dryRun : line.acceptCandidates) = true;
            continue;
        }
        if (arg.starts_with("--")) return fail("unknown option " + std::string(arg));
        // Anything else (Qt's single-dash options and their values) is Qt's.
    }
    return checkedImport(std::move(line));
}

std::string usageText(const std::string& program)
{
    return "Usage: " + program +
           " [--book PATH]\n"
           "       " + program + " [--book PATH] --import FILE... --asset NAME [--dry-run] [--accept-candidates]\n"
           "Zenvora, a household account book (家計簿).\n"
           "\n"
           "  --book PATH          open the book at PATH instead of the default one\n"
           "                       ($XDG_DATA_HOME/Zenvora/Zenvora.sql); a missing book is\n"
           "                       created with a starter set of assets and categories\n"
           "  --import FILE...     import bank, card or e-money statements (CSV) into the\n"
           "                       book without a window, and print one line per file\n"
           "  --asset NAME         the asset the statements belong to\n"
           "  --dry-run            show what would be imported, write nothing\n"
           "  --accept-candidates  import possible duplicates and transfer candidates too\n"
           "  --help               show this text and exit\n"
           "  --version            show the version and exit\n";
}
