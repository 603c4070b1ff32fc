#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/entities/Entity.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Scene
{

enum class AnimatorParameterType : std::uint8_t
{
    Bool = 0,
    Float = 1,
    Int = 2,
    Trigger = 3,
};

enum class AnimatorLayerMode : std::uint8_t
{
    Override = 0,
    Additive = 1,
};

enum class AnimatorIkSolverType : std::uint8_t
{
    TwoBone = 0,
    FABRIK = 1,
    CCD = 2,
};

enum class RagdollMode : std::uint8_t
{
    Animated = 0,
    Simulated = 1,
    Blend = 2,
};

struct AnimatorParameterValue
{
    std::string name;
    AnimatorParameterType type = AnimatorParameterType::Float;
    bool boolValue = false;
    float floatValue = 0.0f;
    std::int32_t intValue = 0;
    bool triggerArmed = false;

    friend bool operator==(const AnimatorParameterValue&, const AnimatorParameterValue&) = default;
};

struct AnimatorBoneMaskRule
{
    std::string boneName;
    bool includeDescendants = true;
    float weight = 1.0f;

    friend bool operator==(const AnimatorBoneMaskRule&, const AnimatorBoneMaskRule&) = default;
};

struct AnimatorLayer
{
    std::string name = "Layer";
    bool enabled = false;
    AnimatorLayerMode mode = AnimatorLayerMode::Override;
    Assets::AssetId clip = 0;
    float timeSeconds = 0.0f;
    float speed = 1.0f;
    float weight = 1.0f;
    bool looping = true;
    std::vector<AnimatorBoneMaskRule> boneMask;

    friend bool operator==(const AnimatorLayer&, const AnimatorLayer&) = default;
};

struct AnimatorIkChain
{
    std::string name = "IK Chain";
    bool enabled = false;
    AnimatorIkSolverType solver = AnimatorIkSolverType::TwoBone;
    std::string rootBoneName;
    std::string midBoneName;
    std::string tipBoneName;
    std::vector<std::string> boneNames;
    glm::vec3 targetPosition{0.0f};
    glm::vec3 targetRotationDegrees{0.0f};
    bool useTargetRotation = false;
    bool useTargetEntity = false;
    Entity targetEntity = kNullEntity;
    std::string targetEntityGuid;
    std::string targetEntityName;
    glm::vec3 polePosition{0.0f, 1.0f, 0.0f};
    bool usePoleVector = false;
    bool usePoleEntity = false;
    Entity poleEntity = kNullEntity;
    std::string poleEntityGuid;
    std::string poleEntityName;
    float weight = 1.0f;
    std::int32_t iterations = 8;
    float tolerance = 0.01f;

    friend bool operator==(const AnimatorIkChain&, const AnimatorIkChain&) = default;
};

struct AnimatorLookAtChain
{
    std::string name = "Look At";
    bool enabled = false;
    std::string boneName;
    glm::vec3 targetPosition{0.0f, 1.6f, 1.0f};
    bool useTargetEntity = false;
    Entity targetEntity = kNullEntity;
    std::string targetEntityGuid;
    std::string targetEntityName;
    glm::vec3 localForwardAxis{0.0f, 0.0f, -1.0f};
    glm::vec3 localUpAxis{0.0f, 1.0f, 0.0f};
    float weight = 1.0f;

    friend bool operator==(const AnimatorLookAtChain&, const AnimatorLookAtChain&) = default;
};

struct BonePose
{
    glm::vec3 position{0.0f};
    glm::quat rotation{1.0f, 0.0f, 0.0f, 0.0f};
    glm::vec3 scale{1.0f};

    friend bool operator==(const BonePose&, const BonePose&) = default;
};

struct AnimatorComponent
{
    Assets::AssetId skeleton = 0;
    Assets::AssetId rig = 0;
    Assets::AssetId rigDefinition = 0;
    Assets::AssetId clip = 0;
    Assets::AssetId controller = 0;
    bool enabled = true;
    bool playing = true;
    bool loop = true;
    float speed = 1.0f;
    bool applyRootMotion = false;
    bool enableAnimationLayers = true;
    bool enableIk = true;
    std::string initialState;
    bool manualPoseEnabled = false;
    bool showBones = false;
    bool renderBonesInFront = true;
    std::vector<AnimatorParameterValue> parameters;
    std::vector<AnimatorLayer> layers;
    std::vector<AnimatorIkChain> ikChains;
    std::vector<AnimatorLookAtChain> lookAtChains;
    std::vector<BonePose> manualBonePose;

    // Run-time state.
    float currentTime = 0.0f;
    std::string currentState;
    std::string nextState;
    float transitionDuration = 0.0f;
    float transitionTime = 0.0f;
    float blendAlpha = 0.0f;
    float spineLeanDegrees = 0.0f;
    glm::vec3 spineLeanForward{0.0f};
    bool poseDirty = false;
};

struct RagdollBoneSettings
{
    bool enabled = false;
    ColliderShapeType shape = ColliderShapeType::Capsule;
    glm::vec3 localOffset{0.0f};
    glm::vec3 localRotation{0.0f};
    glm::vec3 boxHalfExtents{0.08f, 0.18f, 0.08f};
    float sphereRadius = 0.08f;
    float capsuleRadius = 0.08f;
    float capsuleHeight = 0.34f;
    float mass = 1.0f;
    glm::vec3 localAnchor{0.0f};
    glm::vec3 connectedAnchor{0.0f};

    friend bool operator==(const RagdollBoneSettings&, const RagdollBoneSettings&) = default;
};

struct RagdollComponent
{
    bool enabled = true;
    bool usePhysicsPose = false;
    RagdollMode mode = RagdollMode::Animated;
    Assets::AssetId rigDefinition = 0;
    float blendInSeconds = 0.15f;
    float blendOutSeconds = 0.35f;
    float physicsBlendWeight = 1.0f;
    float motorStrength = 1.0f;
    std::uint32_t collisionLayer = 0;
    std::vector<RagdollBoneSettings> bones;
    std::vector<std::int32_t> humanoidBoneSlots;
    float currentPhysicsWeight = 0.0f;
};

} // namespace Vornu::Scene
