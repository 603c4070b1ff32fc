#pragma once

#include "engine/scene/entities/Entity.h"

#include <glm/mat4x4.hpp>

#include <cstdint>

namespace Vornu::Scene
{

/// Cached world matrix of one entity index. Live only for its owner.
struct WorldCacheEntry
{
    glm::mat4 world{1.0f};
    std::uint64_t revision = 0;  // transform revision at which `world` was computed; 0 when it wasn't yet
    std::uint64_t checkedAt = 0; // transform revision at which it was last found to be current
    Entity owner = kNullEntity;
    Entity ancestor = kNullEntity; // whose matrix went into `world`; null when none did
    bool belowCycle = false;       // in a cycle of parents or below one, where no matrix is passed on
};

} // namespace Vornu::Scene
