#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "store/DataModel.h"

struct sqlite3;

using Message = std::pair<std::string, std::string>;  // (message, informative)
using Messages = std::vector<Message>;
using Rows = std::vector<std::string>;

// Checks a list's pair of maps: ids[p] <-> position p, and nothing else.
template <typename Id2Idx, typename Idx2Id>
void expectPositions(const Id2Idx& id2Idx, const Idx2Id& idx2Id, const std::vector<int64_t>& ids)
{
    ASSERT_EQ(id2Idx.size(), ids.size());
    ASSERT_EQ(idx2Id.size(), ids.size());
    for (size_t p = 0; p < ids.size(); ++p) {
        EXPECT_EQ(id2Idx.at(ids[p]), static_cast<int64_t>(p));
        EXPECT_EQ(idx2Id.at(p), ids[p]);
    }
}

// A fresh empty book in a temporary directory, a recorder of the store's
// messages, and a side connection that sets up and inspects rows behind the
// store's back.
class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    DataModel& open(int busyTimeoutMs = DataModel::kBusyTimeoutMs);  // a new store on the book
    void exec(const std::string& sql);
    int64_t scalar(const std::string& sql);  // first column of the first row
    // Every row of a table as text, in row id order: to compare before and after.
    std::string dump(const std::string& table);
    std::string dumpAll() { return dump("Sisan") + dump("Items") + dump("Himoku"); }
    int64_t addSisan(const std::string& namae, long long syokiKingaku, long long zankin);
    // An entry dated "yyyy-MM-dd", its amount in the kind's column; HimokuNo 0
    // is stored as NULL.
    int64_t addEntry(long long sisanNo, const std::string& hizuke, long long kind, long long himokuNo,
                     long long amount);
    // A category, its その他 and further sub-items, in Id order; returns its Id.
    int64_t addCategory(long long kind, const std::string& namae, std::vector<std::string> subItems = {});
    // Assets S (1, opening 10,000) and T (2, opening 0); 食費 (1) with その他
    // (2) and 外食 (3); 給与 (4) with その他 (5).
    void addSmallBook();
    // Makes the store's writes that match `when` fail with the reason "boom".
    void armFailure(const std::string& table, const std::string& event, const std::string& when);
    Messages takeMessages() { return std::exchange(messages, {}); }
    // The book's bytes, and replacing them (the side connection is closed first).
    std::string bookBytes() const;
    void writeBook(const std::string& content);

    std::string dir;
    std::string path;
    std::unique_ptr<DataModel> store;
    Messages messages;
    sqlite3* side = nullptr;

private:
    int64_t insert(const char* format, ...);
};
