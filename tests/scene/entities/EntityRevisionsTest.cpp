#include "engine/scene/entities/EntityRevisions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

TEST(EntityRevisions, AgreesWithAModelOverRandomChanges)
{
    std::mt19937 random(9);
    EntityRevisions revisions;
    std::vector<std::pair<Entity, std::uint64_t>> model;
    for (std::uint64_t step = 1; step < 20000; ++step)
    {
        // Three generations of each of a hundred indices, in stretches of growth and of decline.
        const Entity entity = static_cast<Entity>(random() % 100 | (random() % 3) << kEntityIndexBits);
        const auto found = std::find_if(model.begin(), model.end(),
                                        [entity](const auto& row) { return row.first == entity; });
        ASSERT_EQ(revisions.RevisionOf(entity), found != model.end() ? found->second : 0);
        if (random() % 10 < ((step / 1000) % 2 == 0 ? 7u : 3u))
        {
            revisions.Set(entity, step);
            if (found != model.end())
            {
                found->second = step;
            }
            else
            {
                model.emplace_back(entity, step);
            }
        }
        else
        {
            revisions.Erase(entity);
            if (found != model.end())
            {
                model.erase(found);
            }
        }
        if (step % 9000 == 0)
        {
            revisions.Clear();
            model.clear();
        }
        if (step % 20 == 0)
        {
            const std::uint64_t since = step - std::min<std::uint64_t>(step, random() % 2000);
            std::vector<Entity> expected;
            for (const auto& [changed, revision] : model)
            {
                if (revision > since)
                {
                    expected.push_back(changed);
                }
            }
            ASSERT_EQ(revisions.ChangedAfter(since), expected) << step;
        }
    }
}

} // namespace
} // namespace Vornu::Scene
