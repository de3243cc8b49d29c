#include "ui/ModalEditor.h"

#include <QKeyEvent>

#include "ui/BoxKeys.h"

ModalEditor::ModalEditor(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setModal(true);
}

void ModalEditor::done(int result)
{
    QDialog::done(result);
    if (disappeared) return;
    disappeared = true;
    viewWillDisappear();
}

void ModalEditor::keyPressEvent(QKeyEvent* event)
{
    if (!pressFocusedButton(*event)) QDialog::keyPressEvent(event);
}
