// Sync in the program, driven by keys: the settings window on the first PC
// and on the second, the status line, other PCs' changes shown as the folder
// changes, and a settled case taken back from the list of notices.
#include <unistd.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "store/History.h"
#include "store/Provisioning.h"
#include "syncwindow/SyncController.h"
#include "tests/app/AppFixture.h"

namespace fs = std::filesystem;

namespace {

class SyncWindowTest : public AppFixture {
protected:
    // The folder a sync tool keeps alike: outside the book's folder.
    const fs::path folder = fs::temp_directory_path() / ("zenvora-syncwindow-" + std::to_string(::getpid()));
    std::unique_ptr<DataModel> secondStore;
    std::unique_ptr<ViewController> second;  // the second PC's window
    int64_t clock = 1'790'000'000'000;

    void SetUp() override
    {
        AppFixture::SetUp();
        fs::remove_all(folder);
        fs::create_directories(folder);
        setHistoryClock([this] { return clock += 1000; });
        addSisan("財布", 10000, 8800);
        addCategory(1, "食費", {"外食"});
        addEntry(1, "2026-11-20", 1, 3, 1200);
    }
    void TearDown() override
    {
        second.reset();
        secondStore.reset();
        AppFixture::TearDown();
        setHistoryClock(nullptr);
        fs::remove_all(folder);
    }

    // The second PC: a book of its own, in its own window.
    ViewController& startSecond()
    {
        const std::string secondPath = dir + "/second.sql";
        std::string error;
        EXPECT_TRUE(createStarterBook(secondPath, &error)) << error;
        secondStore = std::make_unique<DataModel>(secondPath);
        second = std::make_unique<ViewController>(*secondStore);
        second->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(second.get()));
        return *second;
    }

    // ファイル → the item with this letter, on a window, with `inside` run in
    // the modal dialog it opens.
    static void fromFileMenu(ViewController& w, Qt::Key letter, const std::function<void(QWidget*)>& inside)
    {
        w.activateWindow();
        ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &w; }, 2000));
        QTest::keyClick(&w, Qt::Key_F, Qt::AltModifier);
        ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }, 2000));
        bool ran = false;
        QTimer::singleShot(0, [&, letter] {
            QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr) << "no dialog for " << letter;
            // The keys go to the dialog once it is the active window.
            ASSERT_TRUE(QTest::qWaitFor(
                [dialog] {
                    if (QApplication::activeWindow() != dialog) dialog->activateWindow();
                    return QApplication::activeWindow() == dialog;
                },
                2000));
            inside(dialog);
            ran = true;
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        });
        QTest::keyClick(QApplication::activePopupWidget(), letter);
        EXPECT_TRUE(ran);
    }
    // Replaces a field's text by typing it.
    static void typeInto(QWidget* dialog, const char* field, const QString& text)
    {
        auto* edit = dialog->findChild<QLineEdit*>(QString::fromLatin1(field));
        ASSERT_NE(edit, nullptr) << field;
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Backspace);
        QTest::keyClicks(edit, text);
    }
    static QString textOf(QWidget* root, const char* name)
    {
        auto* label = root->findChild<QLabel*>(QString::fromLatin1(name));
        return label && label->isVisibleTo(root) ? label->text() : QString();
    }
    static QString statusOf(ViewController& w) { return textOf(&w, "lblSyncStatus"); }

    // Sets up the first PC through its settings window.
    void setUpFirst()
    {
        fromFileMenu(*vc, Qt::Key_S, [&](QWidget* d) {
            // The book's own folder is refused with a warning while it is typed.
            typeInto(d, "edtFolder", QString::fromStdString(dir));
            EXPECT_TRUE(textOf(d, "lblFolderWarning").contains("家計簿のファイルがこのフォルダの中にあります"));
            typeInto(d, "edtFolder", QString::fromStdString(folder.string()));
            EXPECT_EQ(textOf(d, "lblFolderWarning"), "");
            typeInto(d, "edtPcName", "living");
            pressKeys(Qt::AltModifier | Qt::Key_S);
            EXPECT_TRUE(textOf(d, "lblState").startsWith("同期しています: 「living」 (PC 番号 1)"))
                << textOf(d, "lblState").toStdString() << (messages.empty() ? "" : messages.back().first);
        });
        const Messages told = takeMessages();
        ASSERT_EQ(told.size(), 1u);
        EXPECT_TRUE(QString::fromStdString(told[0].first).startsWith("同期を始めました。"));
    }
};

TEST_F(SyncWindowTest, TheSecondPcJoinsByKeysAndEachWindowShowsTheOthersEntriesAsTheyArrive)
{
    ViewController& first = start();
    EXPECT_EQ(statusOf(first), "") << "a book that does not sync shows no status line";
    setUpFirst();
    EXPECT_TRUE(statusOf(first).startsWith("同期済み ")) << statusOf(first).toStdString();

    ViewController& w2 = startSecond();
    fromFileMenu(w2, Qt::Key_S, [&](QWidget* d) {
        typeInto(d, "edtFolder", QString::fromStdString(folder.string()));
        typeInto(d, "edtPcName", "study");
        answers = {true};
        pressKeys(Qt::AltModifier | Qt::Key_J);
        EXPECT_TRUE(textOf(d, "lblState").startsWith("同期しています: 「study」 (PC 番号 2)"));
    });
    ASSERT_EQ(questions.size(), 1u);
    EXPECT_EQ(questions[0], "この PC の家計簿を脇に残し、同期フォルダの家計簿に置き換えます。よろしいですか?|置き換える|キャンセル");
    questions.clear();
    const Messages told = takeMessages();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_TRUE(QString::fromStdString(told[0].first).startsWith("同期フォルダの家計簿に置き換えました。"));
    EXPECT_EQ(rowsOf(&w2, "tblSisan"), (Rows{"財布|8,800"})) << "the second PC shows the first one's book";
    EXPECT_EQ(rowsOf(&w2, "tblItem").size(), 1u);

    // An entry on the second PC reaches the first one's window through the
    // folder watcher, and the status lines agree once both have seen it.
    w2.syncController()->sync().publish();
    EXPECT_TRUE(secondStore->itemNyuukinSyukkinInsert("2026-11-23", 2026, 11, 23, secondStore->sisanList[0]->Id, 1,
                                                      secondStore->himokuList.back()->Id, 300, "駅"));
    w2.showSyncedChanges();
    EXPECT_TRUE(statusOf(w2).startsWith("未同期の変更 1件")) << statusOf(w2).toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return shown("tblItem").size() == 2; }, 10000))
        << "the first PC did not bring in the second one's entry";
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|8,500"}));
    w2.syncController()->runRound();
    EXPECT_TRUE(statusOf(w2).startsWith("同期済み ")) << statusOf(w2).toStdString();
}

TEST_F(SyncWindowTest, ACaseSettledBetweenThePcsIsListedOnceAndItsUndoGoesToTheOtherPc)
{
    ViewController& first = start();
    setUpFirst();
    ViewController& w2 = startSecond();
    fromFileMenu(w2, Qt::Key_S, [&](QWidget* d) {
        typeInto(d, "edtFolder", QString::fromStdString(folder.string()));
        typeInto(d, "edtPcName", "study");
        answers = {true};
        pressKeys(Qt::AltModifier | Qt::Key_J);
    });
    questions.clear();
    takeMessages();

    // The same amount edited on both PCs before either saw the other's:
    // the later edit (the second PC's) wins everywhere.
    const auto edit = [](DataModel& dm, int64_t amount) {
        const std::shared_ptr<Items> e = dm.readFromItem1Item(dm.itemList.front()->Id);
        ASSERT_TRUE(dm.itemUpdate(e->Id, e->Hizuke, e->Nen, e->Tuki, e->Hi, e->SisanNo, e->SyubetuNo, e->HimokuNo,
                                  amount, e->Bikou));
    };
    edit(*store, 1500);
    edit(*secondStore, 900);
    for (int turn = 0; turn < 2; ++turn) {
        first.syncController()->runRound();
        w2.syncController()->runRound();
    }
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|9,100"}));
    EXPECT_EQ(rowsOf(&w2, "tblSisan"), (Rows{"財布|9,100"}));
    EXPECT_TRUE(statusOf(first).contains("(同期の調整 1件)")) << statusOf(first).toStdString();

    // The list on the first PC: the case once, and 元に戻す writes its own
    // edit back as a new change, which the second PC takes too.
    fromFileMenu(first, Qt::Key_C, [&](QWidget* d) {
        const Rows rows = rowsOf(d, "tblNotices");
        ASSERT_EQ(rows.size(), 1u);
        EXPECT_NE(rows[0].find("|同じ支出が両方で編集されました: 新しい方を採用|"), std::string::npos) << rows[0];
        pressKeys(Qt::AltModifier | Qt::Key_U);
        EXPECT_NE(rowsOf(d, "tblNotices")[0].find("|元に戻した"), std::string::npos);
        EXPECT_FALSE(d->findChild<QWidget*>("btnUndoNotice")->isEnabled()) << "a case is taken back once";
    });
    EXPECT_EQ(shown("tblSisan"), (Rows{"財布|8,500"}));
    EXPECT_FALSE(statusOf(first).contains("同期の調整")) << "the list was seen";
    w2.syncController()->runRound();
    EXPECT_EQ(rowsOf(&w2, "tblSisan"), (Rows{"財布|8,500"}));
}

}  // namespace
