#pragma once

#include "engine/core/Guid.h"
#include "engine/core/OrderedMap.h"

namespace Vornu::Scene
{

/// The parent of every entity of a file; roots have the null GUID.
using ParentMap = Core::OrderedMap<Core::Guid, Core::Guid, Core::GuidHash>;

/// Checks that every parent is itself in the map and that no chain of parents returns to itself. Throws
/// `std::runtime_error` for the first fault in map order. Takes time in proportion to the map.
void ValidateHierarchy(const ParentMap& parents);

} // namespace Vornu::Scene
