#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/entities/Entity.h"

#include <glm/vec3.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

enum class BuoyancySamplingMode : std::uint8_t
{
    HullBounds = 0,
    CustomPoints = 1,
};

enum class BuoyancyForceModel : std::uint8_t
{
    AutoTrim = 0,
    PhysicalDisplacement = 1,
};

struct BuoyancyPoint
{
    glm::vec3 localPosition{0.0f};
    float immersionDepth = 1.0f;
    float liftWeight = 1.0f;
    bool enabled = true;

    friend bool operator==(const BuoyancyPoint&, const BuoyancyPoint&) = default;
};

inline constexpr std::size_t kMaxBuoyancyPoints = 32;

struct BuoyancyComponent
{
    bool enabled = true;
    bool simulateInEditMode = false;
    BuoyancySamplingMode samplingMode = BuoyancySamplingMode::HullBounds;
    bool autoFitCollider = true;
    Entity waterBody = kNullEntity;
    Core::Guid waterBodyGuid;
    glm::vec3 localCenter{0.0f};
    glm::vec3 localHalfExtents{0.5f};
    std::uint32_t samplePointCount = 8;
    BuoyancyForceModel forceModel = BuoyancyForceModel::AutoTrim;
    float fluidDensity = 1025.0f;
    float buoyancyScale = 1.0f;
    float targetSubmersion = 0.45f;
    float hullVolumeScale = 0.65f;
    float maxSubmersionDepth = 1.0f;
    float linearDrag = 1.5f;
    float angularDrag = 0.8f;
    float surfaceAlignment = 0.18f;
    bool canFlip = false;
    float uprightStiffness = 1.0f;
    float uprightDamping = 0.65f;
    bool generateWake = false;
    float wakeStrength = 0.18f;
    float wakeWidth = 1.2f;
    float wakeLifetime = 4.0f;
    float wakeSpacing = 0.65f;
    float wakeMinimumSpeed = 0.6f;
    std::uint32_t maximumWakePoints = 24;
    bool debugDraw = false;
    std::vector<BuoyancyPoint> customPoints;
};

} // namespace Vornu::Scene
