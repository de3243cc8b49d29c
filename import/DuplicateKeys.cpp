#include "import/DuplicateKeys.h"

#include <functional>
#include <unordered_map>

namespace {

std::string idBase(const StatementRow& row, const TextPool& pool)
{
    return "id:" + std::string(pool.view(row.naturalId)) + "|" + row.date.hizuke() + "|" + std::to_string(row.kingaku);
}

std::string contentBase(const StatementRow& row, const TextPool& pool)
{
    return row.date.hizuke() + "|" + std::to_string(row.kingaku) + "|" + std::string(pool.view(row.matchKey));
}

}  // namespace

std::string idKey(const StatementRow& row, const TextPool& pool)
{
    if (row.naturalId.empty()) return {};
    return idBase(row, pool) + "#" + std::to_string(row.idOccurrence);
}

std::string contentKey(const StatementRow& row, const TextPool& pool)
{
    return contentBase(row, pool) + "#" + std::to_string(row.contentOccurrence);
}

void numberOccurrences(std::vector<StatementRow>& rows, const TextPool& pool)
{
    // Counted by the keys' hashes: a million rows need no million key strings.
    std::unordered_map<size_t, uint32_t> idSeen, contentSeen;
    contentSeen.reserve(rows.size());
    const std::hash<std::string> hash;
    for (StatementRow& row : rows) {
        if (row.kind != RowKind::Entry) continue;
        if (!row.naturalId.empty()) row.idOccurrence = ++idSeen[hash(idBase(row, pool))];
        row.contentOccurrence = ++contentSeen[hash(contentBase(row, pool))];
    }
}
