#include "store/MessageSink.h"

#include <cstdio>
#include <utility>
#include <vector>

namespace {

void printToStderr(const std::string& message, const std::string& informative)
{
    std::fprintf(stderr, "%s\n%s\n", message.c_str(), informative.c_str());
}

MessageSink& currentSink()
{
    static MessageSink sink = printToStderr;
    return sink;
}

// Messages raised while a hold exists, and the number of holds.
struct Held {
    std::vector<std::pair<std::string, std::string>> messages;
    int holds = 0;
};

Held& held()
{
    static Held h;
    return h;
}

}  // namespace

void setMessageSink(MessageSink sink)
{
    currentSink() = sink ? std::move(sink) : MessageSink(printToStderr);
}

void deliverMessage(const std::string& message, const std::string& informative)
{
    if (held().holds > 0) {
        held().messages.emplace_back(message, informative);
        return;
    }
    currentSink()(message, informative);
}

MessageHold::MessageHold()
{
    ++held().holds;
}

MessageHold::~MessageHold()
{
    if (--held().holds > 0) return;
    for (const auto& [message, informative] : std::exchange(held().messages, {})) currentSink()(message, informative);
}
