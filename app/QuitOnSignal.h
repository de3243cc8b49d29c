#pragma once

#include <functional>

// Turns SIGTERM, SIGINT and SIGHUP into an orderly quit of the Qt event
// loop, so that a logout or Ctrl+C in a terminal still runs the
// termination path (the balances are written) instead of killing the process.
// beforeQuit runs on the event loop first, so that the termination knows
// nobody may be there to answer a message box. Call once, after the
// QApplication exists.
void quitOnTerminationSignals(std::function<void()> beforeQuit = {});
