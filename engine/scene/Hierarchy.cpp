#include "engine/scene/Hierarchy.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace Vornu::Scene
{

void ValidateHierarchy(const ParentMap& parents)
{
    std::vector<std::uint32_t> positions(parents.PositionLimit(), kNoParent);
    for (const auto& [guid, parent] : parents)
    {
        if (!guid.IsValid())
        {
            continue; // no walk begins at, or comes past, a null GUID
        }
        const std::size_t own = parents.PositionOf(guid);
        const std::size_t above = parent.IsValid() ? parents.PositionOf(parent) : ParentMap::kNoPosition;
        positions[own] = above != ParentMap::kNoPosition ? static_cast<std::uint32_t>(above)
                         : parent.IsValid()              ? kMissingParent
                                                         : kNoParent;
    }
    ValidateHierarchy(positions);
}

void ValidateHierarchy(std::span<const std::uint32_t> parents)
{
    // Which walk came past each entity: a walk that meets an earlier one's trail may stop, one that meets its
    // own trail has gone round.
    constexpr std::uint32_t kUnvisited = 0;
    std::vector<std::uint32_t> walks(parents.size(), kUnvisited);
    for (std::uint32_t start = 0; start < parents.size(); ++start)
    {
        const std::uint32_t walk = start + 1;
        for (std::uint32_t current = start; current != kNoParent; current = parents[current])
        {
            if (current == kMissingParent)
            {
                throw std::runtime_error("Scene hierarchy references a missing parent.");
            }
            if (walks[current] == walk)
            {
                throw std::runtime_error("Scene hierarchy contains a cycle.");
            }
            if (walks[current] != kUnvisited)
            {
                break;
            }
            walks[current] = walk;
        }
    }
}

} // namespace Vornu::Scene
