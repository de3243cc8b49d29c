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

void saveReportCsv(const std::string& csv, const std::string& failureLine)
{
    const QString path = savePathWithExtension({QStringLiteral("csv"), QStringLiteral("CSV")});
    if (path.isEmpty()) return;
    std::string error;
    if (!writeFileAtomically(path.toStdString(), csv, &error)) std::cout << failureLine << error << std::endl;
}

void saveReportPdf(const PdfDocument& document)
{
    const QString path = savePathWithExtension({QStringLiteral("pdf"), QStringLiteral("PDF")});
    if (path.isEmpty()) return;
    std::string error;
    if (!document.writeToFile(path.toStdString(), &error)) std::cerr << "report pdf write error: " << error << std::endl;
}
