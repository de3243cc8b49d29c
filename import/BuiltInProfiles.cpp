// The statement layouts the program reads without help. Headings are written
// as the files write them; they are compared after NFKC, so a full-width
// "（円）" here or in a file finds "(円)" too. Layouts known only by their
// header (no sample seen) accept every date shape.
#include "import/ImportProfile.h"

namespace {

using R = Role;

ColumnRule col(Role role, std::string heading, bool required = true)
{
    return {role, std::move(heading), -1, required};
}

ColumnRule at(Role role, int index)
{
    return {role, {}, index, true};
}

// Labels a bank's preamble may carry (ゆうちょ, みずほ, SMBC's UTF-8 download).
std::vector<PreambleLabel> bankPreamble()
{
    return {
        {StatedValue::AccountNumber, "^(?:お客さま)?口座番号[:]?(.+)$"},
        {StatedValue::AccountNumber, "^(?:お客さま)?口座番号[:]?$"},
        {StatedValue::Period, "^(?:日付指定|照会期間|期間|照会対象)[:](.+)$"},
        {StatedValue::Period, "^(?:日付指定|照会期間|期間)[:]?$"},
    };
}

ImportProfile bank(std::string id, std::string name, std::vector<ColumnRule> columns, unsigned shapes)
{
    ImportProfile p;
    p.id = std::move(id);
    p.name = std::move(name);
    p.source = SourceKind::Bank;
    p.columns = std::move(columns);
    p.dateShapes = shapes;
    p.preamble = bankPreamble();
    return p;
}

ImportProfile card(std::string id, std::string name, std::vector<ColumnRule> columns, unsigned shapes)
{
    ImportProfile p = bank(std::move(id), std::move(name), std::move(columns), shapes);
    p.source = SourceKind::Card;
    p.sign = SignConvention::PositiveIsExpense;
    p.preamble.clear();
    return p;
}

const KindRule kCashAdvance{R::Kind, "キャッシング", TransferHint::CashAdvance, "現金", {}, false};

// 三井住友カード (Vpass): no header; each card's section starts with
// "氏名　様,4980-11**-****-****,カード名". The statement has 7 fields
// (利用日, 利用店名, 利用金額, 支払区分, 今回回数, 支払金額, 備考); the
// unbilled download 13 (利用日, 利用店名, 利用者, 支払方法, -, 支払月,
// 利用金額, 支払金額, ...). A merchant's comma is not quoted: the surplus
// fields of a longer row belong to the merchant.
ImportProfile vpass(bool unbilled)
{
    ImportProfile p;
    p.source = SourceKind::Card;
    p.sign = SignConvention::PositiveIsExpense;
    p.dateShapes = DateShape::Slashed;
    p.firstLine = {"^.+様$", "^[\\d*]{4}-[\\d*]{4}-[\\d*]{4}-[\\d*]{4}$"};
    p.sectionLine = "^.+様$";
    p.surplusColumn = 1;
    if (unbilled) {
        p.id = "smbc-card-unbilled";
        p.name = "三井住友カード ご利用明細 (未確定)";
        p.fieldCount = 13;
        p.rowShape = {"", "", "^ご(本人|家族)$"};
        p.columns = {at(R::Date, 0), at(R::Text, 1), at(R::Kind, 3), at(R::Amount, 6), at(R::Billed, 7)};
    } else {
        p.id = "smbc-card";
        p.name = "三井住友カード ご利用明細";
        p.fieldCount = 7;
        p.rowShape = {"", "", "^-?[\\d,]+$"};
        p.columns = {at(R::Date, 0), at(R::Text, 1), at(R::Amount, 2), at(R::Kind, 3), at(R::Billed, 5), at(R::Note, 6)};
    }
    return p;
}

std::vector<ImportProfile> makeProfiles()
{
    std::vector<ImportProfile> all;

    // Banks.
    all.push_back(bank("mufg", "三菱UFJ銀行 入出金明細",
                       {col(R::Date, "日付"), col(R::Text, "摘要"), col(R::Text, "摘要内容"), col(R::Out, "支払い金額"),
                        col(R::In, "預かり金額"), col(R::Ignored, "差引残高"), col(R::Note, "メモ", false),
                        col(R::Kind, "入払区分", false)},
                       DateShape::Slashed));
    all.push_back(bank("smbc", "三井住友銀行 入出金明細",
                       {col(R::Date, "年月日|年月日（和暦）"), col(R::Out, "お引出し"), col(R::In, "お預入れ"),
                        col(R::Text, "お取り扱い内容"), col(R::Ignored, "残高"), col(R::Note, "メモ", false)},
                       DateShape::Slashed | DateShape::Wareki));
    all.push_back(bank("mizuho", "みずほ銀行 入出金明細",
                       {col(R::NaturalId, "明細通番"), col(R::Date, "日付"), col(R::Out, "お引出金額"),
                        col(R::In, "お預入金額"), col(R::Ignored, "残高"), col(R::Text, "お取引内容")},
                       DateShape::Slashed));
    all.push_back(bank("yucho", "ゆうちょ銀行 入出金明細",
                       {col(R::Date, "取引日"), col(R::NaturalId, "入出金明細ＩＤ"), col(R::In, "受入金額（円）"),
                        col(R::Out, "払出金額（円）"), col(R::Text, "詳細１"), col(R::Text, "詳細２"),
                        col(R::Ignored, "現在（貸付）高")},
                       DateShape::Compact));
    all.push_back(bank("rakuten-bank", "楽天銀行 入出金明細",
                       {col(R::Date, "取引日"), col(R::Amount, "入出金(円)"), col(R::Ignored, "取引後残高(円)|残高(円)"),
                        col(R::Text, "入出金内容|入出金先内容")},
                       DateShape::Compact));
    all.push_back(bank("sbi-sumishin", "住信SBIネット銀行 入出金明細",
                       {col(R::Date, "日付"), col(R::Text, "内容"), col(R::Out, "出金金額(円)"), col(R::In, "入金金額(円)"),
                        col(R::Ignored, "残高(円)"), col(R::Note, "メモ", false)},
                       DateShape::Slashed));
    all.push_back(bank("paypay-bank", "PayPay銀行 入出金明細",
                       {col(R::Year, "操作日(年)"), col(R::Month, "操作日(月)"), col(R::Day, "操作日(日)"),
                        col(R::NaturalId, "取引順番号"), col(R::Text, "摘要"), col(R::Out, "お支払金額"),
                        col(R::In, "お預り金額")},
                       DateShape::Any));
    // Known by their header only.
    all.push_back(bank("sony-bank", "ソニー銀行 入出金明細",
                       {col(R::Date, "お取り引き日"), col(R::Text, "摘要"), col(R::Note, "参考情報", false),
                        col(R::In, "お預け入れ額"), col(R::Out, "お引き出し額")},
                       DateShape::Any));
    all.push_back(bank("aeon-bank", "イオン銀行 入出金明細",
                       {col(R::Date, "日付"), col(R::Text, "お取引内容"), col(R::Out, "お引出し"), col(R::In, "お預入れ")},
                       DateShape::Any));
    all.push_back(bank("sbi-shinsei", "SBI新生銀行 入出金明細",
                       {col(R::Date, "取引日"), col(R::Text, "摘要"), col(R::Out, "出金金額"), col(R::In, "入金金額"),
                        col(R::Note, "メモ", false)},
                       DateShape::Any));
    all.push_back(bank("tokyo-star", "東京スター銀行 入出金明細",
                       {col(R::Date, "日付"), col(R::Out, "お支払い金額"), col(R::In, "お預かり金額"), col(R::Text, "摘要"),
                        col(R::Note, "備考", false)},
                       DateShape::Any));
    all.push_back(bank("jibun-bank", "じぶん銀行 入出金明細",
                       {col(R::Date, "年月日"), col(R::In, "入金"), col(R::Out, "出金"), col(R::Text, "お取引内容")},
                       DateShape::Any));

    // Cards.
    {
        ImportProfile p = card("rakuten-card", "楽天カード ご利用明細",
                               {col(R::Date, "利用日"), col(R::Text, "利用店名・商品名"), col(R::Kind, "支払方法", false),
                                col(R::Amount, "利用金額"), col(R::Billed, "^(\\d{1,2})月支払金額$", false)},
                               DateShape::Slashed);
        all.push_back(std::move(p));
    }
    // The statement first: a file with no data row yet reads as one.
    all.push_back(vpass(false));
    all.push_back(vpass(true));
    {
        ImportProfile p = card("jcb", "JCBカード ご利用明細",
                               {col(R::Account, "ご利用者"), col(R::Kind, "カテゴリ"), col(R::Date, "ご利用日"),
                                col(R::Text, "ご利用先など"), col(R::Amount, "ご利用金額(￥)"),
                                col(R::Billed, "お支払い金額(￥)", false), col(R::Note, "摘要", false),
                                col(R::Note, "備考", false)},
                               DateShape::Slashed);
        p.preamble = {{StatedValue::PaymentDate, "^今回のお支払日$"}, {StatedValue::BilledTotal, "^今回のお支払金額合計\\(¥\\)$"}};
        p.kindRules = {kCashAdvance};
        all.push_back(std::move(p));
    }
    {
        ImportProfile p = card("epos", "エポスカード ご利用明細",
                               {col(R::Kind, "^種別.*"), col(R::Date, "ご利用年月日"), col(R::Text, "ご利用場所"),
                                col(R::Amount, "^ご利用金額.*"), col(R::Kind, "支払区分", false),
                                col(R::Note, "備考", false)},
                               DateShape::Kanji);
        p.preamble = {{StatedValue::Period, "ご利用期間:(\\S+から\\S+)"}};
        p.kindRules = {kCashAdvance};
        all.push_back(std::move(p));
    }
    {
        ImportProfile p = card("saison", "セゾンカード ご利用明細",
                               {col(R::Date, "利用日"), col(R::Text, "ご利用店名及び商品名"),
                                col(R::Kind, "支払区分名称", false), col(R::Amount, "利用金額"), col(R::Note, "備考", false)},
                               DateShape::Slashed);
        p.preamble = {{StatedValue::CardName, "^カード名称$"},
                      {StatedValue::PaymentDate, "^お支払日$"},
                      {StatedValue::BilledTotal, "^今回ご請求額$"}};
        all.push_back(std::move(p));
    }
    // Known by their header only.
    all.push_back(card("aeon-card", "イオンカード ご利用明細",
                       {col(R::Date, "ご利用日"), col(R::Text, "ご利用先"), col(R::Kind, "支払方法", false),
                        col(R::Amount, "ご利用金額"), col(R::Note, "備考", false)},
                       DateShape::Any));
    all.push_back(card("view-card", "ビューカード ご利用明細",
                       {col(R::Date, "ご利用年月日"), col(R::Text, "ご利用箇所"), col(R::Out, "ご利用額"), col(R::In, "払戻額"),
                        col(R::Billed, "^今回ご請求額.*", false), col(R::ForeignAmount, "現地通貨額", false)},
                       DateShape::Any));
    all.push_back(card("paypay-card", "PayPayカード ご利用明細",
                       {col(R::Date, "利用日/キャンセル日"), col(R::Text, "利用店名・商品名"), col(R::Amount, "利用金額")},
                       DateShape::Any));
    all.push_back(card("pone-card", "P-oneカード ご利用明細",
                       {col(R::Date, "ご利用年月日"), col(R::Text, "ご利用先"), col(R::Amount, "ご利用金額(円)"),
                        col(R::Billed, "ご請求金額(円)", false), col(R::Note, "備考", false)},
                       DateShape::Any));

    // E-money: PayPay's 取引履歴.
    {
        ImportProfile p;
        p.id = "paypay";
        p.name = "PayPay 取引履歴";
        p.source = SourceKind::Emoney;
        p.dateShapes = DateShape::Slashed;
        p.columns = {col(R::Date, "取引日"), col(R::Out, "出金金額（円）"), col(R::In, "入金金額（円）"),
                     col(R::ForeignAmount, "海外出金金額", false), col(R::Kind, "取引内容"), col(R::Text, "取引先"),
                     col(R::Counterpart, "取引方法"), col(R::NaturalId, "取引番号"), col(R::Note, "取引内容")};
        p.kindRules = {
            {R::Kind, "^チャージ$", TransferHint::EmoneyCharge, {}, {}, true},
            {R::Counterpart, "クレジット", TransferHint::CardFunded, {}, {}, true},
        };
        all.push_back(std::move(p));
    }

    // Household-book exports.
    {
        ImportProfile p;
        p.id = "moneyforward";
        p.name = "マネーフォワード ME 収入・支出詳細";
        p.source = SourceKind::HouseholdBook;
        p.dateShapes = DateShape::Slashed;
        p.columns = {col(R::Ignored, "計算対象"), col(R::Date, "日付"), col(R::Text, "内容"), col(R::Amount, "金額（円）"),
                     col(R::Account, "保有金融機関"), col(R::Category, "大項目"), col(R::Category, "中項目"),
                     col(R::Note, "メモ", false), col(R::Kind, "振替"), col(R::NaturalId, "ID")};
        p.kindRules = {{R::Kind, "^1$", TransferHint::MarkedTransfer, {}, {}, false}};
        all.push_back(std::move(p));
    }
    {
        ImportProfile p;
        p.id = "zaim";
        p.name = "Zaim 記録データ";
        p.source = SourceKind::HouseholdBook;
        p.dateShapes = DateShape::Slashed;
        p.columns = {col(R::Date, "日付"), col(R::Kind, "方法"), col(R::Category, "カテゴリ"),
                     col(R::Category, "カテゴリの内訳"), col(R::Account, "支払元"), col(R::Counterpart, "入金先"),
                     col(R::Text, "お店"), col(R::Text, "品目"), col(R::Note, "メモ"), col(R::In, "収入"),
                     col(R::Out, "支出"), col(R::TransferAmount, "振替"), col(R::Ignored, "残高調整")};
        p.kindRules = {
            {R::Kind, "^balance$", TransferHint::None, {}, "残高調整の行", false},
            {R::Kind, "^transfer$", TransferHint::MarkedTransfer, {}, {}, true},
        };
        all.push_back(std::move(p));
    }

    // Files people pick by mistake.
    {
        ImportProfile p;
        p.id = "moneyforward-history";
        p.name = "マネーフォワード ME 資産推移";
        p.columns = {col(R::Date, "日付"), col(R::Ignored, "合計（円）")};
        p.wrongFile = "マネーフォワード ME の資産推移のファイルです。入出金の「収入・支出詳細」のCSVを選んでください。";
        all.push_back(std::move(p));
    }
    {
        ImportProfile p;
        p.id = "moneyforward-page";
        p.name = "マネーフォワード ME の画面の写し";
        p.columns = {col(R::Ignored, "計算対象"), col(R::Date, "日付"), col(R::Text, "内容"), col(R::Ignored, "削除")};
        p.wrongFile = "マネーフォワード ME の画面から写した表です。日付に年がないため読めません。"
                      "「収入・支出詳細」のCSVをダウンロードして選んでください。";
        all.push_back(std::move(p));
    }
    return all;
}

}  // namespace

const std::vector<ImportProfile>& builtInProfiles()
{
    static const std::vector<ImportProfile> profiles = makeProfiles();
    return profiles;
}
