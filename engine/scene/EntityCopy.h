#pragma once

#include "engine/core/Guid.h"
#include "engine/core/OrderedMap.h"
#include "engine/scene/entities/Entity.h"
#include "engine/scene/entities/EntityReferenceRemapper.h"
#include "engine/scene/registration/ComponentTypeEntry.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace Vornu::Scene
{

class Registry;
class Scene;

/// Copies of entities, and what becomes of references between them.
namespace EntityCopy
{

/// Source entity to copied entity, in order of copying.
using EntityMap = Core::OrderedMap<Entity, Entity, EntityHash>;

/// Copies every component but those of the entity frame and those that live at run time only. With
/// `persistentOnly`, only those that scenes save. Source and target may be one registry.
void CopyComponents(const Registry& from, Registry& to, Entity source, Entity target, bool persistentOnly,
                    ComponentCopyKind kind);

/// Copies an entity with its whole tree under `parent` (0: a root), each with a new GUID and with
/// `nameSuffix` behind its name, and adds the pairs to `map`. Entities with a `TransientComponent` drop out
/// with all that is below them. Gives the new root; 0 when nothing was copied.
Entity CopyEntityTree(Scene& scene, Entity source, Entity parent, EntityMap& map,
                      std::string_view nameSuffix);

/// Rewrites the references of the copies: those to a copied entity lead to its copy. A handle that leads out
/// of the map stays with `keepUnmapped` and becomes 0 without; stored GUIDs stay.
void RemapReferences(const Registry& source, Registry& target, const EntityMap& map, bool keepUnmapped);

/// The remapper of one pass. Registries and map outlive it.
class ReferenceRemapper final : public EntityReferenceRemapper
{
public:
    ReferenceRemapper(const Registry& source, const Registry& target, const EntityMap& entities,
                      bool keepUnmapped);

    void RemapEntity(Entity& entity) const override;
    void RemapGuid(Core::Guid& guid) const override;
    void RemapEntityText(Entity& entity, std::string& text) const override;
    void RemapEntityReference(Entity& entity, Core::Guid& guid) const override;

private:
    const Registry& target_;
    const EntityMap& entities_;
    bool keepUnmapped_;
    std::unordered_map<Core::Guid, Core::Guid, Core::GuidHash> guids_;    // of source and copy
    std::unordered_map<Core::Guid, Entity, Core::GuidHash> guidEntities_; // of source, to the copy
};

} // namespace EntityCopy
} // namespace Vornu::Scene
