#include "engine/scene/components/Registration.h"

#include "engine/scene/components/GameplayComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterGameplayComponents()
{
    RegisterComponent<RotatorComponent>("RotatorComponent", "Rotator", "Gameplay", kAuthored)
        .Description("Rotates the entity continuously at a fixed rate.")
        .Field("degreesPerSecond", &RotatorComponent::degreesPerSecond,
               Label("Degrees Per Second").With(PropertyFlags::Degrees));

    RegisterComponent<GameplayLayerComponent>("GameplayLayerComponent", "Gameplay Layer", "Gameplay",
                                              kAuthored)
        .Description("Assigns gameplay/physics layer metadata to the entity.")
        .Field("layer", &GameplayLayerComponent::layer, Label("Layer"));

    RegisterComponent<CharacterControllerComponent>("CharacterControllerComponent", "Character Controller",
                                                    "Gameplay", kAuthored)
        .Description("Runtime capsule controller for player or NPC movement.")
        .Field("enabled", &CharacterControllerComponent::enabled, Label("Enabled").Group("General"))
        .Field("height", &CharacterControllerComponent::height,
               Label("Height").Range(0.1f, 20).Group("Shape"))
        .Field("radius", &CharacterControllerComponent::radius,
               Label("Radius").Range(0.01f, 10).Group("Shape"))
        .Field("walkSpeed", &CharacterControllerComponent::walkSpeed,
               Label("Walk Speed").Range(0, 100).Group("Movement"))
        .Field("runMultiplier", &CharacterControllerComponent::runMultiplier,
               Label("Run Multiplier").Range(0, 20).Group("Movement"))
        .Field("jumpSpeed", &CharacterControllerComponent::jumpSpeed,
               Label("Jump Speed").Range(0, 100).Group("Jump Tuning"))
        .Field("jumpImpulseDelaySeconds", &CharacterControllerComponent::jumpImpulseDelaySeconds,
               Label("Jump Impulse Delay").Range(0, 5).Group("Jump Tuning"))
        .Field("coyoteTimeSeconds", &CharacterControllerComponent::coyoteTimeSeconds,
               Label("Coyote Time").Range(0, 5).Group("Jump Tuning"))
        .Field("jumpBufferSeconds", &CharacterControllerComponent::jumpBufferSeconds,
               Label("Jump Buffer").Range(0, 5).Group("Jump Tuning"))
        .Field("gravity", &CharacterControllerComponent::gravity,
               Label("Gravity").Range(0, 1000).Group("Movement"))
        .Field("pushRigidBodies", &CharacterControllerComponent::pushRigidBodies,
               Label("Push Rigid Bodies").Group("Physical Interaction"))
        .Field("pushForce", &CharacterControllerComponent::pushForce,
               Label("Push Force").Range(0, 10000).Group("Physical Interaction"))
        .Field("pushMaxMass", &CharacterControllerComponent::pushMaxMass,
               Label("Push Max Mass").Range(0, 100000).Group("Physical Interaction"))
        .Field("pushMinClosingSpeed", &CharacterControllerComponent::pushMinClosingSpeed,
               Label("Push Min Closing Speed").Range(0, 100).Group("Physical Interaction"))
        .Field("pushGameplayLayerMask", &CharacterControllerComponent::pushGameplayLayerMask,
               Label("Push Layer Mask").Group("Physical Interaction"))
        .Field("rotateWithMouse", &CharacterControllerComponent::rotateWithMouse,
               Label("Rotate With Mouse").Group("Mouse Look"))
        .Field("requireRightMouseForMouseLook", &CharacterControllerComponent::requireRightMouseForMouseLook,
               Label("Require Right Mouse").Group("Mouse Look"))
        .Field("mouseSensitivity", &CharacterControllerComponent::mouseSensitivity,
               Label("Mouse Sensitivity").Range(0, 10).Group("Mouse Look"))
        .Field("syncVisualTransform", &CharacterControllerComponent::syncVisualTransform,
               Label("Sync Visual Transform").Group("Visual"))
        .Field("visualRoot", &CharacterControllerComponent::visualRoot,
               Label("Visual Root")
                   .Kind(PropertyKind::EntityHandle)
                   .Group("Visual")
                   .With(PropertyFlags::Runtime))
        .Field("maxSlopeAngleDegrees", &CharacterControllerComponent::maxSlopeAngleDegrees,
               Label("Max Slope Angle Degrees"))
        .Field("groundCheckDistance", &CharacterControllerComponent::groundCheckDistance,
               Label("Ground Check Distance"))
        .Field("airControl", &CharacterControllerComponent::airControl, Label("Air Control"))
        .Field("groundedGraceSeconds", &CharacterControllerComponent::groundedGraceSeconds,
               Label("Grounded Grace").Range(0, 1).Group("Movement"))
        .Field("maxStepHeight", &CharacterControllerComponent::maxStepHeight,
               Label("Max Step Height").Range(0, 5).Group("Shape"))
        .Field("crouchHeight", &CharacterControllerComponent::crouchHeight,
               Label("Crouch Height").Range(0.1f, 20).Group("Shape"))
        .Field("crouchSpeedMultiplier", &CharacterControllerComponent::crouchSpeedMultiplier,
               Label("Crouch Speed Multiplier").Range(0, 1).Group("Movement"))
        .Field("mass", &CharacterControllerComponent::mass,
               Label("Mass").Range(1, 10000).Group("Physical Interaction"))
        .Field("collisionLayer", &CharacterControllerComponent::collisionLayer,
               Label("Collision Layer").Group("Physical Interaction"))
        .Field("visualRootGuid", &CharacterControllerComponent::visualRootGuid,
               Label("Visual Root Guid").With(PropertyFlags::LinkGuid))
        .Field("visualLocalPosition", &CharacterControllerComponent::visualLocalPosition,
               Label("Visual Local Position"))
        .Field("visualLocalRotation", &CharacterControllerComponent::visualLocalRotation,
               Label("Visual Local Rotation"))
        .Field("visualLocalScale", &CharacterControllerComponent::visualLocalScale,
               Label("Visual Local Scale"))
        .Field("crouchRequested", &CharacterControllerComponent::crouchRequested,
               Label("Crouch Requested").Group("Movement").With(PropertyFlags::Runtime))
        .Field("crouched", &CharacterControllerComponent::crouched,
               Label("Crouched").Group("Movement").With(PropertyFlags::ReadOnly).With(PropertyFlags::Runtime))
        .AddTransient(&CharacterControllerComponent::scriptMotion)
        .AddTransient(&CharacterControllerComponent::scriptMoveDirection)
        .AddTransient(&CharacterControllerComponent::grounded)
        .AddTransient(&CharacterControllerComponent::jumpPending)
        .AddTransient(&CharacterControllerComponent::jumpDelayTimer)
        .AddTransient(&CharacterControllerComponent::jumpBufferTimer)
        .AddTransient(&CharacterControllerComponent::groundedGraceTimer)
        .AddTransient(&CharacterControllerComponent::velocity)
        .AddTransient(&CharacterControllerComponent::groundNormal)
        .AddTransient(&CharacterControllerComponent::groundVelocity)
        .AddTransient(&CharacterControllerComponent::groundEntity)
        .AddTransient(&CharacterControllerComponent::groundContact)
        .AddTransient(&CharacterControllerComponent::groundContactLostSeconds)
        .AddTransient(&CharacterControllerComponent::achievedVelocity)
        .EntityLink(&CharacterControllerComponent::visualRoot, &CharacterControllerComponent::visualRootGuid,
                    true)
        .SaveGame("velocity", &CharacterControllerComponent::velocity)
        .SaveGame("grounded", &CharacterControllerComponent::grounded)
        .SaveGame("jumpPending", &CharacterControllerComponent::jumpPending)
        .SaveGame("jumpDelayTimer", &CharacterControllerComponent::jumpDelayTimer)
        .SaveGame("jumpBufferTimer", &CharacterControllerComponent::jumpBufferTimer)
        .SaveGame("groundedGraceTimer", &CharacterControllerComponent::groundedGraceTimer)
        .SaveGame("crouchRequested", &CharacterControllerComponent::crouchRequested)
        .SaveGame("crouched", &CharacterControllerComponent::crouched)
        .SaveGame("scriptMotion", &CharacterControllerComponent::scriptMotion)
        .SaveGame("scriptMoveDirection", &CharacterControllerComponent::scriptMoveDirection)
        .SaveGame("groundNormal", &CharacterControllerComponent::groundNormal)
        .SaveGame("groundVelocity", &CharacterControllerComponent::groundVelocity)
        .SaveGameEntity("groundEntity", &CharacterControllerComponent::groundEntity)
        .SaveGame("groundContact", &CharacterControllerComponent::groundContact)
        .SaveGame("groundContactLostSeconds", &CharacterControllerComponent::groundContactLostSeconds)
        .SaveGame("achievedVelocity", &CharacterControllerComponent::achievedVelocity);

    RegisterComponent<FirstPersonCameraControllerComponent>(
        "FirstPersonCameraControllerComponent", "First Person Camera Controller", "Gameplay", kAuthored)
        .Description("Adds mouse-look movement for first-person camera setups.")
        .Field("enabled", &FirstPersonCameraControllerComponent::enabled, Label("Enabled"))
        .Field("requireRightMouse", &FirstPersonCameraControllerComponent::requireRightMouse,
               Label("Require Right Mouse"))
        .Field("mouseSensitivity", &FirstPersonCameraControllerComponent::mouseSensitivity,
               Label("Mouse Sensitivity").Range(0, 10))
        .Field("eyeHeight", &FirstPersonCameraControllerComponent::eyeHeight, Label("Eye Height"))
        .Field("minPitchDegrees", &FirstPersonCameraControllerComponent::minPitchDegrees,
               Label("Min Pitch Degrees"))
        .Field("maxPitchDegrees", &FirstPersonCameraControllerComponent::maxPitchDegrees,
               Label("Max Pitch Degrees"));

    RegisterComponent<ThirdPersonCameraControllerComponent>(
        "ThirdPersonCameraControllerComponent", "Third Person Camera Controller", "Gameplay", kAuthored)
        .Description("Adds orbit/follow camera behavior around a target entity.")
        .Field("enabled", &ThirdPersonCameraControllerComponent::enabled, Label("Enabled"))
        .Field("requireRightMouse", &ThirdPersonCameraControllerComponent::requireRightMouse,
               Label("Require Right Mouse").Group("Mouse Look"))
        .Field("target", &ThirdPersonCameraControllerComponent::target,
               Label("Target").Kind(PropertyKind::EntityHandle).With(PropertyFlags::Runtime))
        .Field("distance", &ThirdPersonCameraControllerComponent::distance,
               Label("Distance").Range(0, 1000).Group("Camera"))
        .Field("shoulderOffset", &ThirdPersonCameraControllerComponent::shoulderOffset,
               Label("Shoulder Offset").Range(-10, 10).Group("Camera"))
        .Field("height", &ThirdPersonCameraControllerComponent::height,
               Label("Height").Range(-1000, 1000).Group("Camera"))
        .Field("showCrosshair", &ThirdPersonCameraControllerComponent::showCrosshair,
               Label("Show Crosshair").Group("Crosshair Aim"))
        .Field("driveAimTarget", &ThirdPersonCameraControllerComponent::driveAimTarget,
               Label("Drive Aim Target").Group("Crosshair Aim"))
        .Field("aimTarget", &ThirdPersonCameraControllerComponent::aimTarget,
               Label("Aim Target")
                   .Kind(PropertyKind::EntityHandle)
                   .Group("Crosshair Aim")
                   .With(PropertyFlags::Runtime))
        .Field("crosshairOffsetPixels", &ThirdPersonCameraControllerComponent::crosshairOffsetPixels,
               Label("Crosshair Offset").Group("Crosshair Aim"))
        .Field("targetGuid", &ThirdPersonCameraControllerComponent::targetGuid,
               Label("Target Guid").With(PropertyFlags::LinkGuid))
        .Field("aimTargetGuid", &ThirdPersonCameraControllerComponent::aimTargetGuid,
               Label("Aim Target Guid").With(PropertyFlags::LinkGuid))
        .Field("mouseSensitivity", &ThirdPersonCameraControllerComponent::mouseSensitivity,
               Label("Mouse Sensitivity"))
        .Field("collisionRadius", &ThirdPersonCameraControllerComponent::collisionRadius,
               Label("Collision Radius"))
        .Field("pitchDegrees", &ThirdPersonCameraControllerComponent::pitchDegrees, Label("Pitch Degrees"))
        .Field("minPitchDegrees", &ThirdPersonCameraControllerComponent::minPitchDegrees,
               Label("Min Pitch Degrees"))
        .Field("maxPitchDegrees", &ThirdPersonCameraControllerComponent::maxPitchDegrees,
               Label("Max Pitch Degrees"))
        .Field("aimDefaultDistance", &ThirdPersonCameraControllerComponent::aimDefaultDistance,
               Label("Aim Default Distance"))
        .Field("aimMaxDistance", &ThirdPersonCameraControllerComponent::aimMaxDistance,
               Label("Aim Max Distance"))
        .Field("aimUsePhysicsRaycast", &ThirdPersonCameraControllerComponent::aimUsePhysicsRaycast,
               Label("Aim Use Physics Raycast"))
        .Field("aimRotateTargetToCamera", &ThirdPersonCameraControllerComponent::aimRotateTargetToCamera,
               Label("Aim Rotate Target To Camera"))
        .Field("crosshairGap", &ThirdPersonCameraControllerComponent::crosshairGap, Label("Crosshair Gap"))
        .Field("crosshairLength", &ThirdPersonCameraControllerComponent::crosshairLength,
               Label("Crosshair Length"))
        .Field("crosshairThickness", &ThirdPersonCameraControllerComponent::crosshairThickness,
               Label("Crosshair Thickness"))
        .Field("crosshairColor", &ThirdPersonCameraControllerComponent::crosshairColor,
               Label("Crosshair Color"))
        .EntityLink(&ThirdPersonCameraControllerComponent::target,
                    &ThirdPersonCameraControllerComponent::targetGuid, true)
        .EntityLink(&ThirdPersonCameraControllerComponent::aimTarget,
                    &ThirdPersonCameraControllerComponent::aimTargetGuid, true);

    RegisterComponent<HealthComponent>("HealthComponent", "Health", "Gameplay", kAuthored)
        .Description("Stores hit points and invulnerability state.")
        .Field("maxHealth", &HealthComponent::maxHealth, Label("Max Health").Range(0, 100000))
        .Field("currentHealth", &HealthComponent::currentHealth, Label("Current Health").Range(0, 100000))
        .Field("invulnerable", &HealthComponent::invulnerable, Label("Invulnerable"))
        .Replicated("maxHealth", ReplicatedFieldSettings().Quantized(0.01f, 0, 100000))
        .Replicated("currentHealth", ReplicatedFieldSettings().Quantized(0.01f, 0, 100000))
        .Replicated("invulnerable");

    RegisterComponent<SpawnPointComponent>("SpawnPointComponent", "Spawn Point", "Gameplay", kAuthored)
        .Description("Marks this entity as a spawn location.")
        .Field("playerSpawn", &SpawnPointComponent::playerSpawn, Label("Player Spawn"))
        .Field("tag", &SpawnPointComponent::tag, Label("Tag"));
}

} // namespace Vornu::Scene
