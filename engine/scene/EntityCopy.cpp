#include "engine/scene/EntityCopy.h"

#include "engine/scene/Scene.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/EntityReference.h"
#include "engine/scene/registration/ComponentRegistry.h"

#include <cstddef>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Vornu::Scene::EntityCopy
{
namespace
{

bool IsCopied(const ComponentTypeEntry& entry)
{
    return !HasFlag(entry.flags, ComponentFlags::EntityFrame) &&
           !HasFlag(entry.flags, ComponentFlags::RuntimeOnly);
}

bool TakesPart(const Scene& scene, Entity entity)
{
    return scene.IsValid(entity) && scene.Has<NameComponent>(entity) &&
           !scene.Has<TransientComponent>(entity);
}

/// Copies one entity without its children.
Entity CopyOne(Scene& scene, Entity source, Entity parent, EntityMap& map, std::string_view nameSuffix)
{
    std::string name = scene.Get<NameComponent>(source).name;
    name.append(nameSuffix);
    const Entity copy = scene.CreateEntity(std::move(name));
    map.InsertOrAssign(source, copy);
    if (const TransformComponent* const transform = scene.TryGet<TransformComponent>(source))
    {
        scene.Add<TransformComponent>(copy, TransformComponent(*transform));
    }
    for (const auto& entry : ComponentRegistry::Instance().Entries())
    {
        if (IsCopied(*entry))
        {
            entry->copy(scene, source, copy, ComponentCopyKind::Duplicate);
        }
    }
    if (parent != kNullEntity)
    {
        if (scene.IsValid(parent))
        {
            scene.LinkNewChild(copy, parent);
        }
        else
        {
            scene.SetParent(copy, parent);
        }
    }
    return copy;
}

struct TreeNode
{
    Entity entity = kNullEntity;
    std::size_t parent = 0; // position in the list; of no meaning for the root
};

/// What is copied of a tree, in pre-order.
std::vector<TreeNode> ListTree(const Scene& scene, Entity root)
{
    std::vector<TreeNode> nodes;
    std::vector<TreeNode> pending = {{root, 0}};
    std::unordered_set<Entity> seen;
    while (!pending.empty())
    {
        const TreeNode node = pending.back();
        pending.pop_back();
        if (!TakesPart(scene, node.entity) || !seen.insert(node.entity).second)
        {
            continue;
        }
        const std::vector<Entity>& children = scene.GetChildren(node.entity);
        for (auto child = children.rbegin(); child != children.rend(); ++child)
        {
            pending.push_back({*child, nodes.size()});
        }
        nodes.push_back(node);
    }
    return nodes;
}

} // namespace

void CopyComponents(const Registry& from, Registry& to, Entity source, Entity target, bool persistentOnly,
                    ComponentCopyKind kind)
{
    for (const auto& entry : ComponentRegistry::Instance().Entries())
    {
        if ((persistentOnly && !entry->persistent) || !IsCopied(*entry))
        {
            continue;
        }
        if (&from == &to)
        {
            entry->copy(to, source, target, kind);
        }
        else
        {
            entry->copyToOtherRegistry(from, to, source, target, kind);
        }
    }
}

Entity CopyEntityTree(Scene& scene, Entity source, Entity parent, EntityMap& map, std::string_view nameSuffix)
{
    // The tree is listed before the first copy is made: a copy may stand below its own source.
    const std::vector<TreeNode> nodes = ListTree(scene, source);
    std::vector<Entity> copies;
    copies.reserve(nodes.size());
    for (const TreeNode& node : nodes)
    {
        const Entity above = copies.empty() ? parent : copies[node.parent];
        copies.push_back(CopyOne(scene, node.entity, above, map, nameSuffix));
    }
    return copies.empty() ? kNullEntity : copies.front();
}

void RemapReferences(const Registry& source, Registry& target, const EntityMap& map, bool keepUnmapped)
{
    const ReferenceRemapper remapper(source, target, map, keepUnmapped);
    for (const auto& [original, copy] : map)
    {
        if (!target.IsValid(copy))
        {
            continue;
        }
        for (const auto& entry : ComponentRegistry::Instance().Entries())
        {
            void* const component = entry->remapHooks.empty() ? nullptr : entry->get(target, copy);
            if (component == nullptr)
            {
                continue;
            }
            for (const auto& hook : entry->remapHooks)
            {
                hook(component, remapper);
            }
        }
    }
}

ReferenceRemapper::ReferenceRemapper(const Registry& source, const Registry& target,
                                     const EntityMap& entities, bool keepUnmapped)
    : target_(target), entities_(entities), keepUnmapped_(keepUnmapped)
{
    for (const auto& [original, copy] : entities)
    {
        const Core::Guid guid = GetGuid(source, original);
        if (guid.IsValid())
        {
            guids_[guid] = GetGuid(target, copy);
            guidEntities_[guid] = copy;
        }
    }
}

void ReferenceRemapper::RemapEntity(Entity& entity) const
{
    if (entity == kNullEntity)
    {
        return;
    }
    if (const Entity* const copy = entities_.Find(entity))
    {
        entity = *copy;
    }
    else if (!keepUnmapped_)
    {
        entity = kNullEntity;
    }
}

void ReferenceRemapper::RemapGuid(Core::Guid& guid) const
{
    const auto found = guid.IsValid() ? guids_.find(guid) : guids_.end();
    if (found != guids_.end())
    {
        guid = found->second;
    }
}

void ReferenceRemapper::RemapEntityText(Entity& entity, std::string& text) const
{
    Core::Guid guid = Core::Guid::TryParse(text).value_or(Core::Guid());
    const bool wasNull = !guid.IsValid();
    RemapEntityReference(entity, guid);
    if (guid.IsValid())
    {
        text = guid.ToString();
    }
    else if (!wasNull)
    {
        text.clear();
    }
}

void ReferenceRemapper::RemapEntityReference(Entity& entity, Core::Guid& guid) const
{
    if (const Entity* const copy = entity != kNullEntity ? entities_.Find(entity) : nullptr)
    {
        entity = *copy;
        guid = GetGuid(target_, *copy);
        return;
    }
    const auto found = guid.IsValid() ? guidEntities_.find(guid) : guidEntities_.end();
    if (found != guidEntities_.end())
    {
        entity = found->second;
        guid = GetGuid(target_, entity);
    }
    else if (!keepUnmapped_)
    {
        entity = kNullEntity;
    }
}

} // namespace Vornu::Scene::EntityCopy
