#pragma once

class QWidget;

// Fits a window that is about to be shown on the available part of the
// screen it will appear on (the screen of its parent, if it has one): it
// shrinks, with room for the title bar and borders the window manager adds,
// and is placed over the middle of its parent, moved as far as it must be to
// lie inside. A window that fits keeps its size; none gets smaller than its
// layout's minimum.
void fitToScreen(QWidget* window);
