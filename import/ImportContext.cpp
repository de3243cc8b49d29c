#include "import/ImportContext.h"

#include <algorithm>

#include "import/StatementReader.h"
#include "store/DataModel.h"
#include "store/Items.h"

namespace {

// The first and last date of the entry rows that `take` accepts, widened by `days`.
template <typename Take>
ImportDateRange rangeOf(const StatementFile& s, int days, Take take)
{
    ImportDate first, last;
    for (const StatementRow& r : s.rows) {
        if (r.kind != RowKind::Entry || !take(r)) continue;
        if (first.isNull() || r.date < first) first = r.date;
        if (last.isNull() || last < r.date) last = r.date;
    }
    if (first.isNull()) return {};
    return {ImportDate::fromDayNumber(first.dayNumber() - days).hizuke(),
            ImportDate::fromDayNumber(last.dayNumber() + days).hizuke()};
}

}  // namespace

const ContextSisan* ImportContext::sisan(int64_t id) const
{
    const auto it = std::find_if(sisans.begin(), sisans.end(), [id](const ContextSisan& s) { return s.id == id; });
    return it == sisans.end() ? nullptr : &*it;
}

const ContextHimoku* ImportContext::himoku(int64_t id) const
{
    const auto it = std::find_if(himokus.begin(), himokus.end(), [id](const ContextHimoku& h) { return h.id == id; });
    return it == himokus.end() ? nullptr : &*it;
}

ImportDateRange sameAssetRange(const StatementFile& statement, const MatchWindows& windows)
{
    return rangeOf(statement, std::max(windows.nearDays, windows.pairDays), [](const StatementRow&) { return true; });
}

ImportDateRange transferRange(const StatementFile& statement, const MatchWindows& windows)
{
    return rangeOf(statement, windows.pairDays,
                   [](const StatementRow& r) { return r.transfer != TransferHint::None; });
}

bool loadImportContext(DataModel& dm, const StatementFile& statement, int64_t sisanId, ImportContext& context)
{
    context = {};
    context.sisanId = sisanId;
    for (const auto& s : dm.sisanList) context.sisans.push_back({s->Id, s->Namae});
    for (const auto& h : dm.himokuList)
        if (h->Ucount == 0) context.himokus.push_back({h->Id, h->SyubetuNo, h->Namae});
    if (!dm.readImportAssignments(context.assignments) || !dm.readImportAccounts(context.accounts) ||
        !dm.findImportRecord(statement.sha256, context.sameFile) ||
        !readCardStatementPeriod(dm, statement, sisanId, context.cardPeriod))
        return false;
    if (const ImportDateRange same = sameAssetRange(statement); !same.from.empty()) {
        if (!dm.readImportWindow(sisanId, same.from, same.to, context.sameAsset)) return false;
    }
    // Only rows that look like money between own assets are paired, so only
    // their dates need the other assets' entries.
    if (const ImportDateRange pairing = transferRange(statement); !pairing.from.empty()) {
        std::vector<ImportBookRow> rows;
        for (const ContextSisan& other : context.sisans) {
            if (other.id == sisanId) continue;
            if (!dm.readImportWindow(other.id, pairing.from, pairing.to, rows)) return false;
            context.otherAssets.insert(context.otherAssets.end(), rows.begin(), rows.end());
        }
    }
    return true;
}

BookEntry bookEntryOf(const ImportBookRow& row)
{
    BookEntry e;
    e.id = row.id;
    e.sisanId = row.sisanId;
    e.date = ImportDate::fromHizuke(row.hizuke);
    e.kingaku = row.kingaku;
    e.text = row.text.empty() ? row.bikou : row.text;
    e.idKey = row.idKey;
    e.contentKey = row.contentKey;
    e.transfer = row.syubetuNo == kSyubetuIdouMoto || row.syubetuNo == kSyubetuIdouSaki;
    return e;
}
