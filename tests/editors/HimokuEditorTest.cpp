#include <QAbstractItemView>
#include <QComboBox>
#include <QPushButton>

#include "editors/PrefsHimokuViewController.h"
#include "tests/editors/EditorFixture.h"

namespace {

// 食費 (1) with その他 (2) and 外食 (3), 給与 (4) with その他 (5); S and T
// each have an expense under 外食 and an income, S also one under その他.
class HimokuEditorTest : public EditorFixture<PrefsHimokuViewController> {
protected:
    void SetUp() override
    {
        EditorFixture::SetUp();
        const int64_t s = addSisan("S", 10000, 0);
        const int64_t t = addSisan("T", 500, 0);
        addCategory(1, "食費", {"外食"});
        addCategory(2, "給与");
        addEntry(s, "2024-01-01", 1, 2, 100);
        addEntry(s, "2024-01-02", 1, 3, 200);
        addEntry(s, "2024-01-03", 2, 5, 1000);
        addEntry(t, "2024-01-02", 1, 3, 50);
        addEntry(t, "2024-01-04", 2, 5, 30);
    }

    // Title, buttons, enabled inputs (kind, category, sub-item), then the
    // kind's position and the five fields.
    std::string box()
    {
        if (!find<QGroupBox>("himokuKoumokuBox")->isVisible()) return "(hidden)";
        const auto* kind = find<QComboBox>("cmbHimokuSyubetuNo");
        const auto yn = [](const QWidget* w) { return w->isEnabled() ? "Y" : "N"; };
        QStringList parts{boxTitle("himokuKoumokuBox"), find<QPushButton>("btnHimokuKoumokuOkLabel")->text(),
                          find<QPushButton>("btnHimokuKoumokuCancelLabel")->text(),
                          QString(yn(kind)) + yn(find<QLineEdit>("txtHimokuMeisyou")) +
                              yn(find<QLineEdit>("txtUtiwakeMeisyou")),
                          QString::number(kind->currentIndex())};
        for (const char* field : {"txtHimokuMeisyou", "txtUtiwakeMeisyou", "txtHimokuKoumokuId", "txtHno", "txtUcount"})
            parts << text(field);
        return parts.join('|').toStdString();
    }

    void prepare(int row, const char* button)
    {
        if (row >= 0) selectRow("tblHimokuKoumoku", row);
        click(button);
    }

    void pickKind(int position) { find<QComboBox>("cmbHimokuSyubetuNo")->setCurrentIndex(position); }
};

// Preparing fills the box or says which row to select; confirming refusals,
// declines and failures leave the box and the book as they were.
TEST_F(HimokuEditorTest, PreparingAndRefusingLeaveTheBookAlone)
{
    ViewController& w = start();
    const Items* shownRow = w.DM.itemList.front().get();
    const std::string before = dumpAll();
    openEditor();
    EXPECT_EQ(editor->windowTitle(), "費目の設定");
    EXPECT_EQ(shown("tblHimokuKoumoku"),
              (Rows{"＊|食費|1", "|食費/その他|1", "|食費/外食|1", "＊|給与|2", "|給与/その他|2"}));
    for (const char* button : {"btnUtiwakeTuika", "btnHimokuHensyuu", "btnHimokuSakujyo"}) click(button);
    EXPECT_EQ(takeMessages(), (Messages{{"追加先の費目を選択してからにしてください ", "information"},
                                        {"編集する費目または内訳項目を選択してからにしてください ", "information"},
                                        {"削除する費目または内訳項目を選択してからにしてください ", "information"}}));
    EXPECT_EQ(box(), "(hidden)");

    // Fields a button does not mention keep what they held.
    const struct {
        int row;
        const char* button;
        const char* box;
    } cases[] = {
        {0, "btnUtiwakeTuika", "内訳の追加|この内訳の追加の実行|この追加の取消|NNY|0|食費||1|1|2"},
        {2, "btnHimokuHensyuu", "内訳項目の編集|この内訳の編集更新の実行|この更新の取消|NNY|0|食費|外食|3|1|2"},
        {3, "btnHimokuHensyuu", "費目名称の編集|この費目の編集更新の実行|この更新の取消|NYN|1|給与|外食|4|4|1"},
        {2, "btnHimokuSakujyo", "内訳項目の削除|この内訳の削除の実行|この削除の取消|NNN|0|食費|外食|3|1|2"},
        {0, "btnHimokuSakujyo", "費目の削除|この費目の削除の実行|この削除の取消|NNN|0|食費|外食|1|1|2"},
        {-1, "btnHimokuTuika", "費目の追加|この費目の追加の実行|この追加の取消|YYN|-1|||1|1|2"},
    };
    for (const auto& c : cases) {
        prepare(c.row, c.button);
        EXPECT_EQ(box(), c.box) << c.button << " on row " << c.row;
    }

    // A sub-item cannot take a sub-item, and a category keeps its last one:
    // the prepared add survives both refusals.
    prepare(2, "btnUtiwakeTuika");
    prepare(4, "btnHimokuSakujyo");
    EXPECT_EQ(takeMessages(), (Messages{{"追加先の費目を選択してからにしてください ", "information"},
                                        {"費目には１つ以上の内訳が必要なので、この内訳の削除はできません。", "information"}}));
    EXPECT_EQ(box(), cases[5].box);
    EXPECT_EQ(editor->syoriNo(), PrefsHimokuViewController::kHimokuTuika);
    for (const char* field : {"txtHimokuKoumokuId", "txtHno", "txtUcount"})
        EXPECT_TRUE(find<QLineEdit>(field)->isReadOnly()) << field;

    // Confirming without a kind or a name is refused; nothing changes.
    click("btnHimokuKoumokuOkLabel");
    pickKind(1);
    type("txtHimokuMeisyou", "　 ");
    click("btnHimokuKoumokuOkLabel");
    prepare(0, "btnUtiwakeTuika");
    type("txtUtiwakeMeisyou", " ");
    click("btnHimokuKoumokuOkLabel");
    prepare(1, "btnHimokuHensyuu");
    type("txtUtiwakeMeisyou", "");
    click("btnHimokuKoumokuOkLabel");
    prepare(0, "btnHimokuHensyuu");
    type("txtHimokuMeisyou", "");
    click("btnHimokuKoumokuOkLabel");
    EXPECT_EQ(takeMessages(), (Messages{{"種別番号が不正です", "information"},
                                        {"費目の名前がありません？", "information"},
                                        {"内訳の名前がありません？", "information"},
                                        {"内訳の名前がありません？", "information"},
                                        {"費目の名前がありません？", "information"}}));

    // The entries' delete fails after the category rows are gone: all stay.
    armFailure("Items", "DELETE", "1");
    prepare(0, "btnHimokuSakujyo");
    answers = {false, true};
    click("btnHimokuKoumokuOkLabel");
    click("btnHimokuKoumokuOkLabel");
    EXPECT_EQ(takeMessages(), (Messages{{"failure delet  items from himoku delete: boom", "information"}}));
    EXPECT_EQ(dumpAll(), before);
    EXPECT_EQ(box(), "費目の削除|この費目の削除の実行|この削除の取消|NNN|0|食費||1|1|2");
    EXPECT_FALSE(editor->changed());

    // Escape in the box cancels the box, not the editor.
    QTest::keyClick(find<QPushButton>("btnHimokuKoumokuOkLabel"), Qt::Key_Escape);
    EXPECT_EQ(box(), "(hidden)");
    EXPECT_TRUE(editor->isVisible());
    click("btnClose");
    EXPECT_EQ(w.DM.itemList.front().get(), shownRow) << "nothing read again";
}

TEST_F(HimokuEditorTest, EachOperationReachesTheBookAndTheWindowFollowsOnClose)
{
    start();
    throughKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_H, [&](PrefsHimokuViewController&) {
        prepare(-1, "btnHimokuTuika");
        pickKind(0);
        type("txtHimokuMeisyou", "  旅行 ");
        click("btnHimokuKoumokuOkLabel");
        EXPECT_EQ(box(), "(hidden)");

        prepare(0, "btnUtiwakeTuika");
        type("txtUtiwakeMeisyou", "おやつ");
        click("btnHimokuKoumokuOkLabel");
        EXPECT_EQ(shown("tblHimokuKoumoku")[3], "|食費/おやつ|1") << "listed under its category";

        prepare(2, "btnHimokuHensyuu");
        type("txtUtiwakeMeisyou", " 外食費 ");
        click("btnHimokuKoumokuOkLabel");
        prepare(0, "btnHimokuHensyuu");
        type("txtHimokuMeisyou", "食料");
        click("btnHimokuKoumokuOkLabel");

        // A declined question keeps the box; the entries of every asset go
        // with their sub-item or category.
        prepare(2, "btnHimokuSakujyo");
        answers = {false, true};
        click("btnHimokuKoumokuOkLabel");
        EXPECT_EQ(box(), "内訳項目の削除|この内訳の削除の実行|この削除の取消|NNN|0|食料| 外食費 |3|1|3");
        click("btnHimokuKoumokuOkLabel");
        prepare(5, "btnHimokuSakujyo");
        answers = {true};
        click("btnHimokuKoumokuOkLabel");
        EXPECT_EQ(questions, (Rows{"この内訳、その支出入データが全て削除されます。削除処理を続行しますか？|削除する|削除を中止する",
                                   "この内訳、その支出入データが全て削除されます。削除処理を続行しますか？|削除する|削除を中止する",
                                   "この費目と内訳、それらの支出入データが全て削除されます。削除処理を続行しますか？|削除する|削除を中止する"}));
    });
    EXPECT_EQ(dump("Himoku"), "Himoku:\n1|1|食料|1|2|\n2|1|食料/その他|1|0|\n6|1|旅行|6|1|\n7|1|旅行/その他|6|0|\n"
                              "8|1|食料/おやつ|1|0|\n");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Items"), 1);
    EXPECT_EQ(shown("tblItem"), Rows{"2024-01-01|食料/その他||100|9,900"});
    EXPECT_EQ(shown("tblSisan"), (Rows{"S|9,900", "T|500"}));
    EXPECT_EQ(label("lblSisanSouGoukei"), "10,400");
}

TEST_F(HimokuEditorTest, KeysPrepareOnTheListAndAnOpenKindListKeepsItsEnterAndEscape)
{
    openEditor();
    const std::string before = dumpAll();
    EXPECT_TRUE(find<QTableView>("tblHimokuKoumoku")->hasFocus());

    // Enter on the focused cancel button cancels.
    selectRow("tblHimokuKoumoku", 0);
    pressKeys(Qt::CTRL | Qt::Key_E);
    EXPECT_EQ(box(), "費目名称の編集|この費目の編集更新の実行|この更新の取消|NYN|0|食費||1|1|2");
    find<QPushButton>("btnHimokuKoumokuCancelLabel")->setFocus();
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(box(), "(hidden)");

    // In the open kind list Enter picks a kind and Escape closes the list;
    // the box stays, with nothing stored.
    pressKeys(Qt::CTRL | Qt::Key_N);
    auto* kind = find<QComboBox>("cmbHimokuSyubetuNo");
    EXPECT_TRUE(kind->hasFocus());
    kind->showPopup();
    kind->view()->setCurrentIndex(kind->model()->index(1, 0));
    QTest::keyClick(kind->view(), Qt::Key_Return);
    EXPECT_FALSE(kind->view()->isVisible());
    kind->showPopup();
    QTest::keyClick(kind->view(), Qt::Key_Escape);
    EXPECT_FALSE(kind->view()->isVisible());
    EXPECT_EQ(box(), "費目の追加|この費目の追加の実行|この追加の取消|YYN|1|||1|1|2");
    EXPECT_EQ(dumpAll(), before);
    // The offscreen platform leaves the closed list active; a desktop gives
    // the editor its activation back.
    editor->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(editor.get()));
    type("txtHimokuMeisyou", "賞与");
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(shown("tblHimokuKoumoku")[5], "＊|賞与|2");

    // Ctrl+Shift+N adds a sub-item to the selected category. On the list,
    // Ctrl+D and the Delete key prepare a delete of the row at each press;
    // Escape gives the keyboard back to the list.
    selectRow("tblHimokuKoumoku", 3);
    pressKeys(Qt::CTRL | Qt::SHIFT | Qt::Key_N);
    type("txtUtiwakeMeisyou", "手当");
    pressKeys(Qt::Key_Return);
    EXPECT_EQ(shown("tblHimokuKoumoku")[5], "|給与/手当|2");
    selectRow("tblHimokuKoumoku", 5);
    for (const QKeyCombination keys : {Qt::CTRL | Qt::Key_D, Qt::CTRL | Qt::Key_D, QKeyCombination(Qt::Key_Delete)}) {
        pressKeys(keys);
        EXPECT_EQ(box(), "内訳項目の削除|この内訳の削除の実行|この削除の取消|NNN|1|給与|手当|8|4|2");
        pressKeys(Qt::Key_Escape);
        EXPECT_EQ(box(), "(hidden)");
        EXPECT_TRUE(find<QTableView>("tblHimokuKoumoku")->hasFocus());
    }
    pressKeys(Qt::CTRL | Qt::Key_W);
    EXPECT_FALSE(editor->isVisible());
}

TEST_F(HimokuEditorTest, SlashesAndNamesOfAnotherRowAreRefusedAndOldDoublesStillEdit)
{
    exec("INSERT INTO Himoku VALUES (6, 1, '食費/外食', 1, 0)");  // an older book's second 外食
    exec("UPDATE Himoku SET Ucount = 3 WHERE Id = 1");
    openEditor();
    const std::string before = dumpAll();
    // Kind, category, sub-item for a new category, then a new sub-item of
    // 食費, then renaming 給与 and 食費/その他.
    const struct {
        int row;
        const char* button;
        int kind;
        const char* himoku;
        const char* utiwake;
    } refused[] = {
        {-1, "btnHimokuTuika", 0, "旅行/国内", ""}, {-1, "btnHimokuTuika", 0, " 食費 ", ""},
        {0, "btnUtiwakeTuika", 0, "", "外/食"},     {0, "btnUtiwakeTuika", 0, "", "外食"},
        {4, "btnHimokuHensyuu", 1, "給/与", ""},    {1, "btnHimokuHensyuu", 0, "", "外食"},
    };
    for (const auto& r : refused) {
        prepare(r.row, r.button);
        if (r.row < 0) pickKind(r.kind);
        if (*r.himoku) type("txtHimokuMeisyou", QString::fromUtf8(r.himoku));
        if (*r.utiwake) type("txtUtiwakeMeisyou", QString::fromUtf8(r.utiwake));
        click("btnHimokuKoumokuOkLabel");
    }
    const Message slash{"費目と内訳の名前には「/」を使えません。", "information"};
    EXPECT_EQ(takeMessages(),
              (Messages{slash, {"同じ種別に同じ名前の費目がすでにあります。別の名前にしてください。", "information"}, slash,
                        {"この費目には同じ名前の内訳がすでにあります。別の名前にしてください。", "information"}, slash,
                        {"この費目には同じ名前の内訳がすでにあります。別の名前にしてください。", "information"}}));
    EXPECT_EQ(dumpAll(), before);

    // Another kind may have the name; a doubled sub-item keeps its own name;
    // the composed and decomposed ガ are one name.
    prepare(-1, "btnHimokuTuika");
    pickKind(1);
    type("txtHimokuMeisyou", "食費");
    click("btnHimokuKoumokuOkLabel");
    prepare(3, "btnHimokuHensyuu");
    type("txtUtiwakeMeisyou", "外食 ");
    click("btnHimokuKoumokuOkLabel");
    prepare(0, "btnUtiwakeTuika");
    type("txtUtiwakeMeisyou", "ガス");
    click("btnHimokuKoumokuOkLabel");
    prepare(0, "btnUtiwakeTuika");
    type("txtUtiwakeMeisyou", "\u30AB\u3099ス");
    click("btnHimokuKoumokuOkLabel");
    EXPECT_EQ(takeMessages(), (Messages{{"この費目には同じ名前の内訳がすでにあります。別の名前にしてください。", "information"}}));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Himoku WHERE Namae IN ('食費', '食費/外食 ', '食費/ガス')"), 4);
}

// A category named "/" gives sub-item names that split into one piece.
TEST_F(HimokuEditorTest, NamesWithoutTwoPiecesGoThroughEveryStep)
{
    addCategory(1, "/", {"x"});  // 6 "/", 7 "//その他", 8 "//x": rows 3 to 5
    openEditor();
    prepare(5, "btnHimokuHensyuu");
    EXPECT_EQ(text("txtHimokuMeisyou") + "|" + text("txtUtiwakeMeisyou"), "/|x");
    type("txtUtiwakeMeisyou", "y");
    click("btnHimokuKoumokuOkLabel");
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Himoku WHERE Namae='//y'"), 1);
    prepare(5, "btnHimokuSakujyo");
    answers = {true};
    click("btnHimokuKoumokuOkLabel");
    prepare(3, "btnHimokuHensyuu");
    type("txtHimokuMeisyou", "Z");
    click("btnHimokuKoumokuOkLabel");
    EXPECT_EQ(dump("Himoku"), "Himoku:\n1|1|食費|1|2|\n2|1|食費/その他|1|0|\n3|1|食費/外食|1|0|\n4|2|給与|4|1|\n"
                              "5|2|給与/その他|4|0|\n6|1|Z|6|1|\n7|1|Z/その他|6|0|\n");
}

}  // namespace
