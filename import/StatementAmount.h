#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// An amount cell of a statement: nothing, a whole number of yen, or the
// reason it cannot be read.
struct AmountReading {
    enum class Kind { Empty, Value, Error } kind = Kind::Empty;
    int64_t value = 0;
    std::string reason;  // Japanese, naming the text, for Error
};

// Reads "1,200", "-1100", "0000192265", "１，２００", "￥1,200", "1200円",
// "−8570"; "", blanks and a lone dash are Empty. Commas must group by three.
// Only whole yen: "1200.00" is 1200, "12.50" is refused; so is an amount
// beyond what the ledger stores (32 bits). Never a guess: what is not one of
// these shapes is an Error, never zero.
AmountReading readStatementAmount(std::string_view text);
