#include "bench/ImportBench.h"

#include <sqlite3.h>

#include <QDate>
#include <QStringEncoder>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <unordered_set>
#include <vector>

#include "bench/Compare.h"
#include "import/ImportPlan.h"
#include "store/DataModel.h"

namespace {

constexpr int kRows = 10000;
constexpr int kYear = 2025;

// Merchants as card statements print them: full-width Latin, half-width
// katakana, long-vowel variants; each with a few branch numbers.
const char* const kMerchants[] = {"ＡＭＡＺＯＮ．ＣＯ．ＪＰ", "ｾﾌﾞﾝｲﾚﾌﾞﾝ", "ファミリーマート", "ﾛｰｿﾝ",
                                  "イオンモール", "楽天市場", "ＥＴＣ首都高", "ヨドバシカメラ　通信販売",
                                  "スターバックス", "ユニクロ", "マツモトキヨシ", "東京電力エナジーパートナー",
                                  "ＮＴＴドコモ", "ＪＲ東日本", "ｽｰﾊﾟｰﾏｰｹｯﾄ", "ＧＩＴＨＵＢ，ＩＮＣ．"};

// A JCB statement (its preamble, its header on line 6) of kRows purchases
// in kYear, one in a hundred a charge of モバイルスイカ, as CP932 bytes.
std::string cardStatement()
{
    QString text = QStringLiteral(
        "\"\",\"\",\"今回のお支払日\",\"2026/01/10\"\r\n"
        "\"\",\"\",\"今回のお支払金額合計(￥)\",\"0\"\r\n"
        "\"\",\"\",\"　うち国内ご利用金額合計(￥)\",\"0\"\r\n"
        "\"\",\"\",\"　うち海外ご利用金額合計(￥)\",\"0\"\r\n"
        "\"【ご利用明細】\"\r\n"
        "\"ご利用者\",\"カテゴリ\",\"ご利用日\",\"ご利用先など\",\"ご利用金額(￥)\",\"支払区分\",\"今回回数\","
        "\"訂正サイン\",\"お支払い金額(￥)\",\"国内／海外\",\"摘要\",\"備考\"\r\n");
    for (int i = 0; i < kRows; ++i) {
        const int day = i * 365 / kRows;
        const QDate date = QDate(kYear, 1, 1).addDays(day);
        // Amounts that no generated expense has, so every row is new.
        int amount = 30101 + (i * 7919) % 29000;
        if (amount % 1000 == 0) ++amount;
        const QString merchant = i % 100 == 0
                                     ? QStringLiteral("モバイルスイカ")
                                     : QString::fromUtf8(kMerchants[i % std::size(kMerchants)]) +
                                           QStringLiteral("　%1").arg(i % 37);
        text += QStringLiteral("\"****-****-****-0000　カードA\",\" ≪ショッピング≫\",\" %1\",\"%2\",\"%3\",\"１回\",\"\","
                               "\"\",\"%3\",\"国内\",\"\",\"\"\r\n")
                    .arg(date.toString(QStringLiteral("yyyy/MM/dd")), merchant, QString::number(amount));
    }
    QStringEncoder cp932("Shift_JIS");
    const QByteArray bytes = cp932.encode(text);
    return bytes.toStdString();
}

struct Connection {
    sqlite3* db = nullptr;
    explicit Connection(const std::string& path)
    {
        sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
        sqlite3_busy_timeout(db, DataModel::kBusyTimeoutMs);
    }
    ~Connection() { sqlite3_close(db); }
    void run(const std::string& sql)
    {
        if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
            std::fprintf(stderr, "import bench: %s: %s\n", sqlite3_errmsg(db), sql.c_str());
    }
};

struct Stmt {
    sqlite3_stmt* s = nullptr;
    Stmt(sqlite3* db, const char* sql) { sqlite3_prepare_v2(db, sql, -1, &s, nullptr); }
    ~Stmt() { sqlite3_finalize(s); }
    void reset() { sqlite3_reset(s); }
    void text(int i, const std::string& v) { sqlite3_bind_text(s, i, v.c_str(), static_cast<int>(v.size()), SQLITE_TRANSIENT); }
    void integer(int i, int64_t v) { sqlite3_bind_int64(s, i, v); }
};

// The floor: the same reads with the same joins, a key lookup per row, and
// the same rows written with the same statements, in one transaction that
// records them as one step of the history with the bare session API, as the
// book keeps every change.
class ImportFloor {
public:
    ImportFloor(const std::string& path, std::vector<int64_t> sisans) : c_(path), sisans_(std::move(sisans)) {}

    void run(const ImportBatch& b, int64_t sisanId, const ImportDateRange& same, const ImportDateRange& pairing)
    {
        std::unordered_set<std::string> keys;
        readWindow(sisanId, same, &keys);
        for (const int64_t other : sisans_)
            if (other != sisanId) readWindow(other, pairing, nullptr);
        readAll("SELECT Layout, MatchKey, SyubetuNo, HimokuNo FROM ImportCategory");
        readAll("SELECT Layout, Account, SisanNo FROM ImportAccount");
        {
            Stmt find(c_.db, "SELECT Id FROM ImportRecord WHERE FileHash = ? ORDER BY Id DESC LIMIT 1");
            find.text(1, b.record.fileHash);
            while (sqlite3_step(find.s) == SQLITE_ROW) sink_ += sqlite3_column_int64(find.s, 0);
        }
        c_.run("BEGIN");
        sqlite3_session* session = nullptr;
        sqlite3session_create(c_.db, "main", &session);
        sqlite3session_table_filter(
            session, [](void*, const char* table) { return sqlite3_stricmp(table, "History") != 0 ? 1 : 0; }, nullptr);
        sqlite3session_attach(session, nullptr);
        Stmt record(c_.db,
                    "INSERT INTO ImportRecord (FileName, FileHash, Layout, LayoutName, Account, ImportedAt, SisanNo, "
                    "RowsRead, RowsImported, RowsAlready, RowsRefused) VALUES (?,?,?,?,?,?,?,?,?,?,?)");
        const ImportRecordRow& r = b.record;
        record.text(1, r.fileName);
        record.text(2, r.fileHash);
        record.text(3, r.layout);
        record.text(4, r.layoutName);
        record.text(5, r.account);
        record.text(6, r.importedAt);
        record.integer(7, r.sisanId);
        record.integer(8, r.rowsRead);
        record.integer(9, static_cast<int64_t>(b.entries.size()));
        record.integer(10, r.rowsAlready);
        record.integer(11, r.rowsRefused);
        sqlite3_step(record.s);
        const int64_t importId = sqlite3_last_insert_rowid(c_.db);
        Stmt item(c_.db, "INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Syukkin,Bikou) "
                         "VALUES (?,?,?,?,?,?,?,?,?,?)");
        Stmt origin(c_.db, "INSERT OR REPLACE INTO ImportOrigin (ItemId, ImportId, SisanNo, IdKey, ContentKey, Text) "
                           "VALUES (?,?,?,?,?,?)");
        for (const ImportEntry& e : b.entries) {
            sink_ += keys.count(e.contentKey);
            item.reset();
            item.text(1, e.hizuke);
            item.integer(2, e.nen);
            item.integer(3, e.tuki);
            item.integer(4, e.hi);
            item.integer(5, sisanId);
            item.integer(6, 1);
            item.integer(7, e.himokuNo);
            item.integer(8, -1);
            item.integer(9, -e.kingaku);
            item.text(10, e.bikou);
            sqlite3_step(item.s);
            origin.reset();
            origin.integer(1, sqlite3_last_insert_rowid(c_.db));
            origin.integer(2, importId);
            origin.integer(3, sisanId);
            origin.text(4, e.idKey);
            origin.text(5, e.contentKey);
            origin.text(6, e.text);
            sqlite3_step(origin.s);
        }
        Stmt learn(c_.db, "INSERT INTO ImportCategory (Layout, MatchKey, SyubetuNo, HimokuNo) VALUES (?,?,?,?) "
                          "ON CONFLICT(Layout, MatchKey, SyubetuNo) DO UPDATE SET HimokuNo = excluded.HimokuNo");
        for (const ImportAssignment& a : b.assignments) {
            learn.reset();
            learn.text(1, a.layout);
            learn.text(2, a.matchKey);
            learn.integer(3, a.syubetuNo);
            learn.integer(4, a.himokuNo);
            sqlite3_step(learn.s);
        }
        Stmt account(c_.db, "INSERT INTO ImportAccount (Layout, Account, SisanNo) VALUES (?,?,?) "
                            "ON CONFLICT(Layout, Account) DO UPDATE SET SisanNo = excluded.SisanNo");
        account.text(1, r.layout);
        account.text(2, r.account);
        account.integer(3, sisanId);
        sqlite3_step(account.s);
        int size = 0;
        void* changeset = nullptr;
        sqlite3session_changeset(session, &size, &changeset);
        sqlite3session_delete(session);
        Stmt history(c_.db, "INSERT INTO History (At, Kind, Target, Label, Sisans, Changes, Deletes, Changeset) "
                            "VALUES (?,1,0,?,'',?,0,?)");
        history.integer(1, 0);
        history.text(2, "import");
        history.integer(3, static_cast<int64_t>(2 * b.entries.size()));
        sqlite3_bind_blob(history.s, 4, changeset, size, SQLITE_STATIC);
        sqlite3_step(history.s);
        sqlite3_free(changeset);
        c_.run("COMMIT");
    }

    int64_t checksum() const { return sink_; }

private:
    Connection c_;
    std::vector<int64_t> sisans_;
    int64_t sink_ = 0;

    void readWindow(int64_t sisanId, const ImportDateRange& range, std::unordered_set<std::string>* keys)
    {
        if (range.from.empty()) return;
        Stmt s(c_.db,
               "SELECT i.Id, i.Hizuke, i.SyubetuNo, i.HimokuNo, i.IdouSisanNo, i.Nyuukin, i.Syukkin, i.Bikou, "
               "o.IdKey, o.ContentKey, o.Text FROM Items i LEFT JOIN ImportOrigin o ON o.ItemId = i.Id AND "
               "o.SisanNo = i.SisanNo WHERE i.SisanNo = ? AND i.Hizuke BETWEEN ? AND ?");
        s.integer(1, sisanId);
        s.text(2, range.from);
        s.text(3, range.to);
        while (sqlite3_step(s.s) == SQLITE_ROW) {
            sink_ += sqlite3_column_int64(s.s, 0) + sqlite3_column_int64(s.s, 5) + sqlite3_column_int64(s.s, 6);
            sink_ += sqlite3_column_bytes(s.s, 1) + sqlite3_column_bytes(s.s, 7) + sqlite3_column_bytes(s.s, 10);
            const auto* key = reinterpret_cast<const char*>(sqlite3_column_text(s.s, 9));
            if (keys && key) keys->emplace(key);
        }
    }

    void readAll(const char* sql)
    {
        Stmt s(c_.db, sql);
        while (sqlite3_step(s.s) == SQLITE_ROW) sink_ += sqlite3_column_bytes(s.s, 0);
    }
};

}  // namespace

void benchImport(DataModel& dm, const std::string& bookPath, const std::string& dir, int64_t sisanId, int runs)
{
    const std::string file = dir + "/jcb-10000.csv";
    std::ofstream(file, std::ios::binary) << cardStatement();
    Connection side(bookPath);
    // The card's rows go to an expense sub-item the earlier operations left, as the layout's default.
    dm.readFromHimokuTable();
    int64_t himoku = 0;
    for (const auto& h : dm.himokuList)
        if (h->SyubetuNo == 1 && h->Ucount == 0) himoku = h->Id;
    side.run("INSERT INTO ImportCategory (Layout, MatchKey, SyubetuNo, HimokuNo) VALUES ('jcb', '', 1, " +
             std::to_string(himoku) + ")");
    int64_t lastItem = 0, lastHistory = 0;
    for (auto [sql, last] : {std::pair{"SELECT MAX(Id) FROM Items", &lastItem}, {"SELECT MAX(Id) FROM History", &lastHistory}}) {
        Stmt max(side.db, sql);
        if (sqlite3_step(max.s) == SQLITE_ROW) *last = sqlite3_column_int64(max.s, 0);
    }
    // What a run wrote, taken away again.
    const auto forget = [&] {
        side.run("BEGIN; DELETE FROM Items WHERE Id > " + std::to_string(lastItem) +
                 "; DELETE FROM ImportOrigin; DELETE FROM ImportRecord; DELETE FROM ImportCategory WHERE Layout = '';"
                 " DELETE FROM ImportAccount; DELETE FROM History WHERE Id > " + std::to_string(lastHistory) + "; COMMIT");
    };

    std::vector<double> readMs, previewMs;
    std::shared_ptr<const StatementFile> statement;
    for (int r = 0; r < runs; ++r) {
        StatementReading reading;
        readMs.push_back(millisOf([&] { reading = readStatementFile(file); }));
        if (!reading.ok()) {
            std::fprintf(stderr, "import bench: %s\n", reading.refusal->message.c_str());
            return;
        }
        statement = std::make_shared<const StatementFile>(std::move(reading.statement));
        previewMs.push_back(readMs.back() + millisOf([&] {
                                ImportContext context;
                                loadImportContext(dm, *statement, sisanId, context);
                                ImportPlan plan(statement, std::move(context));
                            }));
    }
    std::sort(readMs.begin(), readMs.end());
    std::sort(previewMs.begin(), previewMs.end());
    std::printf("bench import_card_10k_read decode_parse_ms=%.3f preview_ms=%.3f\n", readMs[readMs.size() / 2],
                previewMs[previewMs.size() / 2]);

    // The rows the store writes, for the floor to write the same.
    ImportContext context;
    loadImportContext(dm, *statement, sisanId, context);
    const ImportBatch batch = ImportPlan(statement, std::move(context)).batch("2026-01-10 12:00:00");
    if (batch.entries.size() != kRows)
        std::fprintf(stderr, "import bench: %zu rows to write, not %d\n", batch.entries.size(), kRows);
    std::vector<int64_t> sisans;
    for (const auto& s : dm.sisanList) sisans.push_back(s->Id);
    ImportFloor floor(bookPath, sisans);
    const ImportDateRange same = sameAssetRange(*statement);
    const ImportDateRange pairing = transferRange(*statement);
    compare(
        "import_card_10k", runs,
        [&](int) {
            ImportContext c;
            if (!loadImportContext(dm, *statement, sisanId, c)) return;
            const ImportPlan plan(statement, std::move(c));
            dm.importStatementEntries(plan.batch("2026-01-10 12:00:00"), nullptr);
        },
        [&](int) { floor.run(batch, sisanId, same, pairing); },
        [&](int) {
            // The floor's rows and the deletions fire the search index's
            // triggers too: their queue is applied here, so that the store's
            // step folds only the notes of its own rows.
            forget();
            dm.refreshSearchIndex();
        });
    forget();
    side.run("DELETE FROM ImportCategory");
    std::fprintf(stderr, "import floor checksum %lld\n", static_cast<long long>(floor.checksum()));
}
