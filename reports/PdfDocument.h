#pragma once

#include <memory>
#include <string>
#include <vector>

#include "reports/ReportPage.h"

// A PDF document made of report pages, each drawn when the document is
// rendered, with cairo and Pango in the faces of ReportFonts.h (embedded as
// subsets).
class PdfDocument {
public:
    // Inserts the page at index (at the end when index is past it).
    void insertPage(std::unique_ptr<ReportPage> page, size_t index);
    size_t pageCount() const { return pages.size(); }

    // The PDF bytes; false with a description in *error when the fonts are
    // missing or cairo fails.
    bool render(std::string& pdf, std::string* error) const;
    // Renders and writes the file atomically (AtomicFile.h), replacing an
    // existing one; false with a description in *error and, when writing
    // failed, the system's error number in *errorNumber (0 otherwise).
    bool writeToFile(const std::string& path, std::string* error, int* errorNumber = nullptr) const;

private:
    std::vector<std::unique_ptr<ReportPage>> pages;
};
