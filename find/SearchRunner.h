#pragma once

#include <QObject>
#include <QString>
#include <QThread>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "store/SearchQuery.h"

// Runs searches and note suggestions off the main thread, on a read-only
// connection of its own, so that typing never waits for the book. Each new
// request supersedes the one before: a query still running stops at its next
// progress check, and only the newest request's answer is delivered (on the
// thread that owns the runner).
class SearchRunner final : public QObject {
    Q_OBJECT

public:
    explicit SearchRunner(std::string bookPath, QObject* parent = nullptr);
    ~SearchRunner() override;

    void search(const SearchCriteria& criteria);
    void suggest(const std::string& folded, size_t limit);
    // Drops the request in flight: nothing more is delivered for it.
    void cancel();

signals:
    // error is empty on success.
    void found(std::shared_ptr<const FoundItems> items, QString error);
    void suggested(std::shared_ptr<const std::vector<NoteSuggestion>> notes);

private:
    QThread thread_;
    QObject* context_;  // lives in thread_; requests run as its queued calls
    std::unique_ptr<SearchConnection> connection_;  // used on thread_ only
    std::shared_ptr<std::atomic<uint64_t>> latest_;

    uint64_t nextRequest();
    // Runs work on the worker thread unless a newer request came meanwhile.
    template <typename Work>
    void post(uint64_t request, Work work);
};
