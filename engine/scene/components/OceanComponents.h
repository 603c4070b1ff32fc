#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

#include <array>
#include <cstdint>

namespace Vornu::Scene
{

enum class OceanBodyMode : std::uint8_t
{
    Bounded = 0,
    Infinite = 1,
};

enum class OceanPreset : std::uint8_t
{
    Calm = 0,
    Coastal = 1,
    OpenSea = 2,
    Storm = 3,
    Custom = 4,
};

enum class OceanQuality : std::uint8_t
{
    Low = 0,
    Medium = 1,
    High = 2,
    Ultra = 3,
};

struct OceanWaveSettings
{
    glm::vec2 direction{1.0f, 0.0f};
    float amplitude = 0.35f;
    float wavelength = 28.0f;

    friend bool operator==(const OceanWaveSettings&, const OceanWaveSettings&) = default;
};

struct OceanComponent
{
    bool enabled = true;
    bool visible = true;
    OceanBodyMode bodyMode = OceanBodyMode::Bounded;
    glm::vec2 bodySize{2048.0f};
    float volumeDepth = 500.0f;
    OceanPreset preset = OceanPreset::Coastal;
    glm::vec2 windDirection{1.0f, 0.22f};
    float windSpeed = 9.0f;
    float fetch = 12000.0f;
    float waveHeight = 0.48f;
    float swell = 0.55f;
    float choppiness = 0.52f;
    float directionalSpread = 0.58f;
    float shortWaveStrength = 0.3f;
    float shortWaveScale = 2.2f;
    float animationSpeed = 1.0f;
    glm::vec4 shallowColor{0.026f, 0.18f, 0.2f, 1.0f};
    glm::vec4 deepColor{0.002f, 0.022f, 0.04f, 1.0f};
    glm::vec4 foamColor{0.92f, 0.97f, 1.0f, 1.0f};
    float reflectivity = 0.68f;
    float roughness = 0.12f;
    float refractionStrength = 0.005f;
    float environmentReflectionIntensity = 0.65f;
    float environmentReflectionBlur = 0.18f;
    float screenSpaceReflectionIntensity = 0.85f;
    float sunSpecularIntensity = 0.7f;
    float reflectionHighlightLimit = 6.0f;
    float foamIntensity = 0.44f;
    float shoreFoamIntensity = 1.0f;
    float shoreFoamDistance = 2.5f;
    glm::vec4 volumeColor{0.018f, 0.18f, 0.22f, 1.0f};
    float underwaterVisibility = 55.0f;
    float underwaterTintStrength = 0.58f;
    float underwaterDistortionStrength = 0.006f;
    float causticsIntensity = 0.3f;
    float causticsScale = 0.72f;
    float causticsSpeed = 0.55f;
    glm::vec4 causticsColor{0.72f, 0.94f, 1.0f, 1.0f};
    float causticsSharpness = 0.72f;
    float causticsDepthFade = 18.0f;
    float godRaysIntensity = 0.18f;
    OceanQuality quality = OceanQuality::High;
    float renderDistance = 1400.0f;
    float fresnelPower = 5.0f;
    float normalStrength = 0.72f;
    float foamThreshold = 0.74f;
    float foamScale = 1.8f;
    float underwaterBrightness = 0.82f;
    float underwaterContrast = 0.9f;
    float absorptionStrength = 0.46f;
    float underwaterDistortionScale = 9.0f;
    float underwaterDistortionSpeed = 0.45f;
    float waterlineSoftness = 0.35f;
    float godRaysScale = 0.045f;
    bool causticsOnSurface = false;
    std::array<OceanWaveSettings, 32> spectrum;

    // Run-time state.
    Assets::AssetId generatedMesh = 0;
};

} // namespace Vornu::Scene
