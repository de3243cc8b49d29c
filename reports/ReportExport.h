#pragma once

#include <string>

class PdfDocument;

// Today's date stamp from the application's clock ("2019年01月15日").
std::string reportDateStamp();

// Asks where to save a CSV file (types "csv" and "CSV"; a name without an
// extension gets ".csv") and writes the text there atomically, replacing an
// existing file. Cancelling writes nothing. A failed write prints
// failureLine followed by the error's description on standard output.
void saveReportCsv(const std::string& csv, const std::string& failureLine);

// Asks where to save a PDF file (types "pdf" and "PDF") and writes the
// document there atomically. Cancelling writes nothing; a failed write is
// noted on standard error only.
void saveReportPdf(const PdfDocument& document);
