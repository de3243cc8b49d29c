#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "reports/AtomicFile.h"
#include "reports/ReportCsv.h"
#include "reports/YosanReport.h"
#include "tests/reports/ReportExamples.h"
#include "tests/store/StoreFixture.h"

namespace {

const std::string kStamp = "2019年01月15日";
const std::string kAnnualHeading = "名 称 ,1月,2月,3月,4月,5月,6月,7月,8月,9月,10月,11月,12月, 金　額 \n";

class ReportCsvTest : public StoreFixture {
protected:
    std::string annualCsv(const std::string& nen)
    {
        DataModel& dm = open();
        EXPECT_TRUE(dm.annualInOutFromItemsTable(nen));
        return annualReportCsv(nen, kStamp, dm);
    }
};

}  // namespace

TEST_F(ReportCsvTest, TheAnnualExampleComesOutByteForByteAndNegativeCellsAndCommasArePlain)
{
    const int64_t asset = addSisan("現金", 0, 0);
    const int64_t kyuuyo = addCategory(2, "給与");
    const int64_t food = addCategory(1, "食費,外食");
    addEntry(asset, "2019-01-25", 2, kyuuyo + 1, 300000);
    EXPECT_EQ(annualCsv("2019"), kAnnualExample);

    addEntry(asset, "2018-03-01", 2, kyuuyo + 1, 1000);
    addEntry(asset, "2018-03-02", 1, food + 1, 1234567);
    EXPECT_EQ(annualCsv("2018"), "2018 年度 ,\u30002019年01月15日\n" + kAnnualHeading +
                                     "給与/その他,0,0,1000,0,0,0,0,0,0,0,0,0,1000 \n"
                                     "収　入　計,0,0,1000,0,0,0,0,0,0,0,0,0,1000 \n"
                                     "食費,外食/その他,0,0,1234567,0,0,0,0,0,0,0,0,0,1234567 \n"
                                     "支　出　計,0,0,1234567,0,0,0,0,0,0,0,0,0,1234567 \n"
                                     "差　引　合　計,0,0,-1233567,0,0,0,0,0,0,0,0,0,-1233567 \n");
}

TEST_F(ReportCsvTest, TheAssetExampleAndAnEmptyBookComeOutByteForByte)
{
    EXPECT_EQ(sisanReportCsv(open(), kStamp), "資産レポート ,\u30002019年01月15日\n名 称 , 金　額 \n合計 , 0 \n");
    addSisan("現金", 12000, 12000);
    addSisan("普通預金", -3000, -3000);
    EXPECT_EQ(sisanReportCsv(open(), kStamp), kSisanExample);
}

TEST_F(ReportCsvTest, AnAtomicWriteReplacesAFileOrLeavesEverythingAsItWas)
{
    const std::string file = dir + "/report.csv";
    std::ofstream(file) << "old content that is longer than the new one";
    std::string error;
    ASSERT_TRUE(writeFileAtomically(file, "new\n", &error)) << error;
    EXPECT_EQ(contentOf(file), "new\n");

    // A folder in the way cannot be replaced: it stays, and no temporary file is left.
    const std::string folder = dir + "/taken";
    std::filesystem::create_directories(folder + "/inside");
    EXPECT_FALSE(writeFileAtomically(folder, "x", &error));
    EXPECT_NE(error.find("cannot replace " + folder), std::string::npos) << error;
    EXPECT_TRUE(std::filesystem::is_directory(folder + "/inside"));
    EXPECT_FALSE(writeFileAtomically(dir + "/missing/report.csv", "x", &error));
    EXPECT_NE(error.find("No such file or directory"), std::string::npos) << error;
    size_t entries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) entries += entry.path().filename() != "Zenvora.sql";
    EXPECT_EQ(entries, 2u);  // report.csv and the folder
}

// The budget report's CSV: the period and date stamp, the heading, then
// every row with plain figures; a row without a budget leaves its budget,
// difference and share empty.
TEST(YosanReportCsvTest, RowsComeOutPlainWithEmptyCellsWithoutABudget)
{
    const std::vector<YosanRow> rows{{1, "食費", YosanRow::Level::Category, 40000, 32000},
                                     {3, "食費/外食", YosanRow::Level::SubItem, 10000, 12345},
                                     {6, "住居費", YosanRow::Level::Category, std::nullopt, 0},
                                     {kYosanTotal, "合\u3000計", YosanRow::Level::Total, 0, 44345}};
    EXPECT_EQ(yosanReportCsv("2026年12月分（11月25日〜12月24日）", kStamp, rows),
              "予算と実績 2026年12月分（11月25日〜12月24日） ,\u30002019年01月15日\n"
              "費 目 , 予\u3000算 , 実\u3000績 , 差\u3000額 , 使用率 \n"
              "食費,40000,32000,8000,80.0% \n"
              "食費/外食,10000,12345,-2345,123.5% \n"
              "住居費,,0,, \n"
              "合\u3000計,0,44345,-44345, \n");
}
