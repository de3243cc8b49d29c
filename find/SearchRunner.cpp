#include "find/SearchRunner.h"

SearchRunner::SearchRunner(std::string bookPath, QObject* parent)
    : QObject(parent),
      context_(new QObject),
      connection_(std::make_unique<SearchConnection>(std::move(bookPath))),
      latest_(std::make_shared<std::atomic<uint64_t>>(0))
{
    thread_.setObjectName(QStringLiteral("search"));
    context_->moveToThread(&thread_);
    connect(&thread_, &QThread::finished, context_, &QObject::deleteLater);
    thread_.start();
}

SearchRunner::~SearchRunner()
{
    cancel();
    thread_.quit();
    thread_.wait();
}

uint64_t SearchRunner::nextRequest()
{
    return ++*latest_;
}

void SearchRunner::cancel()
{
    nextRequest();
}

template <typename Work>
void SearchRunner::post(uint64_t request, Work work)
{
    QMetaObject::invokeMethod(context_, [latest = latest_, request, work = std::move(work)] {
        if (*latest != request) return;  // a newer request is queued behind this one
        work([latest, request] { return *latest != request; });
    });
}

void SearchRunner::search(const SearchCriteria& criteria)
{
    const uint64_t request = nextRequest();
    post(request, [this, criteria, request](const SearchConnection::Cancelled& stale) {
        auto items = std::make_shared<FoundItems>();
        std::string error;
        connection_->search(criteria, items.get(), &error, stale);
        if (stale()) return;
        QMetaObject::invokeMethod(this, [this, request, items, error] {
            if (*latest_ == request) emit found(items, QString::fromStdString(error));
        });
    });
}

void SearchRunner::suggest(const std::string& folded, size_t limit)
{
    const uint64_t request = nextRequest();
    post(request, [this, folded, limit, request](const SearchConnection::Cancelled& stale) {
        auto notes = std::make_shared<std::vector<NoteSuggestion>>();
        std::string error;
        if (!connection_->suggestNotes(folded, limit, notes.get(), &error, stale)) notes->clear();
        if (stale()) return;
        QMetaObject::invokeMethod(this, [this, request, notes] {
            if (*latest_ == request) emit suggested(notes);
        });
    });
}
