// Never twice, never lost: rows already in the book, near matches left to the
// user, identical genuine rows kept apart, and money between own assets paired.
#include <gtest/gtest.h>

#include <sstream>

#include "import/DuplicateKeys.h"
#include "import/Matching.h"
#include "tests/import/ImportSamples.h"

namespace {

constexpr int64_t kAsset = 1;

// The entry rows of a statement as the book would hold them after importing.
std::vector<BookEntry> imported(const StatementFile& s, int64_t firstId = 100)
{
    std::vector<BookEntry> book;
    for (const StatementRow& r : s.rows) {
        if (r.kind != RowKind::Entry) continue;
        book.push_back({firstId++, kAsset, r.date, r.kingaku, std::string(s.text(r.text)), idKey(r, s.pool),
                        contentKey(r, s.pool), false});
    }
    return book;
}

BookEntry typed(int64_t id, int64_t sisan, ImportDate date, int64_t kingaku, std::string text, bool transfer = false)
{
    return {id, sisan, date, kingaku, std::move(text), {}, {}, transfer};
}

// "line status entry partner" for every row.
std::vector<std::string> statuses(const StatementFile& s, const std::vector<RowMatch>& matches)
{
    std::vector<std::string> out;
    for (size_t i = 0; i < matches.size(); ++i) {
        static const char* names[] = {"新規", "取込済み", "重複の可能性", "振替候補", "読めない行", "skip"};
        std::string line = std::to_string(s.rows[i].line) + " " + names[static_cast<int>(matches[i].status)];
        if (matches[i].entryId) line += " " + std::to_string(matches[i].entryId);
        if (matches[i].partnerSisanId) line += " @" + std::to_string(matches[i].partnerSisanId);
        out.push_back(line);
    }
    return out;
}

StatementReading readOrFail(const std::string& name)
{
    StatementReading r = readSample(name);
    EXPECT_TRUE(r.ok()) << name;
    return r;
}

using Lines = std::vector<std::string>;

}  // namespace

TEST(Matching, OverlappingStatementsAddOnlyWhatIsNewAndInstallmentsComeOnce)
{
    const StatementReading october = readOrFail("rakuten_card_202610.csv");
    const std::vector<BookEntry> book = imported(october.statement);
    // The same file again: every row is in the book, both identical charges included.
    EXPECT_EQ(statuses(october.statement, matchStatement(october.statement, book, {})),
              (Lines{"2 取込済み 100", "3 取込済み 101", "4 取込済み 102", "5 取込済み 103", "6 取込済み 104",
                     "7 取込済み 105", "8 skip"}));

    // November repeats the revolving and installment purchases at their full
    // amount (blank new-row sign) and brings a late September posting.
    const StatementReading november = readOrFail("rakuten_card_202611.csv");
    EXPECT_EQ(statuses(november.statement, matchStatement(november.statement, book, {})),
              (Lines{"2 取込済み 100", "3 取込済み 102", "4 新規", "5 振替候補"}));
}

TEST(Matching, IdsSurviveASpreadsheetResaveAndTwoIdsAreTwoRowsWhateverTheirContent)
{
    // ゆうちょ after Excel: leading zeros of the ids dropped, a trailing comma on every line.
    const StatementReading yucho = readOrFail("yucho.csv");
    const StatementReading resaved = readOrFail("yucho_resaved.csv");
    EXPECT_EQ(statuses(resaved.statement, matchStatement(resaved.statement, imported(yucho.statement), {})),
              (Lines{"8 取込済み 100", "9 取込済み 101", "10 取込済み 102"}));

    // PayPay ids turned into 4.63963E+18 by a spreadsheet: the content key still finds the row.
    const std::string header =
        "取引日,出金金額（円）,入金金額（円）,海外出金金額,通貨,変換レート（円）,利用国,取引内容,取引先,取引方法,支払い区分,利用者,取引番号\n";
    auto paypay = [&](const std::string& id) {
        std::istringstream in(header + "2025/02/07 08:00:00,\"3,600\",-,-,-,-,-,支払い,近鉄百貨店,PayPay残高,-,-," + id + "\n");
        const std::string bytes = in.str();
        return readStatementStream(in, bytes.size(), "paypay.csv");
    };
    const StatementReading original = paypay("04637000000000000002");
    const StatementReading mangled = paypay("4.637E+18");
    EXPECT_EQ(statuses(mangled.statement, matchStatement(mangled.statement, imported(original.statement), {})),
              (Lines{"2 取込済み 100"}));

    // みずほ: two rows alike in all but their 明細通番; the book holds only the first.
    const StatementReading mizuho = readOrFail("mizuho.csv");
    std::vector<BookEntry> book = imported(mizuho.statement);
    book.erase(book.begin() + 3);
    EXPECT_EQ(statuses(mizuho.statement, matchStatement(mizuho.statement, book, {})),
              (Lines{"14 取込済み 100", "15 取込済み 101", "16 取込済み 102", "17 新規", "18 skip"}));
}

TEST(Matching, GenuineIdenticalRowsStayTwoAndNearMatchesAreOfferedNotDecided)
{
    const StatementReading zaim = readOrFail("zaim.csv");
    std::vector<BookEntry> book = imported(zaim.statement);
    book.erase(book.begin() + 2);  // the second ヨーグルト of the day was never imported
    book.erase(book.begin() + 3);  // nor the transfer
    EXPECT_EQ(statuses(zaim.statement, matchStatement(zaim.statement, book, {})),
              (Lines{"2 取込済み 100", "3 取込済み 101", "4 新規", "5 取込済み 103", "6 振替候補", "7 skip"}));

    // A card statement against entries typed by hand and an entry imported
    // from another source: same amount within three days is a near match when
    // the text is alike or says nothing (typed by hand); four days is not.
    const StatementReading jcb = readOrFail("jcb.csv");
    const std::vector<BookEntry> other{
        typed(1, kAsset, ImportDate(2026, 5, 23), -920, "夕食"),                 // typed, 2 days later
        typed(2, kAsset, ImportDate(2026, 5, 29), -30000, "家電"),               // typed, 4 days later
        {3, kAsset, ImportDate(2026, 6, 4), -1225, "書店Ｃ　渋谷", "", "x#1", false},  // imported elsewhere, alike
        {4, kAsset, ImportDate(2026, 6, 2), -5000, "コンビニ", "", "y#1", false},  // imported elsewhere, unlike
    };
    EXPECT_EQ(statuses(jcb.statement, matchStatement(jcb.statement, other, {})),
              (Lines{"7 重複の可能性 1", "8 新規", "9 振替候補", "10 重複の可能性 3"}));

    // Refused rows are shown as unreadable, never dropped.
    const StatementReading bad = readOrFail("bad_rows.csv");
    EXPECT_EQ(statuses(bad.statement, matchStatement(bad.statement, {}, {})),
              (Lines{"2 新規", "3 読めない行", "4 読めない行", "5 読めない行", "6 読めない行", "7 新規"}));
}

TEST(Matching, MoneyBetweenOwnAssetsPairsWithTheOtherSideOrIsFlagged)
{
    constexpr int64_t kCard = 2, kCash = 3;
    const StatementReading mufg = readOrFail("mufg_eco.csv");
    // The card's settlement is in the card's book as money in on the 10th; the
    // ATM withdrawal's other side is not in the book yet.
    const std::vector<BookEntry> others{
        typed(7, kCard, ImportDate(2026, 7, 11), 35710, "口座振替"),
        typed(8, kCash, ImportDate(2026, 7, 30), 10000, "引き出し"),  // too late to be the same withdrawal
        typed(9, kCard, ImportDate(2026, 7, 10), 35710, "振替", true),  // already a transfer: never paired again
    };
    EXPECT_EQ(statuses(mufg.statement, matchStatement(mufg.statement, {}, others)),
              (Lines{"2 新規", "3 新規", "4 新規", "5 振替候補 7 @2", "6 振替候補", "7 新規"}));

    // The PayPay charge was imported first as a transfer from the bank: the
    // bank's own row of it is already in the book.
    const StatementReading smbc = readOrFail("smbc_meta_bom.csv");
    const std::vector<BookEntry> bank{typed(20, kAsset, ImportDate(2026, 4, 4), -5000, "PayPay", true)};
    EXPECT_EQ(statuses(smbc.statement, matchStatement(smbc.statement, bank, {})), (Lines{"5 新規", "6 取込済み 20"}));
}
