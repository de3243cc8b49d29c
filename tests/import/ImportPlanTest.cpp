// The plan of an import, on a context made by hand: what each row proposes,
// which asset a transfer goes to, when a file is refused, and the batch.
#include <gtest/gtest.h>

#include "import/AssetChoice.h"
#include "import/ImportPlan.h"
#include "tests/import/ImportSamples.h"

namespace {

std::shared_ptr<const StatementFile> statementOf(const std::string& name)
{
    StatementReading r = readSample(name);
    EXPECT_TRUE(r.ok()) << name;
    return std::make_shared<const StatementFile>(std::move(r.statement));
}

// Assets 1 三井住友VISA, 2 三菱UFJ銀行, 3 現金（財布）, 4 PayPay; sub-items
// 11 食費/その他, 12 食費/外食, 13 衣服・美容/衣服 (expense), 21 臨時収入/その他 (income).
ImportContext context(int64_t sisanId)
{
    ImportContext c;
    c.sisanId = sisanId;
    c.sisans = {{1, "三井住友VISA"}, {2, "三菱UFJ銀行"}, {3, "現金（財布）"}, {4, "PayPay"}};
    c.himokus = {{11, 1, "食費/その他"}, {12, 1, "食費/外食"}, {13, 1, "衣服・美容/衣服"}, {21, 2, "臨時収入/その他"}};
    return c;
}

std::vector<std::string> proposals(const ImportPlan& plan)
{
    std::vector<std::string> out;
    for (size_t i = 0; i < plan.rows().size(); ++i)
        out.push_back(std::string(statusName(plan.rows()[i].status)) + " " + plan.assignmentText(i) +
                      (plan.rows()[i].checked ? "" : " (外す)"));
    return out;
}

using Lines = std::vector<std::string>;

}  // namespace

TEST(ImportPlan, ARowTakesItsLearnedSubItemElseTheFilesOwnElseTheLayoutsDefault)
{
    // マネーフォワード: ローソン learned as 外食; the salary takes the income
    // default; the transfer-marked card payment names no partner, so the
    // expense default; the refund at ユニクロ its own category, a sub-item here.
    ImportContext c = context(2);
    c.assignments = {{"", "ローソン", 1, 12}, {"moneyforward", "", 2, 21}, {"moneyforward", "", 1, 11}};
    c.himokus.push_back({14, 2, "衣服・美容/衣服"});
    const ImportPlan plan(statementOf("moneyforward.csv"), std::move(c));
    EXPECT_EQ(proposals(plan),
              (Lines{"新規 食費/外食", "新規 臨時収入/その他", "振替候補 食費/その他", "新規 衣服・美容/衣服"}));
}

TEST(ImportPlan, TransferPartnersAreFoundByNameByPartOfTheNameOrByTheLayoutTheyTook)
{
    ImportContext c = context(2);
    EXPECT_EQ(partnerSisan("PayPay", c), 4);
    EXPECT_EQ(partnerSisan("現金", c), 3);  // the only asset whose name holds it
    EXPECT_EQ(partnerSisan("三井住友カード", c), 0);
    c.accounts = {{"smbc-card", "4980-11**-****-****", 1}};
    EXPECT_EQ(partnerSisan("三井住友カード", c), 1);  // the asset its statements went to
    c.sisans.push_back({5, "現金（家）"});
    EXPECT_EQ(partnerSisan("現金", c), 0);  // two would do: none is guessed

    // A bank statement: the card payment goes to the card, the ATM to the wallet.
    ImportContext bank = context(2);
    bank.accounts = {{"smbc-card", "4980-11**-****-****", 1}};
    bank.assignments = {{"mufg", "", 1, 11}, {"mufg", "", 2, 21}};
    const ImportPlan plan(statementOf("mufg_eco.csv"), std::move(bank));
    EXPECT_EQ(proposals(plan), (Lines{"新規 臨時収入/その他", "新規 食費/その他", "新規 食費/その他",
                                      "振替候補 振替: 三井住友VISA", "振替候補 振替: 現金（財布）", "新規 臨時収入/その他"}));
}

TEST(ImportPlan, AFileForAnotherAccountOrAlreadyInTheBookIsRefusedAndTheAssetIsRemembered)
{
    const auto yucho = statementOf("yucho.csv");
    EXPECT_EQ(statementAccount(*yucho), "10340-08521821");
    const std::vector<ImportAccountRow> accounts{{"yucho", "10340-99999999", 2}, {"yucho", "10340-08521821", 3}};
    EXPECT_EQ(proposedSisan("yucho", "10340-08521821", accounts, {1, 2, 3}, 1), 3);
    EXPECT_EQ(proposedSisan("yucho", "10340-00000000", accounts, {1, 2, 3}, 1), 2);
    EXPECT_EQ(proposedSisan("mufg", "", accounts, {1, 2, 3}, 1), 1);
    EXPECT_EQ(proposedSisan("yucho", "10340-08521821", accounts, {1, 2}, 1), 2);  // asset 3 was deleted

    ImportContext other = context(2);
    other.accounts = accounts;
    EXPECT_EQ(ImportPlan(yucho, std::move(other)).refusal(),
              "「yucho.csv」は口座・カード番号 10340-08521821 の明細です。資産「三菱UFJ銀行」にはこれまで "
              "10340-99999999 の明細を取り込んでいます。別の資産を選んでください。");
    ImportContext same = context(3);
    same.accounts = accounts;
    same.assignments = {{"yucho", "", 1, 11}, {"yucho", "", 2, 21}};
    const ImportPlan allowed(yucho, std::move(same));
    EXPECT_EQ(allowed.refusal(), "");

    // Every row in the book already: refused, naming the earlier import.
    const ImportBatch batch = allowed.batch("2026-11-20 09:00:00");
    ASSERT_EQ(batch.entries.size(), 3u);
    ImportContext again = context(3);
    for (const ImportEntry& e : batch.entries)
        again.sameAsset.push_back({100 + static_cast<int64_t>(again.sameAsset.size()), 3, e.hizuke, 1, 11, 0, e.kingaku,
                                   e.bikou, e.idKey, e.contentKey, e.text});
    again.sameFile = batch.record;
    again.sameFile.id = 7;
    again.sameFile.rowsImported = 3;
    EXPECT_EQ(ImportPlan(yucho, std::move(again)).refusal(),
              "「yucho.csv」はすでに取り込み済みです（2026-11-20 09:00:00、資産「現金（財布）」、3行）。");
}
