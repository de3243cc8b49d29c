#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <set>

class DataModel;
class QWidget;
struct StepFocus;

// Ctrl+Z, and Ctrl+Shift+Z or Ctrl+Y, inside a modal editor: undo and redo
// the steps made in this editor, newest first, never a step of the main
// window from before it opened (the editor does not show those). While a
// text field has the focus the keys undo its typing instead, as everywhere.
class EditorUndo final : public QObject {
public:
    // `shown` runs after an undo or a redo that changed the book, to show
    // its result in the editor.
    EditorUndo(DataModel& dm, QWidget* editor, std::function<void(const StepFocus&)> shown);

    // The store's newest step is the editor's: call after each operation
    // that succeeded.
    void stepMade();
    void undo();
    void redo();

private:
    DataModel& DM;
    std::function<void(const StepFocus&)> shown;
    std::set<int64_t> steps;  // history Ids of the steps made here
};
