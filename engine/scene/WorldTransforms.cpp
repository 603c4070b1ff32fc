#include "engine/scene/Scene.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/WorldCache.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/mat4x4.hpp>
#include <glm/trigonometric.hpp>

#include <algorithm>
#include <utility>

namespace Vornu::Scene
{

glm::mat4 LocalMatrix(const Transform& transform)
{
    const glm::vec3 half = glm::radians(transform.rotation) * 0.5f;
    const glm::vec3 c = glm::cos(half);
    const glm::vec3 s = glm::sin(half);
    const glm::quat rotation(c.x * c.y * c.z + s.x * s.y * s.z, s.x * c.y * c.z - c.x * s.y * s.z,
                             c.x * s.y * c.z + s.x * c.y * s.z, c.x * c.y * s.z - s.x * s.y * c.z);
    glm::mat4 matrix = glm::mat4_cast(rotation);
    matrix[0] *= transform.scale.x;
    matrix[1] *= transform.scale.y;
    matrix[2] *= transform.scale.z;
    matrix[3] = glm::vec4(transform.position, 1.0f);
    return matrix;
}

glm::mat4 Scene::GetWorldMatrix(Entity entity)
{
    return HasTransform(entity) ? BringUpToDate(entity).world : glm::mat4(1.0f);
}

void Scene::UpdateWorldTransforms()
{
    const std::uint64_t revision = tracking_.transforms.revision;
    if (tracking_.worldCacheRevision == revision)
    {
        return;
    }
    const SceneChangeSet changes = TransformChangesSince(tracking_.worldCacheRevision);
    if (!changes.fullRebuild && !tracking_.worldCache.empty())
    {
        UpdateSubtrees(changes.entities);
    }
    else
    {
        tracking_.worldCache.clear();
        if (const Storage<TransformComponent>* storage = std::as_const(*this).StorageOf<TransformComponent>())
        {
            for (const Entity entity : storage->Entities())
            {
                if (IsValid(entity))
                {
                    BringUpToDate(entity);
                }
            }
        }
    }
    tracking_.worldCacheRevision = revision;
}

void Scene::UpdateSubtrees(const std::vector<Entity>& roots)
{
    marks_.Begin(SlotCount());
    std::vector<Entity> stack(roots.rbegin(), roots.rend());
    while (!stack.empty())
    {
        const Entity entity = stack.back();
        stack.pop_back();
        if (!IsValid(entity) || marks_.Get(entity) != EntityMarks::Mark::None)
        {
            continue;
        }
        marks_.Set(entity, EntityMarks::Mark::Yes);
        // An entity without a transform ends the chain of matrices, but changed entities may lie below it.
        if (HasTransform(entity))
        {
            BringUpToDate(entity);
        }
        const std::vector<Entity>& children = GetChildren(entity);
        stack.insert(stack.end(), children.rbegin(), children.rend());
    }
}

WorldCacheEntry& Scene::CacheEntryOf(Entity entity)
{
    WorldCacheEntry& entry = tracking_.worldCache[EntityIndex(entity)];
    if (entry.owner != entity)
    {
        entry = WorldCacheEntry{};
        entry.owner = entity;
    }
    return entry;
}

const WorldCacheEntry& Scene::BringUpToDate(Entity entity)
{
    if (tracking_.worldCache.size() < SlotCount())
    {
        tracking_.worldCache.resize(SlotCount());
    }
    const ChangeTrack& track = tracking_.transforms;
    const WorldCacheEntry* parent = nullptr;
    chain_.clear();
    // Stopping at the first ancestor that was checked since the last change makes a pass over a whole tree
    // linear. A chain longer than there are entities has gone round a cycle of parents.
    bool cycle = false;
    for (Entity current = entity; HasTransform(current) && !cycle; current = GetParent(current))
    {
        WorldCacheEntry& entry = CacheEntryOf(current);
        if (entry.checkedAt == track.revision)
        {
            parent = &entry;
            break;
        }
        chain_.push_back(current);
        cycle = chain_.size() > SlotCount();
    }
    for (std::size_t i = chain_.size(); i > 0; --i)
    {
        const Entity current = chain_[i - 1];
        WorldCacheEntry& entry = CacheEntryOf(current);
        const bool belowCycle = cycle || (parent != nullptr && parent->belowCycle);
        const WorldCacheEntry* const above = belowCycle ? nullptr : parent;
        const Entity ancestor = above != nullptr ? above->owner : kNullEntity;
        const std::uint64_t required =
            std::max({track.fullResetRevision, track.entityRevisions.RevisionOf(current),
                      above != nullptr ? above->revision : std::uint64_t{0}});
        if (entry.revision < required || entry.ancestor != ancestor)
        {
            const glm::mat4 local = LocalMatrix(TryGet<TransformComponent>(current)->transform);
            entry.world = above != nullptr ? above->world * local : local;
            entry.revision = track.revision;
            entry.ancestor = ancestor;
        }
        entry.belowCycle = belowCycle;
        entry.checkedAt = track.revision;
        parent = &entry;
    }
    return CacheEntryOf(entity);
}

} // namespace Vornu::Scene
