// Every built-in layout read from a sample written as the bank, card or app
// writes it: which rows become entries with which signed amounts, dates and
// texts, what the file states about itself, and which rows are money moving
// between the household's own assets.
#include <gtest/gtest.h>

#include "import/Matching.h"
#include "tests/import/ImportSamples.h"

namespace {

using Lines = std::vector<std::string>;

const StatementFile& read(const std::string& name, StatementReading& holder)
{
    holder = readSample(name);
    EXPECT_TRUE(holder.ok()) << name << ": " << (holder.refusal ? holder.refusal->message : "");
    return holder.statement;
}

// "line hint partner" for every row with a transfer hint.
Lines transferLines(const StatementFile& s)
{
    Lines out;
    for (const StatementRow& r : s.rows)
        if (r.kind == RowKind::Entry && r.transfer != TransferHint::None)
            out.push_back(std::to_string(r.line) + " " + std::to_string(static_cast<int>(r.transfer)) + " " +
                          std::string(s.text(r.partner)));
    return out;
}

std::string hint(TransferHint h)
{
    return std::to_string(static_cast<int>(h));
}

}  // namespace

TEST(Layouts, BanksReadTheirOwnColumnsSignsAndDateShapes)
{
    StatementReading h;
    const StatementFile& mufg = read("mufg_eco.csv", h);
    EXPECT_EQ(mufg.layout.profile.id, "mufg");
    EXPECT_EQ(mufg.encoding, TextEncoding::Cp932);
    EXPECT_EQ(mufg.displayName, "三菱UFJ銀行 入出金明細 (2026年7月)");
    EXPECT_EQ(entryLines(mufg), (Lines{"2026-07-01 250000 給料 ｶ)ｻﾝﾌﾟﾙｼﾖｳｼﾞ",
                                       "2026-07-02 -1200 デビット１ １２３４５６　ＴＥＳＴ　ＳＨＯＰ",
                                       "2026-07-03 -5500 デビット１ ２３４５６７　㈱髙島屋",
                                       "2026-07-10 -35710 口座振替 ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ", "2026-07-15 -10000 カード",
                                       "2026-07-20 3000 振込 タナカ　ハナコ"}));
    EXPECT_EQ(mufg.text(mufg.rows[1].matchKey), "TESTSHOP");
    EXPECT_EQ(transferLines(mufg), (Lines{"5 " + hint(TransferHint::CardSettlement) + " 三井住友カード",
                                          "6 " + hint(TransferHint::CashWithdrawal) + " 現金"}));

    // Header on line 1, no final line end, half-width katakana, V-prefixed debit rows.
    const StatementFile& smbc = read("smbc.csv", h);
    EXPECT_EQ(smbc.layout.profile.id, "smbc");
    EXPECT_EQ(entryLines(smbc), (Lines{"2026-04-02 -1480 V907163　券売機（東日本高速道路）／ｉＤ",
                                       "2026-04-24 359562 給料振込　ｹ-ﾃﾞｲ-ﾃﾞｲ-ｱｲｱｼﾞﾔｲﾙｶｲﾊﾂｾﾝﾀ-ｶﾌﾞｼｷｶﾞｲｼﾔ",
                                       "2026-04-26 -35710 ﾐﾂｲｽﾐﾄﾓｶ-ﾄﾞ"}));
    EXPECT_EQ(smbc.text(smbc.rows[0].matchKey), "券売機(東日本高速道路)");

    // The UTF-8 download with a BOM and a preamble of its own.
    const StatementFile& bom = read("smbc_meta_bom.csv", h);
    EXPECT_EQ(bom.encoding, TextEncoding::Utf8Bom);
    EXPECT_EQ(bom.layout.headerLine, 4u);
    EXPECT_EQ(bom.layout.stated.accountNumber, "普通 7654321");
    EXPECT_EQ(bom.layout.stated.period, "2026/04/01~2026/04/30");
    EXPECT_EQ(transferLines(bom), (Lines{"6 " + hint(TransferHint::EmoneyCharge) + " PayPay"}));

    // The old layout's Japanese-era dates across the change from 平成 to 令和.
    const StatementFile& wareki = read("smbc_wareki.csv", h);
    EXPECT_EQ(entryLines(wareki), (Lines{"2019-04-29 -1234 PE ﾛ-ｿﾝﾁｹﾂﾄ", "2019-04-30 -500 ATM",
                                         "2019-05-01 2000 ﾌﾘｺﾐ ﾀﾅｶ", "2019-05-07 -300 ｺﾝﾋﾞﾆ"}));
    EXPECT_EQ(refusedLines(wareki), (Lines{"6: 「R01.04.30」は元号の始まる前の日付です"}));

    // Eleven lines of preamble and a blank line, then the header on line 13; a note line at the end.
    const StatementFile& mizuho = read("mizuho.csv", h);
    EXPECT_EQ(mizuho.layout.headerLine, 13u);
    EXPECT_EQ(mizuho.layout.stated.accountNumber, "普通 1234567");
    EXPECT_EQ(entryLines(mizuho), (Lines{"2026-09-01 -1000 ＡＴＭ", "2026-09-05 200000 給与　カ）サンプル",
                                         "2026-09-30 -12345 ﾃﾞﾝｷﾀﾞｲ", "2026-09-30 -12345 ﾃﾞﾝｷﾀﾞｲ"}));
    EXPECT_EQ(mizuho.count(RowKind::Skipped), 1u);
    EXPECT_EQ(mizuho.text(mizuho.rows[3].naturalId), "4");

    // Deposits before withdrawals, an id per row, the account number in the preamble.
    const StatementFile& yucho = read("yucho.csv", h);
    EXPECT_EQ(yucho.layout.headerLine, 7u);
    EXPECT_EQ(yucho.layout.stated.accountNumber, "10340-08521821");
    EXPECT_EQ(entryLines(yucho), (Lines{"2026-09-01 -2000 カード", "2026-09-10 50000 振込 ﾀﾅｶ ﾀﾛｳ",
                                        "2026-09-25 -31000 合算 払出　３１件"}));
    EXPECT_EQ(yucho.text(yucho.rows[0].naturalId), "4512");

    // One signed column.
    const StatementFile& rakuten = read("rakuten_bank.csv", h);
    EXPECT_EQ(entryLines(rakuten), (Lines{"2026-09-01 -1100 テスト電力", "2026-09-25 250000 給与　カ）サンプル",
                                          "2026-09-27 -35710 ﾗｸﾃﾝｶ-ﾄﾞｻ-ﾋﾞｽ"}));
    EXPECT_EQ(transferLines(rakuten), (Lines{"4 " + hint(TransferHint::CardSettlement) + " 楽天カード"}));

    // Newest first, empty cells unquoted, "-" in the memo, a debit row without a merchant.
    const StatementFile& sbi = read("sbi.csv", h);
    EXPECT_EQ(entryLines(sbi), (Lines{"2026-01-20 -4980 デビット　123456", "2026-01-09 15700000 振込＊タカハシ　ユウキ",
                                      "2026-01-05 -10000 ＡＴＭ"}));
    EXPECT_EQ(sbi.text(sbi.rows[0].note), "");
    EXPECT_EQ(sbi.text(sbi.rows[0].matchKey), "デビツト123456");
    EXPECT_EQ(sbi.text(sbi.rows[1].matchKey), "タカハシユウキ");
}

TEST(Layouts, CardsEnterPurchasesAtTheirFullAmountAndRefundsAsIncome)
{
    StatementReading h;
    // UTF-8 without BOM; the month sits in a heading; installment and revolving rows.
    const StatementFile& rakuten = read("rakuten_card_202610.csv", h);
    EXPECT_EQ(rakuten.encoding, TextEncoding::Utf8);
    EXPECT_EQ(rakuten.displayName, "楽天カード ご利用明細 (2026年10月)");
    EXPECT_EQ(entryLines(rakuten),
              (Lines{"2026-08-20 -12000 リボ払い商品", "2026-09-01 -5400 ｲｵﾝﾓ-ﾙﾜｶﾔﾏ",
                     "2026-09-03 -30000 楽天ビック（ビックカメラ×楽天", "2026-09-10 2980 ＡＭＡＺＯＮ．ＣＯ．ＪＰ",
                     "2026-09-15 -3000 モバイルスイカ", "2026-09-15 -3000 モバイルスイカ"}));
    EXPECT_EQ(rakuten.count(RowKind::Skipped), 1u);  // ■ご利用キャンセルなど
    EXPECT_EQ(transferLines(rakuten), (Lines{"6 " + hint(TransferHint::EmoneyCharge) + " モバイルSuica",
                                             "7 " + hint(TransferHint::EmoneyCharge) + " モバイルSuica"}));
    EXPECT_EQ(rakuten.rows[2].billed, 10200);

    // Vpass: no header, card sections, an unquoted comma in a merchant, an
    // undated discount (refused, shown), trailer totals; the statement's own
    // total differs from the rows by that discount.
    const StatementFile& vpass = read("vpass.csv", h);
    EXPECT_EQ(vpass.layout.profile.id, "smbc-card");
    EXPECT_EQ(entryLines(vpass), (Lines{"2026-04-13 -390 ＥＴＣ首都高", "2026-04-30 -1394 GITHUB, INC. (HTTPSGITHUB.C)",
                                        "2026-04-20 -48530 ヨドバシカメラ　通信販売", "2026-04-27 -340 ファミリーマート／ｉＤ"}));
    EXPECT_EQ(refusedLines(vpass), (Lines{"7: 日付のない金額の行です（割引などは手で入力してください）"}));
    EXPECT_EQ(vpass.sectionNumbers, (Lines{"4980-11**-****-****", "6900-11**-****-****"}));
    EXPECT_EQ(vpass.text(vpass.rows[5].account), "6900-11**-****-****");
    EXPECT_EQ(vpass.text(vpass.rows[2].note), "10.00　USD　139.488　05 01");
    EXPECT_EQ(checkBilledTotal(vpass).message(), "明細の請求額 25,289円 と、行の合計 26,389円 が 1,100円 違います。");

    const StatementFile& unbilled = read("vpass_unbilled.csv", h);
    EXPECT_EQ(unbilled.layout.profile.id, "smbc-card-unbilled");
    EXPECT_EQ(entryLines(unbilled), (Lines{"2026-05-04 -3844 ＡＭＡＺＯＮ．ＣＯ．ＪＰ", "2026-05-06 -1500 GITHUB, INC."}));

    // JCB: a summary block with the payment date and total, a marker line, the
    // header on line 6, dates with a leading blank, a cash advance.
    const StatementFile& jcb = read("jcb.csv", h);
    EXPECT_EQ(jcb.layout.headerLine, 6u);
    EXPECT_EQ(jcb.displayName, "JCBカード ご利用明細 (2026年7月)");
    EXPECT_EQ(entryLines(jcb), (Lines{"2026-05-21 -920 飲食店A", "2026-05-25 -30000 家電店B", "2026-06-01 -5000 ＡＴＭ",
                                      "2026-06-03 -1225 書店C"}));
    EXPECT_EQ(transferLines(jcb), (Lines{"9 " + hint(TransferHint::CashAdvance) + " 現金"}));
    const BilledTotalCheck jcbTotal = checkBilledTotal(jcb);
    EXPECT_TRUE(jcbTotal.stated && jcbTotal.matches());
    EXPECT_EQ(jcbTotal.statedTotal, 17145);

    // エポス: a title line, kanji dates, an installment at its full amount, a
    // cancellation, part totals that add up to the rows.
    const StatementFile& epos = read("epos.csv", h);
    EXPECT_EQ(epos.layout.stated.period, "2026年1月から2026年8月");
    EXPECT_EQ(entryLines(epos), (Lines{"2026-01-10 -3000 モバイルスイカ", "2026-06-11 -3256 ベンキヨウカフエ",
                                       "2026-05-07 8570 スマ－トイ－エツクス", "2026-05-20 -10000 エポスATM"}));
    EXPECT_EQ(epos.text(epos.rows[1].matchKey), "ベンキヨウカフエ");
    EXPECT_EQ(epos.text(epos.rows[2].matchKey), "スマートイーエツクス");
    EXPECT_EQ(transferLines(epos), (Lines{"3 " + hint(TransferHint::EmoneyCharge) + " モバイルSuica",
                                          "6 " + hint(TransferHint::CashAdvance) + " 現金"}));
    EXPECT_TRUE(checkBilledTotal(epos).stated && checkBilledTotal(epos).matches());

    // セゾン: the payment date and a zero-padded billed total above a blank
    // line and the header; a cardholder line and subtotal rows in the table.
    const StatementFile& saison = read("saison.csv", h);
    EXPECT_EQ(saison.layout.headerLine, 5u);
    EXPECT_EQ(saison.displayName, "セゾンカード ご利用明細 (2026年5月)");
    EXPECT_EQ(saison.layout.stated.cardName, "セゾンプラチナビジネス・アメリカンエキスプレスカード");
    EXPECT_EQ(entryLines(saison), (Lines{"2026-03-12 -1515 HUB 東京オペラシティ店", "2026-03-20 -5000 ｽｰﾊﾟｰﾏｰｹｯﾄ"}));
    EXPECT_EQ(saison.count(RowKind::Skipped), 3u);
    EXPECT_EQ(checkBilledTotal(saison).statedTotal, 6515);
    EXPECT_TRUE(checkBilledTotal(saison).matches());
}

TEST(Layouts, WalletAndHouseholdBookExportsKeepIdsCategoriesAndTransfers)
{
    StatementReading h;
    // PayPay: UTF-8 with BOM, newest first, times, "-" for empty, ids, card-funded payments.
    const StatementFile& paypay = read("paypay.csv", h);
    EXPECT_EQ(paypay.encoding, TextEncoding::Utf8Bom);
    EXPECT_EQ(entryLines(paypay), (Lines{"2025-02-11 -920 モスのネット注文", "2025-02-10 -330 キャンドゥ　横浜橋商店街",
                                         "2025-02-09 5000 チャージ", "2025-02-08 120 giftee", "2025-02-07 -3600 近鉄百貨店"}));
    EXPECT_EQ(refusedLines(paypay), (Lines{"7: 円の金額がない外貨の行です"}));
    EXPECT_EQ(transferLines(paypay), (Lines{"2 " + hint(TransferHint::CardFunded) + " クレジット VISA 4575",
                                            "3 " + hint(TransferHint::CardFunded) +
                                                " PayPayポイント (73円), クレジット VISA 4575 (257円)",
                                            "4 " + hint(TransferHint::EmoneyCharge) + " 三菱UFJ銀行"}));
    EXPECT_EQ(paypay.text(paypay.rows[0].naturalId), "4639628474580213761");
    EXPECT_EQ(paypay.text(paypay.rows[3].naturalId), "856574761326657536-a0196d18");

    // マネーフォワード ME: signed amounts, two-level categories, the transfer flag, ids.
    const StatementFile& mf = read("moneyforward.csv", h);
    EXPECT_EQ(entryLines(mf), (Lines{"2026-09-30 -580 ローソン", "2026-09-25 250000 給与 カ)サンプル",
                                     "2026-09-27 -35710 ミツイスミトモカード", "2026-09-20 3990 ユニクロ"}));
    EXPECT_EQ(mf.text(mf.rows[0].category), "食費/食料品");
    EXPECT_EQ(mf.text(mf.rows[0].account), "三井住友カード");
    EXPECT_EQ(mf.text(mf.rows[3].note), "返品");
    EXPECT_EQ(transferLines(mf), (Lines{"4 " + hint(TransferHint::MarkedTransfer) + " "}));

    // Zaim: split columns with 0 for unused ones, identical rows kept apart, a
    // transfer in its own column, a balance adjustment skipped.
    const StatementFile& zaim = read("zaim.csv", h);
    EXPECT_EQ(entryLines(zaim), (Lines{"2026-05-20 -200 多摩駅前パーキング", "2026-05-21 -138 スーパー ヨーグルト",
                                       "2026-05-21 -138 スーパー ヨーグルト", "2026-05-25 250000 給与/給与",
                                       "2026-05-26 -30000 transfer"}));
    EXPECT_EQ(zaim.rows[1].contentOccurrence, 1u);
    EXPECT_EQ(zaim.rows[2].contentOccurrence, 2u);
    EXPECT_EQ(transferLines(zaim), (Lines{"6 " + hint(TransferHint::MarkedTransfer) + " 現金"}));
    EXPECT_EQ(zaim.rows.back().kind, RowKind::Skipped);
    EXPECT_EQ(zaim.text(zaim.rows.back().reason), "残高調整の行");
}

TEST(Layouts, RowsWithImpossibleDatesOrAmountsAreRefusedWithTheirReasonAndTheRestIsRead)
{
    StatementReading h;
    const StatementFile& s = read("bad_rows.csv", h);
    EXPECT_EQ(entryLines(s), (Lines{"2026-09-01 -580 ローソン", "2026-09-05 -1200 セブンイレブン"}));
    EXPECT_EQ(refusedLines(s), (Lines{"3: 「2026/02/30」は存在しない日付です", "4: 「1,2x0」は金額として読めません",
                                      "5: 「12.50」は円未満の端数がある金額です", "6: 「9/4」は日付として読めません"}));
    EXPECT_EQ(s.text(s.rows[1].text), "存在しない日");
}

TEST(Layouts, AMappingTheUserMadeReadsAnUnknownFileAndRecognisesItNextTime)
{
    // A regional bank's file: a title line, then the header; in and out columns.
    const std::string text = "ふるさと信用金庫 入出金明細\n取扱日,摘要,お支払,お預り,残高\n"
                             "2026/10/01,ﾃﾞﾝｷﾀﾞｲ,\"8,800\",,91200\n2026/10/02,ｷﾕｳﾖ,,\"210,000\",301200\n";
    const TempFile file("shinkin.csv", text);
    const StatementReading unknown = readStatementFile(file.path());
    ASSERT_FALSE(unknown.ok());
    ASSERT_EQ(unknown.refusal->reason, RefusalReason::Unrecognised);

    UserMapping mapping;
    mapping.name = "ふるさと信金";
    mapping.headerLine = 2;
    mapping.headings = unknown.refusal->firstRecords[1].fields;
    mapping.dateColumn = 0;
    mapping.dateShapes = DateShape::Slashed;
    mapping.textColumns = {1};
    mapping.outColumn = 2;
    mapping.inColumn = 3;
    const UserMapping saved = mappingFromJson(mappingToJson(mapping));
    EXPECT_EQ(mappingToJson(saved), mappingToJson(mapping));
    EXPECT_EQ(saved.headings, (std::vector<std::string>{"取扱日", "摘要", "お支払", "お預り", "残高"}));

    ReadOptions chosen;
    chosen.chosenProfile = profileFromMapping(saved);
    chosen.chosenHeaderLine = 2;
    const StatementReading once = readStatementFile(file.path(), chosen);
    ASSERT_TRUE(once.ok());
    EXPECT_EQ(entryLines(once.statement), (Lines{"2026-10-01 -8800 ﾃﾞﾝｷﾀﾞｲ", "2026-10-02 210000 ｷﾕｳﾖ"}));
    EXPECT_EQ(once.statement.displayName, "ふるさと信金 (2026年10月)");

    // Next time the saved profile is tried first and found by its headings.
    ReadOptions next;
    next.savedProfiles = {profileFromMapping(saved)};
    const StatementReading again = readStatementFile(file.path(), next);
    ASSERT_TRUE(again.ok());
    EXPECT_EQ(again.statement.layout.headerLine, 2u);
    EXPECT_EQ(entryLines(again.statement), entryLines(once.statement));

    // A headerless mapping reads by position; a broken saved text gives no name.
    UserMapping positions = saved;
    positions.headerLine = 0;
    positions.headings.clear();
    chosen.chosenProfile = profileFromMapping(positions);
    chosen.chosenHeaderLine = 2;
    EXPECT_EQ(entryLines(readStatementFile(file.path(), chosen).statement), entryLines(once.statement));
    EXPECT_EQ(mappingFromJson("{broken").name, "");
}
