#include "engine/scene/entities/EntityReference.h"

#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/Registry.h"

#include <stdexcept>

namespace Vornu::Scene
{
namespace
{

const EntityGuidComponent* FindGuidComponent(const Registry& registry, Entity entity)
{
    return registry.IsValid(entity) ? registry.TryGet<EntityGuidComponent>(entity) : nullptr;
}

} // namespace

Core::Guid GetGuid(const Registry& registry, Entity entity)
{
    const EntityGuidComponent* component = FindGuidComponent(registry, entity);
    return component != nullptr ? component->guid : Core::Guid{};
}

EntityReference MakeEntityReference(const Registry& registry, Entity entity)
{
    const EntityGuidComponent* component = FindGuidComponent(registry, entity);
    return component != nullptr ? EntityReference{component->guid, entity} : EntityReference{};
}

Entity ResolveEntityReference(EntityReference& reference, const Registry& registry)
{
    if (!reference.guid.IsValid())
    {
        reference.entity = kNullEntity;
    }
    else if (GetGuid(registry, reference.entity) != reference.guid)
    {
        reference.entity = registry.FindEntityByGuid(reference.guid);
    }
    return reference.entity;
}

bool RefreshLink(const Registry& registry, Entity handle, Core::Guid& guid)
{
    const EntityGuidComponent* const component = FindGuidComponent(registry, handle);
    if (component == nullptr)
    {
        return false;
    }
    guid = component->guid;
    return true;
}

void RefreshLinkForSave(const Registry& registry, Entity handle, Core::Guid& guid, bool requirePersistent)
{
    if (!RefreshLink(registry, handle, guid) && requirePersistent && handle != kNullEntity && !guid.IsValid())
    {
        throw std::runtime_error("Entity reference has no persistent GUID.");
    }
}

} // namespace Vornu::Scene
