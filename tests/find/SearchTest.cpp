#include <sqlite3.h>

#include <QSignalSpy>
#include <random>

#include "find/TextFolding.h"
#include "store/Changeset.h"
#include "store/BookCheck.h"
#include "store/SearchIndex.h"
#include "store/SearchQuery.h"
#include "tests/store/StoreFixture.h"

namespace {

// Notes with the variants a user does not tell apart, and texts that mean
// something to FTS5 or SQL but must be found literally.
const char* const kNotes[] = {"スーパー",        "ｽｰﾊﾟｰ",       "スーパ",          "スーパーマーケット",
                              "コンピューター購入", "コンピュータ",  "ＡＢＣ商店",        "abc商店",
                              "Mom's \"shop\"",   "家賃",           "電気代　5月分",     "🍣寿司",
                              "サーバー代",        "AND OR NOT",     "a*b NEAR(c)",     "'; DROP TABLE Items; --",
                              "",                 "",               "ビール",           "ビル管理費"};

// One entry as the brute force sees it.
struct Row {
    int64_t id, sisan, kind, himoku, partner, amount;
    std::string hizuke, bikou;
};

std::string folded(const std::string& text)
{
    return foldForSearch(QString::fromStdString(text)).toStdString();
}

// A book of three assets, two categories and a few hundred entries (transfers
// among them) with notes drawn from kNotes.
class SearchTest : public StoreFixture {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        addSisan("現金", 0, 0);
        addSisan("普通預金", 0, 0);
        addSisan("ｶｰﾄﾞ", 0, 0);
        addCategory(1, "食費", {"外食", "スーパー"});
        addCategory(2, "給与");
        std::mt19937 rng(17);
        exec("BEGIN");
        for (int i = 0; i < 400; ++i) {
            const int sisan = 1 + static_cast<int>(rng() % 3);
            const std::string note = kNotes[rng() % std::size(kNotes)];
            const int day = 1 + static_cast<int>(rng() % 28), month = 1 + static_cast<int>(rng() % 12);
            char hizuke[16];
            std::snprintf(hizuke, sizeof hizuke, "%04d-%02d-%02d", 2023 + i % 2, month, day);
            const int64_t amount = 100 * (1 + static_cast<int64_t>(rng() % 50));
            if (rng() % 10 == 0) {
                const int other = sisan % 3 + 1;
                insertRow(hizuke, sisan, 3, 0, other, amount, note);
                insertRow(hizuke, other, 4, 0, sisan, amount, note);
            } else {
                const bool income = rng() % 4 == 0;
                insertRow(hizuke, sisan, income ? 2 : 1, income ? 6 : 2 + static_cast<int>(rng() % 3), 0, amount,
                          note);
            }
        }
        exec("COMMIT");
    }

    void insertRow(const std::string& hizuke, int64_t sisan, int64_t kind, int64_t himoku, int64_t partner,
                   int64_t amount, const std::string& note)
    {
        char* sql = sqlite3_mprintf(
            "INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouSisanNo,IdouId,%s,Bikou) VALUES "
            "(%Q,substr(%Q,1,4),substr(%Q,6,2),substr(%Q,9,2),%lld,%lld,NULLIF(%lld,0),NULLIF(%lld,0),-1,%lld,%Q)",
            kind == 1 || kind == 3 ? "Syukkin" : "Nyuukin", hizuke.c_str(), hizuke.c_str(), hizuke.c_str(),
            hizuke.c_str(), static_cast<long long>(sisan), static_cast<long long>(kind),
            static_cast<long long>(himoku), static_cast<long long>(partner), static_cast<long long>(amount),
            note.c_str());
        exec(sql);
        sqlite3_free(sql);
    }

    std::vector<Row> rows()
    {
        std::vector<Row> out;
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(side,
                           "SELECT Id, SisanNo, SyubetuNo, IFNULL(HimokuNo,0), IFNULL(IdouSisanNo,0), "
                           "CASE WHEN SyubetuNo IN (2,4) THEN Nyuukin ELSE Syukkin END, Hizuke, Bikou FROM Items "
                           "ORDER BY Hizuke DESC, Id DESC",
                           -1, &s, nullptr);
        while (sqlite3_step(s) == SQLITE_ROW)
            out.push_back({sqlite3_column_int64(s, 0), sqlite3_column_int64(s, 1), sqlite3_column_int64(s, 2),
                           sqlite3_column_int64(s, 3), sqlite3_column_int64(s, 4), sqlite3_column_int64(s, 5),
                           reinterpret_cast<const char*>(sqlite3_column_text(s, 6)),
                           reinterpret_cast<const char*>(sqlite3_column_text(s, 7))});
        sqlite3_finalize(s);
        return out;
    }

    // What a search must find, worked out entry by entry from the folded texts.
    std::vector<int64_t> bruteForce(const std::string& text, const SearchCriteria& filters)
    {
        std::vector<std::string> words;
        for (const QString& w : foldForSearch(QString::fromStdString(text)).split(u' ', Qt::SkipEmptyParts))
            words.push_back(w.toStdString());
        std::vector<int64_t> ids;
        for (const Row& r : rows()) {
            const std::string name =
                r.kind <= 2 ? store->getHimokuNamaeFromNo(r.himoku) : store->getSisanNamaeFromNo(r.partner);
            bool match = true;
            for (const std::string& w : words)
                match = match && (folded(r.bikou).find(w) != std::string::npos || folded(name).find(w) != std::string::npos);
            if (filters.kingakuMin) match = match && r.amount >= *filters.kingakuMin && r.amount <= *filters.kingakuMax;
            if (!filters.hizukeFrom.empty()) match = match && r.hizuke >= filters.hizukeFrom && r.hizuke <= filters.hizukeTo;
            if (filters.kind == SearchCriteria::Idou) match = match && r.kind >= 3;
            if (filters.kind == SearchCriteria::Sisyutu) match = match && r.kind == 1;
            if (filters.sisanId) match = match && r.sisan == filters.sisanId;
            if (match) ids.push_back(r.id);
        }
        return ids;
    }

    std::vector<int64_t> search(const std::string& text, SearchCriteria criteria = {})
    {
        EXPECT_TRUE(store->refreshSearchIndex()) << store->searchIndexError;
        criteria.words = store->searchWords(text);
        SearchConnection connection(path);
        FoundItems found;
        std::string error;
        EXPECT_TRUE(connection.search(criteria, &found, &error)) << error;
        std::vector<int64_t> ids;
        for (const FoundItem& f : found.rows) ids.push_back(f.Id);
        EXPECT_EQ(found.count, static_cast<int64_t>(ids.size()));
        return ids;
    }

    // The index holds exactly the entries with a note, each note's count and
    // newest entry, with nothing left in the queue; the history holds only
    // changes of the book's own tables.
    void expectIndexInStep()
    {
        EXPECT_EQ(scalar("SELECT COUNT(*) FROM ItemsFtsQueue"), 0);
        EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items WHERE Bikou <> '' AND Id NOT IN (SELECT Id FROM ItemsFtsEntry)"), 0);
        EXPECT_EQ(scalar("SELECT COUNT(*) FROM ItemsFtsEntry WHERE Id NOT IN (SELECT Id FROM Items WHERE Bikou <> '')"),
                  0);
        EXPECT_EQ(scalar("SELECT COUNT(*) FROM ItemsFtsNote WHERE Uses <> "
                         "(SELECT COUNT(*) FROM ItemsFtsEntry e WHERE e.NoteId = ItemsFtsNote.Id)"),
                  0);
        EXPECT_EQ(scalar("SELECT COUNT(*) FROM ItemsFtsNote WHERE LastId <> "
                         "(SELECT MAX(Id) FROM ItemsFtsEntry e WHERE e.NoteId = ItemsFtsNote.Id)"),
                  0);
        sqlite3_stmt* s = nullptr;
        sqlite3_prepare_v2(side, "SELECT Changeset FROM History", -1, &s, nullptr);
        while (sqlite3_step(s) == SQLITE_ROW) {
            ChangesetReader changes(std::string(static_cast<const char*>(sqlite3_column_blob(s, 0)),
                                                static_cast<size_t>(sqlite3_column_bytes(s, 0))));
            while (changes.next())
                EXPECT_TRUE(changes.isTable("Items") || changes.isTable("Sisan") || changes.isTable("Himoku"))
                    << changes.table();
        }
        sqlite3_finalize(s);
    }

    void expectSameAsBruteForce(const std::vector<std::string>& queries)
    {
        for (const std::string& q : queries) {
            SCOPED_TRACE(q.substr(0, 40));
            EXPECT_EQ(search(q), bruteForce(q, {}));
        }
    }
};

TEST(TextFoldingTest, WidthCaseAndLongVowelVariantsFoldAlike)
{
    EXPECT_EQ(foldForSearch("ｽｰﾊﾟｰ"), foldForSearch("スーパー"));
    EXPECT_EQ(foldForSearch("スーパー"), "スーパ");
    EXPECT_EQ(foldForSearch("コンピューター"), foldForSearch("コンピュータ"));
    EXPECT_EQ(foldForSearch("スーパーマーケット"), "スーパーマーケット") << "a mark inside a word stays";
    EXPECT_EQ(foldForSearch("ス-パ－"), "スーパ") << "dashes written for the mark";
    EXPECT_EQ(foldForSearch("ＡＢＣ　１２３"), "abc 123");
    EXPECT_EQ(foldForSearch("ビール"), "ビール") << "not ビル";
    EXPECT_EQ(foldForSearch("a-b"), "a-b") << "a hyphen between letters is kept";
    EXPECT_EQ(foldForSearch("スーパーで"), "スーパで") << "a particle ends the word";
    EXPECT_EQ(foldForSearch("すごーい"), "すごーい");
}

TEST_F(SearchTest, WordsAmountsPeriodsKindsAndAssetsFindWhatABruteForceScanFinds)
{
    open();
    const std::string longText(10000, 'x');
    expectSameAsBruteForce({"スーパー", "ｽｰﾊﾟｰ", "スーパ", "すーぱー", "コンピューター", "コンピュータ", "ＡＢＣ", "abc",
                            "家賃", "代", "費", "外食", "食費 スーパー", "預金", "ｶｰﾄﾞ", "カード", "5月分", "５月",
                            "寿司", "🍣", "Mom's", "\"shop\"", "\"", "AND", "OR NOT", "*", "a*b", "NEAR(c)", "NEAR",
                            "DROP TABLE", "'; --", "ビール", "ビル", longText, "存在しない語",
                            // words of notes only, long and short, alone and with a category or an asset
                            "電気代 5月", "５月 電気代 分", "商店 abc", "ビ ル", "寿司 🍣", "スーパー 5月",
                            "ｶｰﾄﾞ 寿司", "家賃 寿司"});

    EXPECT_GT(search("ｽｰﾊﾟｰ").size(), 50u) << "スーパー, ｽｰﾊﾟｰ, スーパ and スーパーマーケット alike";

    SearchCriteria range;
    range.kingakuMin = 1000;
    range.kingakuMax = 2000;
    range.hizukeFrom = "2023-03-01";
    range.hizukeTo = "2023-09-30";
    EXPECT_EQ(search("", range), bruteForce("", range));
    SearchCriteria transfers;
    transfers.kind = SearchCriteria::Idou;
    transfers.sisanId = 2;
    EXPECT_EQ(search("スーパー", transfers), bruteForce("スーパー", transfers));
    SearchCriteria expenses;
    expenses.kind = SearchCriteria::Sisyutu;
    EXPECT_EQ(search("費", expenses), bruteForce("費", expenses));
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(SearchTest, TheIndexFollowsTheStoreAnotherProgramAndARolledBackWrite)
{
    DataModel& dm = open();
    EXPECT_EQ(checkBook(path).verdict, BookVerdict::Ready) << "the book check accepts the index";
    dm.theSisanNo = 0;

    // The store's own writes, each followed in its transaction.
    ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2024-05-01", 2024, 5, 1, 1, 1, 3, 500, "ﾗｰﾒﾝ屋"));
    const int64_t ramen = scalar("SELECT MAX(Id) FROM Items");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM ItemsFtsQueue"), 0);
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-05-02", 2024, 5, 2, 1, 3, 2, 900, "ラーメン屋へ立替"));
    ASSERT_TRUE(dm.itemUpdate(ramen, "2024-05-01", 2024, 5, 1, 1, 1, 3, 500, "うどん屋"));
    EXPECT_EQ(search("ラーメン屋"), bruteForce("ラーメン屋", {}));
    EXPECT_EQ(search("うどん").size(), 1u);
    ASSERT_TRUE(dm.deleteUtiwakeHimoku(4, 1, 3));  // 食費/スーパー and its entries
    ASSERT_TRUE(dm.readFromHimokuTable());
    expectIndexInStep();

    // Undo and redo apply recorded changes, which the index follows in the
    // same step: the deleted entries come back and go again, the edited note
    // becomes ラーメン again.
    const std::vector<std::string> undone{"スーパー", "ラーメン", "うどん", "ﾗｰﾒﾝ 屋"};
    const auto expected = [&] {
        std::vector<std::vector<int64_t>> found;
        for (const std::string& q : undone) found.push_back(bruteForce(q, {}));
        return found;
    };
    const auto foundNow = [&] {
        expectIndexInStep();
        std::vector<std::vector<int64_t>> found;
        for (const std::string& q : undone) found.push_back(search(q));
        return found;
    };
    const auto afterDelete = expected();
    ASSERT_TRUE(dm.undo());
    ASSERT_TRUE(dm.undo());
    const auto afterUndo = expected();
    EXPECT_GT(afterUndo[0].size(), afterDelete[0].size());
    EXPECT_EQ(afterUndo[2].size(), 0u);
    EXPECT_EQ(foundNow(), afterUndo);
    ASSERT_TRUE(dm.redo());
    ASSERT_TRUE(dm.redo());
    EXPECT_EQ(foundNow(), afterDelete);
    ASSERT_TRUE(dm.readFromHimokuTable());

    // Another program (an older Zenvora) writes behind the store's back: the
    // triggers take its deletions out and queue its new notes, which the next
    // search folds in.
    exec("INSERT INTO Items (Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Syukkin,Bikou) "
         "VALUES ('2024-06-01',2024,6,1,1,1,2,-1,300,'ｺｰﾋｰ豆')");
    exec("UPDATE Items SET Bikou='スーパー' WHERE Bikou='家賃'");
    exec("DELETE FROM Items WHERE Bikou='コンピュータ'");
    EXPECT_GT(scalar("SELECT COUNT(*) FROM ItemsFtsQueue"), 0);
    expectSameAsBruteForce({"コーヒー", "家賃", "スーパー", "コンピュータ", "うどん", "ラーメン"});
    expectIndexInStep();

    // A write that fails leaves the index as it was, and the retry is found.
    const std::string index = dump("ItemsFtsNote") + dump("ItemsFtsEntry");
    armFailure("Items", "INSERT", "NEW.SyubetuNo = 4");
    EXPECT_FALSE(dm.itemIdouSisanInsert("2024-07-01", 2024, 7, 1, 1, 3, 2, 100, "失敗する振替"));
    EXPECT_EQ(takeMessages(), (Messages{{"failure inserting item Syukkin,Nyuukin: boom", "information"}}));
    EXPECT_EQ(dump("ItemsFtsNote") + dump("ItemsFtsEntry"), index);
    exec("DROP TRIGGER armed_failure");
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-07-01", 2024, 7, 1, 1, 3, 2, 100, "失敗する振替"));
    EXPECT_EQ(search("失敗する").size(), 2u);

    // An index made with another folding is made again at the next opening.
    exec("UPDATE ItemsFtsInfo SET Value = 'older'");
    exec("DELETE FROM ItemsFtsEntry");
    open();
    expectSameAsBruteForce({"スーパー", "失敗"});
    EXPECT_TRUE(takeMessages().empty());
}

TEST_F(SearchTest, PastNotesAreOfferedByUseAndCarryTheirLastEntry)
{
    DataModel& dm = open();
    dm.theSisanNo = 0;
    ASSERT_TRUE(dm.itemNyuukinSyukkinInsert("2024-05-01", 2024, 5, 1, 1, 1, 3, 4321, "スーパーで特売"));
    ASSERT_TRUE(dm.refreshSearchIndex());
    SearchConnection connection(path);
    std::vector<NoteSuggestion> notes;
    std::string error;
    // Notes that begin with the text come first, the most used of them first:
    // the one used once comes after the frequent ones.
    ASSERT_TRUE(connection.suggestNotes(folded("ｽｰﾊﾟ"), 2, &notes, &error)) << error;
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_TRUE(notes[0].startsWith && notes[1].startsWith);
    EXPECT_GE(notes[0].uses, notes[1].uses);
    for (const auto& n : notes) EXPECT_NE(n.Bikou, "スーパーで特売");
    ASSERT_TRUE(connection.suggestNotes(folded("パ"), 10, &notes, &error)) << error;
    EXPECT_EQ(notes.size(), 3u) << "スーパー, スーパーマーケット and スーパーで特売, found by a scan";

    ASSERT_TRUE(connection.suggestNotes(folded("特売"), 5, &notes, &error)) << error;
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].Bikou, "スーパーで特売");
    EXPECT_EQ(notes[0].Kingaku, 4321);
    EXPECT_EQ(notes[0].HimokuNo, 3);
    EXPECT_EQ(notes[0].SyubetuNo, 1);
}

}  // namespace
