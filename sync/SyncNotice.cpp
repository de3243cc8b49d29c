#include "sync/SyncNotice.h"

#include <sqlite3.h>

#include "store/BookTables.h"
#include "store/Items.h"
#include "store/Money.h"
#include "store/StatementCache.h"

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

std::string nameOf(StatementCache& sql, const char* table, int64_t id)
{
    Statement* s = sql.get(std::string("SELECT Namae FROM ") + table + " WHERE Id = ?");
    if (!s || s->bindInt64(1, id) != SQLITE_OK || s->step() != Step::Row) return "????";
    return s->columnText(0);
}

// The losing values as one line of text: "<column>:<type><value>" joined by
// tabs, with backslash, tab and newline escaped in texts.
std::string encodeRow(const Row& row)
{
    std::string out;
    for (size_t c = 0; c < row.size(); ++c) {
        const Value& v = row[c];
        if (!v.present()) continue;
        if (!out.empty()) out += '\t';
        out += std::to_string(c) + ":";
        switch (v.type) {
        case Value::Type::Integer:
            out += "i" + std::to_string(v.integer);
            break;
        case Value::Type::Text:
            out += "t";
            for (char ch : v.bytes) out += ch == '\\' ? "\\\\" : ch == '\t' ? "\\t" : ch == '\n' ? "\\n" : std::string(1, ch);
            break;
        default:
            out += "n";
        }
    }
    return out;
}

Row decodeRow(const std::string& text)
{
    Row row;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find('\t', at);
        if (end == std::string::npos) end = text.size();
        const std::string field = text.substr(at, end - at);
        at = end + 1;
        const size_t colon = field.find(':');
        if (colon == std::string::npos || colon + 1 >= field.size()) continue;
        const size_t column = std::stoul(field.substr(0, colon));
        if (row.size() <= column) row.resize(column + 1);
        const char type = field[colon + 1];
        const std::string value = field.substr(colon + 2);
        if (type == 'i') {
            row[column] = Value::ofInteger(std::stoll(value));
        } else if (type == 't') {
            std::string bytes;
            for (size_t i = 0; i < value.size(); ++i) {
                if (value[i] == '\\' && i + 1 < value.size()) {
                    const char e = value[++i];
                    bytes += e == 't' ? '\t' : e == 'n' ? '\n' : e;
                } else {
                    bytes += value[i];
                }
            }
            row[column] = Value{Value::Type::Text, 0, 0, bytes};
        } else {
            row[column] = Value{Value::Type::Null, 0, 0, {}};
        }
    }
    return row;
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

std::string describeRow(StatementCache& sql, const std::string& table, const Row& row)
{
    const auto at = [&](size_t c) { return c < row.size() ? row[c].asInteger() : 0; };
    const auto text = [&](size_t c) { return c < row.size() ? row[c].asText() : std::string(); };
    if (table == "Sisan") return text(kSisanNamae);
    if (table == "Himoku") return text(kHimokuNamae);
    const int64_t kind = at(kItemsSyubetuNo);
    const bool transfer = kind == kSyubetuIdouMoto || kind == kSyubetuIdouSaki;
    std::string out = text(kItemsHizuke) + " " + nameOf(sql, "Sisan", at(kItemsSisanNo)) + " ";
    out += transfer ? nameOf(sql, "Sisan", at(kItemsIdouSisanNo)) : nameOf(sql, "Himoku", at(kItemsHimokuNo));
    out += " " + formatWithGrouping(isNyuukinKind(kind) ? at(kItemsNyuukin) : at(kItemsSyukkin)) + "円";
    if (!text(kItemsBikou).empty()) out += " " + text(kItemsBikou);
    return out;
}

bool saveNotices(sqlite3* db, const std::vector<SyncNotice>& notices, int64_t atMs)
{
    Statement s;
    if (!s.prepare(db, "INSERT OR IGNORE INTO SyncNotice (Key, At, Kind, TableName, RowId, Text, Detail, Losing, Seen, "
                       "Undone) VALUES (?,?,?,?,?,?,?,?,0,0)"))
        return false;
    for (const SyncNotice& n : notices) {
        s.reset();
        const std::string key = n.key(), losing = encodeRow(n.losing);
        if (s.bindText(1, key) != SQLITE_OK || s.bindInt64(2, atMs) != SQLITE_OK ||
            s.bindInt64(3, static_cast<int64_t>(n.kind)) != SQLITE_OK || s.bindText(4, n.table) != SQLITE_OK ||
            s.bindInt64(5, n.rowId) != SQLITE_OK || s.bindText(6, n.text) != SQLITE_OK ||
            s.bindText(7, n.detail) != SQLITE_OK || s.bindText(8, losing) != SQLITE_OK || !s.run())
            return false;
    }
    return true;
}

bool readNotices(sqlite3* db, std::vector<StoredNotice>* notices)
{
    Statement s;
    if (!s.prepare(db, "SELECT Id, At, Kind, TableName, RowId, Text, Detail, Losing, Seen, Undone, Key FROM SyncNotice "
                       "ORDER BY Id DESC"))
        return false;
    std::vector<StoredNotice> read;
    for (;;) {
        switch (s.step()) {
        case Step::Row: {
            StoredNotice stored;
            stored.id = s.columnInt64(0);
            stored.at = s.columnInt64(1);
            stored.notice.kind = static_cast<NoticeKind>(s.columnInt64(2));
            stored.notice.table = s.columnText(3);
            stored.notice.rowId = s.columnInt64(4);
            stored.notice.text = s.columnText(5);
            stored.notice.detail = s.columnText(6);
            stored.notice.losing = decodeRow(s.columnText(7));
            stored.seen = s.columnInt64(8) != 0;
            stored.undone = s.columnInt64(9) != 0;
            read.push_back(std::move(stored));
            break;
        }
        case Step::Done:
            *notices = std::move(read);
            return true;
        case Step::Error:
            return false;
        }
    }
}

bool countUnseenNotices(sqlite3* db, int64_t* count)
{
    Statement s;
    if (!s.prepare(db, "SELECT count(*) FROM SyncNotice WHERE Seen = 0") || s.step() != Step::Row) return false;
    *count = s.columnInt64(0);
    return true;
}

bool markNoticesSeen(sqlite3* db)
{
    Statement s;
    return s.prepare(db, "UPDATE SyncNotice SET Seen = 1 WHERE Seen = 0") && s.run();
}

bool markNoticeUndone(sqlite3* db, int64_t id)
{
    Statement s;
    return s.prepare(db, "UPDATE SyncNotice SET Undone = 1, Seen = 1 WHERE Id = ?") && s.bindInt64(1, id) == SQLITE_OK &&
           s.run();
}
