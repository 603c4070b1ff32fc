#pragma once

#include "engine/core/Hash.h"

#include <cstddef>
#include <cstdint>

namespace Vornu::Scene
{

/// Handle of an entity: the slot index in bits 0 to 19, the generation in bits 20 to 31. A handle whose index
/// is 0 is null.
using Entity = std::uint32_t;

inline constexpr Entity kNullEntity = 0;
inline constexpr std::uint32_t kEntityIndexBits = 20;
inline constexpr std::uint32_t kEntityIndexMask = (1u << kEntityIndexBits) - 1;
inline constexpr std::uint32_t kEntityGenerationMask = 0xFFF;

constexpr std::uint32_t EntityIndex(Entity entity) noexcept
{
    return entity & kEntityIndexMask;
}

constexpr std::uint32_t EntityGeneration(Entity entity) noexcept
{
    return entity >> kEntityIndexBits;
}

struct EntityHash
{
    std::size_t operator()(Entity entity) const noexcept { return Core::Fnv1aOfNumber(entity); }
};

} // namespace Vornu::Scene
