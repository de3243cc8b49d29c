#include "tests/app/AppFixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <algorithm>
#include <QInputMethodEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableView>

ViewController& AppFixture::start()
{
    vc.reset();
    vc = std::make_unique<ViewController>(open());
    vc->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(vc.get()));
    return *vc;
}

void AppFixture::click(const char* button)
{
    auto* b = find<QAbstractButton>(button);
    ASSERT_TRUE(b->isVisible() && b->isEnabled()) << button;
    QTest::mouseClick(b, Qt::LeftButton);
}

void AppFixture::pressKeys(QKeyCombination keys)
{
    QWidget* focused = QApplication::focusWidget();
    ASSERT_NE(focused, nullptr) << "no widget has the keyboard focus";
    QWidget* window = focused->window();
    QTest::keyClick(focused, keys.key(), keys.keyboardModifiers());
    // A button's shortcut shows the button pressed for a moment, then clicks it.
    const auto anyDown = [window] {
        const auto buttons = window->findChildren<QAbstractButton*>();
        return std::any_of(buttons.begin(), buttons.end(), [](const QAbstractButton* b) { return b->isDown(); });
    };
    for (int waited = 0; waited < 2000 && anyDown(); waited += 10) QTest::qWait(10);
}

void AppFixture::type(const char* field, const QString& text)
{
    auto* edit = find<QLineEdit>(field);
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    bool ascii = true;
    for (const QChar c : text) ascii = ascii && c.unicode() < 0x80;
    if (ascii) {
        QTest::keyClicks(edit, text);
    } else {
        // Japanese text arrives as an input method's commit, as it does for a user.
        QInputMethodEvent commit;
        commit.setCommitString(text);
        QApplication::sendEvent(edit, &commit);
    }
}

void AppFixture::pickCombo(const QString& text)
{
    auto* combo = find<QComboBox>("cmbItemDataHimomku");
    const int index = combo->findText(text);
    ASSERT_GE(index, 0) << text.toStdString();
    combo->setCurrentIndex(index);
}

void AppFixture::selectRow(const char* table, int row)
{
    auto* view = find<QTableView>(table);
    const QModelIndex index = view->model()->index(row, 0);
    view->scrollTo(index);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
}

void AppFixture::clickHeader(const char* table, const char* title)
{
    QHeaderView* header = find<QTableView>(table)->horizontalHeader();
    for (int c = 0; c < header->count(); ++c) {
        if (header->model()->headerData(c, Qt::Horizontal).toString() != QString::fromUtf8(title)) continue;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionViewportPosition(c) + header->sectionSize(c) / 2, header->height() / 2));
        return;
    }
    ADD_FAILURE() << "no column " << title;
}

void AppFixture::enterNew(const char* kind, const QString& combo, const QString& kingaku, const QDate& date,
                          const QString& bikou)
{
    pressKeys(Qt::CTRL | Qt::Key_N);
    click(kind);
    if (!combo.isEmpty()) pickCombo(combo);
    find<QDateEdit>("itemDataDatePicker")->setDate(date);
    type("txtItemDataKingaku", kingaku);
    type("txtItemDataBikou", bikou);
    click("btnItemDataOK");
}
