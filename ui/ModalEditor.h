#pragma once

#include <QDialog>

// What a modal editor reports to the window that opened it when it goes
// away: whether it changed the assets or the categories.
class EditorDelegate {
public:
    virtual void sisanKoumokuChanged(bool changed) = 0;
    virtual void himokuKoumokuChanged(bool changed) = 0;

protected:
    ~EditorDelegate() = default;
};

// Base of the modal editors: a dialog without a close button that Escape
// does not close; only the editor's own close action ends it. When it ends,
// viewWillDisappear runs exactly once, to tell the delegate.
class ModalEditor : public QDialog {
    Q_OBJECT

public:
    explicit ModalEditor(QWidget* parent = nullptr);

    EditorDelegate* delegate = nullptr;  // set by the opening window before exec()

    void done(int result) override;
    void reject() override {}  // Escape and the window manager do not close it

protected:
    virtual void viewWillDisappear() = 0;
    // Enter on a focused button presses that button.
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool disappeared = false;
};
