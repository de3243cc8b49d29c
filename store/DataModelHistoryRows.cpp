// DataModel: the rows a recorded operation changed, as the history window
// shows them, with the names of assets and categories resolved.
#include <sqlite3.h>

#include <map>
#include <optional>

#include "store/Changeset.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/Money.h"

namespace {

// One row of a table as text per column; an absent value is std::nullopt.
using Values = std::vector<std::optional<std::string>>;

Values valuesOf(const ChangesetReader& r, bool after)
{
    Values v(static_cast<size_t>(r.columns()));
    for (int c = 0; c < r.columns(); ++c) {
        sqlite3_value* value = after ? r.after(c) : r.before(c);
        if (value) v[static_cast<size_t>(c)] = ChangesetReader::textOf(value);
    }
    return v;
}

// Fills the absent values of v from base (the row as it is now).
Values filled(Values v, const Values& base)
{
    for (size_t c = 0; c < v.size() && c < base.size(); ++c)
        if (!v[c]) v[c] = base[c];
    return v;
}

std::string text(const Values& v, size_t c)
{
    return c < v.size() && v[c] ? *v[c] : std::string();
}

int64_t number(const Values& v, size_t c)
{
    const std::string t = text(v, c);
    return t.empty() ? 0 : std::stoll(t);
}

struct Names {
    std::map<int64_t, std::string> sisan, himoku;  // from the operation's own rows
    std::map<int64_t, Values> teiki;                // rules the operation added or removed
};

}  // namespace

bool DataModel::readHistoryRows(int64_t historyId, std::vector<HistoryRowView>& rows)
{
    finalize();
    HistoryEntry entry;
    std::string changeset;
    if (!readHistoryEntry(db, historyId, &entry, &changeset)) {
        someMessageWithAlert(errorText("error reading the history: "));
        return false;
    }
    // Names of the assets and categories the operation itself removed or
    // added, for the entries that name them.
    Names names;
    for (ChangesetReader r(changeset); r.next();) {
        const Values v = valuesOf(r, r.op() != RowOp::Delete);
        const int64_t key = ChangesetReader::intOf(r.latest(0));
        if (r.isTable("Sisan") && v.size() > 1 && v[1]) names.sisan[key] = *v[1];
        if (r.isTable("Himoku") && v.size() > 2 && v[2]) names.himoku[key] = *v[2];
        if (r.isTable("Teiki") && r.op() != RowOp::Update) names.teiki[key] = v;
    }
    const auto sisanName = [&](int64_t id) {
        if (const Sisan* s = findById(sisanList, sisanId2Idx, id)) return s->Namae;
        return names.sisan.count(id) ? names.sisan[id] : std::string("????");
    };
    const auto himokuName = [&](int64_t id) {
        if (const Himoku* h = findById(himokuList, himokuId2Idx, id)) return h->Namae;
        return names.himoku.count(id) ? names.himoku[id] : std::string("????");
    };
    // The row as it is now, for the columns an update did not change; empty
    // when it is gone.
    const auto currentRow = [&](const std::string& table, int64_t id) {
        Values v;
        if (table != "Items" && table != "Sisan" && table != "Himoku" && table != "Teiki") return v;
        if (!prepare("SELECT * FROM " + table + " WHERE Id = " + std::to_string(id),
                     "error prepare select from history row: ", "information"))
            return v;
        readRows("error step select from history row: ", "information", [&] {
            for (int c = 0; c < stmt.columnCount(); ++c) v.emplace_back(stmt.columnText(c));
        });
        return v;
    };

    // A recurring entry's rule (Teiki) and an occurrence dealt with
    // (TeikiKiroku), which names its rule's asset and content.
    const auto ruleOf = [&](int64_t teikiNo, HistoryRowView& row) {
        Values v = currentRow("Teiki", teikiNo);
        if (v.empty() && names.teiki.count(teikiNo)) v = names.teiki[teikiNo];
        const int64_t kind = number(v, 2);
        row.sisan = v.empty() ? "????" : sisanName(number(v, 1));
        row.himoku = v.empty()                  ? "????"
                     : kind == kSyubetuIdouMoto ? "→" + sisanName(number(v, 4))
                                                : himokuName(number(v, 3));
        return kind;
    };
    const auto viewTeiki = [&](const Values& v, HistoryRowView& row) {
        row.kind = "定期";
        row.hizuke = text(v, 12);  // its start
        row.sisan = sisanName(number(v, 1));
        const int64_t kind = number(v, 2);
        row.himoku = kind == kSyubetuIdouMoto ? "→" + sisanName(number(v, 4)) : himokuName(number(v, 3));
        (kind == kSyubetuSyuunyuu ? row.nyuukin : row.syukkin) = formatWithGrouping(number(v, 5));
        row.bikou = text(v, 6);
        row.bikou += (row.bikou.empty() ? "" : " ") + std::string("最終確認 ") + text(v, 16);
    };
    const auto viewTeikiKiroku = [&](const Values& v, HistoryRowView& row) {
        static const char* const kJyoutai[] = {"", "記帳", "見送り", "金額を変えて記帳"};
        const int64_t jyoutai = number(v, 4);
        row.kind = "定期の記録";
        row.hizuke = text(v, 2);  // the scheduled day
        const int64_t kind = ruleOf(number(v, 1), row);
        row.bikou = jyoutai >= 1 && jyoutai <= 3 ? kJyoutai[jyoutai] : "";
        if (jyoutai != kTeikiMiokuri)
            (kind == kSyubetuSyuunyuu ? row.nyuukin : row.syukkin) = formatWithGrouping(number(v, 7));
    };

    std::vector<HistoryRowView> out;
    const auto view = [&](const std::string& table, const Values& v, const char* change) {
        HistoryRowView row;
        row.change = change;
        if (table == "Items") {
            const int64_t kind = number(v, 6);
            row.kind = "入力";
            row.hizuke = text(v, 1);
            row.sisan = sisanName(number(v, 5));
            if (kind == kSyubetuIdouMoto) row.himoku = "→" + sisanName(number(v, 8));
            else if (kind == kSyubetuIdouSaki) row.himoku = "←" + sisanName(number(v, 8));
            else row.himoku = himokuName(number(v, 7));
            if (isNyuukinKind(kind)) row.nyuukin = formatWithGrouping(number(v, 10));
            if (isSyukkinKind(kind)) row.syukkin = formatWithGrouping(number(v, 11));
            row.bikou = text(v, 12);
        } else if (table == "Sisan") {
            row.kind = "資産";
            row.sisan = text(v, 1);
            row.bikou = "初期金額 " + formatWithGrouping(number(v, 2));
        } else if (table == "Teiki") {
            viewTeiki(v, row);
        } else if (table == "TeikiKiroku") {
            viewTeikiKiroku(v, row);
        } else {
            const bool category = number(v, 4) > 0;
            row.kind = category ? "費目" : "内訳";
            row.himoku = text(v, 2);
            row.bikou = number(v, 1) == 2 ? "収入" : "支出";
        }
        out.push_back(std::move(row));
    };
    ChangesetReader r(changeset);
    while (r.next()) {
        const std::string table = r.table();
        switch (r.op()) {
        case RowOp::Insert:
            view(table, valuesOf(r, true), "追加");
            break;
        case RowOp::Delete:
            view(table, valuesOf(r, false), "削除");
            break;
        case RowOp::Update: {
            const Values base = currentRow(table, ChangesetReader::intOf(r.before(0)));
            view(table, filled(valuesOf(r, false), base), "変更前");
            view(table, filled(valuesOf(r, true), base), "変更後");
            break;
        }
        }
    }
    if (!r.ok()) {
        someMessageWithAlert("error reading the history: a damaged change");
        return false;
    }
    rows = std::move(out);
    return true;
}
