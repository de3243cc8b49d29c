#pragma once

#include <cstdint>
#include <string>

#include "bench/Generator.h"

// sync_apply_10k: this PC's round bringing in 10,000 operations of another
// PC, rewinding and replaying 100 of its own stamped among them, on a copy
// of the book at path; against the bare session API applying the same
// changesets in one transaction. Then the operations' size.
void benchSync(const std::string& path, const std::string& dir, const GeneratedLedger& ledger, int64_t entries,
               int runs);
