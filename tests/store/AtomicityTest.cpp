#include "tests/store/StoreFixture.h"

#include <sqlite3.h>

#include <functional>

#include "store/MessageSink.h"

namespace {

// The book every case starts from: assets S (1) and T (2), 食費 (1) with
// その他 (2) and 外食 (3), an expense of each asset under 外食 and a transfer
// from S to T whose rows are 3 (source) and 4 (destination).
struct Fault {
    const char* name;
    const char* table;
    const char* event;
    const char* when;
    std::function<bool(DataModel&)> operation;
    const char* message;
};

void PrintTo(const Fault& fault, std::ostream* os) { *os << fault.name; }

class AtomicityTest : public StoreFixture, public ::testing::WithParamInterface<Fault> {
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        // A message shown while the store still holds its write lock would
        // keep every other program out of the book until it is dismissed.
        setMessageSink([this](const std::string& m, const std::string& i) {
            messages.emplace_back(m + (bookIsWritable() ? "" : " [book locked]"), i);
        });
        addSisan("S", 10000, 10000);
        addSisan("T", 500, 500);
        addCategory(1, "食費", {"外食"});
        addEntry(1, "2024-01-01", 1, 3, 100);
        addEntry(2, "2024-01-01", 1, 3, 200);
        addEntry(1, "2024-01-02", 3, 0, 700);
        addEntry(2, "2024-01-02", 4, 0, 700);
        exec("UPDATE Items SET IdouSisanNo=2, IdouId=4 WHERE Id=3");
        exec("UPDATE Items SET IdouSisanNo=1, IdouId=3 WHERE Id=4");
        DataModel& dm = open();
        ASSERT_TRUE(dm.readFromItemsTable(2));
        ASSERT_TRUE(dm.readFromItemsTable(1));
    }

    bool bookIsWritable()
    {
        if (sqlite3_exec(side, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK) return false;
        return sqlite3_exec(side, "ROLLBACK", nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    // Everything the screens read from the store, as text.
    std::string memory() const
    {
        std::string out;
        for (const auto& s : store->sisanList) out += s->Namae + "=" + std::to_string(s->Zankin) + ";";
        for (const auto& i : store->itemList) out += std::to_string(i->Id) + ":" + std::to_string(i->Zankin) + ";";
        for (const auto& h : store->himokuList) out += h->Namae + "/" + std::to_string(h->Ucount) + ";";
        return out;
    }
};

TEST_P(AtomicityTest, AFailurePartWayLeavesTheBookAsItWasAndTheRetrySucceeds)
{
    const Fault& fault = GetParam();
    const std::string tables = dumpAll();
    const std::string lists = memory();
    armFailure(fault.table, fault.event, fault.when);

    EXPECT_FALSE(fault.operation(*store));
    EXPECT_EQ(takeMessages(), (Messages{{std::string(fault.message) + "boom", "information"}}));
    EXPECT_EQ(dumpAll(), tables);
    EXPECT_EQ(memory(), lists);

    exec("DROP TRIGGER armed_failure");
    EXPECT_TRUE(fault.operation(*store));
    EXPECT_TRUE(takeMessages().empty());
    EXPECT_NE(dumpAll(), tables);
}

const Fault kFaults[] = {
    {"TransferDestinationInsert", "Items", "INSERT", "NEW.SyubetuNo = 4",
     [](DataModel& d) { return d.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, 1, 3, 2, 1000, ""); },
     "failure inserting item Syukkin,Nyuukin: "},
    {"TransferLinkUpdate", "Items", "UPDATE", "1",
     [](DataModel& d) { return d.itemIdouSisanInsert("2024-02-01", 2024, 2, 1, 1, 3, 2, 1000, ""); },
     "failure updating  移動元item: "},
    {"CategorySubItemInsert", "Himoku", "INSERT", "NEW.Ucount = 0",
     [](DataModel& d) { return d.insertHimokuOfHiimoku(1, "日用品"); }, "failure inserting himoku : "},
    {"SubItemCountUpdate", "Himoku", "UPDATE", "1",
     [](DataModel& d) { return d.insertUtiwakeOfHimoku(1, "食費/弁当", 1, 2); },
     "failure updating Ucount Of Himoku for update himokumei: "},
    {"SubItemEntriesDelete", "Items", "DELETE", "1", [](DataModel& d) { return d.deleteUtiwakeHimoku(3, 1, 2); },
     "failure delete items  from himoku: "},
    {"TransferPairSecondDelete", "Items", "DELETE", "OLD.SyubetuNo = 3",
     [](DataModel& d) { return d.itemDeleteIdouPair(4, 3); }, "failure deletin from Items: "},
    {"AssetDeleteAfterItsEntries", "Sisan", "DELETE", "1", [](DataModel& d) { return d.sisanDeleteWithItems(2); },
     "failure deletin from sisan: "},
    {"SubItemRenameOfCategoryRename", "Himoku", "UPDATE", "NEW.Ucount = 0",
     [](DataModel& d) { return d.updateNamaeOfHimoku(1, "食料", {2, 3}, {"その他", "外食"}); },
     "failure updating utiwake namae Of updated Himoku: "},
};

INSTANTIATE_TEST_SUITE_P(Store, AtomicityTest, ::testing::ValuesIn(kFaults),
                         [](const ::testing::TestParamInfo<Fault>& info) { return info.param.name; });

}  // namespace
