#include "engine/scene/Scene.h"
#include "engine/scene/entities/CoreComponents.h"

#include <gtest/gtest.h>

#include <glm/ext/matrix_transform.hpp>
#include <glm/mat4x4.hpp>
#include <glm/trigonometric.hpp>

#include <algorithm>
#include <random>
#include <vector>

namespace Vornu::Scene
{
namespace
{

/// From rotations about the three axes rather than by way of a quaternion.
glm::mat4 NaiveLocal(const Transform& transform)
{
    const glm::vec3 angles = glm::radians(transform.rotation);
    glm::mat4 matrix = glm::translate(glm::mat4(1.0f), transform.position);
    matrix = glm::rotate(matrix, angles.z, {0.0f, 0.0f, 1.0f});
    matrix = glm::rotate(matrix, angles.y, {0.0f, 1.0f, 0.0f});
    matrix = glm::rotate(matrix, angles.x, {1.0f, 0.0f, 0.0f});
    return glm::scale(matrix, transform.scale);
}

glm::mat4 NaiveWorld(const Scene& scene, Entity entity)
{
    glm::mat4 world(1.0f);
    for (; scene.IsValid(entity) && scene.Has<TransformComponent>(entity); entity = scene.GetParent(entity))
    {
        world = NaiveLocal(scene.Get<TransformComponent>(entity).transform) * world;
    }
    return world;
}

float Distance(const glm::mat4& a, const glm::mat4& b)
{
    float distance = 0.0f;
    for (int column = 0; column < 4; ++column)
    {
        distance += glm::length(a[column] - b[column]);
    }
    return distance;
}

bool IsAncestor(const Scene& scene, Entity ancestor, Entity entity)
{
    while (entity != kNullEntity && entity != ancestor)
    {
        entity = scene.GetParent(entity);
    }
    return entity == ancestor;
}

class RandomTree
{
public:
    explicit RandomTree(std::uint32_t seed) : random_(seed) {}

    Scene scene;

    void Change()
    {
        const std::vector<Entity>& entities = scene.AliveEntities();
        const Entity entity = entities.empty() ? kNullEntity : Any();
        const std::uint32_t choice = Below(10);
        if (choice < 4 || entity == kNullEntity)
        {
            const Entity child = scene.CreateEntity("e", {1, ++made_});
            scene.Get<TransformComponent>(child).transform = RandomTransform();
            scene.SetParent(child, entity);
        }
        else if (choice < 7 && scene.Has<TransformComponent>(entity))
        {
            scene.Get<TransformComponent>(entity).transform = RandomTransform();
            scene.MarkTransformChanged(entity);
        }
        else if (choice == 7 && entities.size() > 40)
        {
            scene.DestroyEntity(entity);
        }
        else if (choice == 8)
        {
            const Entity parent = Below(4) == 0 ? kNullEntity : Any();
            if (parent == kNullEntity || !IsAncestor(scene, entity, parent))
            {
                scene.SetParent(entity, parent);
            }
        }
        else if (Below(8) == 0)
        {
            scene.Remove<TransformComponent>(entity);
            scene.MarkAllTransformsChanged();
        }
    }

    Entity Any()
    {
        const std::vector<Entity>& entities = scene.AliveEntities();
        return entities[Below(static_cast<std::uint32_t>(entities.size()))];
    }

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

private:
    float Number() { return static_cast<float>(Below(2000)) * 0.001f - 1.0f; }

    Transform RandomTransform()
    {
        return {{Number(), Number(), Number()},
                {Number() * 180.0f, Number() * 180.0f, Number() * 180.0f},
                {1.0f + Number() * 0.1f, 1.0f + Number() * 0.1f, 1.0f + Number() * 0.1f}};
    }

    std::mt19937 random_;
    std::uint64_t made_ = 0;
};

TEST(WorldTransforms, LocalMatrixTurnsAboutXThenYThenZ)
{
    const Transform transform{{1.0f, 2.0f, 3.0f}, {90.0f, 0.0f, 90.0f}, {2.0f, 1.0f, 1.0f}};
    const glm::mat4 expected(glm::vec4(0, 2, 0, 0), glm::vec4(0, 0, 1, 0), glm::vec4(1, 0, 0, 0),
                             glm::vec4(1, 2, 3, 1));
    EXPECT_LT(Distance(LocalMatrix(transform), expected), 1e-5f);
}

TEST(WorldTransforms, IdentityWithoutAnEntityOrATransform)
{
    Scene scene;
    EXPECT_EQ(scene.GetWorldMatrix(kNullEntity), glm::mat4(1.0f));
    const Entity entity = scene.CreatePointLight("light");
    EXPECT_NE(scene.GetWorldMatrix(entity), glm::mat4(1.0f));
    scene.Remove<TransformComponent>(entity);
    EXPECT_EQ(scene.GetWorldMatrix(entity), glm::mat4(1.0f));
}

TEST(WorldTransforms, UnmarkedChangesAreNotSeen)
{
    Scene scene;
    const Entity entity = scene.CreateEntity("e");
    scene.UpdateWorldTransforms();
    scene.Get<TransformComponent>(entity).transform.position.x = 4.0f;
    EXPECT_EQ(scene.GetWorldMatrix(entity), glm::mat4(1.0f));
    scene.MarkTransformChanged(entity);
    EXPECT_EQ(scene.GetWorldMatrix(entity)[3].x, 4.0f);
}

TEST(WorldTransforms, AgreeWithANaiveRecomputation)
{
    for (std::uint32_t seed = 1; seed <= 6; ++seed)
    {
        RandomTree tree(seed);
        for (int round = 0; round < 150; ++round)
        {
            for (std::uint32_t changes = tree.Below(6); changes > 0; --changes)
            {
                tree.Change();
                if (tree.Below(4) == 0 && tree.scene.AliveCount() != 0)
                {
                    tree.scene.GetWorldMatrix(tree.Any());
                }
            }
            if (tree.Below(2) == 0)
            {
                tree.scene.UpdateWorldTransforms();
            }
            for (const Entity entity : tree.scene.AliveEntities())
            {
                const glm::mat4 expected = NaiveWorld(tree.scene, entity);
                ASSERT_LT(Distance(tree.scene.GetWorldMatrix(entity), expected), 1e-2f)
                    << "seed " << seed << " round " << round << " entity " << entity;
            }
        }
    }
}

TEST(WorldTransforms, ChangeSetsAgreeWithANaiveFilter)
{
    RandomTree tree(11);
    for (int round = 0; round < 200; ++round)
    {
        tree.Change();
        tree.scene.TakeDirtyTransformRoots();
        const std::uint64_t since = tree.scene.TransformRevision();
        std::vector<Entity> marked;
        for (std::uint32_t marks = tree.Below(8); marks > 0; --marks)
        {
            const Entity entity = tree.Any();
            if (tree.scene.Has<TransformComponent>(entity))
            {
                tree.scene.MarkTransformChanged(entity);
                if (std::find(marked.begin(), marked.end(), entity) == marked.end())
                {
                    marked.push_back(entity);
                }
            }
        }
        std::vector<Entity> expected;
        for (const Entity entity : marked)
        {
            bool covered = false;
            for (const Entity other : marked)
            {
                covered = covered || (other != entity && IsAncestor(tree.scene, other, entity));
            }
            if (!covered)
            {
                expected.push_back(entity);
            }
        }
        std::vector<Entity> changed = tree.scene.TransformChangesSince(since).entities;
        ASSERT_EQ(tree.scene.TakeDirtyTransformRoots().entities, expected) << round;
        std::sort(changed.begin(), changed.end());
        std::sort(expected.begin(), expected.end());
        ASSERT_EQ(changed, expected) << round;
    }
}

} // namespace
} // namespace Vornu::Scene
