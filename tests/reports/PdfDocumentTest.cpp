#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "reports/PageCanvas.h"
#include "reports/PdfDocument.h"

namespace {

// A page that draws a few texts in 10-point "Helvetica".
class TextPage final : public ReportPage {
public:
    struct Item {
        std::string text;
        PageRect rect;
        std::optional<double> rightEdge;
    };
    explicit TextPage(std::vector<Item> items) : items(std::move(items)) {}
    PageSize bounds() const override { return {400, 300}; }
    void draw(PageCanvas& canvas) const override
    {
        for (const Item& item : items) canvas.drawText(item.text, item.rect, {"Helvetica", 10}, item.rightEdge);
    }

private:
    std::vector<Item> items;
};

std::string textOf(const std::string& pdf)
{
    std::string text;
    FILE* out = popen(("pdftotext -raw '" + pdf + "' -").c_str(), "r");
    char buffer[4096];
    for (size_t n; out && (n = fread(buffer, 1, sizeof buffer, out)) > 0;) text.append(buffer, n);
    if (out) pclose(out);
    return text;
}

}  // namespace

TEST(PdfDocumentTest, TextWrapsAtItsRectangleAndLinesBeyondItsHeightAreLeftOut)
{
    const std::string pdf = std::filesystem::temp_directory_path() / "zenvora-pdf-document-test.pdf";
    PdfDocument document;
    document.insertPage(std::make_unique<TextPage>(std::vector<TextPage::Item>{
                            {"あいうえおかきくけこ", {20, 200, 50, 20}, {}},    // 5 to a line, room for one line
                            {"さしすせそたちつてと", {20, 100, 50, 40}, {}},    // room for two lines
                            {"23,456,789", {200, 200, 40, 20}, 300.0},          // an amount stays on one line
                        }),
                        0);
    std::string error;
    ASSERT_TRUE(document.writeToFile(pdf, &error)) << error;
    EXPECT_EQ(textOf(pdf), "あいうえお\nさしすせそ\nたちつてと\n23,456,789\n\f");  // in drawing order
    std::filesystem::remove(pdf);
}
