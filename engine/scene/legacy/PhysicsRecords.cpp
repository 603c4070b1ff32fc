#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadRigidBody(RecordLine& line, RecordContext& context)
{
    auto body = BeginComponent<RigidBodyComponent>(context, "Duplicate RigidBodyComponent record.");
    body.bodyType = BodyType::Static;
    line.Read(CutField{body.bodyType, BodyType::Kinematic}, body.mass, body.linearDamping,
              body.angularDamping, body.gravityScale, body.linearVelocity, body.angularVelocity, body.enabled,
              body.useGravity, body.allowSleep, body.isAwake, body.lockPositionX, body.lockPositionY,
              body.lockPositionZ, body.lockRotationX, body.lockRotationY, body.lockRotationZ);
    context.entity.components.Set(body);
}

void ReadCollider(RecordLine& line, RecordContext& context)
{
    constexpr std::uint32_t kFewestHullPoints = 16;
    constexpr std::uint32_t kMostHullPoints = 256;
    auto collider = BeginComponent<ColliderComponent>(context, "Duplicate ColliderComponent record.");
    PhysicsMaterial& material = collider.material;
    line.Read(CutField{collider.shape, ColliderShapeType::Mesh}, material.staticFriction,
              material.dynamicFriction, material.restitution, material.density, collider.filter.layer,
              collider.filter.mask, CutField{collider.gameplayLayer, GameplayLayer::Interactable},
              collider.localOffset, collider.localRotation, collider.boxHalfExtents, collider.sphereRadius,
              collider.capsuleRadius, collider.capsuleHeight, AssetField{collider.mesh},
              collider.useMeshFromRenderer, collider.enabled, collider.isTrigger, collider.debugDraw,
              CutField{collider.meshGeometry, MeshColliderGeometry::BoundsBox}, collider.convexHullMaxPoints);
    collider.convexHullMaxPoints =
        std::clamp(collider.convexHullMaxPoints, kFewestHullPoints, kMostHullPoints);
    context.entity.components.Set(collider);
}

void ReadConstraint(RecordLine& line, RecordContext& context)
{
    auto constraint = BeginComponent<ConstraintComponent>(context, "Duplicate ConstraintComponent record.");
    // The handle holds a place in the file until the scene stands.
    line.Read(constraint.enabled, constraint.connectedEntity, constraint.localAnchor,
              constraint.connectedAnchor, constraint.linearStiffness, constraint.debugDraw);
    context.entity.components.Set(constraint);
}

constexpr std::array kRecords = {
    EntityRecord{"rigid_body", &ReadRigidBody},
    EntityRecord{"collider", &ReadCollider},
    EntityRecord{"constraint", &ReadConstraint},
};

} // namespace

std::span<const EntityRecord> PhysicsRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
