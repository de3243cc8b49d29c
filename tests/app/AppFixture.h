#pragma once

#include <QDate>
#include <QString>
#include <QTest>
#include <deque>

#include "app/ViewController.h"
#include "tests/store/StoreFixture.h"
#include "ui/MessageService.h"

class QAbstractItemView;
class QTableView;

// The main window on a temporary book, driven like a user would: clicks,
// typing, header clicks. Every message box the user would see lands in
// `messages` (store messages included); questions are answered from
// `answers` and recorded in `questions`.
class AppFixture : public StoreFixture, private MessageService {
protected:
    void SetUp() override;
    void TearDown() override;

    // Opens the store and the window, shown offscreen.
    ViewController& start();

    template <typename T>
    T* find(const char* name)
    {
        T* widget = vc->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    void click(const char* button);
    void type(const char* field, const QString& text);  // replaces the field's text
    void pickCombo(const QString& text);                // in cmbItemDataHimomku
    void pickDate(const QDate& date);
    void selectRow(const char* table, int row);
    void clickHeader(const char* table, const char* title);
    // Fills and confirms the panel for a new entry of the kind (its radio button).
    void enterNew(const char* kind, const QString& combo, const QString& kingaku, const QDate& date = {2024, 5, 1},
                  const QString& bikou = {});

    // What the lists show, one line per row, cells separated by "|".
    Rows shown(const char* table);
    QString label(const char* name);
    bool panelShown();

    std::unique_ptr<ViewController> vc;
    std::deque<bool> answers;  // true: the first (yes) button
    Rows questions;            // "message|yes|no"

private:
    void someMessageWithAlert(const QString& message, const QString& informative) override;
    bool yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no) override;
};
