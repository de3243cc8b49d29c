#pragma once

#include <functional>
#include <string>

class ViewController;

// Called on the event loop once the main window is shown. The program's own
// start has none; a test uses it to drive the running program with keys.
using WindowShown = std::function<void(ViewController&)>;

// The program on the book at bookPath (the default book when empty), from
// the book's lock and checks to the end of the event loop; a QApplication
// must exist. Returns the process's exit code.
int runZenvora(const std::string& bookPath, const WindowShown& windowShown = {});
