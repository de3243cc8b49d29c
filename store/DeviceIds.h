#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct sqlite3;

// Ids of new rows come from the PC, not from SQLite, so that two PCs never
// make the same Id: the device number (1..15) sits in the low four bits and
// the rest grows past every Id in the table,
//     Id = 16 × (max(Id) / 16 + 1) + device,
// so the lists' order by Id stays the order of creation across PCs, and a
// transfer's two rows get known Ids before either is written.
constexpr int kMaxDevice = 15;
constexpr int64_t kMaxRowId = 2147483647;  // the store exchanges Ids as 32-bit values

// The Id after maxId for device, or nothing when it would pass kMaxRowId
// (about 134 million rows made): the store then refuses the new row with a
// message instead of writing an Id it cannot read back. maxId 0: an empty table.
std::optional<int64_t> nextDeviceId(int64_t maxId, int device);

// The Id for a new row of table (Sisan, Items or Himoku) made on device,
// inside the caller's transaction: nextDeviceId of the larger of the
// table's largest Id and the largest Id this book has handed out for the
// table (kept in SyncState, which it updates). The second keeps an Id from
// coming back after the newest row was deleted: another PC may still edit
// the deleted row, and must not find a new one under its Id.
// *failed is set on a database error.
std::optional<int64_t> nextDeviceIdIn(sqlite3* db, const std::string& table, int device, bool* failed);

// What a new row of table gets for its Id inside the caller's transaction.
enum class NewRowId { Assigned, BySqlite, Exhausted, Failed };
// When the book syncs, *id is the device's next Id (Assigned); otherwise
// SQLite picks the row id as it always did (BySqlite, *id 0), so that a
// book that never syncs keeps its Ids. Exhausted: no Id is left below
// kMaxRowId; Failed: a database error.
NewRowId newRowId(sqlite3* db, const std::string& table, int64_t* id);
