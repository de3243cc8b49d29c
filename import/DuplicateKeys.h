#pragma once

#include <string>
#include <vector>

#include "import/StatementRow.h"
#include "import/TextPool.h"

// Keys that make "never twice" work across overlapping downloads, kept per
// asset with every imported entry. A row with its own id in the file has an
// id key (id, date and amount: an id a bank reuses for another day or amount
// is not taken for the same row); every row has a content key (date, signed
// amount and matching key of the description). Both end in "#n", the row's
// place among the file's rows with the same key, so two genuine identical
// purchases on one day stay two, and a re-download of the same day gives
// them the same two keys.
std::string idKey(const StatementRow& row, const TextPool& pool);  // "" for a row without an id
std::string contentKey(const StatementRow& row, const TextPool& pool);

// Numbers the entry rows' keys in file order (idOccurrence, contentOccurrence).
void numberOccurrences(std::vector<StatementRow>& rows, const TextPool& pool);
