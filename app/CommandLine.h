#pragma once

#include <string>

// What the command line asks for. Options of the program's own are read
// here, before any window exists, so that --help and --version work without
// a display; single-dash options (-platform, -style ...) are Qt's and are
// left for it.
struct CommandLine {
    enum class Action { Run, Help, Version, Error };
    Action action = Action::Run;
    std::string book;   // --book PATH: the book to open; empty for the default one
    std::string error;  // what was wrong, when action is Error
};

CommandLine parseCommandLine(int argc, const char* const* argv);

// The text --help prints.
std::string usageText(const std::string& program);
