#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/ImportRecords.h"

struct ImportContext;
struct StatementFile;

// Which asset a statement and its transfer-like rows belong to.

// The account or card number the statement names: the one above its table,
// else its first card section's; "" when it names none.
std::string statementAccount(const StatementFile& statement);

// The asset files of this layout and account went to last time, else the
// one files of this layout went to, else `fallback`. Only assets that still
// exist (in `existing`) are proposed.
int64_t proposedSisan(const std::string& layout, const std::string& account,
                      const std::vector<ImportAccountRow>& accounts, const std::vector<int64_t>& existing,
                      int64_t fallback);

// The account the asset took this layout's files for, when the statement
// names another one that the asset never took: "" when the file may go there.
std::string otherAccountOf(int64_t sisanId, const std::string& layout, const std::string& account,
                           const std::vector<ImportAccountRow>& accounts);

// The asset, other than the statement's, that a transfer hint's partner
// names ("楽天カード", "現金"): the asset of that name (compared as matching
// keys), else the only one whose name holds it or is held by it, else the
// only asset that took the statements of the layout of that name. 0 when none.
int64_t partnerSisan(std::string_view partner, const ImportContext& context);
