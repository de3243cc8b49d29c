#pragma once

#include <cstdint>

#include "import/ImportDate.h"
#include "import/TextPool.h"

// What reading made of one line of a statement file.
enum class RowKind : uint8_t {
    Entry,    // a dated amount: a candidate for the ledger
    Skipped,  // a heading, total, note or section line: never an entry
    Refused,  // a line that carries money but cannot be read; `reason` says why
};

// Why a row looks like money moving between the household's own assets.
enum class TransferHint : uint8_t {
    None,
    CardSettlement,  // a bank row paying a card's bill
    CashWithdrawal,  // an ATM withdrawal: bank to cash
    EmoneyCharge,    // a charge of e-money or the QR wallet
    CashAdvance,     // a card's cash advance (キャッシング)
    CardFunded,      // a wallet payment funded by a credit card: the card's statement has the expense
    MarkedTransfer,  // the file itself marks the row as a transfer (household-book exports)
};

// One line of a statement file after reading. Amounts are signed from the
// asset's side: positive is money in (an income, a refund on a card), negative
// money out. Texts live in the statement's TextPool.
struct StatementRow {
    uint32_t line = 0;  // physical line in the file, from 1
    RowKind kind = RowKind::Entry;
    TransferHint transfer = TransferHint::None;
    bool hasBilled = false;  // the row names what this statement charges for it
    ImportDate date;
    uint32_t idOccurrence = 0;       // 1 for the first row with its id key, 2 for the next ... (0: no id)
    uint32_t contentOccurrence = 0;  // the same for the content key
    int64_t kingaku = 0;
    int64_t billed = 0;  // this statement's charge for the row (installments: one month's part)
    TextRef text;        // the description as the file wrote it
    TextRef note;        // memo or remark columns as written
    TextRef naturalId;   // the row's own id in the file, when it has a usable one
    TextRef matchKey;    // the normalised description (MatchingText)
    TextRef partner;     // the other asset's name a transfer hint proposes
    TextRef category;    // the category the file gives ("大項目/中項目"), for exports of household books
    TextRef account;     // the account or card the row names, where the file names one per row
    TextRef reason;      // why a row was skipped or refused
};
