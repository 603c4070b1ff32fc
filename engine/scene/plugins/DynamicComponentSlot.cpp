#include "engine/scene/plugins/DynamicComponentSlot.h"

#include "engine/scene/registration/ComponentBuilder.h"

#include <utility>

namespace Vornu::Scene
{
namespace
{

template<std::size_t... kSlots>
constexpr auto MakeRegistrations(std::index_sequence<kSlots...>)
{
    return std::array{&MakeComponentEntry<DynamicComponentSlot<kSlots>>...};
}

constexpr auto kRegistrations = MakeRegistrations(std::make_index_sequence<kPluginComponentLimit>());

} // namespace

DynamicComponentData::DynamicComponentData() = default;
DynamicComponentData::DynamicComponentData(const DynamicComponentData& other) = default;
DynamicComponentData::DynamicComponentData(DynamicComponentData&& other) noexcept = default;
DynamicComponentData& DynamicComponentData::operator=(const DynamicComponentData& other) = default;
DynamicComponentData& DynamicComponentData::operator=(DynamicComponentData&& other) noexcept = default;
DynamicComponentData::~DynamicComponentData() = default;

DynamicComponentData& SlotDefaults(std::size_t slot)
{
    // Stays until the process ends.
    static auto* const defaults = new std::array<DynamicComponentData, kPluginComponentLimit>;
    return (*defaults)[slot];
}

ComponentTypeEntry& RegisterSlotType(std::size_t slot, const std::string& typeName,
                                     const std::string& displayName, const std::string& category,
                                     ComponentFlags flags)
{
    return kRegistrations[slot](typeName, displayName, category, flags);
}

} // namespace Vornu::Scene
