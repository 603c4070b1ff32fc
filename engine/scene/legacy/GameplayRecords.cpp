#include "engine/scene/legacy/Records.h"

#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

// Fields that name an entity hold its place in the file; the handles do so until the scene stands.

void ReadCharacter(RecordLine& line, RecordContext& context)
{
    auto character = BeginComponent<CharacterControllerComponent>(
        context, "Duplicate CharacterControllerComponent record.");
    line.Read(character.enabled, character.height, character.radius, character.walkSpeed,
              character.runMultiplier, character.jumpSpeed, character.gravity, character.maxSlopeAngleDegrees,
              character.groundCheckDistance, character.syncVisualTransform, character.visualRoot,
              character.visualLocalPosition, character.visualLocalRotation, character.visualLocalScale,
              character.rotateWithMouse, character.requireRightMouseForMouseLook, character.mouseSensitivity,
              character.jumpImpulseDelaySeconds, character.coyoteTimeSeconds, character.jumpBufferSeconds,
              character.airControl, GuidField{character.visualRootGuid});
    bool pushes = false;
    if (line.Read(pushes, character.pushForce, character.pushMaxMass, character.pushMinClosingSpeed,
                  character.pushGameplayLayerMask))
    {
        character.pushRigidBodies = pushes; // only with all of its settings
    }
    context.entity.components.Set(character);
}

void ReadFirstPersonCamera(RecordLine& line, RecordContext& context)
{
    auto camera = BeginComponent<FirstPersonCameraControllerComponent>(
        context, "Duplicate FirstPersonCameraControllerComponent record.");
    line.Read(camera.enabled, camera.requireRightMouse, camera.mouseSensitivity, camera.eyeHeight,
              camera.minPitchDegrees, camera.maxPitchDegrees);
    context.entity.components.Set(camera);
}

void ReadThirdPersonCamera(RecordLine& line, RecordContext& context)
{
    auto camera = BeginComponent<ThirdPersonCameraControllerComponent>(
        context, "Duplicate ThirdPersonCameraControllerComponent record.");
    line.Read(camera.enabled, camera.requireRightMouse, camera.target, camera.distance, camera.height,
              camera.mouseSensitivity, camera.collisionRadius, camera.pitchDegrees, camera.minPitchDegrees,
              camera.maxPitchDegrees, GuidField{camera.targetGuid}, camera.showCrosshair,
              camera.driveAimTarget, camera.aimTarget, GuidField{camera.aimTargetGuid},
              camera.aimDefaultDistance, camera.aimMaxDistance, camera.aimUsePhysicsRaycast,
              camera.aimRotateTargetToCamera, camera.crosshairGap, camera.crosshairLength,
              camera.crosshairThickness, camera.crosshairColor, camera.crosshairOffsetPixels);
    context.entity.components.Set(camera);
}

void ReadHealth(RecordLine& line, RecordContext& context)
{
    auto health = BeginComponent<HealthComponent>(context, "Duplicate HealthComponent record.");
    line.Read(health.maxHealth, health.currentHealth, health.invulnerable);
    context.entity.components.Set(health);
}

void ReadSpawnPoint(RecordLine& line, RecordContext& context)
{
    auto spawn = BeginComponent<SpawnPointComponent>(context, "Duplicate SpawnPointComponent record.");
    line.Read(spawn.playerSpawn, spawn.tag);
    context.entity.components.Set(std::move(spawn));
}

void ReadStreamingSource(RecordLine& line, RecordContext& context)
{
    auto source = BeginComponent<WorldStreamingSourceComponent>(
        context, "Duplicate WorldStreamingSourceComponent record.");
    line.Read(source.enabled, source.radius);
    context.entity.components.Set(source);
}

void ReadChunk(RecordLine& line, RecordContext& context)
{
    auto chunk = BeginComponent<WorldChunkComponent>(context, "Duplicate WorldChunkComponent record.");
    line.Read(chunk.chunkId, chunk.center, Dropped<glm::vec3>(), chunk.loadDistance, chunk.unloadDistance,
              Dropped<std::int32_t>(), chunk.loaded, chunk.runtimeLoaded, chunk.affectRendering,
              chunk.affectLogic);
    context.entity.components.Set(std::move(chunk));
}

constexpr std::array kRecords = {
    EntityRecord{"character_controller", &ReadCharacter},
    EntityRecord{"first_person_camera_controller", &ReadFirstPersonCamera},
    EntityRecord{"third_person_camera_controller", &ReadThirdPersonCamera},
    EntityRecord{"health", &ReadHealth},
    EntityRecord{"spawn_point", &ReadSpawnPoint},
    EntityRecord{"world_streaming_source", &ReadStreamingSource},
    EntityRecord{"world_chunk", &ReadChunk},
};

} // namespace

std::span<const EntityRecord> GameplayRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
