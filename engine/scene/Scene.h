#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/components/Environment.h"
#include "engine/scene/entities/Entity.h"
#include "engine/scene/entities/EntityMarks.h"
#include "engine/scene/entities/EntityRevisions.h"
#include "engine/scene/entities/Registry.h"

#include <glm/fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Scene
{

struct HierarchyComponent;
struct Transform;
struct WorldCacheEntry;

/// What changed on one track since a reader last looked.
struct SceneChangeSet
{
    bool fullRebuild = false;   // everything counts as changed and `entities` is empty
    std::uint64_t revision = 0; // the track's current revision: what to ask with next time
    std::vector<Entity> entities;
};

/// Translation times rotation times scale. The rotation's Euler angles are in degrees.
glm::mat4 LocalMatrix(const Transform& transform);

/// What the loaders fill and the savers walk: a registry with a scene-wide environment, a hierarchy of
/// entities, counters that tell other systems what changed, and a cache of world matrices.
///
/// Constructing a scene makes sure that the component schema is registered. Belongs to one thread. Operations
/// on invalid handles are silent. None of them recurses, so trees may be of any depth.
class Scene : public Registry
{
public:
    /// Throws `std::invalid_argument` when the component schema is at fault.
    Scene();
    ~Scene();
    /// Leaves `other` as after construction.
    Scene(Scene&& other) noexcept;
    Scene& operator=(Scene&& other) noexcept;

    Registry& GetRegistry() noexcept { return *this; }
    const Registry& GetRegistry() const noexcept { return *this; }

    /// A new root entity with a name, a GUID (a random one unless given), an identity transform and an empty
    /// hierarchy component. Throws `std::length_error` when the scene is full.
    Entity CreateEntity(std::string name);
    Entity CreateEntity(std::string name, const Core::Guid& guid);

    /// Brings a destroyed entity back under its old handle, at `position` of the alive list, as a new root
    /// entity of this name and GUID. Makes a fresh entity when the handle is null, alive or can't come back.
    Entity RestoreEntity(Entity handle, std::string name, const Core::Guid& guid, std::uint64_t position);

    Entity CreateCamera(std::string name, bool primary);
    Entity CreateDirectionalLight(std::string name);
    Entity CreatePointLight(std::string name);
    Entity CreateSpotLight(std::string name);

    /// Destroys the entity and everything below it, children first. Looks through the siblings of `entity`
    /// alone.
    void DestroyEntity(Entity entity);

    /// Makes room for `entityCount` entities in all, with the components that each new entity has.
    void Reserve(std::size_t entityCount);

    /// Moves `child` behind the other children of `parent`; the null handle makes it a root. Looks through
    /// the siblings. No cycle test is made.
    void SetParent(Entity child, Entity parent);

    /// As SetParent in constant time, for a child that has no parent and stands in no child list.
    void LinkNewChild(Entity child, Entity parent);

    Entity GetParent(Entity entity) const;
    /// The reference holds until the hierarchy components or the children change.
    const std::vector<Entity>& GetChildren(Entity entity) const;

    void SetEntityGuid(Entity entity, const Core::Guid& guid);

    /// The first camera that is primary, else the first camera, else the null handle.
    Entity FindPrimaryCamera() const;

    /// Product of the local matrices from the root down to `entity`, brought up to date as far as needed;
    /// identity when the entity isn't valid or has no transform.
    glm::mat4 GetWorldMatrix(Entity entity);

    /// Brings the world matrices up to date with the transforms that were marked as changed.
    void UpdateWorldTransforms();

    /// Must follow every change of a transform that is written in place.
    void MarkTransformChanged(Entity entity);
    void MarkStateChanged(Entity entity);
    void MarkAllTransformsChanged();
    void MarkAllStateChanged();
    void MarkEverythingChanged();
    /// What a finished load raises: all transforms and the scene itself have changed.
    void MarkLoaded();

    /// The top-most entities whose transforms changed after `revision` of the transform track. Looks through
    /// every entity that was ever marked.
    SceneChangeSet TransformChangesSince(std::uint64_t revision) const;

    /// Every entity that was marked after `revision` of the state track, valid or not, in the order in which
    /// they were first marked.
    SceneChangeSet StateChangesSince(std::uint64_t revision) const;

    /// The top-most entities whose transforms changed since the last call.
    SceneChangeSet TakeDirtyTransformRoots();

    EnvironmentSettings& GetEnvironment() noexcept { return environment_; }
    const EnvironmentSettings& GetEnvironment() const noexcept { return environment_; }

    /// Does nothing when `environment` equals the current settings field by field.
    void SetEnvironment(EnvironmentSettings environment);

    /// Back to the state after construction, save that old handles stay invalid.
    void Clear();

    /// Each rises with the changes it names and starts at 1.
    std::uint64_t TransformRevision() const noexcept { return tracking_.transforms.revision; }
    std::uint64_t StateRevision() const noexcept { return tracking_.states.revision; }
    std::uint64_t SceneRevision() const noexcept { return tracking_.sceneRevision; }
    std::uint64_t HierarchyRevision() const noexcept { return tracking_.hierarchyRevision; }

private:
    /// One kind of changes: when each entity last changed, and when everything did.
    struct ChangeTrack
    {
        std::uint64_t revision = 1;
        std::uint64_t fullResetRevision = 1;
        EntityRevisions entityRevisions;

        void Mark(Entity entity);
        void MarkAll();
        /// All marked entities count, valid or not.
        SceneChangeSet ChangesSince(std::uint64_t since) const;
    };

    /// Entities changed since the last taking, without repeats. A change of an entity whose index another
    /// generation had drops that generation's entry.
    struct DirtyList
    {
        std::vector<Entity> entities;      // 0 where an entry was dropped
        std::vector<std::uint32_t> places; // by entity index; position in `entities` + 1, may be out of date

        void Add(Entity entity);
        void Clear();
    };

    struct Tracking
    {
        ChangeTrack transforms;
        ChangeTrack states;
        std::uint64_t sceneRevision = 1;
        std::uint64_t hierarchyRevision = 1;
        std::uint64_t worldCacheRevision =
            0; // transforms.revision when the cache was last brought up to date
        std::vector<WorldCacheEntry> worldCache; // by entity index
        bool worldUpdateAllDirty = true;
        DirtyList worldDirty;
    };

    void AddBasicComponents(Entity entity, std::string name, const Core::Guid& guid);
    Entity CreateAt(std::string name, const Transform& transform);
    bool HasTransform(Entity entity) const;
    const HierarchyComponent* FindHierarchy(Entity entity) const;
    HierarchyComponent* FindHierarchy(Entity entity);
    std::vector<Entity> CollectTree(Entity root);
    void UnlinkFromSurvivors(const std::vector<Entity>& doomed);
    void DestroyOne(Entity entity);
    void RemoveFromChildren(Entity parent, Entity child);
    void NoteNewParent(Entity child);
    /// Drops the entities that have no transform and those below another one of the list.
    void KeepTopMost(std::vector<Entity>& entities) const;
    bool HasMarkedAncestor(Entity entity) const;
    void UpdateSubtrees(const std::vector<Entity>& roots);
    WorldCacheEntry& CacheEntryOf(Entity entity);
    const WorldCacheEntry& BringUpToDate(Entity entity);

    Tracking tracking_;
    EnvironmentSettings environment_;
    mutable EntityMarks marks_;
    mutable std::vector<Entity> chain_; // scratch of walks towards the root
};

} // namespace Vornu::Scene
