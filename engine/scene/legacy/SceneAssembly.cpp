#include "engine/scene/legacy/SceneAssembly.h"

#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Hierarchy.h"
#include "engine/scene/Runtime.h"
#include "engine/scene/entities/EntityReference.h"
#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace Vornu::Scene::Legacy
{
namespace
{

constexpr std::uint32_t kEnvironmentVersion = 2; // the first whose environment counts

/// Splines reach their entity last, when the scene that they run through stands.
constexpr std::string_view kLateComponent = "SplineComponent";

void RequireUnmixed(const PendingEntity& pending)
{
    for (const auto& slot : pending.components.Filled())
    {
        const ComponentTypeEntry* const entry = ComponentRegistry::Instance().Find(slot->Type());
        if (entry != nullptr && pending.recordStage.Contains(*entry))
        {
            throw std::runtime_error("Duplicate component: mixed named and positional records.");
        }
    }
    const auto* const scripts = ComponentRegistry::Instance().Find(Reflection::TypeIdOf<ScriptComponent>());
    if (pending.scripts.seen && scripts != nullptr && pending.recordStage.Contains(*scripts))
    {
        throw std::runtime_error(kMixedScripts);
    }
}

} // namespace

SceneAssembly::SceneAssembly(const Scene& target, const ComponentRecordTable& table,
                             Assets::AssetManager& assets)
    : table_(table), assets_(assets)
{
    scene_.InheritGenerations(target);
}

void SceneAssembly::Add(PendingEntity& pending)
{
    links_.push_back({pending.guid, pending.parentGuid});
    if (!fault_.empty())
    {
        return;
    }
    try
    {
        AddToScene(pending);
    }
    catch (const std::exception& fault)
    {
        fault_ = fault.what();
    }
}

Scene SceneAssembly::Finish()
{
    if (version == kNamedRecordsVersion)
    {
        CheckIdentities();
    }
    if (!fault_.empty())
    {
        throw std::runtime_error(fault_);
    }
    if (version >= kEnvironmentVersion)
    {
        scene_.SetEnvironment(std::move(environment));
    }
    LinkParents();
    LinkComponents();
    for (const Entity entity : entities_)
    {
        ResolveEntity(table_.ResolveOrder(), scene_, entity);
    }
    RunSystems();
    for (auto& [entity, records] : late_)
    {
        records.Commit(scene_, entity);
    }
    scene_.MarkLoaded();
    return std::move(scene_);
}

void SceneAssembly::CheckIdentities() const
{
    ParentMap parents;
    parents.Reserve(links_.size());
    for (const Link& link : links_)
    {
        if (!parents.Emplace(link.guid, link.parentGuid.value_or(Core::Guid())).second)
        {
            throw std::runtime_error("Scene contains duplicate entity GUIDs.");
        }
    }
    ValidateHierarchy(parents);
}

void SceneAssembly::AddToScene(PendingEntity& pending)
{
    RequireUnmixed(pending);
    const Core::Guid guid = pending.guid.IsValid() ? pending.guid : Core::GuidFromName(pending.name);
    const Entity entity = scene_.CreateEntity(std::move(pending.name), guid);
    scene_.Get<TransformComponent>(entity).transform = pending.transform;
    if (auto* const renderer = pending.components.Find<MeshRendererComponent>())
    {
        CompleteMeshRenderer(*renderer, assets_);
    }
    if (auto* const animator = pending.components.Find<AnimatorComponent>())
    {
        CompleteAnimator(*animator);
    }
    for (const auto& slot : pending.components.Filled())
    {
        slot->Attach(scene_, entity);
    }
    if (pending.scripts.seen)
    {
        CompleteScripts(pending.scripts.scripts, assets_.GetRegistry());
        scene_.Add<ScriptComponent>(entity, {std::move(pending.scripts.scripts)});
    }
    pending.recordStage.Commit(
        scene_, entity, [](const ComponentTypeEntry& entry) { return entry.typeName != kLateComponent; });
    if (pending.recordStage.HasUncommitted())
    {
        late_.emplace_back(entity, std::move(pending.recordStage));
    }
    named_.push_back({pending.HasNamedRecord("AnimatorComponent"),
                      pending.HasNamedRecord("CharacterControllerComponent"),
                      pending.HasNamedRecord("ThirdPersonCameraControllerComponent")});
    entities_.push_back(entity);
}

void SceneAssembly::LinkParents()
{
    for (std::size_t i = 0; i < entities_.size(); ++i)
    {
        // An entity whose identifier is all zero has got another GUID by now and finds no parent.
        const Link& link = links_[i];
        const Entity parent =
            link.parentGuid && link.guid.IsValid() ? scene_.FindEntityByGuid(*link.parentGuid) : kNullEntity;
        if (parent != kNullEntity)
        {
            scene_.LinkNewChild(entities_[i], parent);
        }
    }
}

void SceneAssembly::LinkComponents()
{
    for (std::size_t i = 0; i < entities_.size(); ++i)
    {
        LinkConstraint(entities_[i]);
        LinkCharacter(entities_[i], named_[i].character);
        LinkCamera(entities_[i], named_[i].camera);
    }
}

/// Turns a handle that holds a place in the file, from 1, into the entity there; a GUID goes before it.
void SceneAssembly::SettleLink(Entity& handle, const Core::Guid& guid) const
{
    if (guid.IsValid())
    {
        handle = scene_.FindEntityByGuid(guid);
        return;
    }
    const bool isPlace = handle >= 1 && handle <= entities_.size();
    handle = isPlace ? entities_[handle - 1] : kNullEntity;
}

void SceneAssembly::LinkConstraint(Entity entity)
{
    if (auto* const constraint = scene_.TryGet<ConstraintComponent>(entity))
    {
        SettleLink(constraint->connectedEntity, constraint->connectedEntityGuid);
        RefreshLink(scene_, constraint->connectedEntity, constraint->connectedEntityGuid);
    }
}

/// A character shows itself through its child "Visual" unless the file says otherwise.
void SceneAssembly::LinkCharacter(Entity entity, bool isNamed)
{
    auto* const character = scene_.TryGet<CharacterControllerComponent>(entity);
    if (character == nullptr)
    {
        return;
    }
    SettleLink(character->visualRoot, character->visualRootGuid);
    const auto isChild = [&](Entity other)
    { return scene_.IsValid(other) && scene_.Get<HierarchyComponent>(other).parent == entity; };
    if (!isNamed && !character->visualRootGuid.IsValid() && !isChild(character->visualRoot))
    {
        const std::vector<Entity>& children = scene_.Get<HierarchyComponent>(entity).children;
        const auto visual = std::find_if(children.begin(), children.end(),
                                         [&](Entity child) {
                                             return scene_.IsValid(child) &&
                                                    scene_.Get<NameComponent>(child).name == "Visual";
                                         });
        if (visual != children.end())
        {
            character->visualRoot = *visual;
        }
    }
    RefreshLink(scene_, character->visualRoot, character->visualRootGuid);
}

/// A camera below a character follows that character, unless the file names another one.
void SceneAssembly::LinkCamera(Entity entity, bool isNamed)
{
    auto* const camera = scene_.TryGet<ThirdPersonCameraControllerComponent>(entity);
    if (camera == nullptr)
    {
        return;
    }
    SettleLink(camera->target, camera->targetGuid);
    SettleLink(camera->aimTarget, camera->aimTargetGuid);
    if (!isNamed && !camera->targetGuid.IsValid())
    {
        const auto isCharacter = [&](Entity other)
        { return scene_.IsValid(other) && scene_.Has<CharacterControllerComponent>(other); };
        const Entity parent = scene_.Get<HierarchyComponent>(entity).parent;
        const bool follows =
            scene_.IsValid(camera->target) &&
            (!isCharacter(parent) || camera->target == parent || isCharacter(camera->target));
        if (!follows)
        {
            camera->target = isCharacter(parent) ? parent : kNullEntity;
        }
    }
    RefreshLink(scene_, camera->target, camera->targetGuid);
    RefreshLink(scene_, camera->aimTarget, camera->aimTargetGuid);
}

void SceneAssembly::RunSystems()
{
    for (std::size_t i = 0; i < entities_.size(); ++i)
    {
        if (!named_[i].animator)
        {
            EvaluateAnimator(scene_, entities_[i], assets_, 0.0f);
        }
    }
    UpdateSplines(scene_, assets_);
}

} // namespace Vornu::Scene::Legacy
