#include "engine/scene/legacy/PendingScene.h"

#include "engine/assets/AssetManager.h"
#include "engine/scene/Hierarchy.h"
#include "engine/scene/Runtime.h"
#include "engine/scene/Scene.h"
#include "engine/scene/legacy/Records.h"

#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Scene::Legacy
{
namespace
{

constexpr std::uint32_t kStrictVersion = 6;
constexpr std::uint32_t kEnvironmentVersion = 2; // the first whose environment counts

/// Splines reach their entity last, when the scene that they run through stands.
constexpr std::string_view kLateComponent = "SplineComponent";

class SceneBuilder
{
public:
    SceneBuilder(PendingScene& pending, const ComponentRecordTable& table, Assets::AssetManager& assets)
        : pending_(pending), table_(table), assets_(assets)
    {
    }

    Scene Build(const Scene& target)
    {
        if (pending_.version == kStrictVersion)
        {
            CheckHierarchy();
        }
        scene_.InheritGenerations(target);
        if (pending_.version >= kEnvironmentVersion)
        {
            scene_.SetEnvironment(std::move(pending_.environment));
        }
        scene_.Reserve(pending_.entities.size());
        for (PendingEntity& entity : pending_.entities)
        {
            AddEntity(entity);
        }
        LinkParents();
        for (const Entity entity : entities_)
        {
            ResolveEntity(table_, scene_, entity);
        }
        RunSystems();
        for (std::size_t i = 0; i < entities_.size(); ++i)
        {
            pending_.entities[i].recordStage.Commit(scene_, entities_[i]);
        }
        scene_.MarkLoaded();
        return std::move(scene_);
    }

private:
    void CheckHierarchy() const
    {
        Core::OrderedMap<Core::Guid, Core::Guid, Core::GuidHash> parents;
        parents.Reserve(pending_.entities.size());
        for (const PendingEntity& entity : pending_.entities)
        {
            if (!parents.Emplace(entity.guid, entity.parentGuid.value_or(Core::Guid())).second)
            {
                throw std::runtime_error("Scene contains duplicate entity GUIDs.");
            }
        }
        ValidateHierarchy(parents);
    }

    void AddEntity(PendingEntity& pending)
    {
        for (const auto& slot : pending.components.Filled())
        {
            const ComponentTypeEntry* const entry = ComponentRegistry::Instance().Find(slot->Type());
            if (entry != nullptr && pending.recordStage.Contains(*entry))
            {
                throw std::runtime_error("Duplicate component: mixed named and positional records.");
            }
        }
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
        entities_.push_back(entity);
    }

    void LinkParents()
    {
        for (std::size_t i = 0; i < entities_.size(); ++i)
        {
            // An entity whose identifier is all zero has got another GUID by now and finds no parent.
            const PendingEntity& pending = pending_.entities[i];
            const Entity parent = pending.parentGuid && pending.guid.IsValid()
                                      ? scene_.FindEntityByGuid(*pending.parentGuid)
                                      : kNullEntity;
            if (parent != kNullEntity)
            {
                scene_.LinkNewChild(entities_[i], parent);
            }
        }
    }

    void RunSystems()
    {
        for (std::size_t i = 0; i < entities_.size(); ++i)
        {
            if (!pending_.entities[i].HasNamedRecord("AnimatorComponent"))
            {
                EvaluateAnimator(scene_, entities_[i], assets_, 0.0f);
            }
        }
        UpdateSplines(scene_, assets_);
    }

    PendingScene& pending_;
    const ComponentRecordTable& table_;
    Assets::AssetManager& assets_;
    Scene scene_;
    std::vector<Entity> entities_; // in file order
};

} // namespace

Scene BuildScene(PendingScene& pending, const ComponentRecordTable& table, const Scene& target,
                 Assets::AssetManager& assets)
{
    return SceneBuilder(pending, table, assets).Build(target);
}

} // namespace Vornu::Scene::Legacy
