#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/core/Guid.h"
#include "engine/scene/components/GameplayLayer.h"
#include "engine/scene/entities/Entity.h"

#include <glm/vec3.hpp>

#include <cstdint>

namespace Vornu::Scene
{

enum class BodyType : std::uint8_t
{
    Static = 0,
    Dynamic = 1,
    Kinematic = 2,
};

enum class ColliderShapeType : std::uint8_t
{
    Box = 0,
    Sphere = 1,
    Capsule = 2,
    Mesh = 3,
};

enum class MeshColliderGeometry : std::uint8_t
{
    Auto = 0,
    TriangleMesh = 1,
    ConvexHull = 2,
    BoundsBox = 3,
};

struct PhysicsMaterial
{
    float staticFriction = 0.6f;
    float dynamicFriction = 0.6f;
    float restitution = 0.0f;
    float density = 1000.0f;

    friend bool operator==(const PhysicsMaterial&, const PhysicsMaterial&) = default;
};

struct CollisionFilter
{
    std::uint32_t layer = 0;
    std::uint32_t mask = 4294967295u;

    friend bool operator==(const CollisionFilter&, const CollisionFilter&) = default;
};

struct RigidBodyComponent
{
    BodyType bodyType = BodyType::Dynamic;
    float mass = 1.0f;
    float linearDamping = 0.05f;
    float angularDamping = 0.05f;
    float gravityScale = 1.0f;
    bool enabled = true;
    bool useGravity = true;
    bool allowSleep = true;
    glm::vec3 inertiaTensor{1.0f};
    bool lockPositionX = false;
    bool lockPositionY = false;
    bool lockPositionZ = false;
    bool lockRotationX = false;
    bool lockRotationY = false;
    bool lockRotationZ = false;

    // Run-time state.
    glm::vec3 linearVelocity{0.0f};
    glm::vec3 angularVelocity{0.0f};
    bool isAwake = true;
};

struct ColliderComponent
{
    PhysicsMaterial material;
    CollisionFilter filter;
    ColliderShapeType shape = ColliderShapeType::Box;
    GameplayLayer gameplayLayer = GameplayLayer::Default;
    glm::vec3 localOffset{0.0f};
    glm::vec3 localRotation{0.0f};
    glm::vec3 boxHalfExtents{0.5f};
    float sphereRadius = 0.5f;
    float capsuleRadius = 0.5f;
    float capsuleHeight = 1.8f;
    Assets::AssetId mesh = 0;
    MeshColliderGeometry meshGeometry = MeshColliderGeometry::Auto;
    std::uint32_t convexHullMaxPoints = 256;
    bool useMeshFromRenderer = true;
    bool enabled = true;
    bool isTrigger = false;
    bool debugDraw = true;
};

struct ConstraintComponent
{
    bool enabled = true;
    Entity connectedEntity = kNullEntity;
    glm::vec3 localAnchor{0.0f};
    glm::vec3 connectedAnchor{0.0f};
    float linearStiffness = 0.85f;
    Core::Guid connectedEntityGuid;
    bool debugDraw = false;
};

} // namespace Vornu::Scene
