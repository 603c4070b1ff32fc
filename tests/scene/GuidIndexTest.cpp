#include "engine/scene/GuidIndex.h"

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

TEST(GuidIndex, KeepsEqualKeysInOrderThroughGrowthAndReuse)
{
    std::mt19937 random(5);
    GuidIndex index;
    std::vector<std::pair<Core::Guid, Entity>> model;
    for (Entity step = 1; step < 4000; ++step)
    {
        if (random() % 3 != 0 || model.empty())
        {
            const Core::Guid guid{random() % 200, 1};
            index.Insert(guid, step);
            model.emplace_back(guid, step);
        }
        else
        {
            const auto victim = model.begin() + static_cast<std::ptrdiff_t>(random() % model.size());
            ASSERT_TRUE(index.Erase(victim->first, victim->second));
            model.erase(victim);
        }
        if (step == 2000)
        {
            index.Reserve(20000);
        }
        ASSERT_EQ(index.Size(), model.size());
        const Core::Guid probe{random() % 200, 1};
        std::vector<Entity> expected;
        for (const auto& [guid, entity] : model)
        {
            if (guid == probe)
            {
                expected.push_back(entity);
            }
        }
        ASSERT_EQ(EntitiesOf(index, probe), expected) << step;
    }
}

} // namespace
} // namespace Vornu::Scene
