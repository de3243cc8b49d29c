#pragma once

#include <QDate>
#include <QLabel>
#include <QString>

#include "app/ViewController.h"
#include "tests/app/GuiFixture.h"

// The main window on a temporary book, shown offscreen and driven like a user
// would: clicks, typing, header clicks.
class AppFixture : public GuiFixture {
protected:
    void TearDown() override
    {
        vc.reset();
        GuiFixture::TearDown();
    }

    ViewController& start();  // opens the store and the window

    template <typename T>
    T* find(const char* name)
    {
        return in<T>(vc.get(), name);
    }
    Rows shown(const char* table) { return rowsOf(vc.get(), table); }
    QString label(const char* name) { return find<QLabel>(name)->text(); }
    bool panelShown() { return find<QWidget>("itemData")->isVisible(); }

    void click(const char* button);
    // Presses keys on the widget that has the keyboard focus, as a user does.
    void pressKeys(QKeyCombination keys);
    void type(const char* field, const QString& text);  // replaces the field's text
    void pickCombo(const QString& text);                // in the panel's category list
    void selectRow(const char* table, int row);
    void clickHeader(const char* table, const char* title);
    // Fills and confirms the panel for a new entry of the kind (its radio button).
    void enterNew(const char* kind, const QString& combo, const QString& kingaku, const QDate& date = {2024, 5, 1},
                  const QString& bikou = {});

    std::unique_ptr<ViewController> vc;
};
