#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/entities/Entity.h"

namespace Vornu::Scene
{

class Registry;

/// A link to an entity that outlives the process: the GUID is what is saved, the handle is a cache beside it.
struct EntityReference
{
    Core::Guid guid;
    Entity entity = kNullEntity; // last resolved handle; null when unresolved
};

/// The GUID of an entity, or the null GUID when the handle isn't alive or the entity has none.
Core::Guid GetGuid(const Registry& registry, Entity entity);

/// Stores the GUID of the entity that the handle names. False, with the stored one kept, when it names no
/// live entity with a GUID.
bool RefreshLink(const Registry& registry, Entity handle, Core::Guid& guid);

/// The same, for a link that is going to be saved. With `requirePersistent` throws `std::runtime_error` for a
/// handle that gives no GUID, with none stored.
void RefreshLinkForSave(const Registry& registry, Entity handle, Core::Guid& guid, bool requirePersistent);

/// A reference to `entity`; empty unless the entity is alive and has an EntityGuidComponent.
EntityReference MakeEntityReference(const Registry& registry, Entity entity);

/// The entity that `reference` names, or the null handle. Updates the cached handle and keeps the GUID in any
/// case, so that a link that doesn't resolve isn't lost.
Entity ResolveEntityReference(EntityReference& reference, const Registry& registry);

} // namespace Vornu::Scene
