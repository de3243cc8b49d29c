#include "import/AssetChoice.h"

#include <algorithm>
#include <set>

#include "import/ImportContext.h"
#include "import/MatchingText.h"
#include "import/StatementReader.h"

namespace {

bool contains(const std::vector<int64_t>& ids, int64_t id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

// The one element of a set, or 0.
int64_t onlyOne(const std::set<int64_t>& ids)
{
    return ids.size() == 1 ? *ids.begin() : 0;
}

}  // namespace

std::string statementAccount(const StatementFile& s)
{
    if (!s.layout.stated.accountNumber.empty()) return s.layout.stated.accountNumber;
    return s.sectionNumbers.empty() ? std::string() : s.sectionNumbers.front();
}

int64_t proposedSisan(const std::string& layout, const std::string& account,
                      const std::vector<ImportAccountRow>& accounts, const std::vector<int64_t>& existing,
                      int64_t fallback)
{
    for (const bool sameAccount : {true, false}) {
        for (const ImportAccountRow& a : accounts) {
            if (a.layout != layout || (sameAccount && a.account != account)) continue;
            if (contains(existing, a.sisanId)) return a.sisanId;
        }
    }
    return fallback;
}

std::string otherAccountOf(int64_t sisanId, const std::string& layout, const std::string& account,
                           const std::vector<ImportAccountRow>& accounts)
{
    if (account.empty()) return {};
    std::string other;
    for (const ImportAccountRow& a : accounts) {
        if (a.sisanId != sisanId || a.layout != layout || a.account.empty()) continue;
        if (a.account == account) return {};
        other = a.account;
    }
    return other;
}

int64_t partnerSisan(std::string_view partner, const ImportContext& context)
{
    const std::string key = matchingKey(partner);
    if (key.empty()) return 0;
    std::set<int64_t> holding;
    for (const ContextSisan& s : context.sisans) {
        if (s.id == context.sisanId) continue;
        const std::string name = matchingKey(s.namae);
        if (name == key) return s.id;
        if (!name.empty() && (name.find(key) != std::string::npos || key.find(name) != std::string::npos))
            holding.insert(s.id);
    }
    if (const int64_t only = onlyOne(holding)) return only;
    // "楽天カード" is the card whose 楽天カード ご利用明細 went to one asset.
    std::set<int64_t> took;
    for (const ImportProfile& p : builtInProfiles()) {
        if (!p.name.starts_with(partner)) continue;
        for (const ImportAccountRow& a : context.accounts)
            if (a.layout == p.id && a.sisanId != context.sisanId && context.sisan(a.sisanId)) took.insert(a.sisanId);
    }
    return onlyOne(took);
}
