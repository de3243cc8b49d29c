#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "import/CsvRecords.h"
#include "import/ImportProfile.h"

class QComboBox;
namespace Ui {
class ImportMappingDialog;
}

// The mapping step for a file no layout reads: the first lines of the file
// as a table, and which line holds the headings, which columns hold the
// date (and its shape), the text, and the amount (one signed column, or in
// and out), a note, and the name the layout is kept under. Accepted only
// when the mapping is complete; the caller keeps it and reads the file with it.
class ImportMappingDialog final : public QDialog {
    Q_OBJECT

public:
    // `message` says why the file needs it; `records` are its first records.
    ImportMappingDialog(const QString& message, std::vector<CsvRecord> records, QWidget* parent = nullptr);
    ~ImportMappingDialog() override;

    UserMapping mapping() const;

private:
    std::unique_ptr<Ui::ImportMappingDialog> ui;
    std::vector<CsvRecord> records;
    int columns = 0;

    void showHeadings();
    void guessColumns();
    void showAmountShape();
    void tryAccept();
    const CsvRecord* headerRecord() const;
    static int chosenColumn(const QComboBox* combo);
};
