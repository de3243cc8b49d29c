#include "store/BookValues.h"

#include <sqlite3.h>

#include <string_view>
#include <vector>

#include "store/Items.h"

#include "store/Money.h"

namespace {

struct ColumnRange {
    const char* column;
    IntegerRange range;
    // An amount is read only from the rows of the kinds it belongs to (a
    // value left in the other column of a row is never read).
    bool (*readForKind)(int64_t kind) = nullptr;
};

struct TableValues {
    const char* table;
    std::vector<ColumnRange> columns;  // a column read for some kinds only follows SyubetuNo
};

// Every column here is read by the start: the asset and category tables
// whole, the entries' columns by the balance recompute.
const TableValues kCheckedValues[] = {
    {"Sisan", {{"Id", IntegerRange::Int32}, {"SyokiKingaku", IntegerRange::Int32}, {"Zankin", IntegerRange::Int64}}},
    {"Items",
     {{"SisanNo", IntegerRange::Int32},
      {"SyubetuNo", IntegerRange::Int32},
      {"Nyuukin", IntegerRange::Int32, isNyuukinKind},
      {"Syukkin", IntegerRange::Int32, isSyukkinKind}}},
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

// The first value of the current row the program cannot read, if any.
std::optional<BadValue> badValueOf(sqlite3_stmt* s, const TableValues& t)
{
    int64_t kind = 0;
    for (size_t c = 0; c < t.columns.size(); ++c) {
        const ColumnRange& rule = t.columns[c];
        sqlite3_value* value = sqlite3_column_value(s, static_cast<int>(c) + 1);
        if (rule.readForKind && !rule.readForKind(kind)) continue;
        if (const auto read = readableInteger(value, rule.range)) {
            if (std::string_view(rule.column) == "SyubetuNo") kind = *read;
            continue;
        }
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(s, static_cast<int>(c) + 1));
        return BadValue{t.table, sqlite3_column_int64(s, 0), rule.column, text ? text : ""};
    }
    return std::nullopt;
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
        while (!bad && (rc == SQLITE_OK || rc == SQLITE_ROW)) {
            rc = sqlite3_step(s);
            if (rc == SQLITE_ROW) bad = badValueOf(s, t);
        }
        const bool failed = !bad && rc != SQLITE_DONE;
        if (failed && error) *error = sqlite3_errmsg(db);
        sqlite3_finalize(s);
        if (bad || failed) return bad;
    }
    return std::nullopt;
}
