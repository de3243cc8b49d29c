#pragma once

#include <QString>
#include <string>

class PdfDocument;

// Today's date stamp from the application's clock ("2019年01月15日").
std::string reportDateStamp();

// Asks where to save a CSV file (types "csv" and "CSV"; a name without an
// extension gets ".csv"), proposing baseName + ".csv" in the report folder,
// and writes the text there atomically, replacing an existing file.
// Cancelling writes nothing. A failed write prints failureLine followed by
// the error's description on standard output and tells the user which file
// could not be saved and why.
void saveReportCsv(const std::string& csv, const QString& baseName, const std::string& failureLine);

// Asks where to save a PDF file (types "pdf" and "PDF"), proposing
// baseName + ".pdf", and writes the document there atomically. Cancelling
// writes nothing; a failure is noted on standard error and told to the user.
void saveReportPdf(const PdfDocument& document, const QString& baseName);
