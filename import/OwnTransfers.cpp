#include "import/OwnTransfers.h"

#include <QRegularExpression>
#include <vector>

#include "import/MatchingText.h"

namespace {

struct Pattern {
    TransferHint hint;
    const char* text;  // written as a statement prints it; compared as a matching key
    const char* partner;
    bool regex = false;  // a regular expression on the matching key instead of a text inside it
};

// The names banks print for card settlements, ATM withdrawals and charges.
// Card settlements come first: "ペイペイカード" is a card, "ペイペイ" a charge.
const Pattern kPatterns[] = {
    {TransferHint::CardSettlement, "ミツイスミトモカード", "三井住友カード"},
    {TransferHint::CardSettlement, "三井住友カード", "三井住友カード"},
    {TransferHint::CardSettlement, "ラクテンカード", "楽天カード"},
    {TransferHint::CardSettlement, "楽天カード", "楽天カード"},
    {TransferHint::CardSettlement, "JCB", "JCBカード"},
    {TransferHint::CardSettlement, "セゾン", "セゾンカード"},
    {TransferHint::CardSettlement, "エポスカード", "エポスカード"},
    {TransferHint::CardSettlement, "イオンクレジット", "イオンカード"},
    {TransferHint::CardSettlement, "イオンカード", "イオンカード"},
    {TransferHint::CardSettlement, "ビューカード", "ビューカード"},
    {TransferHint::CardSettlement, "ペイペイカード", "PayPayカード"},
    {TransferHint::CardSettlement, "PAYPAYカード", "PayPayカード"},
    {TransferHint::CardSettlement, "アメリカンエキスプレス", "アメリカン・エキスプレス"},
    {TransferHint::CardSettlement, "ニコス", "三菱UFJニコス"},
    {TransferHint::CardSettlement, "オリコ", "オリコカード"},
    {TransferHint::CardSettlement, "DCカード", "DCカード"},
    {TransferHint::CardSettlement, "UCカード", "UCカード"},
    {TransferHint::CashWithdrawal, "ATM", "現金"},
    {TransferHint::CashWithdrawal, "現金引出", "現金"},
    {TransferHint::CashWithdrawal, "^カード(\\d.*)?$", "現金", true},
    {TransferHint::EmoneyCharge, "モバイルスイカ", "モバイルSuica"},
    {TransferHint::EmoneyCharge, "モバイルSuica", "モバイルSuica"},
    {TransferHint::EmoneyCharge, "SUICA", "Suica"},
    {TransferHint::EmoneyCharge, "ペイペイ", "PayPay"},
    {TransferHint::EmoneyCharge, "PAYPAY", "PayPay"},
    {TransferHint::EmoneyCharge, "ナナコ", "nanaco"},
    {TransferHint::EmoneyCharge, "NANACO", "nanaco"},
    {TransferHint::EmoneyCharge, "WAON", "WAON"},
    {TransferHint::EmoneyCharge, "ICOCA", "ICOCA"},
    {TransferHint::EmoneyCharge, "PASMO", "PASMO"},
    {TransferHint::EmoneyCharge, "EDY", "楽天Edy"},
    {TransferHint::EmoneyCharge, "チャージ", ""},
};

struct Compiled {
    TransferHint hint;
    std::string key;
    QRegularExpression regex;
    std::string partner;
};

const std::vector<Compiled>& compiled()
{
    static const std::vector<Compiled> table = [] {
        std::vector<Compiled> out;
        for (const Pattern& p : kPatterns)
            out.push_back({p.hint, p.regex ? std::string() : matchingKey(p.text),
                           p.regex ? QRegularExpression(QString::fromUtf8(p.text)) : QRegularExpression(), p.partner});
        return out;
    }();
    return table;
}

bool appliesTo(TransferHint hint, SourceKind source)
{
    if (hint == TransferHint::EmoneyCharge) return source == SourceKind::Bank || source == SourceKind::Card;
    return source == SourceKind::Bank;
}

}  // namespace

TransferGuess guessOwnTransfer(std::string_view key, SourceKind source)
{
    if (key.empty()) return {};
    for (const Compiled& c : compiled()) {
        if (!appliesTo(c.hint, source)) continue;
        const bool hit = c.key.empty() ? c.regex.match(QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())))
                                             .hasMatch()
                                       : key.find(c.key) != std::string_view::npos;
        if (hit) return {c.hint, c.partner};
    }
    return {};
}
