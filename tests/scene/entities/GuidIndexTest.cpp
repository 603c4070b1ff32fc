#include "engine/scene/entities/GuidIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
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
            model.emplace_back(Core::Guid{random() % keys, 1}, step % 700);
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
