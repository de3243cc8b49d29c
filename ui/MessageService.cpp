#include "ui/MessageService.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <cstdio>

#include "store/MessageSink.h"

namespace {

class MessageBoxService final : public MessageService {
public:
    void someMessageWithAlert(const QString& message, const QString& informative) override
    {
        QMessageBox box(QApplication::activeWindow());
        box.setWindowTitle(QStringLiteral("Zenvora"));
        box.setText(message);
        box.setInformativeText(informative);
        box.exec();
    }

    bool yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no) override
    {
        QMessageBox box(QApplication::activeWindow());
        box.setWindowTitle(QStringLiteral("Zenvora"));
        box.setText(message);
        QPushButton* yesButton = box.addButton(yes, QMessageBox::AcceptRole);
        QPushButton* noButton = box.addButton(no, QMessageBox::RejectRole);
        // The safe answer is the one Enter and Escape give.
        box.setDefaultButton(noButton);
        box.setEscapeButton(noButton);
        box.exec();
        return box.clickedButton() == yesButton;
    }

    int choiceMessageWithAlert(const QString& message, const QStringList& choices) override
    {
        QMessageBox box(QApplication::activeWindow());
        box.setWindowTitle(QStringLiteral("Zenvora"));
        box.setText(message);
        QList<QAbstractButton*> buttons;
        for (const QString& choice : choices) buttons.push_back(box.addButton(choice, QMessageBox::AcceptRole));
        if (!buttons.isEmpty()) {
            box.setDefaultButton(static_cast<QPushButton*>(buttons.back()));
            box.setEscapeButton(buttons.back());
        }
        box.exec();
        const auto pressed = buttons.indexOf(box.clickedButton());
        return pressed >= 0 ? static_cast<int>(pressed) : static_cast<int>(choices.size()) - 1;
    }
};

class PrintingService final : public MessageService {
public:
    void someMessageWithAlert(const QString& message, const QString& informative) override
    {
        std::fprintf(stderr, "%s\n%s\n", qUtf8Printable(message), qUtf8Printable(informative));
    }
    bool yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no) override
    {
        std::fprintf(stderr, "%s [%s/%s] %s\n", qUtf8Printable(message), qUtf8Printable(yes), qUtf8Printable(no),
                     qUtf8Printable(no));
        return false;
    }
    int choiceMessageWithAlert(const QString& message, const QStringList& choices) override
    {
        std::fprintf(stderr, "%s [%s] %s\n", qUtf8Printable(message), qUtf8Printable(choices.join('/')),
                     qUtf8Printable(choices.value(choices.size() - 1)));
        return static_cast<int>(choices.size()) - 1;
    }
};

MessageService* installed = nullptr;

}  // namespace

MessageService& messageService()
{
    static MessageBoxService boxes;
    return installed ? *installed : boxes;
}

void setMessageService(MessageService* service)
{
    installed = service;
}

MessageService& printingMessageService()
{
    static PrintingService printing;
    return printing;
}

void installStoreMessageSink()
{
    setMessageSink([](const std::string& message, const std::string& informative) {
        messageService().someMessageWithAlert(QString::fromStdString(message), QString::fromStdString(informative));
    });
}
