#include "engine/scene/legacy/Records.h"

#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadDirectionalLight(RecordLine& line, RecordContext& context)
{
    auto light =
        BeginComponent<DirectionalLightComponent>(context, "Duplicate DirectionalLightComponent record.");
    line.Read(light.color, light.intensity, light.enabled, light.castsShadows, light.shadowBias,
              light.shadowNormalBias, light.shadowSlopeBias, light.shadowStrength, light.shadowPcfRadius,
              light.shadowResolution, light.shadowCascadeCount, light.shadowMaxDistance,
              light.shadowCascadeLambda, light.showCascadeDebug);
    context.entity.components.Set(light);
}

void ReadPointLight(RecordLine& line, RecordContext& context)
{
    PointLightComponent light;
    light.inverseSquareFalloff = false; // these lights fell off linearly
    line.Read(light.color, light.intensity, light.range, light.enabled, light.castsShadows, light.shadowBias,
              light.shadowNormalBias, light.shadowSlopeBias, light.shadowStrength, light.shadowPcfRadius,
              light.shadowResolution, light.shadowNearPlane, light.shadowFarPlane);
    context.entity.components.Set(light);
}

void ReadSpotLight(RecordLine& line, RecordContext& context)
{
    auto light = BeginComponent<SpotLightComponent>(context, "Duplicate SpotLightComponent record.");
    light.inverseSquareFalloff = false; // these lights fell off linearly
    line.Read(light.color, light.intensity, light.range, light.innerAngleDegrees, light.outerAngleDegrees,
              light.enabled, light.castsShadows, light.shadowBias, light.shadowNormalBias,
              light.shadowSlopeBias, light.shadowStrength, light.shadowPcfRadius, light.shadowResolution,
              light.shadowNearPlane, light.shadowFarPlane);
    context.entity.components.Set(light);
}

constexpr std::array kRecords = {
    EntityRecord{"directional_light", &ReadDirectionalLight},
    EntityRecord{"point_light", &ReadPointLight},
    EntityRecord{"spot_light", &ReadSpotLight},
};

} // namespace

std::span<const EntityRecord> LightRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
