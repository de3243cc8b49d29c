#pragma once

#include <functional>

class QKeyEvent;
class QWidget;

// The keys of a box of inputs (an editor's editing box, the main window's
// entry panel) and of the windows that hold them.

// Enter or Return without modifiers (the keypad's Enter included).
bool isEnterKey(const QKeyEvent& key);

// Enter on a focused push button presses that button: true when key is
// Enter and the focused widget is an enabled push button, which is then
// clicked.
bool pressFocusedButton(const QKeyEvent& key);

// Enter that reaches the box runs `execute` (or presses the box's focused
// button), Escape runs `cancel`. Keys reach the box only when its focused
// field lets them pass: an open pop-up list or calendar is a window of its
// own and keeps Enter and Escape to itself.
void bindBoxKeys(QWidget* box, std::function<void()> execute, std::function<void()> cancel);
