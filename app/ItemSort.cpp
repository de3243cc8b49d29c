#include "app/ItemSort.h"

#include <QString>
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace {

using ItemList = std::vector<std::shared_ptr<Items>>;

template <typename Key>
void sortBy(ItemList& list, bool ascending, Key key)
{
    if (ascending) {
        std::sort(list.begin(), list.end(), [&](const auto& a, const auto& b) { return key(*a) < key(*b); });
    } else {
        std::sort(list.begin(), list.end(), [&](const auto& a, const auto& b) { return key(*b) < key(*a); });
    }
}

// Text order compares the Unicode scalars of canonically equivalent texts
// alike. UTF-8 byte order is scalar order, so texts already in NFC compare as
// bytes; only the few distinct names that change under NFC need a lookup.
void sortByText(ItemList& list, bool ascending)
{
    std::unordered_map<std::string, std::string> composed;  // names that NFC changes
    std::unordered_set<std::string> seen;
    for (const auto& item : list) {
        if (!seen.insert(item->strHimoku).second) continue;
        const std::string nfc = QString::fromStdString(item->strHimoku).normalized(QString::NormalizationForm_C).toStdString();
        if (nfc != item->strHimoku) composed.emplace(item->strHimoku, nfc);
    }
    if (composed.empty()) {
        sortBy(list, ascending, [](const Items& i) -> const std::string& { return i.strHimoku; });
        return;
    }
    sortBy(list, ascending, [&](const Items& i) -> const std::string& {
        const auto it = composed.find(i.strHimoku);
        return it == composed.end() ? i.strHimoku : it->second;
    });
}

}  // namespace

bool sortItemList(ItemList& list, const std::string& identifier, bool ascending)
{
    if (identifier == "Hizuke") {
        sortBy(list, ascending, [](const Items& i) -> const std::string& { return i.Hizuke; });
    } else if (identifier == "HimokuNo") {
        sortByText(list, ascending);
    } else if (identifier == "Nyuukin") {
        sortBy(list, ascending, [](const Items& i) { return i.Nyuukin; });
    } else if (identifier == "Syukkin") {
        sortBy(list, ascending, [](const Items& i) { return i.Syukkin; });
    } else if (identifier == "Zankin") {
        sortBy(list, ascending, [](const Items& i) { return i.Zankin; });
    } else {
        return false;
    }
    return true;
}
