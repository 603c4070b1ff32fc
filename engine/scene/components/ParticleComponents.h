#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/core/Guid.h"
#include "engine/scene/components/Curves.h"
#include "engine/scene/components/RenderingComponents.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

enum class ParticleEmitterShape : std::uint8_t
{
    Point = 0,
    Sphere = 1,
    Box = 2,
    Cone = 3,
    Circle = 4,
    Line = 5,
    Cylinder = 6,
    MeshSurface = 7,
    MeshVolume = 8,
};

enum class ParticleSimulationSpace : std::uint8_t
{
    Local = 0,
    World = 1,
};

enum class ParticleSimulationBackend : std::uint8_t
{
    Cpu = 0,
    Gpu = 1,
};

enum class ParticleFlipbookPlayback : std::uint8_t
{
    OverLifetime = 0,
    Loop = 1,
    PingPong = 2,
};

enum class ParticleCollisionShape : std::uint8_t
{
    None = 0,
    Plane = 1,
    Sphere = 2,
    SceneDepth = 3,
};

enum class ParticleRenderMode : std::uint8_t
{
    Billboard = 0,
    Ribbon = 1,
    Stretched = 2,
    AxisLocked = 3,
    Mesh = 4,
    Beam = 5,
};

struct ParticleEmitterComponent
{
    bool enabled = true;
    bool playing = true;
    bool loop = true;
    bool visible = true;
    float duration = 5.0f;
    float emissionRate = 40.0f;
    std::uint32_t maxParticles = 512;
    Assets::AssetId material = 0;
    glm::vec4 startColor{1.0f, 0.7f, 0.25f, 1.0f};
    glm::vec4 endColor{1.0f, 0.1f, 0.02f, 0.0f};
    bool playOnAwake = true;
    bool prewarm = false;
    bool allowOcclusion = true;
    bool debugDraw = false;
    bool followPrimaryCamera = false;
    float simulationSpeed = 1.0f;
    float startLifetimeMin = 1.0f;
    float startLifetimeMax = 1.6f;
    float startSpeedMin = 1.0f;
    float startSpeedMax = 3.0f;
    float startSizeMin = 0.08f;
    float startSizeMax = 0.18f;
    float endSizeMultiplier = 0.2f;
    float shapeRadius = 0.25f;
    float coneAngleDegrees = 18.0f;
    float drag = 0.0f;
    float maxDrawDistance = 100.0f;
    float sortBias = 0.0f;
    std::uint32_t randomSeed = 1;
    ParticleEmitterShape shape = ParticleEmitterShape::Point;
    ParticleSimulationSpace simulationSpace = ParticleSimulationSpace::Local;
    BillboardFacingMode facingMode = BillboardFacingMode::ScreenAligned;
    glm::vec3 boxExtents{1.0f};
    glm::vec3 followOffset{0.0f, -2.0f, 0.0f};
    glm::vec3 gravity{0.0f, -0.2f, 0.0f};
    ParticleSimulationBackend simulationBackend = ParticleSimulationBackend::Cpu;
    std::uint32_t flipbookColumns = 1;
    std::uint32_t flipbookRows = 1;
    std::uint32_t flipbookFrames = 0;
    float flipbookFramesPerSecond = 12.0f;
    ParticleFlipbookPlayback flipbookPlayback = ParticleFlipbookPlayback::OverLifetime;
    bool flipbookRandomStart = false;
    std::uint32_t burstCount = 0;
    float burstInterval = 0.0f;
    float emissionPerMeter = 0.0f;
    bool sortParticles = false;
    glm::vec3 wind{0.0f};
    float turbulenceStrength = 0.0f;
    float turbulenceFrequency = 1.0f;
    float turbulenceSpeed = 1.0f;
    glm::vec3 attractorOffset{0.0f};
    float attractorStrength = 0.0f;
    float attractorRadius = 1.0f;
    glm::vec3 vortexOffset{0.0f};
    glm::vec3 vortexAxis{0.0f, 1.0f, 0.0f};
    float vortexStrength = 0.0f;
    float vortexPull = 0.0f;
    float vortexRadius = 1.0f;
    float startRotationMinDegrees = 0.0f;
    float startRotationMaxDegrees = 0.0f;
    float angularVelocityMinDegrees = 0.0f;
    float angularVelocityMaxDegrees = 0.0f;
    ParticleCollisionShape collisionShape = ParticleCollisionShape::None;
    glm::vec3 collisionCenter{0.0f};
    glm::vec3 collisionNormal{0.0f, 1.0f, 0.0f};
    float collisionRadius = 1.0f;
    float collisionBounce = 0.3f;
    float collisionFriction = 0.1f;
    float collisionLifetimeLoss = 0.0f;
    float collisionDepthThickness = 0.5f;
    std::vector<CurveKey> sizeOverLifetime;
    std::vector<CurveKey> speedOverLifetime;
    std::vector<CurveKey> alphaOverLifetime;
    std::vector<GradientKey> colorOverLifetime;
    std::vector<CurveKey> velocityXOverLifetime;
    std::vector<CurveKey> velocityYOverLifetime;
    std::vector<CurveKey> velocityZOverLifetime;
    Core::Guid subEmitterGuid;
    std::uint32_t deathSpawnCount = 0;
    std::uint32_t collisionSpawnCount = 0;
    float subEmitterInheritVelocity = 0.0f;
    ParticleRenderMode renderMode = ParticleRenderMode::Billboard;
    float ribbonMaxSegment = 2.0f;
    float stretchFactor = 0.05f;
    glm::vec3 lockedAxis{0.0f, 1.0f, 0.0f};
    Assets::AssetId renderMesh = 0;
    Core::Guid beamTargetGuid;
    glm::vec3 beamEndOffset{0.0f, 0.0f, 5.0f};
    std::uint32_t beamSegments = 32;
    float beamNoiseAmplitude = 0.0f;
    float beamNoiseFrequency = 2.0f;
    bool lightsEnabled = false;
    bool lightUseParticleColor = true;
    bool lightFadeWithAlpha = true;
    bool lightScaleWithSize = false;
    float lightRatio = 1.0f;
    std::uint32_t lightMaxCount = 8;
    float lightRange = 2.0f;
    float lightIntensity = 4.0f;
    glm::vec3 lightColor{1.0f, 0.7f, 0.35f};
    Assets::AssetId vectorField = 0;
    glm::vec3 vectorFieldOffset{0.0f};
    glm::vec3 vectorFieldSize{10.0f};
    float vectorFieldStrength = 1.0f;
    float vectorFieldFollow = 0.0f;
    Assets::AssetId spawnMesh = 0;
    glm::vec2 customAttributeMin{0.0f};
    glm::vec2 customAttributeMax{0.0f};
    std::vector<CurveKey> custom1OverLifetime;
    std::vector<CurveKey> custom2OverLifetime;

    std::uint32_t runtimeSeed = 1; // where the random sequence of the running emitter stands
};

} // namespace Vornu::Scene
