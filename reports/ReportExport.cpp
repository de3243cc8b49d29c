#include "reports/ReportExport.h"

#include <iostream>

#include "reports/AtomicFile.h"
#include "reports/PdfDocument.h"
#include "ui/Clock.h"
#include "ui/SaveFileService.h"

std::string reportDateStamp()
{
    return dateStamp(currentDateTime().date()).toStdString();
}

void saveReportCsv(const std::string& csv, const QString& baseName, const std::string& failureLine)
{
    const QString path = savePathWithExtension({QStringLiteral("csv"), QStringLiteral("CSV")}, baseName + QStringLiteral(".csv"));
    if (path.isEmpty()) return;
    std::string error;
    int errorNumber = 0;
    if (writeFileAtomically(path.toStdString(), csv, &error, &errorNumber)) return;
    std::cout << failureLine << error << std::endl;
    tellSaveFailed(path, errorNumber, QString::fromStdString(error));
}

void saveReportPdf(const PdfDocument& document, const QString& baseName)
{
    const QString path = savePathWithExtension({QStringLiteral("pdf"), QStringLiteral("PDF")}, baseName + QStringLiteral(".pdf"));
    if (path.isEmpty()) return;
    std::string error;
    int errorNumber = 0;
    if (document.writeToFile(path.toStdString(), &error, &errorNumber)) return;
    std::cerr << "report pdf write error: " << error << std::endl;
    tellSaveFailed(path, errorNumber, QString::fromStdString(error));
}
