#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/scene/components/GameplayLayer.h"
#include "engine/scene/components/PhysicsComponents.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

enum class ClothPinMode : std::uint8_t
{
    TopEdge = 0,
    VertexColorRed = 1,
    BoneWeights = 2,
    Painted = 3,
};

struct ClothSettings
{
    bool simulateInEditMode = true;
    bool useWorldGravity = true;
    glm::vec3 gravity{0.0f, -9.81f, 0.0f};
    glm::vec3 windDirection{1.0f, 0.0f, 0.25f};
    float windStrength = 0.0f;
    float damping = 0.015f;
    float animatedMotionTransfer = 1.0f;
    bool skinFreeParticles = false;
    float stretchStiffness = 0.95f;
    float shearStiffness = 0.75f;
    float bendStiffness = 0.45f;
    float stretchCompliance = 2e-05f;
    float shearCompliance = 8e-05f;
    float bendCompliance = 0.00035f;
    std::uint32_t solverIterations = 4;
    std::uint32_t substeps = 1;
    std::uint32_t maxSimulationStepsPerFrame = 1;
    float particleRadius = 0.035f;
    float collisionFriction = 0.12f;
    bool collisionEnabled = true;
    std::uint32_t collisionMask = 4294967295u;
    GameplayLayer gameplayLayer = GameplayLayer::Default;
    CollisionFilter filter;
    bool collideWithOwnerHierarchy = false;
    ClothPinMode pinMode = ClothPinMode::TopEdge;
    float topPinPercent = 0.08f;
    float vertexColorPinThreshold = 0.85f;
    float seamWeldDistance = 0.0015f;
    float seamWeldStiffness = 1.0f;
    float seamWeldCompliance = 1e-06f;
    float teleportDistance = 2.5f;

    friend bool operator==(const ClothSettings&, const ClothSettings&) = default;
};

/// A mesh that moves like cloth; `pinWeights` has a weight for each vertex.
struct ClothComponent
{
    bool enabled = true;
    bool paused = false;
    bool debugDraw = false;
    bool showParticles = true;
    bool showConstraints = true;
    Assets::AssetId sourceMesh = 0;
    bool showPinned = true;
    bool showColliders = false;
    bool followSkinning = true;
    bool selfCollisionEnabled = false;
    bool paintPinsInViewport = false;
    float pinPaintRadius = 0.25f;
    float pinPaintStrength = 2.5f;
    float pinPaintHardness = 0.65f;
    ClothSettings settings;

    std::vector<float> pinWeights;

    // Run-time state.
    Assets::AssetId generatedMesh = 0;
};

// The records of the pin weights.

struct ClothPinWeightCount
{
    std::uint64_t count = 0;
};

struct ClothPinWeightChunk
{
    std::uint64_t offset = 0;
    std::vector<float> values;
};

} // namespace Vornu::Scene
