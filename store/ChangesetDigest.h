#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "store/Items.h"

// What a changeset of the book changed, read in one pass over it: what the
// history shows of it, the rows its rows refer to, and its entries as the
// balances and the shown ledger need them. A pass decodes every value of
// every row, so the store reads a large changeset once and works from this.
struct ChangesetDigest {
    int64_t changes = 0;  // rows changed
    int64_t deletes = 0;  // rows deleted
    // Assets whose rows or entries it changed; an updated entry's asset is
    // added when it is resolved.
    std::set<int64_t> sisanIds;

    // Assets. Names the changeset itself carries: an asset row added,
    // renamed or deleted (the newest name it has).
    std::map<int64_t, std::string> sisanNames;
    std::vector<int64_t> insertedSisans;  // asset rows added
    std::vector<int64_t> changedSisans;   // asset rows added or changed
    // An opening amount changed: asset Id -> its change.
    std::map<int64_t, int64_t> syokiKingakuDelta;
    bool sisanChanged = false;
    bool himokuChanged = false;
    bool namesChanged = false;  // an asset or a category renamed
    bool teikiChanged = false;  // a recurring entry's rule or its record of occurrences
    int64_t himokuRow = 0;      // a category row added or changed, else a sub-item row

    // Entries added or deleted, with what each does to its asset's balance.
    struct Entry {
        int64_t id;
        int64_t sisanNo;
        int64_t kingaku;  // signed: what the row adds to the balance
        bool inserted;
    };
    std::vector<Entry> entries;
    // Entries updated. The change carries only the columns it changed; the
    // others are the same before and after, and are read from the book when
    // the update is resolved into a removal and an addition (DataModel).
    struct Update {
        int64_t id;
        // SisanNo, SyubetuNo, Nyuukin, Syukkin before and after, where changed.
        std::optional<int64_t> before[4], after[4];
    };
    std::vector<Update> updates;
    // Entries added to the asset wholeRowsOf, whole (for the shown ledger).
    std::vector<Items> wholeRows;

    // Rows that the rows it writes refer to, and rows it removes that others
    // may refer to.
    std::set<int64_t> usedSisans, usedHimoku, usedItems;
    std::vector<int64_t> goneHimoku, goneSisans;
    std::vector<std::pair<int64_t, int64_t>> goneTransfers;  // a removed transfer row and its partner
};

// Reads the changeset once; entries added to the asset wholeRowsOf (0 for
// none) are kept whole. False when the changeset is malformed.
bool digestChangeset(const std::string& changeset, int64_t wholeRowsOf, ChangesetDigest* digest);

// The names of the assets whose rows or entries the changeset changed, in Id
// order, "、" between: the changeset's own names first, else nameOf(Id).
template <typename NameOf>
std::string sisanNamesOf(const ChangesetDigest& digest, NameOf nameOf)
{
    std::string names;
    for (int64_t id : digest.sisanIds) {
        const auto carried = digest.sisanNames.find(id);
        names += (names.empty() ? "" : "、") + (carried != digest.sisanNames.end() ? carried->second : nameOf(id));
    }
    return names;
}

// What an entry adds to its asset's balance.
int64_t signedKingaku(int64_t syubetuNo, int64_t nyuukin, int64_t syukkin);
