#include "editors/EditorUndo.h"

#include <QKeySequence>
#include <QShortcut>
#include <QWidget>

#include "store/DataModel.h"

EditorUndo::EditorUndo(DataModel& dm, QWidget* editor, std::function<void(const StepFocus&)> shown)
    : QObject(editor), DM(dm), shown(std::move(shown))
{
    const auto bind = [editor, this](const char* keys, void (EditorUndo::*action)()) {
        auto* shortcut = new QShortcut(QKeySequence(QString::fromLatin1(keys)), editor);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    bind("Ctrl+Z", &EditorUndo::undo);
    bind("Ctrl+Shift+Z", &EditorUndo::redo);
    bind("Ctrl+Y", &EditorUndo::redo);
}

void EditorUndo::stepMade()
{
    if (const HistoryEntry* step = DM.undoTarget()) steps.insert(step->Id);
}

void EditorUndo::undo()
{
    const HistoryEntry* step = DM.undoTarget();
    if (!step || !steps.count(step->Id)) return;
    StepFocus focus;
    if (DM.undo(&focus)) shown(focus);
}

void EditorUndo::redo()
{
    const HistoryEntry* step = DM.redoTarget();
    if (!step || !steps.count(step->Id)) return;
    StepFocus focus;
    if (DM.redo(&focus)) shown(focus);
}
