#pragma once

// Turns SIGTERM, SIGINT and SIGHUP into an orderly quit of the Qt event
// loop, so that a logout or Ctrl+C in a terminal still runs the
// termination path (the balances are written) instead of killing the process.
// Call once, after the QApplication exists.
void quitOnTerminationSignals();
