#pragma once

#include <functional>
#include <string>

// Where the store's failure messages go: a message text and an informative
// text ("information" or "stop the app"). The default prints both to standard
// error; the application installs a modal message box, tests a recorder.
using MessageSink = std::function<void(const std::string& message, const std::string& informative)>;

// Replaces the process-wide sink; an empty function restores the default.
void setMessageSink(MessageSink sink);

// Delivers one message to the current sink and returns when it has been seen,
// or queues it while a MessageHold exists.
void deliverMessage(const std::string& message, const std::string& informative);

// While any hold exists, messages wait; when the last hold ends they are
// delivered in the order they were raised. A write transaction holds its
// messages so that a modal box never sits on an open transaction and its lock.
class MessageHold {
public:
    MessageHold();
    ~MessageHold();
    MessageHold(const MessageHold&) = delete;
    MessageHold& operator=(const MessageHold&) = delete;
};
