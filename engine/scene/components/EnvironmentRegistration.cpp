#include "engine/scene/components/Registration.h"

#include "engine/reflection/ValueBuilder.h"
#include "engine/scene/components/Curves.h"
#include "engine/scene/components/Environment.h"

namespace Vornu::Scene
{

using Reflection::FieldAttr;
using Reflection::Label;
using Reflection::PropertyFlags;

void RegisterEnvironmentTypes()
{
    Reflection::RegisterEnum<CurveInterpolation>("CurveInterpolation",
                                                 {
                                                     {CurveInterpolation::Smooth, "Smooth"},
                                                     {CurveInterpolation::Linear, "Linear"},
                                                     {CurveInterpolation::Constant, "Constant"},
                                                 });
    Reflection::RegisterValue<CurveKey>("CurveKey", "Curve Key", "Curves")
        .Field("time", &CurveKey::time, Label("Time"))
        .Field("value", &CurveKey::value, Label("Value"))
        .Field("inSlope", &CurveKey::inSlope, Label("In Slope"))
        .Field("outSlope", &CurveKey::outSlope, Label("Out Slope"))
        .Field("interpolation", &CurveKey::interpolation, Label("Interpolation"));

    Reflection::RegisterValue<GradientKey>("GradientKey", "Gradient Key", "Curves")
        .Field("time", &GradientKey::time, Label("Time"))
        .Field("color", &GradientKey::color, Label("Color").With(PropertyFlags::Color));

    Reflection::RegisterValue<PostProcessSettings>("PostProcessSettings", "Post Processing", "Environment")
        .Field("enabled", &PostProcessSettings::enabled, Label("Enabled"))
        .Field("debugView", &PostProcessSettings::debugView, Label("Debug view"))
        .Field("exposure", &PostProcessSettings::exposure, Label("Exposure"))
        .Field("exposureMode", &PostProcessSettings::exposureMode, Label("Exposure mode"))
        .Field("exposureEv100", &PostProcessSettings::exposureEv100, Label("Exposure EV100"))
        .Field("exposureCompensation", &PostProcessSettings::exposureCompensation,
               Label("Exposure compensation"))
        .Field("autoExposureMinEv100", &PostProcessSettings::autoExposureMinEv100,
               Label("Auto exposure min EV100"))
        .Field("autoExposureMaxEv100", &PostProcessSettings::autoExposureMaxEv100,
               Label("Auto exposure max EV100"))
        .Field("autoExposureSpeedUp", &PostProcessSettings::autoExposureSpeedUp,
               Label("Auto exposure speed up"))
        .Field("autoExposureSpeedDown", &PostProcessSettings::autoExposureSpeedDown,
               Label("Auto exposure speed down"))
        .Field("toneMapper", &PostProcessSettings::toneMapper, Label("Tone mapper"))
        .Field("gamma", &PostProcessSettings::gamma, Label("Gamma"))
        .Field("applyGamma", &PostProcessSettings::applyGamma, Label("Apply gamma"))
        .Field("contrast", &PostProcessSettings::contrast, Label("Contrast"))
        .Field("saturation", &PostProcessSettings::saturation, Label("Saturation"))
        .Field("tintColor", &PostProcessSettings::tintColor, Label("Tint color"))
        .Field("tintStrength", &PostProcessSettings::tintStrength, Label("Tint strength"))
        .Field("vignetteEnabled", &PostProcessSettings::vignetteEnabled, Label("Vignette enabled"))
        .Field("vignetteStrength", &PostProcessSettings::vignetteStrength, Label("Vignette strength"))
        .Field("vignetteRadius", &PostProcessSettings::vignetteRadius, Label("Vignette radius"))
        .Field("vignetteSoftness", &PostProcessSettings::vignetteSoftness, Label("Vignette softness"))
        .Field("bloomEnabled", &PostProcessSettings::bloomEnabled, Label("Bloom enabled"))
        .Field("bloomThreshold", &PostProcessSettings::bloomThreshold, Label("Bloom threshold"))
        .Field("bloomKnee", &PostProcessSettings::bloomKnee, Label("Bloom knee"))
        .Field("bloomIntensity", &PostProcessSettings::bloomIntensity, Label("Bloom intensity"))
        .Field("bloomRadius", &PostProcessSettings::bloomRadius, Label("Bloom radius"))
        .Field("bloomIterations", &PostProcessSettings::bloomIterations, Label("Bloom iterations"))
        .Field("atmosphericFogEnabled", &PostProcessSettings::atmosphericFogEnabled,
               Label("Atmospheric fog enabled"))
        .Field("atmosphericFogColor", &PostProcessSettings::atmosphericFogColor,
               Label("Atmospheric fog color"))
        .Field("atmosphericFogDensity", &PostProcessSettings::atmosphericFogDensity,
               Label("Atmospheric fog density"))
        .Field("atmosphericFogStartDistance", &PostProcessSettings::atmosphericFogStartDistance,
               Label("Atmospheric fog start distance"))
        .Field("atmosphericFogMaxOpacity", &PostProcessSettings::atmosphericFogMaxOpacity,
               Label("Atmospheric fog max opacity"))
        .Field("atmosphericFogBaseHeight", &PostProcessSettings::atmosphericFogBaseHeight,
               Label("Atmospheric fog base height"))
        .Field("atmosphericFogHeightFalloff", &PostProcessSettings::atmosphericFogHeightFalloff,
               Label("Atmospheric fog height falloff"))
        .Field("atmosphericFogAffectSky", &PostProcessSettings::atmosphericFogAffectSky,
               Label("Atmospheric fog affect sky"))
        .Field("atmosphericFogDirectionalScattering",
               &PostProcessSettings::atmosphericFogDirectionalScattering,
               Label("Atmospheric fog directional scattering"))
        .Field("atmosphericFogScatteringStrength", &PostProcessSettings::atmosphericFogScatteringStrength,
               Label("Atmospheric fog scattering strength"))
        .Field("atmosphericFogAnisotropy", &PostProcessSettings::atmosphericFogAnisotropy,
               Label("Atmospheric fog anisotropy"))
        .Field("ambientOcclusionEnabled", &PostProcessSettings::ambientOcclusionEnabled,
               Label("Ambient occlusion enabled"))
        .Field("ambientOcclusionRadius", &PostProcessSettings::ambientOcclusionRadius,
               Label("Ambient occlusion radius"))
        .Field("ambientOcclusionIntensity", &PostProcessSettings::ambientOcclusionIntensity,
               Label("Ambient occlusion intensity"))
        .Field("cameraNear", &PostProcessSettings::cameraNear,
               FieldAttr().Group("Runtime").With(PropertyFlags::ReadOnly).With(PropertyFlags::Runtime))
        .Field("cameraFar", &PostProcessSettings::cameraFar,
               FieldAttr().Group("Runtime").With(PropertyFlags::ReadOnly).With(PropertyFlags::Runtime));

    Reflection::RegisterValue<EnvironmentSettings>("EnvironmentSettings", "Environment", "Environment")
        .Field("texture", &EnvironmentSettings::texture, Label("Texture").Asset("Texture"))
        .Field("lightIntensity", &EnvironmentSettings::lightIntensity, Label("Light Intensity"))
        .Field("backgroundIntensity", &EnvironmentSettings::backgroundIntensity,
               Label("Background Intensity"))
        .Field("rotationDegrees", &EnvironmentSettings::rotationDegrees, Label("Rotation Degrees"))
        .Field("showBackground", &EnvironmentSettings::showBackground, Label("Show Background"))
        .Field("postProcess", &EnvironmentSettings::postProcess, Label("Post Processing"))
        .Field("postProcessMaterials", &EnvironmentSettings::postProcessMaterials,
               Label("Post Process Materials").Asset("Material"));
}

} // namespace Vornu::Scene
