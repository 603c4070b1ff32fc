#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Scene
{

enum class BlackboardValueType : std::uint8_t
{
    Bool = 0,
    Float = 1,
    Vec3 = 2,
    String = 3,
};

struct BlackboardValue
{
    std::string key;
    BlackboardValueType type = BlackboardValueType::Bool;
    bool boolValue = false;
    float floatValue = 0.0f;
    glm::vec3 vec3Value{0.0f};
    std::string stringValue;

    friend bool operator==(const BlackboardValue&, const BlackboardValue&) = default;
};

struct BlackboardComponent
{
    std::vector<BlackboardValue> values;
};

struct AIControllerComponent
{
    bool enabled = true;
    Assets::AssetId behaviorTree = 0;
    bool restartOnTreeChange = true;
    std::string debugState;
};

struct AIPerceptionComponent
{
    bool enabled = true;
    float sightRange = 20.0f;
    float sightAngleDegrees = 120.0f;
    float eyeHeight = 1.6f;
    bool requireLineOfSight = true;
    float hearingRange = 15.0f;
    float updateIntervalSeconds = 0.2f;
    float memorySeconds = 3.0f;
    std::uint32_t team = 0;
    std::string targetKey = "Target";
};

struct AIPerceivableComponent
{
    bool enabled = true;
    std::uint32_t team = 0;
    float targetHeight = 1.0f;
};

} // namespace Vornu::Scene
