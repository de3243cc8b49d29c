// The strict readers of one cell: dates, amounts, and the matching key of a description.
#include <gtest/gtest.h>

#include "import/MatchingText.h"
#include "import/StatementAmount.h"
#include "import/StatementDate.h"

namespace {

std::string dateOf(const std::string& text, unsigned shapes = DateShape::Any)
{
    const DateReading r = readStatementDate(text, shapes);
    return r.date.isNull() ? r.reason : r.date.hizuke();
}

std::string amountOf(const std::string& text)
{
    const AmountReading r = readStatementAmount(text);
    switch (r.kind) {
    case AmountReading::Kind::Empty: return "empty";
    case AmountReading::Kind::Value: return std::to_string(r.value);
    case AmountReading::Kind::Error: return r.reason;
    }
    return {};
}

}  // namespace

TEST(Parsers, DatesInEveryShapeTheFilesUseAndNeverAGuess)
{
    for (const auto& [text, date] : std::vector<std::pair<std::string, std::string>>{
             {"2026/7/2", "2026-07-02"}, {"2026/07/02", "2026-07-02"}, {"20260702", "2026-07-02"},
             {"2026.07.02", "2026-07-02"}, {"2026-07-02", "2026-07-02"}, {"2026年7月2日", "2026-07-02"},
             {" 2026/05/21", "2026-05-21"}, {"\u30002026/05/21\u3000", "2026-05-21"},
             {"2025/02/11 19:24:02", "2025-02-11"}, {"2026/10/5 18:22", "2026-10-05"},
             {"２０２６／０７／０２", "2026-07-02"}, {"2024/02/29", "2024-02-29"},
             // Japanese eras, with 元年 and across the change of 2019-04-30 / 05-01.
             {"R8.1.5", "2026-01-05"}, {"H31.04.30", "2019-04-30"}, {"R01.05.01", "2019-05-01"}, {"R元.5.1", "2019-05-01"},
             {"h26.01.25", "2014-01-25"}, {"令和 08 年 02 月 06 日", "2026-02-06"}, {"平成元年1月8日", "1989-01-08"},
             {"H31.05.07", "2019-05-07"},  // the old era printed after the change, within its last year
             // Refused, with the text in the reason.
             {"2026/02/30", "「2026/02/30」は存在しない日付です"}, {"2025/02/29", "「2025/02/29」は存在しない日付です"},
             {"2026/13/01", "「2026/13/01」は存在しない日付です"}, {"R01.04.30", "「R01.04.30」は元号の始まる前の日付です"},
             {"H32.01.01", "「H32.01.01」は元号の終わった後の日付です"}, {"S64.01.08", "1989-01-08"},
             {"'22/08", "「'22/08」は日付として読めません"}, {"07/16(火)", "「07/16(火)」は日付として読めません"},
             {"2026/7/2/1", "「2026/7/2/1」は日付として読めません"}, {"2026/07-02", "「2026/07-02」は日付として読めません"},
             {"", "日付がありません"}}) {
        EXPECT_EQ(dateOf(text), date) << text;
    }
    // A profile's shapes bound what is read: a bank writing 2026.09.01 does not write 20260901.
    EXPECT_EQ(dateOf("20260901", DateShape::Slashed), "「20260901」は日付として読めません");
    EXPECT_EQ(dateOf("R8.1.5", DateShape::Slashed | DateShape::Compact), "「R8.1.5」は日付として読めません");
}

TEST(Parsers, AmountsAreWholeYenInEveryWritingAndAnythingElseIsRefusedNotZero)
{
    for (const auto& [text, amount] : std::vector<std::pair<std::string, std::string>>{
             {"1200", "1200"}, {"1,200", "1200"}, {"15,700,000", "15700000"}, {"-1100", "-1100"}, {"−8570", "-8570"},
             {"－8,570", "-8570"}, {"+500", "500"}, {"0000192265", "192265"}, {"１，２００", "1200"}, {"￥1,200", "1200"},
             {"\\1200", "1200"}, {"¥ 1,200", "1200"}, {"1200円", "1200"}, {" 920 ", "920"}, {"1200.00", "1200"},
             {"2147483647", "2147483647"}, {"-2147483648", "-2147483648"},
             {"", "empty"}, {"  ", "empty"}, {"-", "empty"}, {"－", "empty"}, {"−", "empty"},
             {"12.50", "「12.50」は円未満の端数がある金額です"}, {"1,2x0", "「1,2x0」は金額として読めません"},
             {"1,20", "「1,20」は金額として読めません"}, {"12,00,000", "「12,00,000」は金額として読めません"},
             {"--5", "「--5」は金額として読めません"}, {"1e5", "「1e5」は金額として読めません"},
             {"2147483648", "「2147483648」は大きすぎる金額です"}, {"99999999999999999999", "「99999999999999999999」は大きすぎる金額です"},
             {"10.00　USD", "「10.00　USD」は金額として読めません"}}) {
        EXPECT_EQ(amountOf(text), amount) << text;
    }
}

TEST(Parsers, MatchingKeysMeetAcrossKatakanaWidthsLongVowelsSmallKanaAndBankMarks)
{
    const std::string familyMart = matchingKey("ファミリーマート");
    for (const char* text : {"ﾌｱﾐﾘ-ﾏ-ﾄ", "ﾌｧﾐﾘｰﾏｰﾄ", "ファミリ－マ－ト", "ファミリ−マ−ト", "ファミリ-マ-ト", "V123456　ファミリーマート",
                             "ファミリーマート／ｉＤ", "ﾌｱﾐﾘ-ﾏ-ﾄ/ID", "デビット１ １２３４５６　ファミリーマート", "ファミリー マート"})
        EXPECT_EQ(matchingKey(text), familyMart) << text;
    EXPECT_EQ(familyMart, "フアミリーマート");
    EXPECT_EQ(matchingKey("ＡＭＡＺＯＮ．ＣＯ．ＪＰ"), "AMAZON.CO.JP");
    EXPECT_EQ(matchingKey("Amazon.co.jp"), "AMAZON.CO.JP");
    EXPECT_EQ(matchingKey("振込＊タカハシ　ユウキ"), "タカハシユウキ");
    EXPECT_EQ(matchingKey("ｶ)ｻﾝﾌﾟﾙｼﾖｳｼﾞ"), "サンプルシヨウジ");
    // A dash between digits stays a dash; a description that is only a mark keeps it.
    EXPECT_EQ(matchingKey("4980-11"), "4980-11");
    EXPECT_EQ(matchingKey("デビット　123456"), "デビツト123456");

    EXPECT_TRUE(keysAreSimilar(matchingKey("ｾﾌﾞﾝｲﾚﾌﾞﾝ ｼﾌﾞﾔ"), matchingKey("セブン－イレブン渋谷店")));
    EXPECT_TRUE(keysAreSimilar("AMAZON.CO.JP", "AMAZONMARKETPLACE.CO.JP"));
    EXPECT_FALSE(keysAreSimilar(matchingKey("ローソン"), matchingKey("ファミリーマート")));
    EXPECT_FALSE(keysAreSimilar("", "ローソン"));
}
