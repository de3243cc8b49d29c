#include "bench/ReportBench.h"

#include <cairo-pdf.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "bench/Compare.h"
#include "reports/AnnualReportPDFPage.h"
#include "reports/AnnualReportRows.h"
#include "reports/AtomicFile.h"
#include "reports/PdfDocument.h"
#include "reports/RecordingCanvas.h"
#include "reports/ReportCsv.h"
#include "store/DataModel.h"

namespace {

constexpr int kSubItems = 300;
const std::string kYear = "2024";

std::string stamp()
{
    return "2024年12月31日";
}

// 150 income and 150 expense sub-items in 30 categories, with month totals
// that still fit the 10-character amount field.
void fillYear(DataModel& dm)
{
    dm.annualInNameList.clear();
    dm.annualInDataList.clear();
    dm.annualOutNameList.clear();
    dm.annualOutDataList.clear();
    dm.annualTotalDataList.assign(3, std::vector<int64_t>(13, 0));
    for (int i = 0; i < kSubItems; ++i) {
        const bool income = i % 2 == 0;
        std::vector<int64_t> row(13, 0);
        for (int m = 0; m < 12; ++m) row[static_cast<size_t>(m)] = (i * 7919 + m * 104729) % (income ? 60000 : 30000);
        for (int m = 0; m < 12; ++m) row[12] += row[static_cast<size_t>(m)];
        const std::string name = (income ? "収入費目" : "食費・日用品") + std::to_string(i / 10) + "/内訳" + std::to_string(i);
        (income ? dm.annualInNameList : dm.annualOutNameList).push_back(name);
        (income ? dm.annualInDataList : dm.annualOutDataList).push_back(row);
        for (size_t c = 0; c < 13; ++c) dm.annualTotalDataList[income ? 0 : 1][c] += row[c];
    }
    for (size_t c = 0; c < 13; ++c)
        dm.annualTotalDataList[2][c] = dm.annualTotalDataList[0][c] - dm.annualTotalDataList[1][c];
}

void writePdf(const DataModel& dm, const std::string& path)
{
    PdfDocument document;
    size_t index = 0;
    for (auto& page : annualReportPages(kYear, annualReportRows(dm), stamp)) document.insertPage(std::move(page), index++);
    std::string error;
    if (!document.writeToFile(path, &error)) std::fprintf(stderr, "annual pdf: %s\n", error.c_str());
}

// What the pages draw, recorded once: the floor draws the same.
std::vector<RecordingCanvas> recordPages(const DataModel& dm)
{
    std::vector<RecordingCanvas> recorded;
    for (const auto& page : annualReportPages(kYear, annualReportRows(dm), stamp)) page->draw(recorded.emplace_back());
    return recorded;
}

// The floor of the PDF: plain cairo, one font, each string shown at its
// rectangle's top-left without layout.
void writeFloorPdf(const std::vector<RecordingCanvas>& pages, const std::string& path)
{
    cairo_surface_t* surface = cairo_pdf_surface_create(path.c_str(), 842, 595);
    cairo_t* cr = cairo_create(surface);
    cairo_select_font_face(cr, "Noto Sans CJK JP", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    for (const RecordingCanvas& page : pages) {
        for (const auto& line : page.lines) {
            cairo_set_source_rgb(cr, line.grey, line.grey, line.grey);
            cairo_move_to(cr, line.from.x, 595 - line.from.y);
            cairo_line_to(cr, line.to.x, 595 - line.to.y);
            cairo_set_line_width(cr, line.width);
            cairo_stroke(cr);
        }
        cairo_set_source_rgb(cr, 0, 0, 0);
        for (const auto& text : page.texts) {
            cairo_set_font_size(cr, text.font.size);
            cairo_move_to(cr, text.rect.x, 595 - text.rect.y - text.rect.h + text.font.size);
            cairo_show_text(cr, text.text.c_str());
        }
        cairo_show_page(cr);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

// The floor of the CSV: the same bytes, written as the store writes them,
// through a new temporary file beside the target that is renamed over it.
void writeFloorCsv(const std::string& bytes, const std::string& path)
{
    const std::string temporary = path + ".tmp";
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    const bool written = fd >= 0 && ::write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (fd < 0 || ::close(fd) != 0 || !written || std::rename(temporary.c_str(), path.c_str()) != 0) {
        std::fprintf(stderr, "floor csv write failed\n");
        ::unlink(temporary.c_str());
    }
}

}  // namespace

void benchReports(DataModel& dm, const std::string& dir, int runs)
{
    fillYear(dm);
    const int reportRuns = std::max(runs, 9);  // short operations: more turns for a steady median
    const auto recorded = recordPages(dm);
    compare("annual_pdf_300", reportRuns, [&](int) { writePdf(dm, dir + "/annual.pdf"); },
            [&](int) { writeFloorPdf(recorded, dir + "/annual-floor.pdf"); });

    const std::string floorBytes = annualReportCsv(kYear, stamp(), dm);
    compare("annual_csv_300", reportRuns * 5,
            [&](int) {
                std::string error;
                if (!writeFileAtomically(dir + "/annual.csv", annualReportCsv(kYear, stamp(), dm), &error))
                    std::fprintf(stderr, "annual csv: %s\n", error.c_str());
            },
            [&](int) { writeFloorCsv(floorBytes, dir + "/annual-floor.csv"); });
}
