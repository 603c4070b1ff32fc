#include "engine/scene/components/Registration.h"

#include "engine/scene/components/BuoyancyComponents.h"
#include "engine/scene/components/ClothComponents.h"
#include "engine/scene/components/OceanComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"
#include "engine/scene/registration/SampledComponent.h"

#include <array>
#include <cstddef>
#include <stdexcept>

namespace Vornu::Scene
{

namespace
{

/// Version 1 stored the state of the moving body.
void DropMotion(Reflection::SchemaRecord& record, std::uint32_t)
{
    record.RemoveFields({"linearVelocity", "angularVelocity", "isAwake"});
}

/// Only an ocean can carry a body.
void RequireWater(BuoyancyComponent& buoyancy, Registry& registry, Entity)
{
    if (!registry.IsValid(buoyancy.waterBody) || !registry.Has<OceanComponent>(buoyancy.waterBody))
    {
        buoyancy.waterBody = kNullEntity;
    }
}

template<class Context>
void RequireFewPoints(BuoyancyComponent& buoyancy, const Context&)
{
    if (buoyancy.customPoints.size() > kMaxBuoyancyPoints)
    {
        throw std::runtime_error("Buoyancy component exceeds 32 custom points.");
    }
}

/// How a cloth's pin weights are stored.
struct PinWeights
{
    using Component = ClothComponent;
    using Counts = ClothPinWeightCount;
    using Chunk = ClothPinWeightChunk;

    static constexpr std::array kArrays{&ClothComponent::pinWeights};
    static constexpr std::array kCounts{&ClothPinWeightCount::count};
    static inline const SampleFaults kFaults{
        .tooManySamples = "Cloth exceeds its total pin-weight limit.",
        .tooManyBytes = "Cloth exceeds its total encoded byte limit.",
        .truncated = "Truncated cloth record.",
        .chunkBeforeCounts = "Cloth chunks require a pin-weight count first.",
        .badChunk =
            "Cloth pin-weight chunk is empty, out of order, overlapping, or exceeds its declared count.",
        .incomplete = "Cloth pin weights are missing or incomplete.",
    };

    static void MarkChunk(Chunk&, std::size_t) {}
    static std::size_t ArrayOf(const Chunk&) { return 0; }
};

} // namespace

void RegisterPhysicsComponents()
{
    Reflection::RegisterEnum<BodyType>("BodyType", {
                                                       {BodyType::Static, "Static"},
                                                       {BodyType::Dynamic, "Dynamic"},
                                                       {BodyType::Kinematic, "Kinematic"},
                                                   });
    Reflection::RegisterEnum<ColliderShapeType>("ColliderShapeType",
                                                {
                                                    {ColliderShapeType::Box, "Box"},
                                                    {ColliderShapeType::Sphere, "Sphere"},
                                                    {ColliderShapeType::Capsule, "Capsule"},
                                                    {ColliderShapeType::Mesh, "Mesh"},
                                                });
    Reflection::RegisterEnum<GameplayLayer>("GameplayLayer",
                                            {
                                                {GameplayLayer::Default, "Default"},
                                                {GameplayLayer::Floor, "Floor"},
                                                {GameplayLayer::Wall, "Wall"},
                                                {GameplayLayer::Ceiling, "Ceiling"},
                                                {GameplayLayer::Obstacle, "Obstacle"},
                                                {GameplayLayer::Player, "Player"},
                                                {GameplayLayer::Enemy, "Enemy"},
                                                {GameplayLayer::NPC, "NPC"},
                                                {GameplayLayer::Projectile, "Projectile"},
                                                {GameplayLayer::Pickup, "Pickup"},
                                                {GameplayLayer::Trigger, "Trigger"},
                                                {GameplayLayer::Climbable, "Climbable"},
                                                {GameplayLayer::Water, "Water"},
                                                {GameplayLayer::DamageZone, "DamageZone", "Damage Zone"},
                                                {GameplayLayer::NoNav, "NoNav", "No Navigation"},
                                                {GameplayLayer::Cover, "Cover"},
                                                {GameplayLayer::Interactable, "Interactable"},
                                            });
    Reflection::RegisterEnum<MeshColliderGeometry>(
        "MeshColliderGeometry", {
                                    {MeshColliderGeometry::Auto, "Auto"},
                                    {MeshColliderGeometry::TriangleMesh, "TriangleMesh", "Triangle Mesh"},
                                    {MeshColliderGeometry::ConvexHull, "ConvexHull", "Convex Hull"},
                                    {MeshColliderGeometry::BoundsBox, "BoundsBox", "Bounds Box"},
                                });
    Reflection::RegisterEnum<BuoyancySamplingMode>(
        "BuoyancySamplingMode", {
                                    {BuoyancySamplingMode::HullBounds, "HullBounds", "Hull Bounds"},
                                    {BuoyancySamplingMode::CustomPoints, "CustomPoints", "Custom Points"},
                                });
    Reflection::RegisterEnum<BuoyancyForceModel>(
        "BuoyancyForceModel",
        {
            {BuoyancyForceModel::AutoTrim, "AutoTrim", "Auto Trim"},
            {BuoyancyForceModel::PhysicalDisplacement, "PhysicalDisplacement", "Physical Displacement"},
        });
    Reflection::RegisterEnum<ClothPinMode>(
        "ClothPinMode", {
                            {ClothPinMode::TopEdge, "TopEdge", "Top Edge"},
                            {ClothPinMode::VertexColorRed, "VertexColorRed", "Vertex Color Red"},
                            {ClothPinMode::BoneWeights, "BoneWeights", "Bone Weights"},
                            {ClothPinMode::Painted, "Painted"},
                        });

    Reflection::RegisterValue<PhysicsMaterial>("PhysicsMaterial", "Physics Material", "Physics")
        .Field("staticFriction", &PhysicsMaterial::staticFriction, Label("Static Friction"))
        .Field("dynamicFriction", &PhysicsMaterial::dynamicFriction, Label("Dynamic Friction"))
        .Field("restitution", &PhysicsMaterial::restitution, Label("Restitution"))
        .Field("density", &PhysicsMaterial::density, Label("Density"));

    Reflection::RegisterValue<CollisionFilter>("CollisionFilter", "Collision Filter", "Physics")
        .Field("layer", &CollisionFilter::layer, Label("Layer"))
        .Field("mask", &CollisionFilter::mask, Label("Mask"));

    Reflection::RegisterValue<BuoyancyPoint>("BuoyancyPoint", "Buoyancy Point", "Physics")
        .Field("localPosition", &BuoyancyPoint::localPosition, Label("Local Position"))
        .Field("immersionDepth", &BuoyancyPoint::immersionDepth, Label("Immersion Depth"))
        .Field("liftWeight", &BuoyancyPoint::liftWeight, Label("Lift Weight"))
        .Field("enabled", &BuoyancyPoint::enabled, Label("Enabled"));

    Reflection::RegisterValue<ClothSettings>("ClothSettings", "Cloth Settings", "Physics")
        .Field("simulateInEditMode", &ClothSettings::simulateInEditMode, Label("Simulate in edit mode"))
        .Field("useWorldGravity", &ClothSettings::useWorldGravity, Label("Use world gravity"))
        .Field("gravity", &ClothSettings::gravity, Label("Gravity"))
        .Field("windDirection", &ClothSettings::windDirection, Label("Wind direction"))
        .Field("windStrength", &ClothSettings::windStrength, Label("Wind strength"))
        .Field("damping", &ClothSettings::damping, Label("Damping"))
        .Field("animatedMotionTransfer", &ClothSettings::animatedMotionTransfer,
               Label("Animated motion transfer"))
        .Field("skinFreeParticles", &ClothSettings::skinFreeParticles, Label("Skin free particles"))
        .Field("stretchStiffness", &ClothSettings::stretchStiffness, Label("Stretch stiffness"))
        .Field("shearStiffness", &ClothSettings::shearStiffness, Label("Shear stiffness"))
        .Field("bendStiffness", &ClothSettings::bendStiffness, Label("Bend stiffness"))
        .Field("stretchCompliance", &ClothSettings::stretchCompliance, Label("Stretch compliance"))
        .Field("shearCompliance", &ClothSettings::shearCompliance, Label("Shear compliance"))
        .Field("bendCompliance", &ClothSettings::bendCompliance, Label("Bend compliance"))
        .Field("solverIterations", &ClothSettings::solverIterations, Label("Solver iterations"))
        .Field("substeps", &ClothSettings::substeps, Label("Substeps"))
        .Field("maxSimulationStepsPerFrame", &ClothSettings::maxSimulationStepsPerFrame,
               Label("Max simulation steps per frame"))
        .Field("particleRadius", &ClothSettings::particleRadius, Label("Particle radius"))
        .Field("collisionFriction", &ClothSettings::collisionFriction, Label("Collision friction"))
        .Field("collisionEnabled", &ClothSettings::collisionEnabled, Label("Collision enabled"))
        .Field("collisionMask", &ClothSettings::collisionMask, Label("Collision mask"))
        .Field("gameplayLayer", &ClothSettings::gameplayLayer, Label("Gameplay layer"))
        .Field("filter", &ClothSettings::filter, Label("Filter"))
        .Field("collideWithOwnerHierarchy", &ClothSettings::collideWithOwnerHierarchy,
               Label("Collide with owner hierarchy"))
        .Field("pinMode", &ClothSettings::pinMode, Label("Pin mode"))
        .Field("topPinPercent", &ClothSettings::topPinPercent, Label("Top pin percent"))
        .Field("vertexColorPinThreshold", &ClothSettings::vertexColorPinThreshold,
               Label("Vertex color pin threshold"))
        .Field("seamWeldDistance", &ClothSettings::seamWeldDistance, Label("Seam weld distance"))
        .Field("seamWeldStiffness", &ClothSettings::seamWeldStiffness, Label("Seam weld stiffness"))
        .Field("seamWeldCompliance", &ClothSettings::seamWeldCompliance, Label("Seam weld compliance"))
        .Field("teleportDistance", &ClothSettings::teleportDistance, Label("Teleport distance"));

    Reflection::RegisterValue<ClothPinWeightCount>("ClothPinWeightCount", "Cloth Pin Weight Count", "Physics")
        .Field("count", &ClothPinWeightCount::count, Label("Count"));

    Reflection::RegisterValue<ClothPinWeightChunk>("ClothPinWeightChunk", "Cloth Pin Weight Chunk", "Physics")
        .Field("offset", &ClothPinWeightChunk::offset, Label("Offset"))
        .Field("values", &ClothPinWeightChunk::values, Label("Values"));

    RegisterComponent<RigidBodyComponent>("RigidBodyComponent", "Rigid Body", "Physics", kAuthored)
        .Description("Adds physical body mass, velocity, damping, and sleep settings.")
        .Field("bodyType", &RigidBodyComponent::bodyType, Label("Body Type"))
        .Field("mass", &RigidBodyComponent::mass, Label("Mass").Range(0, 1000000))
        .Field("linearDamping", &RigidBodyComponent::linearDamping, Label("Linear Damping").Range(0, 1000))
        .Field("angularDamping", &RigidBodyComponent::angularDamping, Label("Angular Damping").Range(0, 1000))
        .Field("gravityScale", &RigidBodyComponent::gravityScale, Label("Gravity Scale").Range(-100, 100))
        .Field("enabled", &RigidBodyComponent::enabled, Label("Enabled"))
        .Field("useGravity", &RigidBodyComponent::useGravity, Label("Use Gravity"))
        .Field("allowSleep", &RigidBodyComponent::allowSleep, Label("Allow Sleep"))
        .Field("inertiaTensor", &RigidBodyComponent::inertiaTensor, Label("Inertia Tensor"))
        .Field("lockPositionX", &RigidBodyComponent::lockPositionX, Label("Lock Position X"))
        .Field("lockPositionY", &RigidBodyComponent::lockPositionY, Label("Lock Position Y"))
        .Field("lockPositionZ", &RigidBodyComponent::lockPositionZ, Label("Lock Position Z"))
        .Field("lockRotationX", &RigidBodyComponent::lockRotationX, Label("Lock Rotation X"))
        .Field("lockRotationY", &RigidBodyComponent::lockRotationY, Label("Lock Rotation Y"))
        .Field("lockRotationZ", &RigidBodyComponent::lockRotationZ, Label("Lock Rotation Z"))
        .Version(2)
        .AddTransient(&RigidBodyComponent::linearVelocity)
        .AddTransient(&RigidBodyComponent::angularVelocity)
        .AddTransient(&RigidBodyComponent::isAwake)
        .Migrate(&DropMotion)
        .SaveGame("linearVelocity", &RigidBodyComponent::linearVelocity)
        .SaveGame("angularVelocity", &RigidBodyComponent::angularVelocity)
        .SaveGame("isAwake", &RigidBodyComponent::isAwake);

    RegisterComponent<ColliderComponent>("ColliderComponent", "Collider", "Physics", kAuthored)
        .Description("Adds a physical query/collision shape.")
        .Field("material", &ColliderComponent::material, Label("Material"))
        .Field("filter", &ColliderComponent::filter, Label("Collision Filter"))
        .Field("shape", &ColliderComponent::shape, Label("Shape"))
        .Field("gameplayLayer", &ColliderComponent::gameplayLayer, Label("Gameplay Layer"))
        .Field("localOffset", &ColliderComponent::localOffset, Label("Local Offset"))
        .Field("localRotation", &ColliderComponent::localRotation,
               Label("Local Rotation").With(PropertyFlags::Degrees))
        .Field("boxHalfExtents", &ColliderComponent::boxHalfExtents, Label("Box Half Extents"))
        .Field("sphereRadius", &ColliderComponent::sphereRadius, Label("Sphere Radius").Range(0, 10000))
        .Field("capsuleRadius", &ColliderComponent::capsuleRadius, Label("Capsule Radius").Range(0, 10000))
        .Field("capsuleHeight", &ColliderComponent::capsuleHeight, Label("Capsule Height").Range(0, 10000))
        .Field("mesh", &ColliderComponent::mesh, Label("Mesh").Asset("Mesh"))
        .Field("meshGeometry", &ColliderComponent::meshGeometry, Label("Mesh Geometry"))
        .Field("convexHullMaxPoints", &ColliderComponent::convexHullMaxPoints,
               Label("Convex Hull Max Points").Range(16, 256))
        .Field("useMeshFromRenderer", &ColliderComponent::useMeshFromRenderer,
               Label("Use Mesh From Renderer"))
        .Field("enabled", &ColliderComponent::enabled, Label("Enabled"))
        .Field("isTrigger", &ColliderComponent::isTrigger, Label("Is Trigger"))
        .Field("debugDraw", &ColliderComponent::debugDraw, Label("Debug Draw"));

    RegisterComponent<ConstraintComponent>("ConstraintComponent", "Constraint", "Physics", kAuthored)
        .Description("Joins this rigid body to another entity's body.")
        .Field("enabled", &ConstraintComponent::enabled, Label("Enabled"))
        .Field("connectedEntity", &ConstraintComponent::connectedEntity,
               Label("Connected Entity").Kind(PropertyKind::EntityHandle).With(PropertyFlags::Runtime))
        .Field("localAnchor", &ConstraintComponent::localAnchor, Label("Local Anchor"))
        .Field("connectedAnchor", &ConstraintComponent::connectedAnchor, Label("Connected Anchor"))
        .Field("linearStiffness", &ConstraintComponent::linearStiffness,
               Label("Linear Stiffness").Range(0, 1000))
        .Field("connectedEntityGuid", &ConstraintComponent::connectedEntityGuid,
               Label("Connected Entity Guid").With(PropertyFlags::LinkGuid))
        .Field("debugDraw", &ConstraintComponent::debugDraw, Label("Debug Draw"))
        .EntityLink(&ConstraintComponent::connectedEntity, &ConstraintComponent::connectedEntityGuid, true);

    RegisterComponent<BuoyancyComponent>("BuoyancyComponent", "Buoyancy", "Physics", kAuthored)
        .Description("Adds multi-point wave-aware buoyancy and water-relative drag to a dynamic rigid body.")
        .Field("enabled", &BuoyancyComponent::enabled, Label("Enabled"))
        .Field("simulateInEditMode", &BuoyancyComponent::simulateInEditMode, Label("Simulate in Editor"))
        .Field("samplingMode", &BuoyancyComponent::samplingMode, Label("Sampling Mode").Group("Sampling"))
        .Field("autoFitCollider", &BuoyancyComponent::autoFitCollider,
               Label("Auto Fit Collider").Group("Sampling"))
        .Field("waterBody", &BuoyancyComponent::waterBody,
               Label("Water Body")
                   .Kind(PropertyKind::EntityHandle)
                   .Group("Sampling")
                   .With(PropertyFlags::Runtime))
        .Field("waterBodyGuid", &BuoyancyComponent::waterBodyGuid,
               Label("Water Body GUID").Group("Sampling").With(PropertyFlags::LinkGuid))
        .Field("localCenter", &BuoyancyComponent::localCenter, Label("Local Center").Group("Sampling"))
        .Field("localHalfExtents", &BuoyancyComponent::localHalfExtents,
               Label("Local Half Extents").Group("Sampling"))
        .Field("samplePointCount", &BuoyancyComponent::samplePointCount,
               Label("Sample Points").Range(1, 8).Group("Sampling"))
        .Field("forceModel", &BuoyancyComponent::forceModel, Label("Force Model").Group("Hydrodynamics"))
        .Field("fluidDensity", &BuoyancyComponent::fluidDensity,
               Label("Fluid Density").Range(1, 4000).Group("Forces"))
        .Field("buoyancyScale", &BuoyancyComponent::buoyancyScale,
               Label("Buoyancy Scale").Range(0, 8).Group("Forces"))
        .Field("targetSubmersion", &BuoyancyComponent::targetSubmersion,
               Label("Target Submersion").Range(0.05f, 0.95f).Group("Hydrodynamics"))
        .Field("hullVolumeScale", &BuoyancyComponent::hullVolumeScale,
               Label("Hull Volume Scale").Range(0.01f, 1).Group("Hydrodynamics"))
        .Field("maxSubmersionDepth", &BuoyancyComponent::maxSubmersionDepth,
               Label("Max Submersion Depth").Range(0.01f, 100).Group("Forces"))
        .Field("linearDrag", &BuoyancyComponent::linearDrag,
               Label("Linear Drag").Range(0, 20).Group("Forces"))
        .Field("angularDrag", &BuoyancyComponent::angularDrag,
               Label("Angular Drag").Range(0, 20).Group("Forces"))
        .Field("surfaceAlignment", &BuoyancyComponent::surfaceAlignment,
               Label("Surface Alignment").Range(0, 2).Group("Forces"))
        .Field("canFlip", &BuoyancyComponent::canFlip, Label("Can Flip").Group("Stability"))
        .Field("uprightStiffness", &BuoyancyComponent::uprightStiffness,
               Label("Upright Stiffness").Range(0, 20).Group("Stability"))
        .Field("uprightDamping", &BuoyancyComponent::uprightDamping,
               Label("Upright Damping").Range(0, 20).Group("Stability"))
        .Field("generateWake", &BuoyancyComponent::generateWake, Label("Generate Wake").Group("Wake Trail"))
        .Field("wakeStrength", &BuoyancyComponent::wakeStrength,
               Label("Strength").Range(0, 4).Group("Wake Trail"))
        .Field("wakeWidth", &BuoyancyComponent::wakeWidth,
               Label("Width").Range(0.05f, 50).Group("Wake Trail"))
        .Field("wakeLifetime", &BuoyancyComponent::wakeLifetime,
               Label("Lifetime").Range(0.1f, 30).Group("Wake Trail"))
        .Field("wakeSpacing", &BuoyancyComponent::wakeSpacing,
               Label("Point Spacing").Range(0.05f, 20).Group("Wake Trail"))
        .Field("wakeMinimumSpeed", &BuoyancyComponent::wakeMinimumSpeed,
               Label("Minimum Speed").Range(0.01f, 100).Group("Wake Trail"))
        .Field("maximumWakePoints", &BuoyancyComponent::maximumWakePoints,
               Label("Maximum Points").Range(1, 32).Group("Wake Trail"))
        .Field("debugDraw", &BuoyancyComponent::debugDraw, Label("Debug Draw").Group("Debug"))
        .Field("customPoints", &BuoyancyComponent::customPoints, Label("Custom Points"))
        .EntityLink(&BuoyancyComponent::waterBody, &BuoyancyComponent::waterBodyGuid)
        .OnResolve(&RequireWater)
        .OnLoad(&RequireFewPoints<ComponentLoadContext>)
        .OnSave(&RequireFewPoints<ComponentSaveContext>);

    ComponentBuilder<ClothComponent> cloth =
        RegisterComponent<ClothComponent>("ClothComponent", "Cloth", "Physics", kAuthored)
            .Description("Turns this entity mesh into a simulated cloth surface.")
            .Field("enabled", &ClothComponent::enabled, Label("Enabled"))
            .Field("paused", &ClothComponent::paused, Label("Paused"))
            .Field("debugDraw", &ClothComponent::debugDraw, Label("Debug Draw"))
            .Field("showParticles", &ClothComponent::showParticles, Label("Show Particles").Group("Debug"))
            .Field("showConstraints", &ClothComponent::showConstraints,
                   Label("Show Constraints").Group("Debug"))
            .Field("sourceMesh", &ClothComponent::sourceMesh, Label("Source Mesh").Asset("Mesh"))
            .Field("showPinned", &ClothComponent::showPinned, Label("Show pinned"))
            .Field("showColliders", &ClothComponent::showColliders, Label("Show colliders"))
            .Field("followSkinning", &ClothComponent::followSkinning, Label("Follow skinning"))
            .Field("selfCollisionEnabled", &ClothComponent::selfCollisionEnabled,
                   Label("Self collision enabled"))
            .Field("paintPinsInViewport", &ClothComponent::paintPinsInViewport,
                   Label("Paint pins in viewport"))
            .Field("pinPaintRadius", &ClothComponent::pinPaintRadius, Label("Pin paint radius"))
            .Field("pinPaintStrength", &ClothComponent::pinPaintStrength, Label("Pin paint strength"))
            .Field("pinPaintHardness", &ClothComponent::pinPaintHardness, Label("Pin paint hardness"))
            .Field("settings", &ClothComponent::settings, Label("Settings"))
            .AddCustom(&ClothComponent::pinWeights)
            .AddTransient(&ClothComponent::generatedMesh);

    SaveSampled<PinWeights>(cloth);
}

} // namespace Vornu::Scene
