#pragma once

#include <QDateTime>
#include <QSettings>
#include <QTableView>
#include <QTest>
#include <deque>

#include "tests/store/StoreFixture.h"
#include "ui/Clock.h"
#include "ui/MessageService.h"
#include "ui/SaveFileService.h"

// A temporary book behind widgets. Every message box the user would see lands
// in `messages` (store messages included), which a test must take before it
// ends; questions are answered from `answers` (true: the first button), or
// from `choices` (the index of the button) when they offer a list, and
// recorded in `questions` as "message|yes|no" or "message|choice|...";
// save dialogs are answered from `savePaths` ("" cancels) and the paths they
// proposed kept in `proposedPaths`. The home folder is the book's folder, and
// no report folder is remembered at the start (the settings live in a
// temporary folder, GuiTestMain.cpp).
// The clock reads 23 November 2026, 10:00.
class GuiFixture : public StoreFixture, private MessageService, private SaveFileService {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        setMessageService(this);
        setSaveFileService(this);
        installStoreMessageSink();
        setClockTo({2026, 11, 23});
        QSettings(QStringLiteral("Zenvora"), QStringLiteral("Zenvora")).clear();
        home = qgetenv("HOME");
        qputenv("HOME", QByteArray::fromStdString(dir));
    }
    void TearDown() override
    {
        setClock({});
        qputenv("HOME", home);
        setSaveFileService(nullptr);
        setMessageService(nullptr);
        for (const Message& m : messages) ADD_FAILURE() << "message not checked: " << m.first;
        EXPECT_TRUE(answers.empty() && choices.empty()) << "questions expected but not asked";
        EXPECT_TRUE(savePaths.empty()) << "save dialogs expected but not shown";
        StoreFixture::TearDown();
    }

    static void setClockTo(QDate date, QTime time = {10, 0})
    {
        setClock([=] { return QDateTime(date, time); });
    }
    template <typename T>
    static T* in(const QObject* root, const char* name)
    {
        T* widget = root->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    // What a list shows, one line per row, cells of its shown columns separated by "|".
    static Rows rowsOf(const QObject* root, const char* table)
    {
        const QTableView* view = in<QTableView>(root, table);
        const QAbstractItemModel* model = view->model();
        Rows rows;
        for (int r = 0; r < model->rowCount(); ++r) {
            QString line;
            for (int c = 0; c < model->columnCount(); ++c)
                if (!view->isColumnHidden(c)) line += (c ? "|" : "") + model->index(r, c).data().toString();
            rows.push_back(line.toStdString());
        }
        return rows;
    }

    std::deque<bool> answers;
    std::deque<int> choices;
    Rows questions;
    std::deque<QString> savePaths;
    QStringList offeredTypes;
    QStringList proposedPaths;

private:
    QByteArray home;

    void someMessageWithAlert(const QString& message, const QString& informative) override
    {
        messages.emplace_back(message.toStdString(), informative.toStdString());
    }
    bool yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no) override
    {
        questions.push_back((message + "|" + yes + "|" + no).toStdString());
        if (answers.empty()) ADD_FAILURE() << "unexpected question " << questions.back();
        if (answers.empty()) return false;
        const bool answer = answers.front();
        answers.pop_front();
        return answer;
    }
    int choiceMessageWithAlert(const QString& message, const QStringList& buttons) override
    {
        questions.push_back((QStringList{message} + buttons).join('|').toStdString());
        if (choices.empty()) ADD_FAILURE() << "unexpected question " << questions.back();
        if (choices.empty()) return static_cast<int>(buttons.size()) - 1;
        const int choice = choices.front();
        choices.pop_front();
        return choice;
    }
    QString askSavePath(const QStringList& fileTypes, const QString& proposedPath) override
    {
        offeredTypes = fileTypes;
        proposedPaths.push_back(proposedPath);
        if (savePaths.empty()) ADD_FAILURE() << "unexpected save dialog";
        if (savePaths.empty()) return {};
        const QString answer = savePaths.front();
        savePaths.pop_front();
        return answer;
    }
};
