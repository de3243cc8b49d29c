#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "store/IdIndexMap.h"

namespace {

// Ids as ledgers give them (mostly ascending), and in strides of the table's
// size, which a hash on the low bits alone would pile onto one slot.
TEST(IdIndexMapTest, EveryIdFindsItsPositionWhateverTheirPattern)
{
    for (const int64_t stride : {int64_t{1}, int64_t{3}, int64_t{1} << 12, int64_t{1} << 20}) {
        std::vector<int64_t> ids;
        for (int64_t i = 0; i < 3000; ++i) ids.push_back(7 + i * stride);
        IdIndexMap map;
        map.assignPositions(ids);
        ASSERT_EQ(map.size(), ids.size());
        for (size_t p = 0; p < ids.size(); ++p) ASSERT_EQ(map.at(ids[p]), static_cast<int64_t>(p)) << stride;
        EXPECT_EQ(map.find(8 + stride * 3000), nullptr);

        IdIndexMap grown;  // one insertion at a time, growing the table
        for (size_t p = 0; p < ids.size(); ++p) grown[ids[p]] = static_cast<int64_t>(p);
        EXPECT_EQ(grown.at(ids.back()), 2999);
        EXPECT_EQ(grown.count(6), 0u);
    }
}

}  // namespace
