#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <array>
#include <string>

namespace Vornu::Scene::Legacy
{
namespace
{

constexpr char kDuplicate[] = "Duplicate ocean component.";

/// Before `ocean_v6` the pattern of the caustics was counted in another unit.
void RescaleCaustics(OceanComponent& ocean)
{
    ocean.causticsScale = std::clamp(ocean.causticsScale * 3.25f, 0.001f, 10.0f);
}

OceanQuality QualityOfGrid(std::uint32_t resolution)
{
    if (resolution < 65)
    {
        return OceanQuality::Low;
    }
    if (resolution <= 128)
    {
        return OceanQuality::Medium;
    }
    return resolution <= 256 ? OceanQuality::High : OceanQuality::Ultra;
}

/// The oldest form. A line that is cut short gives no ocean.
void ReadOcean(RecordLine& line, RecordContext& context)
{
    auto ocean = BeginComponent<OceanComponent>(context, kDuplicate);
    std::uint32_t resolution = 0;
    float size = 0.0f;
    float detail = 0.0f;
    const Dropped<float> dropped;
    if (!line.Read(ocean.enabled, ocean.visible, Dropped<std::int32_t>(), resolution, size, dropped, dropped,
                   ocean.renderDistance, dropped, ocean.waveHeight, ocean.animationSpeed, detail,
                   ocean.foamIntensity, dropped, dropped, ocean.shallowColor, ocean.deepColor,
                   ocean.foamColor))
    {
        return;
    }
    ocean.preset = OceanPreset::Custom;
    ocean.bodyMode = OceanBodyMode::Bounded;
    ocean.quality = QualityOfGrid(resolution);
    ocean.bodySize = glm::vec2(std::max(size, 1.0f));
    ocean.renderDistance = std::max(ocean.renderDistance, 8.0f);
    ocean.animationSpeed = std::max(ocean.animationSpeed, 0.0f);
    ocean.shortWaveStrength = std::clamp(detail * 8.0f, 0.0f, 2.0f);
    ocean.shortWaveScale = std::max(detail * 30.0f, 0.1f);
    RescaleCaustics(ocean);
    context.entity.components.Set(ocean);
}

void ReadOceanV2(RecordLine& line, RecordContext& context)
{
    auto ocean = BeginComponent<OceanComponent>(context, kDuplicate);
    float detail = 0.0f;
    float extent = 0.0f;
    float foamScale = 0.0f;
    float murkiness = 0.0f;
    const Dropped<float> dropped;
    line.Read(ocean.enabled, ocean.visible, Dropped<std::int32_t>(),
              ClampedField{ocean.preset, OceanPreset::Custom},
              ClampedField{ocean.quality, OceanQuality::Ultra}, ocean.windDirection, ocean.windSpeed,
              ocean.fetch, ocean.waveHeight, ocean.swell, ocean.choppiness, detail, ocean.animationSpeed,
              extent, dropped, dropped, dropped, ocean.shallowColor, ocean.deepColor, ocean.foamColor,
              ocean.reflectivity, ocean.roughness, ocean.fresnelPower, ocean.refractionStrength,
              ocean.normalStrength, ocean.foamIntensity, ocean.foamThreshold, ocean.shoreFoamIntensity,
              ocean.shoreFoamDistance, foamScale, dropped, Dropped<std::int32_t>(), Dropped<std::string>(),
              ocean.volumeColor, murkiness, ocean.absorptionStrength, ocean.causticsIntensity,
              ocean.causticsScale, ocean.causticsSpeed, ocean.godRaysIntensity, ocean.godRaysScale,
              ocean.environmentReflectionIntensity, ocean.causticsOnSurface);
    RequireFields(line, context, "record");
    ocean.bodyMode = OceanBodyMode::Bounded;
    ocean.shortWaveStrength = std::clamp(detail, 0.0f, 2.0f);
    ocean.shortWaveScale = std::max(detail * 4.0f + 0.5f, 0.1f);
    ocean.bodySize = glm::vec2(std::max(extent, 1.0f));
    ocean.renderDistance = std::max(extent * 0.65f, 8.0f);
    ocean.shoreFoamDistance = std::max(ocean.shoreFoamDistance, 0.05f);
    ocean.foamScale = std::max(foamScale * 10.0f, 0.5f);
    ocean.underwaterVisibility = 1.0f / std::max(murkiness, 0.0001f);
    RescaleCaustics(ocean);
    context.entity.components.Set(ocean);
}

template<int version>
void ReadHead(RecordLine& line, OceanComponent& ocean)
{
    line.Read(ocean.enabled, ocean.visible);
    if constexpr (version == 3)
    {
        line.Read(Dropped<std::int32_t>());
    }
    line.Read(ClampedField{ocean.preset, OceanPreset::Custom},
              ClampedField{ocean.quality, OceanQuality::Ultra},
              ClampedField{ocean.bodyMode, OceanBodyMode::Infinite}, ocean.bodySize, ocean.volumeDepth,
              ocean.renderDistance);
    if constexpr (version == 3)
    {
        line.Read(Dropped<float>());
    }
}

void ReadMain(RecordLine& line, OceanComponent& ocean)
{
    line.Read(ocean.windDirection, ocean.windSpeed, ocean.fetch, ocean.waveHeight, ocean.swell,
              ocean.choppiness, ocean.directionalSpread, ocean.shortWaveStrength, ocean.shortWaveScale,
              ocean.animationSpeed, ocean.shallowColor, ocean.deepColor, ocean.foamColor, ocean.reflectivity,
              ocean.roughness, ocean.fresnelPower, ocean.refractionStrength, ocean.normalStrength,
              ocean.foamIntensity, ocean.foamThreshold, ocean.shoreFoamIntensity, ocean.shoreFoamDistance,
              ocean.foamScale, ocean.volumeColor, ocean.underwaterVisibility, ocean.underwaterTintStrength,
              ocean.underwaterBrightness, ocean.underwaterContrast, ocean.absorptionStrength,
              ocean.underwaterDistortionStrength, ocean.underwaterDistortionScale,
              ocean.underwaterDistortionSpeed, ocean.waterlineSoftness, ocean.causticsIntensity,
              ocean.causticsScale, ocean.causticsSpeed, ocean.godRaysIntensity, ocean.godRaysScale,
              ocean.environmentReflectionIntensity);
}

template<int version>
void ReadLaterOcean(RecordLine& line, RecordContext& context)
{
    auto ocean = BeginComponent<OceanComponent>(context, kDuplicate);
    ReadHead<version>(line, ocean);
    ReadMain(line, ocean);
    RequireFields(line, context, "record");
    if constexpr (version >= 5)
    {
        line.Read(ocean.environmentReflectionBlur, ocean.screenSpaceReflectionIntensity,
                  ocean.sunSpecularIntensity, ocean.reflectionHighlightLimit);
        RequireFields(line, context, "reflection settings");
    }
    if constexpr (version >= 6)
    {
        line.Read(ocean.causticsColor, ocean.causticsSharpness, ocean.causticsDepthFade);
        RequireFields(line, context, "caustics settings");
    }
    line.Read(ocean.causticsOnSurface);
    RequireFields(line, context, "record");
    if constexpr (version < 6)
    {
        RescaleCaustics(ocean);
    }
    context.entity.components.Set(ocean);
}

constexpr std::array kRecords = {
    EntityRecord{"ocean", &ReadOcean},
    EntityRecord{"ocean_v2", &ReadOceanV2},
    EntityRecord{"ocean_v3", &ReadLaterOcean<3>},
    EntityRecord{"ocean_v4", &ReadLaterOcean<4>},
    EntityRecord{"ocean_v5", &ReadLaterOcean<5>},
    EntityRecord{"ocean_v6", &ReadLaterOcean<6>},
};

} // namespace

std::span<const EntityRecord> OceanRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
