#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>

#include "store/Card.h"

namespace Ui {
class CardSettlementDialog;
}

// The settlement a card's withdrawal day brings: the closed period's
// amount, to be recorded as one transfer from the paying asset to the card.
// The amount is editable, for a statement that differs. The user records
// it (記録する, Enter), notes it as recorded already (記録済みにする), or
// leaves it for later (後で, Escape).
class CardSettlementDialog final : public QDialog {
    Q_OBJECT

public:
    enum class Choice { Later, Post, Mark };

    CardSettlementDialog(const QString& card, const QString& paying, const CardPeriodKingaku& due,
                         QWidget* parent = nullptr);
    ~CardSettlementDialog() override;

    Choice choice() const { return chosen; }
    // The amount to record (valid after Post).
    int64_t kingaku() const { return amount; }

    void btnSettlementPost();
    void btnSettlementMark();
    void btnSettlementLater();

private:
    std::unique_ptr<Ui::CardSettlementDialog> ui;
    Choice chosen = Choice::Later;
    int64_t amount = 0;
};
