#include "ui/ModalEditor.h"

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
