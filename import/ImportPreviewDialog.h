#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>
#include <vector>

#include "import/ImportContext.h"

class ImportPlan;
class ImportPreviewModel;
namespace Ui {
class ImportPreviewDialog;
}

// The preview of one statement before anything is written: the layout as
// recognised, the asset it goes to, every row with its status and the
// proposed sub-item or transfer partner. The user ticks and unticks rows
// (Space on the selected rows, or a click on the box), sets a sub-item or a
// partner on the selected rows, on every row of the same text, or on the
// rows still without one (kept as the layout's default), and presses
// 取り込む. The dialog checks the plan first: a file that may not go into
// the asset, nothing ticked, or a ticked row without a sub-item is said in
// a message and the dialog stays. Accepted, the plan is the caller's to write.
class ImportPreviewDialog final : public QDialog {
    Q_OBJECT

public:
    explicit ImportPreviewDialog(QWidget* parent = nullptr);
    ~ImportPreviewDialog() override;

    // The file: its layout's name, the file name and encoding, and its place
    // among the files being imported (1 of 1 says nothing).
    void showFile(const QString& layout, const QString& details, int position, int count);
    // The assets offered, with the chosen one.
    void showSisans(const std::vector<ContextSisan>& sisans, int64_t chosen);
    // Shows a plan (not owned); nullptr while another is being made.
    void showPlan(ImportPlan* plan);

signals:
    // The user chose another asset: the caller makes the plan for it.
    void sisanChosen(int64_t sisanId);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::unique_ptr<Ui::ImportPreviewDialog> ui;
    ImportPreviewModel* model = nullptr;

    void layOutColumns();
    void tryAccept();
    void toggleSelected();
    void applyToRows(const std::vector<size_t>& rows);
    void applyToSameText();
    void applyAsDefault();
    void refreshHimokuCombo();
    void refreshSummary();
    int currentRow() const;
    std::vector<size_t> selectedRows() const;
    void say(const QString& message);
};
