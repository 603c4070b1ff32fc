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

/// The end of the record. These lights fell off linearly.
void ReadLocalLight(RecordLine& line, LocalLight& light)
{
    light.inverseSquareFalloff = false;
    line.Read(light.enabled, light.castsShadows, light.shadowBias, light.shadowNormalBias,
              light.shadowSlopeBias, light.shadowStrength, light.shadowPcfRadius, light.shadowResolution,
              light.shadowNearPlane, light.shadowFarPlane);
}

void ReadPointLight(RecordLine& line, RecordContext& context)
{
    PointLightComponent light;
    line.Read(light.color, light.intensity, light.range);
    ReadLocalLight(line, light);
    context.entity.components.Set(light);
}

void ReadSpotLight(RecordLine& line, RecordContext& context)
{
    auto light = BeginComponent<SpotLightComponent>(context, "Duplicate SpotLightComponent record.");
    line.Read(light.color, light.intensity, light.range, light.innerAngleDegrees, light.outerAngleDegrees);
    ReadLocalLight(line, light);
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
