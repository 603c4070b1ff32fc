#include "engine/scene/entities/GuidIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

std::vector<Entity> EntitiesOf(const GuidIndex& index, const Core::Guid& guid)
{
    std::vector<Entity> entities;
    for (std::uint32_t node = index.First(guid); node != GuidIndex::kNoNode; node = index.Next(node))
    {
        entities.push_back(index.EntityAt(node));
    }
    return entities;
}

TEST(GuidIndex, EraseTakesExactlyOnePair)
{
    const Core::Guid guid{1, 2};
    GuidIndex index;
    EXPECT_FALSE(index.Erase(guid, 7));
    for (const Entity entity : {7u, 8u, 7u, 9u})
    {
        index.Insert(guid, entity);
    }
    EXPECT_FALSE(index.Erase({1, 3}, 7));
    EXPECT_TRUE(index.Erase(guid, 7));
    EXPECT_EQ(EntitiesOf(index, guid), (std::vector<Entity>{8, 7, 9}));
    EXPECT_TRUE(index.Erase(guid, 7));
    EXPECT_FALSE(index.Erase(guid, 7));
    EXPECT_EQ(EntitiesOf(index, guid), (std::vector<Entity>{8, 9}));
    index.Clear();
    EXPECT_EQ(EntitiesOf(index, guid), std::vector<Entity>{});
    index.Insert(guid, 4);
    EXPECT_EQ(EntitiesOf(index, guid), (std::vector<Entity>{4}));
}

TEST(GuidIndex, PairsOfOneKeyGoInAnyOrder)
{
    const Core::Guid guid{1, 2};
    for (const std::vector<Entity>& order :
         {std::vector<Entity>{5, 4, 3, 2, 1}, {1, 2, 3, 4, 5}, {3, 1, 5, 2, 4}})
    {
        GuidIndex index;
        std::vector<Entity> left = {1, 2, 3, 4, 5};
        for (const Entity entity : left)
        {
            index.Insert(guid, entity);
        }
        for (const Entity entity : order)
        {
            ASSERT_TRUE(index.Erase(guid, entity));
            left.erase(std::find(left.begin(), left.end(), entity));
            ASSERT_EQ(EntitiesOf(index, guid), left);
        }
        index.Insert(guid, 9);
        ASSERT_EQ(EntitiesOf(index, guid), std::vector<Entity>{9});
    }
}

/// GUIDs can be chosen so that `Guid::Hash`, which everybody can compute, sends them all to one place.
TEST(GuidIndex, NoFileCanChooseWhereItsGuidsFall)
{
    constexpr std::uint64_t kMask = 0x3FF;
    std::set<std::size_t> places;
    std::size_t chosen = 0;
    for (Core::Guid guid{7, 0}; chosen < 300; ++guid.low)
    {
        if ((guid.Hash() & kMask) == 0)
        {
            ++chosen;
            places.insert(Core::GuidHash{}(guid)&kMask);
        }
    }
    EXPECT_GT(places.size(), 150u);
}

TEST(GuidIndex, ErasedPairsOfOneKeyLeaveNothingBehind)
{
    const Core::Guid a{1, 1};
    const Core::Guid b{2, 1};
    GuidIndex index;
    index.Insert(a, 5);
    index.Insert(b, 5);
    EXPECT_TRUE(index.Erase(a, 5)); // not the latest pair of its entity
    EXPECT_TRUE(index.Erase(b, 5));
    EXPECT_FALSE(index.Erase(b, 5));
    EXPECT_EQ(index.Size(), 0u);
    EXPECT_EQ(EntitiesOf(index, b), std::vector<Entity>{});
    index.Insert(a, 6);
    index.Insert(b, 7);
    EXPECT_FALSE(index.Erase(b, 5));
    index.Insert(b, 5);
    EXPECT_EQ(EntitiesOf(index, b), (std::vector<Entity>{7, 5}));
    EXPECT_TRUE(index.Erase(b, 5));
    EXPECT_EQ(EntitiesOf(index, b), (std::vector<Entity>{7}));
    EXPECT_EQ(EntitiesOf(index, a), (std::vector<Entity>{6}));
}

/// Many pairs of few keys, or hardly two of one key; entities stand in several pairs. Phases of growing and
/// of shrinking take turns.
void CompareWithModel(unsigned keys, Entity reserveAt)
{
    std::mt19937 random(keys);
    GuidIndex index;
    std::vector<std::pair<Core::Guid, Entity>> model;
    for (Entity step = 1; step < 8000; ++step)
    {
        const bool grows = step / 1000 % 2 == 0;
        if (random() % 5 < (grows ? 4u : 1u) || model.empty())
        {
            model.emplace_back(Core::Guid{random() % keys, 1}, 1 + step % 700);
            index.Insert(model.back().first, model.back().second);
        }
        else
        {
            const auto pair = model[random() % model.size()];
            ASSERT_TRUE(index.Erase(pair.first, pair.second));
            model.erase(std::find(model.begin(), model.end(), pair));
        }
        if (step == reserveAt)
        {
            index.Reserve(20000);
        }
        ASSERT_EQ(index.Size(), model.size());
        const Core::Guid probe = model.empty() ? Core::Guid{1, 1} : model[random() % model.size()].first;
        for (const Core::Guid& guid : {probe, Core::Guid{random() % keys, 1}})
        {
            std::vector<Entity> expected;
            for (const auto& pair : model)
            {
                if (pair.first == guid)
                {
                    expected.push_back(pair.second);
                }
            }
            ASSERT_EQ(EntitiesOf(index, guid), expected) << step;
        }
    }
}

TEST(GuidIndex, KeepsEqualKeysInOrderThroughGrowthAndReuse)
{
    CompareWithModel(200, 2000);
    CompareWithModel(20'000, 0);
}

} // namespace
} // namespace Vornu::Scene
