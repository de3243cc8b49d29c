// The one order of operations: timestamps, where arrivals go, device Ids and
// what may be pruned.
#include <gtest/gtest.h>

#include "store/DeviceIds.h"
#include "store/HybridClock.h"
#include "sync/MergePlan.h"
#include "store/SyncLog.h"

namespace {

TEST(OrderTest, localTimestampNeverSortsBeforeWhatWasAppliedAndAFastClockIsHeldBack)
{
    const int64_t day = kClockClampMs;
    EXPECT_EQ(nextTimestamp(5000, 1000, 1000), 5000);             // the wall clock
    EXPECT_EQ(nextTimestamp(5000, 9000, 9000), 9001);             // behind what was applied
    EXPECT_EQ(nextTimestamp(400 * day, 0, 0), 400 * day);         // nothing known yet
    EXPECT_EQ(nextTimestamp(400 * day, 10 * day, 10 * day), 11 * day);  // a year fast: one day past the folder
    EXPECT_EQ(nextTimestamp(400 * day, 12 * day, 10 * day), 12 * day + 1);
}

TEST(OrderTest, arrivalsRewindTheLaterLocalOperationsAndReplayAllInOrder)
{
    const std::vector<OpKey> applied = {{10, 1, 1}, {20, 1, 2}, {30, 2, 1}, {40, 1, 3}};
    MergePlan plan = planMerge(applied, {{50, 2, 2}});
    EXPECT_EQ(plan.rewind, 0u);
    EXPECT_EQ(plan.replay, (std::vector<OpKey>{{50, 2, 2}}));

    plan = planMerge(applied, {{35, 2, 3}, {20, 2, 2}, {30, 2, 1}});  // unsorted, one already applied
    EXPECT_EQ(plan.rewind, 2u);
    EXPECT_EQ(plan.replay, (std::vector<OpKey>{{20, 2, 2}, {30, 2, 1}, {35, 2, 3}, {40, 1, 3}}));

    // Same timestamp: the device number decides, then the sequence.
    plan = planMerge(applied, {{20, 0, 9}});
    EXPECT_EQ(plan.rewind, 3u);
    EXPECT_EQ(plan.replay.front(), (OpKey{20, 0, 9}));
    EXPECT_EQ(planMerge(applied, {}).replay.size(), 0u);
}

TEST(OrderTest, deviceIdsInterleaveAndStopBeforeThirtyTwoBits)
{
    EXPECT_EQ(nextDeviceId(0, 1), 17);
    EXPECT_EQ(nextDeviceId(17, 2), 34);
    EXPECT_EQ(nextDeviceId(34, 1), 49);
    EXPECT_EQ(nextDeviceId(5, 15), 31);  // Ids made before sync keep their order below
    EXPECT_EQ(nextDeviceId(kMaxRowId - 31, 15), kMaxRowId);
    EXPECT_FALSE(nextDeviceId(kMaxRowId - 15, 15));
    EXPECT_FALSE(nextDeviceId(17, 0));
    EXPECT_FALSE(nextDeviceId(17, 16));
}

TEST(OrderTest, onlyOperationsEveryKnownPcHasSeenArePruned)
{
    const Uuid a = Uuid::generate(), b = Uuid::generate();
    const std::vector<LoggedKey> log = {{{10, 1, 1}, a}, {{20, 2, 1}, b}, {{30, 1, 2}, a}, {{40, 2, 2}, b}};
    const AppliedVector here = {{a, 2}, {b, 2}};
    // b has seen a's first operation and its own two, a all four.
    std::map<Uuid, AppliedVector> known = {{a, {{a, 2}, {b, 2}}}, {b, {{a, 1}, {b, 2}}}};
    EXPECT_EQ(prunableUpTo(log, known, here, 1000), (OpKey{20, 2, 1}));
    known[b][a] = 2;
    EXPECT_EQ(prunableUpTo(log, known, here, 1000), (OpKey{40, 2, 2}));
    // b says it wrote a third operation that has not arrived here: it may
    // sort before anything b had not seen when it wrote it, so keep all.
    known[b][b] = 3;
    EXPECT_EQ(prunableUpTo(log, known, here, 1000), OpKey{});
    // Nothing newer than the stretch the history keeps is pruned.
    known[b][b] = 2;
    EXPECT_EQ(prunableUpTo(log, known, here, 30), (OpKey{20, 2, 1}));
}

}  // namespace
