#include "store/MessageSink.h"

#include <cstdio>

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

}  // namespace

void setMessageSink(MessageSink sink)
{
    currentSink() = sink ? std::move(sink) : MessageSink(printToStderr);
}

void deliverMessage(const std::string& message, const std::string& informative)
{
    currentSink()(message, informative);
}
