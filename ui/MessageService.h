#pragma once

#include <QString>
#include <QStringList>

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
    // Asks a question with a button per choice, in order; the last one is
    // the safe answer that Enter and Escape give. Returns the index pressed.
    virtual int choiceMessageWithAlert(const QString& message, const QStringList& choices) = 0;
};

// The service in use: the installed one, or the QMessageBox one.
MessageService& messageService();

// Installs a service (not owned); nullptr restores the QMessageBox one.
void setMessageService(MessageService* service);

// A service for when nobody may be there to answer: it prints every message
// and question to standard error and gives the safe answer (no, the last choice).
MessageService& printingMessageService();

// Routes the store's failure messages to messageService().
void installStoreMessageSink();
