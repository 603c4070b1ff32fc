#include "engine/core/OrderedMap.h"

#include "engine/core/Hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Vornu::Core
{
namespace
{

using TextMap = OrderedMap<std::string, int, TextHash>;

std::string Keys(const TextMap& map)
{
    std::string text;
    for (const auto& [key, value] : map)
    {
        text += key + "=" + std::to_string(value) + " ";
    }
    return text;
}

/// All keys share one chain of probes.
struct CollidingHash
{
    std::size_t operator()(std::uint32_t key) const { return key % 3; }
};

TEST(OrderedMap, WalksInOrderOfFirstInsertion)
{
    TextMap map;
    EXPECT_EQ(Keys(map), "");
    EXPECT_FALSE(map.Erase("zeta"));
    map.InsertOrAssign("zeta", 1);
    map.InsertOrAssign(std::string_view("alpha"), 2);
    map["mid"] = 3;
    map.InsertOrAssign("zeta", 4);
    EXPECT_EQ(Keys(map), "zeta=4 alpha=2 mid=3 ");

    const auto [kept, added] = map.Emplace("alpha", 9);
    EXPECT_EQ(*kept, 2);
    EXPECT_FALSE(added);

    EXPECT_TRUE(map.Erase(std::string_view("zeta")));
    EXPECT_FALSE(map.Contains("zeta"));
    EXPECT_EQ(Keys(map), "alpha=2 mid=3 ");
    map.Emplace("zeta", 5);
    EXPECT_EQ(Keys(map), "alpha=2 mid=3 zeta=5 ");
    EXPECT_EQ(*map.Find(std::string_view("zeta")), 5);

    const TextMap copy = map;
    TextMap moved = std::move(map);
    EXPECT_EQ(Keys(moved), Keys(copy));
    map.Emplace("again", 1);
    EXPECT_EQ(Keys(map), "again=1 ");
    moved.Clear();
    EXPECT_EQ(Keys(moved), "");
    EXPECT_EQ(moved.Find("mid"), nullptr);
}

TEST(OrderedMap, EraseReleasesTheValueAtOnce)
{
    OrderedMap<std::uint32_t, std::shared_ptr<int>, CollidingHash> map;
    const auto value = std::make_shared<int>(1);
    map.InsertOrAssign(1u, value);
    map.InsertOrAssign(2u, value);
    map.Erase(1u);
    EXPECT_EQ(value.use_count(), 2);
}

template<class Map>
void CompareWithModel(std::uint32_t seed, std::uint32_t keyCount, int steps)
{
    std::mt19937 random(seed);
    Map map;
    std::vector<std::pair<std::uint32_t, int>> model;
    for (int step = 0; step < steps; ++step)
    {
        const auto key = static_cast<std::uint32_t>(random() % keyCount);
        const auto found =
            std::find_if(model.begin(), model.end(), [key](const auto& entry) { return entry.first == key; });
        ASSERT_EQ(map.Contains(key), found != model.end());
        // Alternating long stretches of mostly adding and mostly erasing reach growth and compaction.
        const bool adding = random() % 10 < ((step / 500) % 2 == 0 ? 8u : 2u);
        if (!adding)
        {
            ASSERT_EQ(map.Erase(key), found != model.end());
            if (found != model.end())
            {
                model.erase(found);
            }
        }
        else
        {
            map.InsertOrAssign(key, step);
            if (found != model.end())
            {
                found->second = step;
            }
            else
            {
                model.emplace_back(key, step);
            }
        }
        ASSERT_EQ(map.Size(), model.size());
        if (step % 50 == 0)
        {
            ASSERT_TRUE(std::equal(map.begin(), map.end(), model.begin(), model.end())) << step;
            std::size_t previous = Map::kNoPosition;
            for (const auto& [modelKey, modelValue] : model)
            {
                const std::size_t position = map.PositionOf(modelKey);
                ASSERT_EQ(map.EntryAt(position).second, modelValue);
                ASSERT_LT(position, map.PositionLimit());
                ASSERT_TRUE(previous == Map::kNoPosition || previous < position);
                previous = position;
            }
        }
    }
}

TEST(OrderedMap, AgreesWithAModelOverRandomChanges)
{
    struct NumberHash
    {
        std::size_t operator()(std::uint32_t key) const { return Fnv1aOfNumber(key); }
    };
    CompareWithModel<OrderedMap<std::uint32_t, int, NumberHash>>(1, 400, 5000);
    CompareWithModel<OrderedMap<std::uint32_t, int, CollidingHash>>(2, 60, 3000);
}

} // namespace
} // namespace Vornu::Core
