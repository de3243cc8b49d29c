#pragma once

#include <functional>

// Turns SIGTERM, SIGINT and SIGHUP into a call of `end` on the event loop
// (every time one arrives), so that a logout or Ctrl+C in a terminal ends
// the program in order (the balances are written) instead of killing it.
// The handler itself only writes a byte to a socket the event loop reads.
// Call once, after the QApplication exists.
void quitOnTerminationSignals(std::function<void()> end);
