#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/components/GameplayLayer.h"
#include "engine/scene/entities/Entity.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <string>

namespace Vornu::Scene
{

struct RotatorComponent
{
    float degreesPerSecond = 25.0f;
};

struct GameplayLayerComponent
{
    GameplayLayer layer = GameplayLayer::Default;
};

struct CharacterControllerComponent
{
    bool enabled = true;
    float height = 1.8f;
    float radius = 0.35f;
    float walkSpeed = 4.5f;
    float runMultiplier = 1.65f;
    float jumpSpeed = 5.2f;
    float jumpImpulseDelaySeconds = 0.0f;
    float coyoteTimeSeconds = 0.08f;
    float jumpBufferSeconds = 0.12f;
    float gravity = 18.0f;
    bool pushRigidBodies = true;
    float pushForce = 220.0f;
    float pushMaxMass = 120.0f;
    float pushMinClosingSpeed = 0.15f;
    std::uint32_t pushGameplayLayerMask = 4294967295u;
    bool rotateWithMouse = false;
    bool requireRightMouseForMouseLook = false;
    float mouseSensitivity = 0.12f;
    bool syncVisualTransform = true;
    Entity visualRoot = kNullEntity;
    float maxSlopeAngleDegrees = 50.0f;
    float groundCheckDistance = 0.22f;
    float airControl = 0.65f;
    float groundedGraceSeconds = 0.1f;
    float maxStepHeight = 0.35f;
    float crouchHeight = 1.1f;
    float crouchSpeedMultiplier = 0.5f;
    float mass = 70.0f;
    std::uint32_t collisionLayer = 0;
    Core::Guid visualRootGuid;
    glm::vec3 visualLocalPosition{0.0f};
    glm::vec3 visualLocalRotation{0.0f};
    glm::vec3 visualLocalScale{1.0f};
    bool crouchRequested = false;
    bool crouched = false;

    // Run-time state.
    bool scriptMotion = false;
    glm::vec3 scriptMoveDirection{0.0f};
    bool grounded = false;
    bool jumpPending = false;
    float jumpDelayTimer = 0.0f;
    float jumpBufferTimer = 0.0f;
    float groundedGraceTimer = 0.0f;
    glm::vec3 velocity{0.0f};
    glm::vec3 groundNormal{0.0f, 1.0f, 0.0f};
    glm::vec3 groundVelocity{0.0f};
    Entity groundEntity = kNullEntity;
    bool groundContact = false;
    float groundContactLostSeconds = 0.0f;
    glm::vec3 achievedVelocity{0.0f};
};

struct FirstPersonCameraControllerComponent
{
    bool enabled = true;
    bool requireRightMouse = false;
    float mouseSensitivity = 0.12f;
    float eyeHeight = 1.62f;
    float minPitchDegrees = -82.0f;
    float maxPitchDegrees = 82.0f;
};

struct ThirdPersonCameraControllerComponent
{
    bool enabled = true;
    bool requireRightMouse = false;
    Entity target = kNullEntity;
    float distance = 4.2f;
    float shoulderOffset = 0.0f;
    float height = 1.45f;
    bool showCrosshair = false;
    bool driveAimTarget = false;
    Entity aimTarget = kNullEntity;
    glm::vec2 crosshairOffsetPixels{0.0f};
    Core::Guid targetGuid;
    Core::Guid aimTargetGuid;
    float mouseSensitivity = 0.12f;
    float collisionRadius = 0.18f;
    float pitchDegrees = 8.0f;
    float minPitchDegrees = -65.0f;
    float maxPitchDegrees = 75.0f;
    float aimDefaultDistance = 12.0f;
    float aimMaxDistance = 250.0f;
    bool aimUsePhysicsRaycast = true;
    bool aimRotateTargetToCamera = true;
    float crosshairGap = 5.0f;
    float crosshairLength = 9.0f;
    float crosshairThickness = 2.0f;
    glm::vec4 crosshairColor{1.0f, 1.0f, 1.0f, 0.92f};
};

struct HealthComponent
{
    float maxHealth = 100.0f;
    float currentHealth = 100.0f;
    bool invulnerable = false;
};

struct SpawnPointComponent
{
    bool playerSpawn = true;
    std::string tag = "Player";
};

} // namespace Vornu::Scene
