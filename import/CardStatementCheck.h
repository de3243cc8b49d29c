#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "store/Card.h"

class DataModel;
class ImportPlan;
struct StatementFile;

// A statement imported into a card asset, held against the card's period in
// the book: the period the statement bills is the one its latest purchase
// falls in, with what the book holds for it before the import.
struct CardStatementPeriod {
    CardPeriod period;
    int64_t bookKingaku = 0;  // expenses and transfers out minus refunds, as the card's line shows them
};

// The period for the statement when the asset is a card and the statement has
// a dated row; nullopt otherwise. False after the store's message.
bool readCardStatementPeriod(DataModel& dm, const StatementFile& statement, int64_t sisanId,
                             std::optional<CardStatementPeriod>& out);

// What the statement charges (its stated total, else its rows' sum), what
// the book holds for the period once the plan's ticked rows are in, and the
// difference.
struct CardStatementCheck {
    int64_t statementKingaku = 0;
    int64_t bookKingaku = 0;
    int64_t difference() const { return statementKingaku - bookKingaku; }
    // "カードの10月15日締め（9月16日〜10月15日の利用・11月27日引落）: 明細の請求 45,600円、
    // 取り込み後の帳簿 43,200円、差額 2,400円"
    std::string message(const CardPeriod& period) const;
};
CardStatementCheck checkCardStatement(const ImportPlan& plan, const CardStatementPeriod& period);
