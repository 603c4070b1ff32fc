#pragma once

#include "engine/core/Guid.h"
#include "engine/core/OrderedMap.h"

#include <cstdint>
#include <span>

namespace Vornu::Scene
{

/// The parent of every entity of a file; roots have the null GUID.
using ParentMap = Core::OrderedMap<Core::Guid, Core::Guid, Core::GuidHash>;

/// Checks that every parent is itself in the map and that no chain of parents returns to itself. Throws
/// `std::runtime_error` for the first fault in map order. Takes time in proportion to the map.
void ValidateHierarchy(const ParentMap& parents);

inline constexpr std::uint32_t kNoParent = ~std::uint32_t{0};
inline constexpr std::uint32_t kMissingParent = kNoParent - 1;

/// The same over entities that are known by their position: the position of each one's parent, `kNoParent`
/// for a root, `kMissingParent` for a parent that isn't there.
void ValidateHierarchy(std::span<const std::uint32_t> parents);

} // namespace Vornu::Scene
