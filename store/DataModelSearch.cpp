// DataModel: the search index kept in step with the entries, and the words of a search.
#include <sqlite3.h>

#include "store/DataModel.h"
#include "store/SearchIndex.h"
#include "store/SearchQuery.h"
#include "store/TextFold.h"
#include "store/Transaction.h"

namespace {

// The words of a folded text: its runs of characters between blanks.
std::vector<std::string> splitWords(const std::string& folded)
{
    std::vector<std::string> words;
    std::string word;
    for (const char c : folded) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            if (!word.empty()) words.push_back(std::move(word));
            word.clear();
        } else {
            word += c;
        }
    }
    if (!word.empty()) words.push_back(std::move(word));
    return words;
}

}  // namespace

bool DataModel::openSearchIndex(const IndexProgress& progress)
{
    finalize();
    // Like the balances' corrections, the index waits only briefly for a
    // program reading the book; the next search tries again.
    sqlite3_busy_timeout(db, kCorrectionWaitMs);
    std::string error;
    const IndexBuild built = ensureSearchIndex(db, progress, &error);
    searchIndexReady = (built == IndexBuild::Present || built == IndexBuild::Built) && applySearchQueue(db, &error);
    // Tidying only: notes left unused are never offered anyway.
    std::string tidying;
    if (searchIndexReady) dropUnusedNotes(db, &tidying);
    sqlite3_busy_timeout(db, busyTimeoutMs);
    searchIndexError = error;
    return searchIndexReady;
}

bool DataModel::refreshSearchIndex()
{
    if (!searchIndexReady) return openSearchIndex();
    finalize();
    sqlite3_busy_timeout(db, kCorrectionWaitMs);
    std::string error;
    const bool applied = applySearchQueue(db, &error);
    sqlite3_busy_timeout(db, busyTimeoutMs);
    if (!applied) searchIndexError = error;
    return applied;
}

void DataModel::keepSearchIndexInStep()
{
    // The index is derived: a failure here leaves the changed Ids queued for
    // the next try and never costs the user's change.
    if (!searchIndexReady || !runControlStatement(db, "SAVEPOINT search_index")) return;
    std::string error;
    if (!applySearchQueue(db, &error)) runControlStatement(db, "ROLLBACK TO search_index");
    runControlStatement(db, "RELEASE search_index");
}

std::vector<SearchWord> DataModel::searchWords(const std::string& text) const
{
    std::vector<SearchWord> words;
    for (std::string& folded : splitWords(foldText(text))) {
        SearchWord word{std::move(folded), {}, {}};
        for (const auto& himoku : himokuList)
            if (himoku->Ucount == 0 && foldText(himoku->Namae).find(word.folded) != std::string::npos)
                word.himokuIds.push_back(himoku->Id);
        for (const auto& sisan : sisanList)
            if (foldText(sisan->Namae).find(word.folded) != std::string::npos) word.sisanIds.push_back(sisan->Id);
        words.push_back(std::move(word));
    }
    return words;
}
