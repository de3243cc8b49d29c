#include "ui/MessageService.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

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

void installStoreMessageSink()
{
    setMessageSink([](const std::string& message, const std::string& informative) {
        messageService().someMessageWithAlert(QString::fromStdString(message), QString::fromStdString(informative));
    });
}
