#include "engine/scene/EntityReference.h"

#include "engine/scene/Registry.h"
#include "engine/scene/components/CoreComponents.h"

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

} // namespace Vornu::Scene
