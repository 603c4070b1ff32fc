#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/core/Guid.h"
#include "engine/scene/entities/Entity.h"

#include <glm/vec3.hpp>

#include <string>
#include <vector>

namespace Vornu::Scene
{

/// Display name of an entity; stored by the entity frame of a scene file.
struct NameComponent
{
    std::string name;
};

/// Identity of an entity across files; stored by the entity frame. Its storage keeps the GUID index current.
struct EntityGuidComponent
{
    Core::Guid guid;
};

/// Placement relative to the parent.
struct Transform
{
    glm::vec3 position{0.0f, 0.0f, 0.0f};
    glm::vec3 rotation{0.0f, 0.0f, 0.0f}; // Euler angles in degrees
    glm::vec3 scale{1.0f, 1.0f, 1.0f};

    friend bool operator==(const Transform&, const Transform&) = default;
};

struct TransformComponent
{
    Transform transform;
};

/// Parent and children of an entity, kept in step by `Scene::SetParent` and `Scene::DestroyEntity`.
struct HierarchyComponent
{
    Entity parent = 0;
    std::vector<Entity> children;
};

/// One property of an instance that differs from its prefab.
struct PrefabOverride
{
    Core::Guid localGuid;
    std::string propertyPath;
    std::string value;

    friend bool operator==(const PrefabOverride&, const PrefabOverride&) = default;
};

/// One component that an instance has and its prefab has not, or the reverse.
struct PrefabComponentChange
{
    Core::Guid localGuid;
    std::string component;

    friend bool operator==(const PrefabComponentChange&, const PrefabComponentChange&) = default;
};

/// Stored form of a prefab instance: what an entity frame of a scene file holds of it.
struct PrefabInstanceRecord
{
    Assets::AssetId prefab = 0;
    Core::Guid sourceEntityGuid;
    Core::Guid instanceRootGuid;
    bool connected = true;
    std::vector<PrefabOverride> overrides;
    std::vector<PrefabComponentChange> addedComponents;
    std::vector<PrefabComponentChange> removedComponents;
    std::vector<Core::Guid> addedEntities;
    std::vector<Core::Guid> removedEntities;
};

/// Ties an entity to the prefab that it was made from and lists how it differs from it.
struct PrefabInstanceComponent : PrefabInstanceRecord
{
};

/// Tag of an entity that lives at run time only: never saved, copied or listed.
struct TransientComponent
{
};

} // namespace Vornu::Scene
