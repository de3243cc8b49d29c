#include "import/Matching.h"

#include <cstdlib>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "import/DuplicateKeys.h"
#include "import/MatchingText.h"
#include "store/Money.h"

namespace {

int64_t daysApart(ImportDate a, ImportDate b)
{
    return std::llabs(a.dayNumber() - b.dayNumber());
}

class Matcher {
public:
    Matcher(const StatementFile& s, std::span<const BookEntry> same, std::span<const BookEntry> other, MatchWindows w)
        : s_(s), same_(same), other_(other), w_(w), sameKeys_(same.size())
    {
        for (size_t i = 0; i < same.size(); ++i) {
            if (!same[i].idKey.empty()) byId_.emplace(same[i].idKey, i);
            if (!same[i].contentKey.empty()) byContent_.emplace(same[i].contentKey, i);
            byAmount_[same[i].kingaku].push_back(i);
        }
        for (size_t i = 0; i < other.size(); ++i)
            if (!other[i].transfer) otherByAmount_[other[i].kingaku].push_back(i);
    }

    RowMatch match(const StatementRow& row)
    {
        if (row.kind == RowKind::Refused) return {MatchStatus::Unreadable, 0, 0};
        if (row.kind == RowKind::Skipped) return {MatchStatus::Skipped, 0, 0};
        if (auto e = alreadyImported(row)) return take(*e, MatchStatus::AlreadyImported);
        if (row.transfer != TransferHint::None) {
            if (auto e = nearest(row, [&](const BookEntry& b) { return b.transfer; }, w_.pairDays))
                return take(*e, MatchStatus::AlreadyImported);
        }
        const std::string_view key = s_.text(row.matchKey);
        auto similar = [&](const BookEntry& b) {
            const bool typed = b.idKey.empty() && b.contentKey.empty();
            return typed || b.transfer || keysAreSimilar(sameKey(b), key);
        };
        if (auto e = nearest(row, similar, w_.nearDays)) return take(*e, MatchStatus::PossibleDuplicate);
        if (row.transfer == TransferHint::None) return {};
        return pair(row);
    }

private:
    std::optional<size_t> alreadyImported(const StatementRow& row)
    {
        const std::string id = idKey(row, s_.pool);
        if (!id.empty()) {
            const auto hit = byId_.find(id);
            if (hit != byId_.end() && !used_.contains(hit->second)) return hit->second;
        }
        const auto hit = byContent_.find(contentKey(row, s_.pool));
        if (hit == byContent_.end() || used_.contains(hit->second)) return std::nullopt;
        // Two ids that differ are two transactions, whatever their content.
        if (!id.empty() && !same_[hit->second].idKey.empty()) return std::nullopt;
        return hit->second;
    }

    // The unused entry of the same amount closest in date within `days` that `accepts`.
    template <typename Accept>
    std::optional<size_t> nearest(const StatementRow& row, Accept accepts, int days)
    {
        const auto bucket = byAmount_.find(row.kingaku);
        if (bucket == byAmount_.end()) return std::nullopt;
        std::optional<size_t> best;
        int64_t bestApart = days + 1;
        for (const size_t i : bucket->second) {
            const int64_t apart = daysApart(same_[i].date, row.date);
            if (apart < bestApart && !used_.contains(i) && accepts(same_[i])) {
                best = i;
                bestApart = apart;
            }
        }
        return best;
    }

    RowMatch pair(const StatementRow& row)
    {
        RowMatch m{MatchStatus::TransferCandidate, 0, 0};
        const auto bucket = otherByAmount_.find(-row.kingaku);
        if (bucket == otherByAmount_.end()) return m;
        int64_t bestApart = w_.pairDays + 1;
        std::optional<size_t> best;
        for (const size_t i : bucket->second) {
            const int64_t apart = daysApart(other_[i].date, row.date);
            if (apart < bestApart && !paired_.contains(i)) {
                best = i;
                bestApart = apart;
            }
        }
        if (best) {
            paired_.insert(*best);
            m.entryId = other_[*best].id;
            m.partnerSisanId = other_[*best].sisanId;
        }
        return m;
    }

    RowMatch take(size_t i, MatchStatus status)
    {
        used_.insert(i);
        return {status, same_[i].id, 0};
    }

    const std::string& sameKey(const BookEntry& b)
    {
        std::optional<std::string>& key = sameKeys_[static_cast<size_t>(&b - same_.data())];
        if (!key) key = matchingKey(b.text);
        return *key;
    }

    const StatementFile& s_;
    std::span<const BookEntry> same_, other_;
    MatchWindows w_;
    std::unordered_map<std::string, size_t> byId_, byContent_;
    std::unordered_map<int64_t, std::vector<size_t>> byAmount_, otherByAmount_;
    std::unordered_set<size_t> used_, paired_;
    std::vector<std::optional<std::string>> sameKeys_;
};

}  // namespace

std::vector<RowMatch> matchStatement(const StatementFile& statement, std::span<const BookEntry> sameAsset,
                                     std::span<const BookEntry> otherAssets, MatchWindows windows)
{
    Matcher matcher(statement, sameAsset, otherAssets, windows);
    std::vector<RowMatch> out;
    out.reserve(statement.rows.size());
    for (const StatementRow& row : statement.rows) out.push_back(matcher.match(row));
    return out;
}

std::string BilledTotalCheck::message() const
{
    if (matches()) return {};
    return "明細の請求額 " + formatWithGrouping(statedTotal) + "円 と、行の合計 " + formatWithGrouping(rowsTotal) +
           "円 が " + formatWithGrouping(std::llabs(statedTotal - rowsTotal)) + "円 違います。";
}

BilledTotalCheck checkBilledTotal(const StatementFile& s)
{
    BilledTotalCheck check;
    if (s.layout.profile.source != SourceKind::Card) return check;
    const StatedValues& stated = s.layout.stated;
    check.stated = stated.hasBilledTotal || s.hasTotalLine;
    check.statedTotal = stated.hasBilledTotal ? stated.billedTotal : s.totalLine;
    for (const StatementRow& r : s.rows)
        if (r.kind == RowKind::Entry) check.rowsTotal += r.hasBilled ? r.billed : -r.kingaku;
    return check;
}
