#include "sync/SyncNotice.h"

#include "store/Items.h"
#include "store/Money.h"
#include "sync/BookTables.h"
#include "sync/SyncStatement.h"

namespace {

// 支出, 収入, 移動, 資産, 費目 or 内訳.
std::string noun(const std::string& table, const Row& row)
{
    const auto at = [&](size_t c) { return c < row.size() ? row[c].asInteger() : 0; };
    if (table == "Sisan") return "資産";
    if (table == "Himoku") return at(kHimokuHno) == at(kHimokuId) ? "費目" : "内訳";
    if (row.size() <= kItemsSyubetuNo || !row[kItemsSyubetuNo].present()) return "入力";
    switch (at(kItemsSyubetuNo)) {
    case kSyubetuSisyutu:
        return "支出";
    case kSyubetuSyuunyuu:
        return "収入";
    default:
        return "移動";
    }
}

std::string nameOf(sqlite3* db, const char* table, int64_t id)
{
    SyncStatement s(db, std::string("SELECT Namae FROM ") + table + " WHERE Id = ?");
    if (!s.prepared() || !s.bindInt64(1, id) || s.step() != Step::Row) return "????";
    return s.column(0).asText();
}

}  // namespace

std::string SyncNotice::key() const
{
    return std::to_string(static_cast<int>(kind)) + ":" + table + ":" + std::to_string(rowId) + ":" +
           std::to_string(op.ts) + "." + std::to_string(op.device) + "." + std::to_string(op.seq);
}

std::string noticeText(NoticeKind kind, const std::string& table, const Row& row)
{
    const std::string what = noun(table, row);
    switch (kind) {
    case NoticeKind::BothEdited:
        return "同じ" + what + "が両方で編集されました: 新しい方を採用";
    case NoticeKind::EditKept:
        return "一方で削除された" + what + "が他方で編集されていました: 編集された方を残しました";
    case NoticeKind::RestoredForNew:
        return "一方で削除された" + what + "に他方で追加がありました: 追加された分だけで残しました";
    case NoticeKind::PartnerKept:
        return "移動の片方だけが削除されました: 両方を残しました";
    case NoticeKind::EditLost:
        return "変更された" + what + "は削除済みで元の行が見つかりません: この変更は適用されませんでした";
    case NoticeKind::ParentMissing:
        return what + "の参照先が削除済みで元の行が見つかりません: " + what + "はそのまま残しました";
    }
    return {};
}

std::string describeRow(sqlite3* db, const std::string& table, const Row& row)
{
    const auto at = [&](size_t c) { return c < row.size() ? row[c].asInteger() : 0; };
    const auto text = [&](size_t c) { return c < row.size() ? row[c].asText() : std::string(); };
    if (table == "Sisan") return text(kSisanNamae);
    if (table == "Himoku") return text(kHimokuNamae);
    const int64_t kind = at(kItemsSyubetuNo);
    const bool transfer = kind == kSyubetuIdouMoto || kind == kSyubetuIdouSaki;
    std::string out = text(kItemsHizuke) + " " + nameOf(db, "Sisan", at(kItemsSisanNo)) + " ";
    out += transfer ? nameOf(db, "Sisan", at(kItemsIdouSisanNo)) : nameOf(db, "Himoku", at(kItemsHimokuNo));
    out += " " + formatWithGrouping(isNyuukinKind(kind) ? at(kItemsNyuukin) : at(kItemsSyukkin)) + "円";
    if (!text(kItemsBikou).empty()) out += " " + text(kItemsBikou);
    return out;
}
