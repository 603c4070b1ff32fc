#pragma once

#include "engine/scene/registration/ComponentTypeEntry.h"

#include <array>
#include <cstddef>
#include <string>

/// The pool of component types that are compiled without knowing what they hold. A plugin component takes one
/// over at run time (PluginComponents.h).
namespace Vornu::Scene
{

inline constexpr std::size_t kPluginComponentLimit = 64;
inline constexpr std::size_t kPluginDataBytes = 256;
inline constexpr std::size_t kPluginStringCount = 8;

/// What every component of the pool holds, whatever its plugin declares. The members stand in one source
/// file, so that the types of the pool share their code.
struct DynamicComponentData
{
    DynamicComponentData();
    DynamicComponentData(const DynamicComponentData& other);
    DynamicComponentData(DynamicComponentData&& other) noexcept;
    DynamicComponentData& operator=(const DynamicComponentData& other);
    DynamicComponentData& operator=(DynamicComponentData&& other) noexcept;
    ~DynamicComponentData();

    alignas(8) std::array<std::byte, kPluginDataBytes> data = {}; // all fields but the strings
    std::array<std::string, kPluginStringCount> strings;
};

/// What new components of a slot start with. Changed only before the slot is taken.
DynamicComponentData& SlotDefaults(std::size_t slot);

/// One type of the pool, with a storage and an identity of its own.
template<std::size_t kSlot>
struct DynamicComponentSlot : DynamicComponentData
{
    static_assert(kSlot < kPluginComponentLimit);

    DynamicComponentSlot() : DynamicComponentData(SlotDefaults(kSlot)) {}
};

/// `RegisterComponent` for the type of a slot.
ComponentTypeEntry& RegisterSlotType(std::size_t slot, const std::string& typeName,
                                     const std::string& displayName, const std::string& category,
                                     ComponentFlags flags);

} // namespace Vornu::Scene
