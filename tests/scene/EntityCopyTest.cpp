#include "engine/scene/EntityCopy.h"

#include "engine/scene/Scene.h"
#include "engine/scene/entities/EntityReference.h"
#include "engine/scene/registration/ComponentBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Vornu::Scene
{
namespace
{

/// Refers to other entities in each of the ways that components do.
struct CopyTestComponent
{
    Core::Guid target;
    Entity link = kNullEntity;
    Core::Guid linkGuid;
    Entity bare = kNullEntity;
    Entity textEntity = kNullEntity;
    std::string text;
    float saved = 1.0f;
    float runtime = 5.0f;
};

std::vector<std::string>& CopyLog()
{
    static std::vector<std::string> log;
    return log;
}

class EntityCopyTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        const Scene schemaFirst;
        RegisterComponent<CopyTestComponent>("CopyTestComponent", "", "", ComponentFlags::UserAddable)
            .Field("target", &CopyTestComponent::target, FieldAttr().With(PropertyFlags::EntityGuid))
            .Field("saved", &CopyTestComponent::saved)
            .AddTransient(&CopyTestComponent::runtime)
            .EntityLink(&CopyTestComponent::link, &CopyTestComponent::linkGuid)
            .OnCopy(
                [](CopyTestComponent& component, ComponentCopyKind kind) {
                    CopyLog().push_back(std::to_string(static_cast<int>(kind)) + " " +
                                        std::to_string(component.runtime));
                })
            .OnRemap(
                [](CopyTestComponent& component, const EntityReferenceRemapper& remapper)
                {
                    remapper.RemapEntity(component.bare);
                    remapper.RemapEntityText(component.textEntity, component.text);
                });
    }

    void SetUp() override { CopyLog().clear(); }

    Scene scene_;
};

TEST_F(EntityCopyTest, TreeKeepsShapeAndOrderAndLeavesTransientBranchesOut)
{
    const Entity root = scene_.CreateEntity("root");
    const Entity left = scene_.CreateEntity("left");
    const Entity hidden = scene_.CreateEntity("hidden");
    const Entity belowHidden = scene_.CreateEntity("below");
    const Entity right = scene_.CreateEntity("right");
    for (const Entity child : {left, hidden, right})
    {
        scene_.SetParent(child, root);
    }
    scene_.SetParent(belowHidden, hidden);
    scene_.Add<TransientComponent>(hidden);
    scene_.Get<TransformComponent>(left).transform.position = {1.0f, 2.0f, 3.0f};

    EntityCopy::EntityMap map;
    const Entity copy = EntityCopy::CopyEntityTree(scene_, root, right, map, " (2)");
    ASSERT_EQ(map.Size(), 3u);
    EXPECT_EQ(scene_.GetParent(copy), right);
    ASSERT_EQ(scene_.GetChildren(copy).size(), 2u);
    const Entity leftCopy = scene_.GetChildren(copy)[0];
    EXPECT_EQ(scene_.Get<NameComponent>(leftCopy).name, "left (2)");
    EXPECT_EQ(scene_.Get<NameComponent>(scene_.GetChildren(copy)[1]).name, "right (2)");
    EXPECT_EQ(scene_.Get<TransformComponent>(leftCopy).transform.position.y, 2.0f);
    EXPECT_NE(GetGuid(scene_, copy), GetGuid(scene_, root));
    EXPECT_TRUE(scene_.GetChildren(scene_.GetChildren(copy)[1]).empty()) << "the copy doesn't copy itself";

    EXPECT_EQ(EntityCopy::CopyEntityTree(scene_, hidden, kNullEntity, map, ""), kNullEntity);
    EXPECT_EQ(EntityCopy::CopyEntityTree(scene_, kNullEntity, kNullEntity, map, ""), kNullEntity);
}

TEST_F(EntityCopyTest, CopyResetsRunTimeMembersBeforeTheHook)
{
    const Entity source = scene_.CreateEntity("source");
    const Entity target = scene_.CreateEntity("target");
    CopyTestComponent component;
    component.saved = 7.0f;
    component.runtime = 99.0f;
    scene_.Add<CopyTestComponent>(source, component);

    Scene other;
    const Entity far = other.CreateEntity("far");
    EntityCopy::CopyComponents(scene_, scene_, source, target, true, ComponentCopyKind::Persistent);
    EXPECT_FALSE(scene_.Has<CopyTestComponent>(target)) << "the component isn't one that scenes save";
    EntityCopy::CopyComponents(scene_, scene_, source, target, false, ComponentCopyKind::Duplicate);
    EntityCopy::CopyComponents(scene_, other, source, far, false, ComponentCopyKind::Persistent);
    EXPECT_EQ(scene_.Get<CopyTestComponent>(target).saved, 7.0f);
    EXPECT_EQ(scene_.Get<CopyTestComponent>(target).runtime, 5.0f);
    EXPECT_EQ(other.Get<CopyTestComponent>(far).runtime, 5.0f);
    EXPECT_EQ(scene_.Get<CopyTestComponent>(source).runtime, 99.0f);
    EXPECT_EQ(other.Get<NameComponent>(far).name, "far");
    EXPECT_EQ(CopyLog(), (std::vector<std::string>{"0 5.000000", "1 5.000000"}));
}

TEST_F(EntityCopyTest, ReferencesInsideTheCopyLeadToTheCopies)
{
    const Entity outside = scene_.CreateEntity("outside");
    const Entity root = scene_.CreateEntity("root");
    const Entity child = scene_.CreateEntity("child");
    scene_.SetParent(child, root);
    CopyTestComponent component;
    component.target = GetGuid(scene_, child);
    component.linkGuid = GetGuid(scene_, child); // by GUID alone, without a handle
    component.bare = child;
    component.textEntity = child;
    component.text = "elsewhere";
    scene_.Add<CopyTestComponent>(root, component);
    component.target = GetGuid(scene_, outside);
    component.link = outside;
    component.linkGuid = GetGuid(scene_, outside);
    component.bare = outside;
    component.textEntity = kNullEntity;
    component.text = "no guid";
    scene_.Add<CopyTestComponent>(child, component);

    for (const bool keepUnmapped : {false, true})
    {
        EntityCopy::EntityMap map;
        const Entity copy = EntityCopy::CopyEntityTree(scene_, root, kNullEntity, map, "");
        EntityCopy::RemapReferences(scene_, scene_, map, keepUnmapped);
        const Entity childCopy = scene_.GetChildren(copy).front();
        const auto& inside = scene_.Get<CopyTestComponent>(copy);
        EXPECT_EQ(inside.target, GetGuid(scene_, childCopy));
        EXPECT_EQ(inside.link, childCopy);
        EXPECT_EQ(inside.linkGuid, GetGuid(scene_, childCopy));
        EXPECT_EQ(inside.bare, childCopy);
        EXPECT_EQ(inside.textEntity, childCopy);
        EXPECT_EQ(inside.text, GetGuid(scene_, childCopy).ToString());
        const auto& out = scene_.Get<CopyTestComponent>(childCopy);
        EXPECT_EQ(out.target, GetGuid(scene_, outside));
        EXPECT_EQ(out.linkGuid, GetGuid(scene_, outside));
        EXPECT_EQ(out.link, keepUnmapped ? outside : kNullEntity);
        EXPECT_EQ(out.bare, keepUnmapped ? outside : kNullEntity);
        EXPECT_EQ(out.text, "no guid");
    }
}

} // namespace
} // namespace Vornu::Scene
