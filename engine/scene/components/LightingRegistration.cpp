#include "engine/scene/components/Registration.h"

#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

namespace
{

/// Lights of version 1 fall off linearly, whatever their record states.
void KeepOldFalloff(Reflection::SchemaRecord& record, std::uint32_t)
{
    record.RemoveFields({"inverseSquareFalloff"});
    record.AddField("inverseSquareFalloff", "0");
}

} // namespace

void RegisterLightingComponents()
{
    RegisterComponent<DirectionalLightComponent>("DirectionalLightComponent", "Directional Light", "Lighting",
                                                 kAuthored)
        .Description("Global sun/moon-style light with optional cascaded shadows.")
        .Field("color", &DirectionalLightComponent::color, Label("Color").With(PropertyFlags::Color))
        .Field("intensity", &DirectionalLightComponent::intensity, Label("Intensity").Range(0, 1000))
        .Field("enabled", &DirectionalLightComponent::enabled, Label("Enabled"))
        .Field("castsShadows", &DirectionalLightComponent::castsShadows,
               Label("Casts Shadows").Group("Shadows"))
        .Field("shadowResolution", &DirectionalLightComponent::shadowResolution,
               Label("Shadow Resolution").Group("Shadows"))
        .Field("shadowMaxDistance", &DirectionalLightComponent::shadowMaxDistance,
               Label("Shadow Max Distance").Range(0, 10000).Group("Shadows"))
        .Field("shadowBias", &DirectionalLightComponent::shadowBias, Label("Shadow Bias").Group("Shadows"))
        .Field("shadowNormalBias", &DirectionalLightComponent::shadowNormalBias,
               Label("Shadow Normal Bias").Group("Shadows"))
        .Field("shadowSlopeBias", &DirectionalLightComponent::shadowSlopeBias,
               Label("Shadow Slope Bias").Group("Shadows"))
        .Field("shadowStrength", &DirectionalLightComponent::shadowStrength,
               Label("Shadow Strength").Group("Shadows"))
        .Field("shadowPcfRadius", &DirectionalLightComponent::shadowPcfRadius,
               Label("Shadow PCF Radius").Group("Shadows"))
        .Field("shadowCascadeCount", &DirectionalLightComponent::shadowCascadeCount,
               Label("Shadow Cascade Count").Group("Shadows"))
        .Field("shadowCascadeLambda", &DirectionalLightComponent::shadowCascadeLambda,
               Label("Shadow Cascade Lambda").Group("Shadows"))
        .Field("showCascadeDebug", &DirectionalLightComponent::showCascadeDebug,
               Label("Show Cascade Debug").Group("Shadows"));

    RegisterComponent<PointLightComponent>("PointLightComponent", "Point Light", "Lighting", kAuthored)
        .Description("Local omnidirectional light with range and optional point shadows.")
        .Field("color", &PointLightComponent::color, Label("Color").With(PropertyFlags::Color))
        .Field("intensity", &PointLightComponent::intensity, Label("Intensity").Range(0, 100))
        .Field("range", &PointLightComponent::range, Label("Range").Range(0.1f, 250))
        .Field("inverseSquareFalloff", &PointLightComponent::inverseSquareFalloff,
               Label("Inverse Square Falloff"))
        .Field("enabled", &PointLightComponent::enabled, Label("Enabled"))
        .Field("castsShadows", &PointLightComponent::castsShadows, Label("Casts Shadows").Group("Shadows"))
        .Field("shadowBias", &PointLightComponent::shadowBias,
               Label("Shadow Bias").Range(0, 0.05f).Group("Shadows"))
        .Field("shadowNormalBias", &PointLightComponent::shadowNormalBias,
               Label("Normal Bias").Range(0, 0.05f).Group("Shadows"))
        .Field("shadowSlopeBias", &PointLightComponent::shadowSlopeBias,
               Label("Slope Bias").Range(0, 8).Group("Shadows"))
        .Field("shadowStrength", &PointLightComponent::shadowStrength,
               Label("Shadow Strength").Range(0, 1).Group("Shadows"))
        .Field("shadowPcfRadius", &PointLightComponent::shadowPcfRadius,
               Label("PCF Radius").Range(0, 3).Group("Shadows"))
        .Field("shadowResolution", &PointLightComponent::shadowResolution,
               Label("Shadow Resolution").Range(128, 2048).Group("Shadows"))
        .Field("shadowNearPlane", &PointLightComponent::shadowNearPlane,
               Label("Shadow Near").Range(0.001f, 10).Group("Shadows"))
        .Field("shadowFarPlane", &PointLightComponent::shadowFarPlane,
               Label("Shadow Far").Range(0, 1000).Group("Shadows"))
        .Migrate(&KeepOldFalloff)
        .Version(2);

    RegisterComponent<SpotLightComponent>("SpotLightComponent", "Spot Light", "Lighting", kAuthored)
        .Description("Cone light with range, angles, and optional shadow map.")
        .Field("color", &SpotLightComponent::color, Label("Color").With(PropertyFlags::Color))
        .Field("intensity", &SpotLightComponent::intensity, Label("Intensity").Range(0, 1000))
        .Field("range", &SpotLightComponent::range, Label("Range").Range(0, 10000))
        .Field("inverseSquareFalloff", &SpotLightComponent::inverseSquareFalloff,
               Label("Inverse Square Falloff"))
        .Field("innerAngleDegrees", &SpotLightComponent::innerAngleDegrees,
               Label("Inner Angle").Range(0, 179).With(PropertyFlags::Degrees))
        .Field("outerAngleDegrees", &SpotLightComponent::outerAngleDegrees,
               Label("Outer Angle").Range(0, 179).With(PropertyFlags::Degrees))
        .Field("enabled", &SpotLightComponent::enabled, Label("Enabled"))
        .Field("castsShadows", &SpotLightComponent::castsShadows, Label("Casts Shadows").Group("Shadows"))
        .Field("shadowBias", &SpotLightComponent::shadowBias, Label("Shadow Bias").Group("Shadows"))
        .Field("shadowNormalBias", &SpotLightComponent::shadowNormalBias,
               Label("Shadow Normal Bias").Group("Shadows"))
        .Field("shadowSlopeBias", &SpotLightComponent::shadowSlopeBias,
               Label("Shadow Slope Bias").Group("Shadows"))
        .Field("shadowStrength", &SpotLightComponent::shadowStrength,
               Label("Shadow Strength").Group("Shadows"))
        .Field("shadowPcfRadius", &SpotLightComponent::shadowPcfRadius,
               Label("Shadow PCF Radius").Group("Shadows"))
        .Field("shadowResolution", &SpotLightComponent::shadowResolution,
               Label("Shadow Resolution").Group("Shadows"))
        .Field("shadowNearPlane", &SpotLightComponent::shadowNearPlane,
               Label("Shadow Near Plane").Group("Shadows"))
        .Field("shadowFarPlane", &SpotLightComponent::shadowFarPlane,
               Label("Shadow Far Plane").Group("Shadows"))
        .Migrate(&KeepOldFalloff)
        .Version(2);

    RegisterComponent<ReflectionProbeComponent>("ReflectionProbeComponent", "Reflection Probe", "Lighting",
                                                kAuthored)
        .Description(
            "Captured reflections and ambient light for the surfaces inside its box (rooms, interiors).")
        .Field("boxExtents", &ReflectionProbeComponent::boxExtents, Label("Box Extents").Range(0.01f, 10000))
        .Field("boxOffset", &ReflectionProbeComponent::boxOffset, Label("Box Offset"))
        .Field("blendDistance", &ReflectionProbeComponent::blendDistance,
               Label("Blend Distance").Range(0, 1000))
        .Field("priority", &ReflectionProbeComponent::priority, Label("Priority").Range(-100, 100))
        .Field("intensity", &ReflectionProbeComponent::intensity, Label("Intensity").Range(0, 16))
        .Field("parallaxCorrection", &ReflectionProbeComponent::parallaxCorrection,
               Label("Parallax Correction"))
        .Field("enabled", &ReflectionProbeComponent::enabled, Label("Enabled"))
        .Field("bakeOnStart", &ReflectionProbeComponent::bakeOnStart,
               Label("Capture On Start").Group("Capture"))
        .Field("bakedTexture", &ReflectionProbeComponent::bakedTexture,
               Label("Baked Capture").Asset("Texture").Group("Capture"))
        .Field("bakeRequested", &ReflectionProbeComponent::bakeRequested,
               Label("Capture Requested").Group("Capture").With(PropertyFlags::Runtime));

    RegisterComponent<ProbeVolumeComponent>("ProbeVolumeComponent", "Probe Volume", "Lighting", kAuthored)
        .Description(
            "Baked indirect diffuse light on a grid of probes over its box (rooms, interiors, shaded areas).")
        .Field("boxExtents", &ProbeVolumeComponent::boxExtents, Label("Box Extents").Range(0.01f, 10000))
        .Field("boxOffset", &ProbeVolumeComponent::boxOffset, Label("Box Offset"))
        .Field("probeCountX", &ProbeVolumeComponent::probeCountX, Label("Probes X").Range(1, 32))
        .Field("probeCountY", &ProbeVolumeComponent::probeCountY, Label("Probes Y").Range(1, 16))
        .Field("probeCountZ", &ProbeVolumeComponent::probeCountZ, Label("Probes Z").Range(1, 32))
        .Field("blendDistance", &ProbeVolumeComponent::blendDistance, Label("Blend Distance").Range(0, 1000))
        .Field("normalBias", &ProbeVolumeComponent::normalBias, Label("Normal Bias").Range(0, 1))
        .Field("intensity", &ProbeVolumeComponent::intensity, Label("Intensity").Range(0, 16))
        .Field("priority", &ProbeVolumeComponent::priority, Label("Priority").Range(-100, 100))
        .Field("enabled", &ProbeVolumeComponent::enabled, Label("Enabled"))
        .Field("bakedData", &ProbeVolumeComponent::bakedData,
               Label("Baked Probes").Asset("Texture").Group("Bake"))
        .Field("bakeRequested", &ProbeVolumeComponent::bakeRequested,
               Label("Bake Requested").Group("Bake").With(PropertyFlags::Runtime));
}

} // namespace Vornu::Scene
