#include "engine/scene/Scene.h"

#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/entities/CoreComponents.h"

#include <gtest/gtest.h>

#include <glm/mat4x4.hpp>

#include <string>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

constexpr std::size_t kMany = 100000;

/// transform, state, scene and hierarchy revision
std::vector<std::uint64_t> Revisions(const Scene& scene)
{
    return {scene.TransformRevision(), scene.StateRevision(), scene.SceneRevision(),
            scene.HierarchyRevision()};
}

std::vector<std::uint64_t> Difference(const std::vector<std::uint64_t>& before, const Scene& scene)
{
    std::vector<std::uint64_t> difference = Revisions(scene);
    for (std::size_t i = 0; i < difference.size(); ++i)
    {
        difference[i] -= before[i];
    }
    return difference;
}

using Counts = std::vector<std::uint64_t>;

TEST(Scene, NewEntitiesCarryTheBasicComponents)
{
    Scene scene;
    EXPECT_EQ(Revisions(scene), (Counts{1, 1, 1, 1}));
    const Entity entity = scene.CreateEntity("Lamp");
    EXPECT_EQ(Revisions(scene), (Counts{2, 1, 2, 2}));
    EXPECT_EQ(scene.Revision(), 6u);
    EXPECT_EQ(scene.Get<NameComponent>(entity).name, "Lamp");
    EXPECT_EQ(scene.FindEntityByGuid(scene.Get<EntityGuidComponent>(entity).guid), entity);
    EXPECT_EQ(scene.Get<TransformComponent>(entity).transform.scale, glm::vec3(1.0f));
    EXPECT_EQ(scene.GetParent(entity), kNullEntity);

    const Core::Guid guid{3, 4};
    Counts before = Revisions(scene);
    const Entity named = scene.CreateEntity("Named", guid);
    EXPECT_EQ(Difference(before, scene), (Counts{1, 0, 1, 1}));
    EXPECT_EQ(scene.FindEntityByGuid(guid), named);
    before = Revisions(scene);
    scene.SetEntityGuid(named, {5, 6});
    scene.SetEntityGuid(kNullEntity, {7, 8});
    EXPECT_EQ(Difference(before, scene), (Counts{0, 0, 0, 0}));
    EXPECT_EQ(scene.FindEntityByGuid(guid), kNullEntity);
    EXPECT_EQ(scene.FindEntityByGuid({5, 6}), named);
    EXPECT_EQ(scene.FindEntityByGuid({7, 8}), kNullEntity);
}

TEST(Scene, MakesCamerasAndLights)
{
    Scene scene;
    EXPECT_EQ(scene.FindPrimaryCamera(), kNullEntity);
    const Entity first = scene.CreateCamera("First", false);
    EXPECT_EQ(scene.FindPrimaryCamera(), first);
    const Entity main = scene.CreateCamera("Main", true);
    scene.CreateCamera("Also", true);
    EXPECT_EQ(scene.FindPrimaryCamera(), main);
    EXPECT_EQ(scene.Get<CameraComponent>(main).farClip, 500.0f);
    EXPECT_EQ(scene.Get<TransformComponent>(main).transform.position, glm::vec3(0, 0, 6));
    const Entity sun = scene.CreateDirectionalLight("Sun");
    const Entity bulb = scene.CreatePointLight("Bulb");
    const Entity spot = scene.CreateSpotLight("Spot");
    EXPECT_TRUE(scene.Has<DirectionalLightComponent>(sun));
    EXPECT_EQ(scene.Get<TransformComponent>(sun).transform.rotation, glm::vec3(-45, 45, 0));
    EXPECT_TRUE(scene.Has<PointLightComponent>(bulb));
    EXPECT_EQ(scene.Get<TransformComponent>(bulb).transform.position, glm::vec3(0, 2, 0));
    EXPECT_TRUE(scene.Has<SpotLightComponent>(spot));
    EXPECT_EQ(scene.Get<TransformComponent>(spot).transform.rotation, glm::vec3(-35, 180, 0));
}

TEST(Scene, SetParentMovesBetweenChildLists)
{
    Scene scene;
    const Entity a = scene.CreateEntity("a");
    const Entity b = scene.CreateEntity("b");
    const Entity c = scene.CreateEntity("c");
    const Entity d = scene.CreateEntity("d");
    scene.LinkNewChild(c, a);
    scene.SetParent(d, a);
    EXPECT_EQ(scene.GetChildren(a), (std::vector<Entity>{c, d}));

    Counts before = Revisions(scene);
    scene.SetParent(c, b);
    EXPECT_EQ(Difference(before, scene), (Counts{1, 1, 1, 1}));
    EXPECT_EQ(scene.StateChangesSince(scene.StateRevision() - 1).entities, (std::vector<Entity>{c}));
    EXPECT_EQ(scene.GetChildren(a), (std::vector<Entity>{d}));
    EXPECT_EQ(scene.GetChildren(b), (std::vector<Entity>{c}));
    before = Revisions(scene);
    scene.SetParent(c, b);
    scene.LinkNewChild(c, b);
    scene.SetParent(kNullEntity, b);
    EXPECT_EQ(Difference(before, scene), (Counts{0, 0, 0, 0}));
    EXPECT_EQ(scene.GetChildren(b), (std::vector<Entity>{c}));
    scene.SetParent(c, kNullEntity);
    EXPECT_TRUE(scene.GetChildren(b).empty());
    EXPECT_EQ(scene.GetParent(c), kNullEntity);
    EXPECT_TRUE(scene.GetChildren(kNullEntity).empty());
}

TEST(Scene, DestroyTakesTheSubtreeChildrenFirst)
{
    Scene scene;
    std::vector<Entity> e{kNullEntity};
    for (int i = 1; i <= 7; ++i)
    {
        e.push_back(scene.CreateEntity(std::to_string(i)));
    }
    // 1 over 2, 3 and 7; 2 over 4 and 5; 3 over 6
    for (const auto& [child, parent] :
         std::vector<std::pair<std::size_t, std::size_t>>{{2, 1}, {3, 1}, {7, 1}, {4, 2}, {5, 2}, {6, 3}})
    {
        scene.SetParent(e[child], e[parent]);
    }
    const Counts before = Revisions(scene);
    scene.DestroyEntity(e[2]);
    EXPECT_EQ(Difference(before, scene), (Counts{3, 0, 3, 3}));
    EXPECT_EQ(scene.AliveEntities(), (std::vector<Entity>{e[1], e[3], e[6], e[7]}));
    EXPECT_EQ(scene.GetChildren(e[1]), (std::vector<Entity>{e[3], e[7]}));
    // The dense order shows that 4, 5 and 2 went in this order.
    EXPECT_EQ(scene.StorageOf<NameComponent>().Entities(), (std::vector<Entity>{e[1], e[6], e[3], e[7]}));
    scene.DestroyEntity(e[2]);
    scene.DestroyEntity(e[7]);
    EXPECT_EQ(scene.GetChildren(e[1]), (std::vector<Entity>{e[3]}));
    scene.DestroyEntity(e[1]);
    EXPECT_EQ(scene.AliveCount(), 0u);
}

TEST(Scene, DestroySurvivesChildListsThatDisagree)
{
    Scene scene;
    const Entity a = scene.CreateEntity("a");
    const Entity b = scene.CreateEntity("b");
    const Entity survivor = scene.CreateEntity("survivor");
    const Entity other = scene.CreateEntity("other");
    scene.Get<HierarchyComponent>(a) = {b, {b, b, kNullEntity, 0xFFF00000u | 900000u}};
    scene.Get<HierarchyComponent>(b) = {survivor, {a}};
    scene.Get<HierarchyComponent>(survivor) = {kNullEntity, {b, other, b}};
    scene.DestroyEntity(a);
    EXPECT_EQ(scene.AliveEntities(), (std::vector<Entity>{survivor, other}));
    EXPECT_EQ(scene.GetChildren(survivor), (std::vector<Entity>{other}));
}

TEST(Scene, DestroysDeepAndWideTreesAtOnce)
{
    Scene scene;
    const Entity root = scene.CreateEntity("root");
    Entity deepest = root;
    for (std::size_t i = 0; i < kMany; ++i)
    {
        const Entity entity = scene.CreateEntity("deep", {1, i + 1});
        scene.LinkNewChild(entity, deepest);
        deepest = entity;
        scene.LinkNewChild(scene.CreateEntity("wide", {2, i + 1}), root);
    }
    EXPECT_EQ(scene.AliveCount(), 2 * kMany + 1);
    EXPECT_EQ(scene.GetChildren(root).size(), kMany + 1);
    scene.UpdateWorldTransforms();
    const std::uint64_t revision = scene.TransformRevision();
    for (const Entity entity : std::vector<Entity>(scene.AliveEntities()))
    {
        scene.MarkTransformChanged(entity);
    }
    EXPECT_EQ(scene.TransformChangesSince(revision).entities, (std::vector<Entity>{root}));
    // Every entity of the chain asks in turn, from the bottom up.
    EXPECT_EQ(scene.GetWorldMatrix(deepest), glm::mat4(1.0f));
    EXPECT_EQ(scene.GetWorldMatrix(root), glm::mat4(1.0f));
    scene.DestroyEntity(root);
    EXPECT_EQ(scene.AliveCount(), 0u);
    EXPECT_TRUE(scene.StorageOf<HierarchyComponent>().Entities().empty());
    EXPECT_EQ(scene.FindEntityByGuid({1, kMany}), kNullEntity);
}

TEST(Scene, RestoreBringsTheOldHandleBack)
{
    Scene scene;
    const Entity first = scene.CreateEntity("first");
    const Entity second = scene.CreateEntity("second");
    scene.DestroyEntity(first);
    const Counts before = Revisions(scene);
    EXPECT_EQ(scene.RestoreEntity(first, "back", {9, 9}, 0), first);
    EXPECT_EQ(Difference(before, scene), (Counts{1, 1, 1, 1}));
    EXPECT_TRUE(scene.TransformChangesSince(before[0]).fullRebuild);
    EXPECT_EQ(scene.AliveEntities(), (std::vector<Entity>{first, second}));
    EXPECT_EQ(scene.Get<NameComponent>(first).name, "back");
    EXPECT_EQ(scene.FindEntityByGuid({9, 9}), first);
    EXPECT_EQ(scene.RestoreEntity(first, "new", {8, 8}, 0), 3u);
    EXPECT_EQ(scene.RestoreEntity(kNullEntity, "new", {7, 7}, 0), 4u);
    EXPECT_EQ(scene.FindEntityByGuid({8, 8}), 3u);
}

TEST(Scene, EnvironmentChangesOnlyWhenAFieldDiffers)
{
    Scene scene;
    EXPECT_EQ(scene.GetEnvironment().postProcess.exposureEv100, 9.7027f);
    EnvironmentSettings settings = scene.GetEnvironment();
    scene.SetEnvironment(settings);
    EXPECT_EQ(scene.SceneRevision(), 1u);
    settings.postProcessMaterials.push_back(4);
    scene.SetEnvironment(settings);
    EXPECT_EQ(scene.SceneRevision(), 2u);
    settings.postProcess.cameraFar = 5.0f;
    scene.SetEnvironment(settings);
    scene.SetEnvironment(settings);
    EXPECT_EQ(scene.SceneRevision(), 3u);
    EXPECT_EQ(scene.GetEnvironment().postProcess.cameraFar, 5.0f);
}

TEST(Scene, ClearAndMoveLeaveANewScene)
{
    Scene scene;
    const Entity entity = scene.CreateEntity("old", {1, 2});
    scene.MarkStateChanged(entity);
    scene.GetEnvironment().lightIntensity = 3.0f;
    scene.UpdateWorldTransforms();
    scene.TakeDirtyTransformRoots();

    Scene target;
    target.CreateEntity("lost");
    target = std::move(scene);
    EXPECT_EQ(target.FindEntityByGuid({1, 2}), entity);
    EXPECT_EQ(target.GetEnvironment().lightIntensity, 3.0f);
    EXPECT_EQ(target.StateRevision(), 2u);

    target.Clear();
    for (Scene* empty : {&scene, &target})
    {
        EXPECT_EQ(Revisions(*empty), (Counts{1, 1, 1, 1}));
        EXPECT_EQ(empty->GetEnvironment(), EnvironmentSettings{});
        EXPECT_EQ(empty->AliveCount(), 0u);
        EXPECT_TRUE(empty->TakeDirtyTransformRoots().fullRebuild);
        EXPECT_FALSE(empty->IsValid(entity));
    }
    EXPECT_EQ(target.CreateEntity("next"), 2u);
    EXPECT_EQ(scene.CreateEntity("next"), 1u);
}

TEST(Scene, ChangeSetsListTheTopMost)
{
    Scene scene;
    std::vector<Entity> e;
    for (int i = 0; i < 6; ++i)
    {
        e.push_back(scene.CreateEntity("e", {1, static_cast<std::uint64_t>(i + 1)}));
    }
    scene.SetParent(e[1], e[0]);
    scene.SetParent(e[2], e[1]);
    scene.SetParent(e[3], e[2]);
    scene.SetParent(e[5], e[4]);
    EXPECT_TRUE(scene.TransformChangesSince(0).fullRebuild);
    EXPECT_TRUE(scene.TakeDirtyTransformRoots().fullRebuild);
    const std::uint64_t revision = scene.TransformRevision();
    EXPECT_TRUE(scene.TransformChangesSince(revision).entities.empty());
    EXPECT_FALSE(scene.TransformChangesSince(revision + 5).fullRebuild);

    for (const std::size_t i : {3u, 5u, 1u, 5u, 3u})
    {
        scene.MarkTransformChanged(e[i]);
    }
    // In order of first insertion among the marks; in order of change among the dirty ones.
    EXPECT_EQ(scene.TransformChangesSince(revision).entities, (std::vector<Entity>{e[1], e[5]}));
    EXPECT_EQ(scene.TransformChangesSince(revision + 3).entities, (std::vector<Entity>{e[3], e[5]}));
    EXPECT_EQ(scene.TransformChangesSince(revision).revision, revision + 5);
    SceneChangeSet taken = scene.TakeDirtyTransformRoots();
    EXPECT_FALSE(taken.fullRebuild);
    EXPECT_EQ(taken.entities, (std::vector<Entity>{e[5], e[1]}));
    EXPECT_EQ(taken.revision, revision + 5);
    EXPECT_TRUE(scene.TakeDirtyTransformRoots().entities.empty());

    // Destroyed entities and those without a transform are left out; marking one of them makes all dirty.
    scene.MarkTransformChanged(e[5]);
    scene.MarkTransformChanged(e[4]);
    scene.DestroyEntity(e[5]);
    EXPECT_EQ(scene.TakeDirtyTransformRoots().entities, (std::vector<Entity>{e[4]}));
    scene.MarkTransformChanged(e[5]);
    EXPECT_TRUE(scene.TransformChangesSince(scene.TransformRevision() - 1).entities.empty());
    EXPECT_TRUE(scene.TakeDirtyTransformRoots().fullRebuild);

    const std::uint64_t state = scene.StateRevision();
    scene.MarkStateChanged(e[0]);
    scene.MarkStateChanged(900);
    scene.MarkStateChanged(e[0]);
    scene.MarkStateChanged(e[4]);
    EXPECT_EQ(scene.StateChangesSince(state).entities, (std::vector<Entity>{e[0], 900, e[4]}));
    scene.DestroyEntity(e[4]);
    EXPECT_EQ(scene.StateChangesSince(state).entities, (std::vector<Entity>{e[0], 900}));
    scene.MarkEverythingChanged();
    EXPECT_TRUE(scene.StateChangesSince(state).fullRebuild);
    EXPECT_FALSE(scene.StateChangesSince(scene.StateRevision()).fullRebuild);
    EXPECT_TRUE(scene.TransformChangesSince(revision).fullRebuild);
}

TEST(Scene, ReusedIndexInheritsNothing)
{
    Scene scene;
    std::vector<Entity> entities;
    for (int i = 0; i < 1025; ++i)
    {
        entities.push_back(scene.CreateEntity("e"));
    }
    scene.TakeDirtyTransformRoots();
    const Entity former = entities[0];
    scene.Get<TransformComponent>(former).transform.position.x = 5.0f;
    scene.MarkTransformChanged(former);
    scene.UpdateWorldTransforms();
    for (const Entity entity : entities)
    {
        scene.DestroyEntity(entity);
    }
    // Made past the scene, so that nothing but the handle tells the two apart.
    const Entity again = scene.GetRegistry().CreateEntity();
    ASSERT_EQ(again, Registry::MakeHandle(1, 1));
    scene.Add<TransformComponent>(again);
    EXPECT_EQ(scene.GetWorldMatrix(again), glm::mat4(1.0f));
    scene.MarkTransformChanged(again);
    scene.GetRegistry().DestroyEntity(again);
    ASSERT_TRUE(scene.GetRegistry().RestoreEntity(former, 0));
    scene.Add<TransformComponent>(former);
    scene.MarkTransformChanged(former);
    EXPECT_EQ(scene.TakeDirtyTransformRoots().entities, (std::vector<Entity>{former}));
}

TEST(Scene, CyclesOfParentsEndEveryWalk)
{
    Scene scene;
    const Entity a = scene.CreateEntity("a");
    const Entity b = scene.CreateEntity("b");
    scene.SetParent(a, b);
    scene.UpdateWorldTransforms();
    const std::uint64_t revision = scene.TransformRevision();
    scene.SetParent(b, a);
    EXPECT_TRUE(scene.TransformChangesSince(revision).entities.empty());
    scene.Get<TransformComponent>(a).transform.position = {1.0f, 0.0f, 0.0f};
    scene.Get<TransformComponent>(b).transform.position = {10.0f, 0.0f, 0.0f};
    for (int others = 0; others < 3; ++others)
    {
        scene.MarkAllTransformsChanged();
        scene.UpdateWorldTransforms();
        EXPECT_EQ(scene.GetWorldMatrix(a)[3].x, 1.0f) << "members of a cycle have their local matrices";
        EXPECT_EQ(scene.GetWorldMatrix(b)[3].x, 10.0f);
        scene.CreateEntity("other");
    }
    scene.DestroyEntity(a);
    EXPECT_EQ(scene.AliveCount(), 3u);
}

TEST(Scene, AnEntityWhoseParentLosesItsTransformFallsBackToItsOwn)
{
    Scene scene;
    const Entity parent = scene.CreateEntity("parent");
    const Entity child = scene.CreateEntity("child");
    scene.SetParent(child, parent);
    scene.Get<TransformComponent>(parent).transform.position = {1.0f, 0.0f, 0.0f};
    scene.MarkTransformChanged(parent);
    scene.UpdateWorldTransforms();
    EXPECT_EQ(scene.GetWorldMatrix(child)[3].x, 1.0f);
    scene.Remove<TransformComponent>(parent);
    scene.MarkTransformChanged(parent);
    scene.UpdateWorldTransforms();
    EXPECT_EQ(scene.GetWorldMatrix(child)[3].x, 0.0f);
}

} // namespace
} // namespace Vornu::Scene
