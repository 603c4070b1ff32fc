#include "engine/scene/Scene.h"

#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/WorldCache.h"

#include <algorithm>
#include <utility>

namespace Vornu::Scene
{

Scene::Scene()
{
    EnsureSceneSchema();
}

Scene::~Scene() = default;

Scene::Scene(Scene&& other) noexcept
    : Registry(std::move(other)), tracking_(std::exchange(other.tracking_, {})),
      environment_(std::exchange(other.environment_, {}))
{
}

Scene& Scene::operator=(Scene&& other) noexcept
{
    if (this != &other)
    {
        Registry::operator=(static_cast<Registry&&>(other));
        tracking_ = std::exchange(other.tracking_, {});
        environment_ = std::exchange(other.environment_, {});
    }
    return *this;
}

Entity Scene::CreateEntity(std::string name)
{
    return CreateEntity(std::move(name), Core::Guid::Generate());
}

Entity Scene::CreateEntity(std::string name, const Core::Guid& guid)
{
    const Entity entity = Registry::CreateEntity();
    AddBasicComponents(entity, std::move(name), guid);
    ++tracking_.hierarchyRevision;
    MarkTransformChanged(entity);
    ++tracking_.sceneRevision;
    return entity;
}

Entity Scene::RestoreEntity(Entity handle, std::string name, const Core::Guid& guid, std::uint64_t position)
{
    // A handle that is alive is refused along with every other that can't come back.
    const Entity entity = Registry::RestoreEntity(handle, position) ? handle : Registry::CreateEntity();
    AddBasicComponents(entity, std::move(name), guid);
    ++tracking_.hierarchyRevision;
    MarkEverythingChanged();
    return entity;
}

Entity Scene::CreateCamera(std::string name, bool primary)
{
    const Entity entity = CreateAt(std::move(name), {.position = {0.0f, 0.0f, 6.0f}});
    Add<CameraComponent>(
        entity, {.verticalFovDegrees = 45.0f, .nearClip = 0.1f, .farClip = 500.0f, .primary = primary});
    return entity;
}

Entity Scene::CreateDirectionalLight(std::string name)
{
    const Entity entity =
        CreateAt(std::move(name), {.position = {3.0f, 4.0f, 3.0f}, .rotation = {-45.0f, 45.0f, 0.0f}});
    Add<DirectionalLightComponent>(entity);
    return entity;
}

Entity Scene::CreatePointLight(std::string name)
{
    const Entity entity = CreateAt(std::move(name), {.position = {0.0f, 2.0f, 0.0f}});
    Add<PointLightComponent>(entity);
    return entity;
}

Entity Scene::CreateSpotLight(std::string name)
{
    const Entity entity =
        CreateAt(std::move(name), {.position = {0.0f, 3.0f, 3.0f}, .rotation = {-35.0f, 180.0f, 0.0f}});
    Add<SpotLightComponent>(entity);
    return entity;
}

void Scene::DestroyEntity(Entity entity)
{
    if (!IsValid(entity))
    {
        return;
    }
    if (GetChildren(entity).empty())
    {
        RemoveFromChildren(GetParent(entity), entity);
        DestroyOne(entity);
        return;
    }
    const std::vector<Entity> doomed = CollectTree(entity);
    UnlinkFromSurvivors(doomed);
    for (const Entity each : doomed)
    {
        DestroyOne(each);
    }
}

void Scene::Reserve(std::size_t entityCount)
{
    Registry::Reserve(entityCount);
    StorageOf<NameComponent>().Reserve(entityCount);
    StorageOf<EntityGuidComponent>().Reserve(entityCount);
    StorageOf<TransformComponent>().Reserve(entityCount);
    StorageOf<HierarchyComponent>().Reserve(entityCount);
    tracking_.transforms.entityRevisions.Reserve(entityCount);
}

void Scene::SetParent(Entity child, Entity parent)
{
    HierarchyComponent* hierarchy = FindHierarchy(child);
    if (hierarchy == nullptr || hierarchy->parent == parent)
    {
        return;
    }
    RemoveFromChildren(hierarchy->parent, child);
    hierarchy->parent = parent;
    if (HierarchyComponent* above = FindHierarchy(parent))
    {
        std::vector<Entity>& children = above->children;
        if (std::find(children.begin(), children.end(), child) == children.end())
        {
            children.push_back(child);
        }
    }
    NoteNewParent(child);
}

void Scene::LinkNewChild(Entity child, Entity parent)
{
    HierarchyComponent* hierarchy = FindHierarchy(child);
    if (hierarchy == nullptr || hierarchy->parent == parent)
    {
        return;
    }
    hierarchy->parent = parent;
    if (HierarchyComponent* above = FindHierarchy(parent))
    {
        above->children.push_back(child);
    }
    NoteNewParent(child);
}

Entity Scene::GetParent(Entity entity) const
{
    const HierarchyComponent* hierarchy = FindHierarchy(entity);
    return hierarchy != nullptr ? hierarchy->parent : kNullEntity;
}

const std::vector<Entity>& Scene::GetChildren(Entity entity) const
{
    static const std::vector<Entity> kNoChildren;
    const HierarchyComponent* hierarchy = FindHierarchy(entity);
    return hierarchy != nullptr ? hierarchy->children : kNoChildren;
}

void Scene::SetEntityGuid(Entity entity, const Core::Guid& guid)
{
    if (IsValid(entity))
    {
        Add<EntityGuidComponent>(entity, {guid});
    }
}

Entity Scene::FindPrimaryCamera() const
{
    const Storage<CameraComponent>* cameras = StorageOf<CameraComponent>();
    if (cameras == nullptr || cameras->Entities().empty())
    {
        return kNullEntity;
    }
    const std::vector<CameraComponent>& components = cameras->Components();
    const auto primary = std::find_if(components.begin(), components.end(),
                                      [](const CameraComponent& camera) { return camera.primary; });
    const std::ptrdiff_t position = primary != components.end() ? primary - components.begin() : 0;
    return cameras->Entities()[static_cast<std::size_t>(position)];
}

void Scene::SetEnvironment(EnvironmentSettings environment)
{
    if (!(environment == environment_))
    {
        environment_ = std::move(environment);
        ++tracking_.sceneRevision;
    }
}

void Scene::Clear()
{
    Registry::Clear();
    tracking_ = {};
    environment_ = {};
}

void Scene::AddBasicComponents(Entity entity, std::string name, const Core::Guid& guid)
{
    Add<NameComponent>(entity, {std::move(name)});
    Add<EntityGuidComponent>(entity, {guid});
    Add<TransformComponent>(entity);
    Add<HierarchyComponent>(entity);
}

Entity Scene::CreateAt(std::string name, const Transform& transform)
{
    const Entity entity = CreateEntity(std::move(name));
    Get<TransformComponent>(entity).transform = transform;
    return entity;
}

bool Scene::HasTransform(Entity entity) const
{
    return IsValid(entity) && Has<TransformComponent>(entity);
}

const HierarchyComponent* Scene::FindHierarchy(Entity entity) const
{
    return IsValid(entity) ? TryGet<HierarchyComponent>(entity) : nullptr;
}

HierarchyComponent* Scene::FindHierarchy(Entity entity)
{
    return const_cast<HierarchyComponent*>(std::as_const(*this).FindHierarchy(entity));
}

/// The entities below `root` and itself, each behind its children, in the order of the child lists. Leaves
/// exactly these entities marked.
std::vector<Entity> Scene::CollectTree(Entity root)
{
    struct Frame
    {
        Entity entity;
        std::size_t nextChild;
    };

    std::vector<Entity> collected;
    std::vector<Frame> stack{{root, 0}};
    marks_.Begin(SlotCount());
    marks_.Set(root, EntityMarks::Mark::Yes);
    while (!stack.empty())
    {
        Frame& frame = stack.back();
        const std::vector<Entity>& children = GetChildren(frame.entity);
        if (frame.nextChild == children.size())
        {
            collected.push_back(frame.entity);
            stack.pop_back();
            continue;
        }
        const Entity child = children[frame.nextChild++];
        if (IsValid(child) && marks_.Get(child) == EntityMarks::Mark::None)
        {
            marks_.Set(child, EntityMarks::Mark::Yes);
            stack.push_back({child, 0});
        }
    }
    return collected;
}

/// Takes the marked entities `doomed` out of the child lists of parents that aren't marked. As a rule that is
/// one parent, the root's; more of them only when child lists and parents disagree.
void Scene::UnlinkFromSurvivors(const std::vector<Entity>& doomed)
{
    std::vector<Entity> parents;
    for (const Entity entity : doomed)
    {
        const Entity parent = GetParent(entity);
        if (IsValid(parent) && marks_.Get(parent) != EntityMarks::Mark::Yes)
        {
            parents.push_back(parent);
        }
    }
    std::sort(parents.begin(), parents.end());
    parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
    for (const Entity parent : parents)
    {
        if (HierarchyComponent* hierarchy = FindHierarchy(parent))
        {
            std::erase_if(hierarchy->children,
                          [this, parent](Entity child) {
                              return IsValid(child) && marks_.Get(child) == EntityMarks::Mark::Yes &&
                                     GetParent(child) == parent;
                          });
        }
    }
}

void Scene::DestroyOne(Entity entity)
{
    Registry::DestroyEntity(entity);
    tracking_.transforms.entityRevisions.Erase(entity);
    tracking_.states.entityRevisions.Erase(entity);
    ++tracking_.hierarchyRevision;
    ++tracking_.transforms.revision;
    ++tracking_.sceneRevision;
}

void Scene::RemoveFromChildren(Entity parent, Entity child)
{
    if (HierarchyComponent* hierarchy = FindHierarchy(parent))
    {
        std::erase(hierarchy->children, child);
    }
}

void Scene::NoteNewParent(Entity child)
{
    ++tracking_.hierarchyRevision;
    MarkTransformChanged(child);
    MarkStateChanged(child);
    ++tracking_.sceneRevision;
}

} // namespace Vornu::Scene
