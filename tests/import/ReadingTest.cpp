// From the bytes of a file to records: encodings, CSV syntax, and the files
// that are refused before any row is read, each with a message naming the file.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "import/CsvRecords.h"
#include "tests/import/ImportSamples.h"

namespace {

using Lines = std::vector<std::string>;

const std::string kRakutenHeader =
    "\"利用日\",\"利用店名・商品名\",\"利用者\",\"支払方法\",\"利用金額\",\"支払手数料\",\"支払総額\",\"10月支払金額\","
    "\"11月繰越残高\",\"新規サイン\"";

StatementReading readBytes(const std::string& bytes, const ReadOptions& options = {})
{
    std::istringstream in(bytes);
    return readStatementStream(in, bytes.size(), "明細.csv", options);
}

RefusalReason refusalOf(const std::string& bytes)
{
    const StatementReading r = readBytes(bytes);
    EXPECT_FALSE(r.ok());
    return r.refusal ? r.refusal->reason : RefusalReason::CannotOpen;
}

// "line:field|field|..." for every record of a CSV text fed in pieces of `piece` bytes.
Lines records(const std::string& text, size_t piece)
{
    Lines out;
    CsvRecords csv([&](const CsvRecord& r) {
        std::string line = std::to_string(r.line) + ":";
        for (size_t i = 0; i < r.fields.size(); ++i) line += (i ? "|" : "") + r.fields[i];
        out.push_back(line);
    });
    for (size_t at = 0; at < text.size(); at += piece) EXPECT_TRUE(csv.feed(std::string_view(text).substr(at, piece)));
    EXPECT_TRUE(csv.finish());
    return out;
}

}  // namespace

TEST(Reading, CsvSyntaxQuotesLineEndsAndBlankLinesWhateverThePieces)
{
    const std::string text = "a,\"b,c\",\"say \"\"hi\"\"\"\r\n\r\n,,\r\n\"two\nlines\",x\n- , 1\rlast,\"\"";
    const Lines expected{"1:a|b,c|say \"hi\"", "3:||", "4:two\nlines|x", "6:- | 1", "7:last|"};
    EXPECT_EQ(records(text, 1000), expected);
    EXPECT_EQ(records(text, 1), expected);  // a piece may end inside a quote or between CR and LF
}

TEST(Reading, EncodingsAreDetectedStrictlyAndCp932ExtensionsDecode)
{
    const std::string row = "\"2026/09/01\",\"㈱髙島屋　①Ⅲ～－\",\"本人\",\"1回払い\",\"580\",\"0\",\"580\",\"580\",\"0\",\"*\"";
    const std::string utf8 = kRakutenHeader + "\n" + row + "\n";
    StatementReading r = readBytes(utf8);
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(r.statement.encoding, TextEncoding::Utf8);
    EXPECT_EQ(entryLines(r.statement), (Lines{"2026-09-01 -580 ㈱髙島屋　①Ⅲ～－"}));

    // A BOM is no character of the header; a DOS end-of-file mark is no line.
    r = readBytes("\xEF\xBB\xBF" + utf8 + "\x1A");
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(r.statement.encoding, TextEncoding::Utf8Bom);
    EXPECT_EQ(r.statement.rows.size(), 1u);

    // CP932: NEC and IBM extensions, 0x8160 as ～ (U+FF5E) and 0x817C as － (U+FF0D).
    r = readSample("cp932_extensions.csv");
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(r.statement.encoding, TextEncoding::Cp932);
    EXPECT_EQ(entryLines(r.statement), (Lines{"2026-09-01 -580 ㈱髙島屋　①Ⅲ～－﨑"}));

    // A UTF-8 header above a CP932 row is valid in neither encoding.
    const StatementReading mixed = readBytes(kRakutenHeader + "\r\n\"2026/09/01\",\"\x87\x8A\xFB\xFC\",\"580\"\r\n");
    ASSERT_FALSE(mixed.ok());
    EXPECT_EQ(mixed.refusal->reason, RefusalReason::NotDecodable);
    EXPECT_NE(mixed.refusal->message.find("「明細.csv」はUTF-8としてもShift_JISとしても読めません"), std::string::npos);
}

TEST(Reading, FilesThatAreNoStatementAreRefusedBeforeAnyRowWithAMessageNamingThem)
{
    EXPECT_EQ(refusalOf(""), RefusalReason::Empty);
    EXPECT_EQ(refusalOf("\r\n\r\n  \n"), RefusalReason::Empty);
    EXPECT_EQ(refusalOf("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n1 0 obj"), RefusalReason::Pdf);
    EXPECT_EQ(refusalOf(std::string("PK\x03\x04\x14\x00\x06\x00", 8) + "[Content_Types].xml"), RefusalReason::Spreadsheet);
    EXPECT_EQ(refusalOf(std::string("\xFF\xFE" "a\0b\0", 6)), RefusalReason::Utf16);
    EXPECT_EQ(refusalOf(std::string("\x7F" "ELF\x02\x01\x01\x00\x00\x00", 10)), RefusalReason::Binary);
    EXPECT_EQ(refusalOf("日付,金額\n2026/09/01,100\n"), RefusalReason::Unrecognised);

    const StatementReading pdf = readBytes("%PDF-1.4\n");
    EXPECT_EQ(pdf.refusal->message, "「明細.csv」はPDFのファイルです。明細はCSV形式でダウンロードしてください。");

    // Unknown layouts keep their first records for the mapping step.
    const StatementReading unknown = readBytes("お取引日,お金,摘要\n2026/09/01,100,店\n");
    ASSERT_EQ(unknown.refusal->firstRecords.size(), 2u);
    EXPECT_EQ(unknown.refusal->firstRecords[0].fields, (Lines{"お取引日", "お金", "摘要"}));

    // A household app's asset history is a statement-shaped file of another kind.
    const StatementReading history = readSample("moneyforward_history.csv");
    ASSERT_FALSE(history.ok());
    EXPECT_EQ(history.refusal->reason, RefusalReason::WrongFile);
    EXPECT_NE(history.refusal->message.find("「moneyforward_history.csv」: マネーフォワード ME の資産推移のファイルです。"),
              std::string::npos);

    const StatementReading missing = readStatementFile(samplePath("no-such-file.csv"));
    EXPECT_EQ(missing.refusal->reason, RefusalReason::CannotOpen);
    EXPECT_NE(missing.refusal->message.find("「no-such-file.csv」を開けません"), std::string::npos);
}

TEST(Reading, GarbledFilesAreRefusedAsBeyondRepairAndShowTheirFirstLines)
{
    // Shift_JIS saved by a UTF-8 editor: every Japanese byte became U+FFFD.
    const StatementReading replaced = readSample("replacement.csv");
    ASSERT_FALSE(replaced.ok());
    EXPECT_EQ(replaced.refusal->reason, RefusalReason::Garbled);
    EXPECT_EQ(replaced.refusal->message,
              "「replacement.csv」は文字化けしています（1行目）。文字化けは元に戻せないため取り込めません。"
              "銀行やカード会社のサイトからもう一度ダウンロードしてください。");
    ASSERT_FALSE(replaced.refusal->firstLines.empty());
    EXPECT_NE(replaced.refusal->firstLines[0].find("\uFFFD"), std::string::npos);

    // A U+FFFD further down names its line.
    const StatementReading late = readBytes(kRakutenHeader + "\n\"2026/09/01\",\"ロ\uFFFDソン\",\"本人\",\"1回払い\",\"580\"\n");
    EXPECT_NE(late.refusal->message.find("（2行目）"), std::string::npos);

    // UTF-8 read as CP932 and saved again: valid CP932, but mojibake.
    const StatementReading doubled = readSample("mojibake.csv");
    ASSERT_FALSE(doubled.ok());
    EXPECT_EQ(doubled.refusal->reason, RefusalReason::Garbled);

    // Question marks where an editor dropped what it could not write.
    EXPECT_EQ(refusalOf("???,?????,????\n2026/09/01,???,580\n"), RefusalReason::Garbled);
}

TEST(Reading, LargeFilesAreRefusedAboveTheLimitAndReadingCanBeCancelled)
{
    ReadOptions small;
    small.sizeLimit = 1 << 20;
    const TempFile big("大きい.csv", std::string((1 << 20) + 1, 'a'));
    const StatementReading tooLarge = readStatementFile(big.path(), small);
    ASSERT_FALSE(tooLarge.ok());
    EXPECT_EQ(tooLarge.refusal->message, "「大きい.csv」は大きすぎるため読み込めません（2 MB。上限は 1 MB です）。");

    std::string text = kRakutenHeader + "\n";
    while (text.size() < (3u << 20)) text += "\"2026/09/01\",\"ローソン\",\"本人\",\"1回払い\",\"580\",\"0\",\"580\",\"580\",\"0\",\"*\"\n";
    ReadOptions cancelling;
    std::vector<uint64_t> seen;
    cancelling.progress = [&](uint64_t done, uint64_t total) {
        EXPECT_EQ(total, text.size());
        seen.push_back(done);
        return seen.size() < 2;
    };
    const StatementReading cancelled = readBytes(text, cancelling);
    ASSERT_FALSE(cancelled.ok());
    EXPECT_EQ(cancelled.refusal->reason, RefusalReason::Cancelled);
    EXPECT_EQ(seen, (std::vector<uint64_t>{1u << 20, 2u << 20}));

    // A file that grows while it is read (a download still being written) is refused.
    const TempFile growing("途中.csv", text);
    ReadOptions appending;
    appending.progress = [&](uint64_t, uint64_t) {
        std::ofstream(growing.path(), std::ios::app) << "\"2026/09/02\",\"ローソン\",\"本人\",\"1回払い\",\"1\"\n";
        return true;
    };
    const StatementReading changed = readStatementFile(growing.path(), appending);
    ASSERT_FALSE(changed.ok());
    EXPECT_EQ(changed.refusal->message,
              "「途中.csv」は読み込み中に書き換えられました。書き込みが終わってからもう一度選んでください。");
}
