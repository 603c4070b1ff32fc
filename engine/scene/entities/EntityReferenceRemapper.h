#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/entities/Entity.h"

#include <string>

namespace Vornu::Scene
{

/// Rewrites references between entities after a copy; what remap hooks of components receive.
class EntityReferenceRemapper
{
public:
    virtual ~EntityReferenceRemapper() = default;

    /// A bare handle.
    virtual void RemapEntity(Entity& entity) const = 0;
    /// A bare stable GUID.
    virtual void RemapGuid(Core::Guid& guid) const = 0;
    /// A handle with its GUID in text form. Text that is no GUID stays as it is.
    virtual void RemapEntityText(Entity& entity, std::string& text) const = 0;
    /// A handle with its GUID.
    virtual void RemapEntityReference(Entity& entity, Core::Guid& guid) const = 0;
};

} // namespace Vornu::Scene
