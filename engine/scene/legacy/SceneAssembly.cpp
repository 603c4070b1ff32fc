#include "engine/scene/legacy/SceneAssembly.h"

#include "engine/assets/AssetManager.h"
#include "engine/scene/Hierarchy.h"
#include "engine/scene/Runtime.h"
#include "engine/scene/legacy/Records.h"

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace Vornu::Scene::Legacy
{
namespace
{

constexpr std::uint32_t kStrictVersion = 6;
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
    if (version == kStrictVersion)
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
    for (const Entity entity : entities_)
    {
        ResolveEntity(table_, scene_, entity);
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
    for (const auto& slot : pending.components.Filled())
    {
        slot->Attach(scene_, entity);
    }
    pending.recordStage.Commit(
        scene_, entity, [](const ComponentTypeEntry& entry) { return entry.typeName != kLateComponent; });
    if (pending.recordStage.HasUncommitted())
    {
        late_.emplace_back(entity, std::move(pending.recordStage));
    }
    isAnimated_.push_back(pending.HasNamedRecord("AnimatorComponent"));
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

void SceneAssembly::RunSystems()
{
    for (std::size_t i = 0; i < entities_.size(); ++i)
    {
        if (!isAnimated_[i])
        {
            EvaluateAnimator(scene_, entities_[i], assets_, 0.0f);
        }
    }
    UpdateSplines(scene_, assets_);
}

} // namespace Vornu::Scene::Legacy
