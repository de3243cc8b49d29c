#pragma once

#include <string>
#include <string_view>

#include "import/ImportProfile.h"

// A guess, from a row's description alone, that money moves between the
// household's own assets, and the asset it proposes as the other side.
struct TransferGuess {
    TransferHint hint = TransferHint::None;
    std::string partner;
};

// Looks a matching key (MatchingText) up in the table of card companies'
// settlement names, ATM withdrawals and e-money charges. Settlements and ATM
// withdrawals are only guessed on bank statements; charges on bank and card
// statements.
TransferGuess guessOwnTransfer(std::string_view matchKey, SourceKind source);
