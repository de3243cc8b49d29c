#include "store/BookValues.h"

#include <sqlite3.h>

#include <vector>

#include "store/Money.h"

namespace {

struct ColumnRange {
    const char* column;
    IntegerRange range;
};

struct TableValues {
    const char* table;
    std::vector<ColumnRange> columns;
};

// Every column here is read by the start: the asset and category tables
// whole, the entries' columns by the balance recompute.
const TableValues kCheckedValues[] = {
    {"Sisan", {{"Id", IntegerRange::Int32}, {"SyokiKingaku", IntegerRange::Int32}, {"Zankin", IntegerRange::Int64}}},
    {"Items",
     {{"SisanNo", IntegerRange::Int32},
      {"SyubetuNo", IntegerRange::Int32},
      {"Nyuukin", IntegerRange::Int32},
      {"Syukkin", IntegerRange::Int32}}},
    {"Himoku",
     {{"Id", IntegerRange::Int32},
      {"SyubetuNo", IntegerRange::Int32},
      {"Hno", IntegerRange::Int32},
      {"Ucount", IntegerRange::Int32}}},
};

std::string selectOf(const TableValues& t)
{
    std::string sql = "SELECT Id";
    for (const auto& c : t.columns) sql += std::string(", ") + c.column;
    return sql + " FROM " + t.table;
}

}  // namespace

std::optional<int64_t> readableInteger(sqlite3_value* value, IntegerRange range)
{
    switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
        return 0;
    case SQLITE_INTEGER: {
        const int64_t v = sqlite3_value_int64(value);
        if (range == IntegerRange::Int32 && !fitsInt32(v)) return std::nullopt;
        return v;
    }
    default:
        return std::nullopt;
    }
}

std::optional<BadValue> findBadValue(sqlite3* db, std::string* error)
{
    for (const TableValues& t : kCheckedValues) {
        sqlite3_stmt* s = nullptr;
        std::optional<BadValue> bad;
        int rc = sqlite3_prepare_v2(db, selectOf(t).c_str(), -1, &s, nullptr);
        while (rc == SQLITE_OK || rc == SQLITE_ROW) {
            rc = sqlite3_step(s);
            if (rc != SQLITE_ROW) break;
            for (int c = 0; c < static_cast<int>(t.columns.size()) && !bad; ++c) {
                if (readableInteger(sqlite3_column_value(s, c + 1), t.columns[static_cast<size_t>(c)].range)) continue;
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, c + 1));
                bad = BadValue{t.table, sqlite3_column_int64(s, 0), t.columns[static_cast<size_t>(c)].column,
                               text ? text : ""};
            }
            if (bad) rc = SQLITE_DONE;
        }
        if (rc != SQLITE_DONE && error) *error = sqlite3_errmsg(db);
        sqlite3_finalize(s);
        if (bad || rc != SQLITE_DONE) return bad;
    }
    return std::nullopt;
}
