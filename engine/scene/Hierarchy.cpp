#include "engine/scene/Hierarchy.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace Vornu::Scene
{

void ValidateHierarchy(const ParentMap& parents)
{
    // Which walk came past each entity: a walk that meets an earlier one's trail may stop, one that meets its
    // own trail has gone round.
    constexpr std::size_t kUnvisited = 0;
    std::vector<std::size_t> walks(parents.PositionLimit(), kUnvisited);
    std::size_t walk = kUnvisited;
    for (const auto& [guid, parent] : parents)
    {
        ++walk;
        for (Core::Guid current = guid; current.IsValid();)
        {
            const std::size_t position = parents.PositionOf(current);
            if (position == ParentMap::kNoPosition)
            {
                throw std::runtime_error("Scene hierarchy references a missing parent.");
            }
            if (walks[position] == walk)
            {
                throw std::runtime_error("Scene hierarchy contains a cycle.");
            }
            if (walks[position] != kUnvisited)
            {
                break;
            }
            walks[position] = walk;
            current = parents.EntryAt(position).second;
        }
    }
}

} // namespace Vornu::Scene
