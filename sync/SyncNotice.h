#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "store/OpKey.h"
#include "store/Value.h"

struct sqlite3;
class StatementCache;

// What the conflict rules did, one line each, for the window that lists
// them: nothing is ever dropped or brought back without a notice.
enum class NoticeKind {
    BothEdited,      // the same field edited on both PCs: the later edit was kept
    EditKept,        // edited on one PC, deleted on the other: the edited row was kept
    RestoredForNew,  // a sub-item, category or asset deleted on one PC got new rows on the
                     // other: it was brought back holding only those
    PartnerKept,     // one half of a transfer was kept: the other half was brought back too
    EditLost,        // an edit of a row that is gone, with no copy to bring it back from
    ParentMissing,   // a row refers to a sub-item, asset or transfer half that is gone for good
};

struct SyncNotice {
    NoticeKind kind = NoticeKind::BothEdited;
    OpKey op;           // the operation whose applying raised it
    std::string table;  // the row it is about
    int64_t rowId = 0;
    std::string text;    // 「同じ支出が両方で編集されました: 新しい方を採用」 ...
    std::string detail;  // the row in words: 2026-11-23 食費/外食 1,200円 ...
    // BothEdited: the values the earlier edit had written, by column
    // (Absent where it did not lose); 元に戻す writes them back. For the
    // other kinds 元に戻す removes the row that was kept or brought back.
    Row losing;

    // The same case keeps the same key when a rewind replays the operation
    // again, so that the list shows it once.
    std::string key() const;
};

// The text of a notice about the row (table, its current or last values).
std::string noticeText(NoticeKind kind, const std::string& table, const Row& row);
// The row in the words of the lists: date, category or other asset, amount
// and note of an entry; the name of an asset, category or sub-item. Names are
// read from the book as it is now.
std::string describeRow(StatementCache& sql, const std::string& table, const Row& row);

// A notice as the book keeps it (table SyncNotice) for the list the
// household reads.
struct StoredNotice {
    int64_t id = 0;
    int64_t at = 0;  // when it was raised here, milliseconds since 1970
    SyncNotice notice;
    bool seen = false;    // the list has shown it
    bool undone = false;  // its 元に戻す was carried out
};

// Keeps the notices, each case once: the same case raised again (by a
// rewind replaying its operation) is not added twice.
bool saveNotices(sqlite3* db, const std::vector<SyncNotice>& notices, int64_t atMs);
// Every kept notice, newest first.
bool readNotices(sqlite3* db, std::vector<StoredNotice>* notices);
// How many the list has not shown yet.
bool countUnseenNotices(sqlite3* db, int64_t* count);
bool markNoticesSeen(sqlite3* db);
bool markNoticeUndone(sqlite3* db, int64_t id);
