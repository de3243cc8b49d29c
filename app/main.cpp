// Zenvora: a household account book.
#include <QApplication>
#include <cstdio>
#include <cstdlib>

#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/ImportCommand.h"
#include "ui/QtTranslations.h"

namespace {

bool hasDisplay()
{
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value && *value) return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv)
{
    const CommandLine line = parseCommandLine(argc, argv);
    switch (line.action) {
    case CommandLine::Action::Help:
        std::fputs(usageText(argv[0]).c_str(), stdout);
        return 0;
    case CommandLine::Action::Version:
        std::puts("Zenvora " ZENVORA_VERSION);
        return 0;
    case CommandLine::Action::Error:
        std::fprintf(stderr, "%s: %s\n%s", argv[0], line.error.c_str(), usageText(argv[0]).c_str());
        return 2;
    case CommandLine::Action::Import: {
        // No window and no display: the statements are imported and the program ends.
        QCoreApplication app(argc, argv);
        return runImportCommand(line, stdout, stderr);
    }
    case CommandLine::Action::Run:
        break;
    }
    if (!hasDisplay()) {
        std::fprintf(stderr,
                     "Zenvora is a desktop application and needs a graphical display (DISPLAY or WAYLAND_DISPLAY).\n"
                     "On a machine without one, run it on a virtual display (Debian package xvfb):  xvfb-run -a %s\n",
                     argv[0]);
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zenvora"));
    installQtTranslations();
    return runZenvora(line.book);
}
