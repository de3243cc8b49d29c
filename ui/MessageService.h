#pragma once

#include <QString>

// Modal message boxes. The application shows them with QMessageBox; tests
// install a service that records the texts and answers the questions, so no
// test needs a screen or a sleep.
class MessageService {
public:
    virtual ~MessageService() = default;
    // Shows a message with one default button and returns once it is dismissed.
    virtual void someMessageWithAlert(const QString& message, const QString& informative) = 0;
    // Asks a question with two buttons, `yes` first; true when `yes` was pressed.
    virtual bool yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no) = 0;
};

// The service in use: the installed one, or the QMessageBox one.
MessageService& messageService();

// Installs a service (not owned); nullptr restores the QMessageBox one.
void setMessageService(MessageService* service);

// Routes the store's failure messages to messageService().
void installStoreMessageSink();
