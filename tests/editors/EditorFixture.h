#pragma once

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QGroupBox>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QTableView>
#include <QTimer>
#include <functional>
#include <memory>

#include "tests/app/AppFixture.h"

// The main window with one of its editors, built on the window's store and
// shown without blocking, so that a test drives it click by click; closing
// it calls the window back as the menu's modal run does.
template <typename Editor>
class EditorFixture : public AppFixture {
protected:
    void TearDown() override
    {
        tester.reset();
        editor.reset();
        AppFixture::TearDown();
    }

    Editor& openEditor()
    {
        if (!vc) start();
        tester.reset();
        editor = std::make_unique<Editor>(vc->DM, vc.get());
        editor->delegate = vc.get();
        tester = std::make_unique<QAbstractItemModelTester>(editor->template findChild<QTableView*>()->model());
        editor->show();
        // Keys reach the editor, as they do when it runs modally.
        EXPECT_TRUE(QTest::qWaitForWindowExposed(editor.get()));
        editor->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(editor.get()));
        return *editor;
    }

    // Opens the editor with its keys in the main window and runs `work` on
    // it while it is shown modally; closes it afterwards if `work` did not.
    void throughKeys(QKeyCombination keys, const std::function<void(Editor&)>& work)
    {
        vc->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(vc.get()));
        bool shown = false;
        QTimer::singleShot(0, [&] {
            auto* modal = qobject_cast<Editor*>(QApplication::activeModalWidget());
            ASSERT_NE(modal, nullptr) << "no modal editor";
            shown = true;
            work(*modal);
            if (modal->isVisible()) modal->done(0);
        });
        pressKeys(keys);
        EXPECT_TRUE(shown);
    }

    // The box's title, or "(hidden)".
    QString boxTitle(const char* box)
    {
        const auto* group = find<QGroupBox>(box);
        return group->isVisible() ? group->title() : QStringLiteral("(hidden)");
    }
    QString text(const char* field) { return find<QLineEdit>(field)->text(); }

    std::unique_ptr<Editor> editor;
    std::unique_ptr<QAbstractItemModelTester> tester;
};
