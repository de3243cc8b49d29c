#include "store/ChangesetDigest.h"

#include "store/Changeset.h"

namespace {

// Columns by position.
enum ItemsColumn {
    kId, kHizuke, kNen, kTuki, kHi, kSisanNo, kSyubetuNo, kHimokuNo, kIdouSisanNo, kIdouId, kNyuukin, kSyukkin, kBikou
};
enum SisanColumn { kSisanNamae = 1, kSyokiKingaku = 2 };
enum HimokuColumn { kHimokuNamae = 2, kHno = 3, kUcount = 4 };

using R = ChangesetReader;

// A reference worth checking: NULL, 0 and -1 name no row.
void use(sqlite3_value* value, std::set<int64_t>& ids)
{
    if (R::isNull(value)) return;
    const int64_t id = R::intOf(value);
    if (id != 0 && id != -1) ids.insert(id);
}

Items wholeEntry(const R& r)
{
    const auto i = [&](int c) { return R::intOf(r.after(c)); };
    return Items(i(kId), R::textOf(r.after(kHizuke)), i(kNen), i(kTuki), i(kHi), i(kSisanNo), i(kSyubetuNo),
                 i(kHimokuNo), i(kIdouSisanNo), i(kIdouId), i(kNyuukin), i(kSyukkin), R::textOf(r.after(kBikou)), "",
                 "", "", 0);
}

void digestEntry(const R& r, int64_t key, int64_t wholeRowsOf, ChangesetDigest& d)
{
    if (r.op() == RowOp::Update) {
        ChangesetDigest::Update u{key, {}, {}};
        const int columns[4] = {kSisanNo, kSyubetuNo, kNyuukin, kSyukkin};
        for (int i = 0; i < 4; ++i) {
            if (sqlite3_value* v = r.before(columns[i])) u.before[i] = R::intOf(v);
            if (sqlite3_value* v = r.after(columns[i])) u.after[i] = R::intOf(v);
        }
        d.updates.push_back(u);
        if (r.before(kSisanNo)) d.sisanIds.insert(R::intOf(r.before(kSisanNo)));
        if (r.after(kSisanNo)) d.sisanIds.insert(R::intOf(r.after(kSisanNo)));
        use(r.after(kSisanNo), d.usedSisans);
        use(r.after(kHimokuNo), d.usedHimoku);
        use(r.after(kIdouSisanNo), d.usedSisans);
        use(r.after(kIdouId), d.usedItems);
        return;
    }
    const bool inserted = r.op() == RowOp::Insert;
    const auto value = [&](int c) { return inserted ? r.after(c) : r.before(c); };
    const int64_t sisanNo = R::intOf(value(kSisanNo));
    d.sisanIds.insert(sisanNo);
    d.entries.push_back({key, sisanNo,
                         signedKingaku(R::intOf(value(kSyubetuNo)), R::intOf(value(kNyuukin)), R::intOf(value(kSyukkin))),
                         inserted});
    if (inserted) {
        use(r.after(kSisanNo), d.usedSisans);
        use(r.after(kHimokuNo), d.usedHimoku);
        use(r.after(kIdouSisanNo), d.usedSisans);
        use(r.after(kIdouId), d.usedItems);
        if (sisanNo == wholeRowsOf) d.wholeRows.push_back(wholeEntry(r));
    } else if (!R::isNull(r.before(kIdouId))) {
        const int64_t partner = R::intOf(r.before(kIdouId));
        if (partner != -1 && partner != 0) d.goneTransfers.emplace_back(key, partner);
    }
}

void digestSisan(const R& r, int64_t key, ChangesetDigest& d)
{
    d.sisanChanged = true;
    d.sisanIds.insert(key);
    if (sqlite3_value* name = r.latest(kSisanNamae)) d.sisanNames[key] = R::textOf(name);
    switch (r.op()) {
    case RowOp::Insert:
        d.insertedSisans.push_back(key);
        d.changedSisans.push_back(key);
        break;
    case RowOp::Delete:
        d.goneSisans.push_back(key);
        break;
    case RowOp::Update:
        d.changedSisans.push_back(key);
        if (r.after(kSisanNamae)) d.namesChanged = true;
        if (r.before(kSyokiKingaku) && r.after(kSyokiKingaku))
            d.syokiKingakuDelta[key] += R::intOf(r.after(kSyokiKingaku)) - R::intOf(r.before(kSyokiKingaku));
        break;
    }
}

void digestHimoku(const R& r, int64_t key, ChangesetDigest& d)
{
    d.himokuChanged = true;
    if (r.op() == RowOp::Delete) {
        d.goneHimoku.push_back(key);
        return;
    }
    if (r.op() == RowOp::Update && r.after(kHimokuNamae)) d.namesChanged = true;
    use(r.after(kHno), d.usedHimoku);
    const bool category = R::intOf(r.latest(kUcount)) > 0;
    if (d.himokuRow == 0 || category) d.himokuRow = key;
}

}  // namespace

int64_t signedKingaku(int64_t syubetuNo, int64_t nyuukin, int64_t syukkin)
{
    if (isNyuukinKind(syubetuNo)) return nyuukin;
    if (isSyukkinKind(syubetuNo)) return -syukkin;
    return 0;
}

bool digestChangeset(const std::string& changeset, int64_t wholeRowsOf, ChangesetDigest* digest)
{
    ChangesetDigest& d = *digest;
    d = ChangesetDigest{};
    R r(changeset);
    while (r.next()) {
        ++d.changes;
        if (r.op() == RowOp::Delete) ++d.deletes;
        const int64_t key = R::intOf(r.latest(0));
        if (r.isTable("Items"))
            digestEntry(r, key, wholeRowsOf, d);
        else if (r.isTable("Sisan"))
            digestSisan(r, key, d);
        else if (r.isTable("Himoku"))
            digestHimoku(r, key, d);
        else if (r.isTable("Teiki") || r.isTable("TeikiKiroku"))
            d.teikiChanged = true;
    }
    return r.ok();
}
