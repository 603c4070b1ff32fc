#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/core/Guid.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Scene
{

enum class VfxParameterType : std::uint8_t
{
    Float = 0,
    Color = 1,
    Vector3 = 2,
    Bool = 3,
};

enum class VfxParameterTarget : std::uint8_t
{
    EmissionRate = 0,
    StartSize = 1,
    StartSpeed = 2,
    Lifetime = 3,
    SimulationSpeed = 4,
    Color = 5,
    LightIntensity = 6,
    Gravity = 7,
    Wind = 8,
    BeamEnd = 9,
    Enabled = 10,
    Turbulence = 11,
};

enum class VfxBindingMode : std::uint8_t
{
    Multiply = 0,
    Override = 1,
};

enum class VfxEventTrigger : std::uint8_t
{
    OnSpawn = 0,
    OnDeath = 1,
    OnCollision = 2,
};

enum class VfxEventAction : std::uint8_t
{
    SpawnEffect = 0,
    SpawnParticles = 1,
    NotifyScript = 2,
};

struct VfxParameterDefinition
{
    Core::Guid id;
    std::string name;
    VfxParameterType type = VfxParameterType::Float;
    glm::vec4 defaultValue{1.0f};
    float minimum = 0.0f;
    float maximum = 10.0f;
    std::string description;
    glm::vec2 graphPosition{0.0f};

    friend bool operator==(const VfxParameterDefinition&, const VfxParameterDefinition&) = default;
};

struct VfxParameterBinding
{
    Core::Guid parameter;
    Core::Guid emitter;
    VfxParameterTarget target = VfxParameterTarget::EmissionRate;
    VfxBindingMode mode = VfxBindingMode::Multiply;

    friend bool operator==(const VfxParameterBinding&, const VfxParameterBinding&) = default;
};

struct VfxEventDefinition
{
    Core::Guid id;
    std::string name;
    Core::Guid emitter;
    VfxEventTrigger trigger = VfxEventTrigger::OnDeath;
    VfxEventAction action = VfxEventAction::SpawnEffect;
    Assets::AssetId effect = 0;
    Core::Guid targetEmitter;
    std::uint32_t count = 8;
    float probability = 1.0f;
    float maxPerSecond = 30.0f;
    glm::vec2 graphPosition{0.0f};

    friend bool operator==(const VfxEventDefinition&, const VfxEventDefinition&) = default;
};

struct VfxParameterValue
{
    std::string name;
    glm::vec4 value{0.0f};

    friend bool operator==(const VfxParameterValue&, const VfxParameterValue&) = default;
};

struct VfxGraphNodeLayout
{
    Core::Guid emitter;
    glm::vec2 position{0.0f};

    friend bool operator==(const VfxGraphNodeLayout&, const VfxGraphNodeLayout&) = default;
};

struct VfxEffectDefinitionComponent
{
    std::string description;
    std::string tags;
    glm::vec2 effectNodePosition{640.0f, 0.0f};
    std::vector<VfxParameterDefinition> parameters;
    std::vector<VfxParameterBinding> bindings;
    std::vector<VfxEventDefinition> events;
    std::vector<VfxGraphNodeLayout> layout;
};

struct VfxEffectComponent
{
    Assets::AssetId effect = 0;
    bool autoPlay = true;
    bool loop = false;
    float intensity = 1.0f;
    glm::vec4 tint{1.0f};
    float sizeScale = 1.0f;
    float speedScale = 1.0f;
    std::vector<VfxParameterValue> parameters;
};

/// Tag of an emitter of a playing effect.
struct VfxEmitterBaseline
{
};

} // namespace Vornu::Scene
