#pragma once

#include <string>
#include <vector>

// What the command line asks for. Options of the program's own are read
// here, before any window exists, so that --help, --version and --import
// work without a display; single-dash options (-platform, -style ...) are
// Qt's and are left for it.
struct CommandLine {
    enum class Action { Run, Help, Version, Import, Error };
    Action action = Action::Run;
    std::string book;   // --book PATH: the book to open; empty for the default one
    std::string error;  // what was wrong, when action is Error
    // --import FILE... --asset NAME [--dry-run] [--accept-candidates]
    std::vector<std::string> importFiles;
    std::string asset;
    bool dryRun = false;
    bool acceptCandidates = false;
};

CommandLine parseCommandLine(int argc, const char* const* argv);

// The text --help prints.
std::string usageText(const std::string& program);
