#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "import/CsvRecords.h"
#include "import/ImportDate.h"
#include "import/ImportProfile.h"

// Values a file states about itself, above its table or in its section lines.
struct StatedValues {
    std::string accountNumber;  // account or (masked) card number, as written
    std::string cardName;
    std::string period;  // as written ("2026年1月から2026年8月")
    ImportDate paymentDate;
    int paymentMonth = 0;  // from a heading such as "10月支払金額"
    bool hasBilledTotal = false;
    int64_t billedTotal = 0;
};

// A profile applied to one file: where its header is and which cells hold each role.
struct Layout {
    ImportProfile profile;
    uint32_t headerLine = 0;            // 0 for a file without a header line
    std::vector<std::string> headings;  // the header's cells, NFKC and trimmed: a repeat of it is skipped
    std::array<std::vector<int>, kRoleCount> columns;
    StatedValues stated;

    const std::vector<int>& of(Role role) const { return columns[static_cast<size_t>(role)]; }
};

// How many lines from the top a header is searched on.
constexpr size_t kHeaderSearchLines = 20;

// The layout of a file from its first records: the profile whose required
// columns all appear on one of the first 20 lines (the most columns found
// wins, then the earlier profile), or whose headerless shape fits. The
// stated values are read from the lines above the header.
std::optional<Layout> recognise(const std::vector<CsvRecord>& firstRecords, const std::vector<ImportProfile>& profiles);

// Joins the surplus fields of a headerless layout's longer row back into the
// column whose unquoted commas split it: every field beyond the layout's
// count is one of the text's commas (trailing empty fields too, which are
// the text's commas when the row ends in empty columns).
void joinSurplusFields(std::vector<std::string>& fields, int column, int fieldCount);

// The heading text as compared: NFKC, without blanks around it.
std::string normalisedHeading(const std::string& cell);

// The layout of a profile the user chose for this file (a saved mapping): by
// its headings when it has any, else by position with the header on
// `headerLine` (0: none). nullopt when its headings are not on the file.
std::optional<Layout> applyProfile(const ImportProfile& profile, const std::vector<CsvRecord>& firstRecords,
                                   uint32_t headerLine);
