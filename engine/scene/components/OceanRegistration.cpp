#include "engine/scene/components/Registration.h"

#include "engine/scene/components/OceanComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterOceanComponents()
{
    Reflection::RegisterEnum<OceanBodyMode>("OceanBodyMode",
                                            {
                                                {OceanBodyMode::Bounded, "Bounded", "Bounded Water Body"},
                                                {OceanBodyMode::Infinite, "Infinite", "Infinite Ocean"},
                                            });
    Reflection::RegisterEnum<OceanPreset>("OceanPreset", {
                                                             {OceanPreset::Calm, "Calm"},
                                                             {OceanPreset::Coastal, "Coastal"},
                                                             {OceanPreset::OpenSea, "OpenSea", "Open Sea"},
                                                             {OceanPreset::Storm, "Storm"},
                                                             {OceanPreset::Custom, "Custom"},
                                                         });
    Reflection::RegisterEnum<OceanQuality>("OceanQuality", {
                                                               {OceanQuality::Low, "Low"},
                                                               {OceanQuality::Medium, "Medium"},
                                                               {OceanQuality::High, "High"},
                                                               {OceanQuality::Ultra, "Ultra"},
                                                           });

    Reflection::RegisterValue<OceanWaveSettings>("OceanWaveSettings", "Ocean Wave", "Water")
        .Field("direction", &OceanWaveSettings::direction, Label("Direction"))
        .Field("amplitude", &OceanWaveSettings::amplitude, Label("Amplitude"))
        .Field("wavelength", &OceanWaveSettings::wavelength, Label("Wavelength"));

    RegisterComponent<OceanComponent>("OceanComponent", "Ocean", "World", kAuthored)
        .Description("Creates an ocean surface with waves, foam, shore data, and underwater support.")
        .Field("enabled", &OceanComponent::enabled, Label("Enabled"))
        .Field("visible", &OceanComponent::visible, Label("Visible"))
        .Field("bodyMode", &OceanComponent::bodyMode, Label("Body Mode").Group("Water Body"))
        .Field("bodySize", &OceanComponent::bodySize, Label("Body Size").Group("Water Body"))
        .Field("volumeDepth", &OceanComponent::volumeDepth,
               Label("Volume Depth").Range(0.1f, 100000).Group("Water Body"))
        .Field("preset", &OceanComponent::preset, Label("Sea State").Group("Wave Spectrum"))
        .Field("windDirection", &OceanComponent::windDirection,
               Label("Wind Direction").Group("Wave Spectrum"))
        .Field("windSpeed", &OceanComponent::windSpeed,
               Label("Wind Speed").Range(0, 80).Group("Wave Spectrum"))
        .Field("fetch", &OceanComponent::fetch, Label("Fetch").Range(10, 500000).Group("Wave Spectrum"))
        .Field("waveHeight", &OceanComponent::waveHeight,
               Label("Wave Height").Range(0, 30).Group("Wave Spectrum"))
        .Field("swell", &OceanComponent::swell, Label("Swell").Range(0, 1).Group("Wave Spectrum"))
        .Field("choppiness", &OceanComponent::choppiness,
               Label("Choppiness").Range(0, 1.25f).Group("Wave Spectrum"))
        .Field("directionalSpread", &OceanComponent::directionalSpread,
               Label("Directional Spread").Range(0, 1).Group("Wave Spectrum"))
        .Field("shortWaveStrength", &OceanComponent::shortWaveStrength,
               Label("Short Wave Strength").Range(0, 2).Group("Wave Spectrum"))
        .Field("shortWaveScale", &OceanComponent::shortWaveScale,
               Label("Short Wave Scale").Range(0.1f, 100).Group("Wave Spectrum"))
        .Field("animationSpeed", &OceanComponent::animationSpeed,
               Label("Animation Speed").Range(0, 8).Group("Wave Spectrum"))
        .Field("shallowColor", &OceanComponent::shallowColor,
               Label("Shallow Color").Group("Surface").With(PropertyFlags::Color))
        .Field("deepColor", &OceanComponent::deepColor,
               Label("Deep Color").Group("Surface").With(PropertyFlags::Color))
        .Field("foamColor", &OceanComponent::foamColor,
               Label("Foam Color").Group("Surface").With(PropertyFlags::Color))
        .Field("reflectivity", &OceanComponent::reflectivity,
               Label("Reflectivity").Range(0, 1).Group("Surface"))
        .Field("roughness", &OceanComponent::roughness, Label("Roughness").Range(0.02f, 1).Group("Surface"))
        .Field("refractionStrength", &OceanComponent::refractionStrength,
               Label("Refraction Strength").Range(0, 0.1f).Group("Surface"))
        .Field("environmentReflectionIntensity", &OceanComponent::environmentReflectionIntensity,
               Label("HDRI Intensity").Range(0, 4).Group("Reflections"))
        .Field("environmentReflectionBlur", &OceanComponent::environmentReflectionBlur,
               Label("HDRI Blur").Range(0, 1).Group("Reflections"))
        .Field("screenSpaceReflectionIntensity", &OceanComponent::screenSpaceReflectionIntensity,
               Label("Screen Space Intensity").Range(0, 1).Group("Reflections"))
        .Field("sunSpecularIntensity", &OceanComponent::sunSpecularIntensity,
               Label("Sun Glint Intensity").Range(0, 4).Group("Reflections"))
        .Field("reflectionHighlightLimit", &OceanComponent::reflectionHighlightLimit,
               Label("HDR Highlight Limit").Range(0.25f, 64).Group("Reflections"))
        .Field("foamIntensity", &OceanComponent::foamIntensity,
               Label("Wave Foam Intensity").Range(0, 3).Group("Foam"))
        .Field("shoreFoamIntensity", &OceanComponent::shoreFoamIntensity,
               Label("Shore Foam Intensity").Range(0, 3).Group("Foam"))
        .Field("shoreFoamDistance", &OceanComponent::shoreFoamDistance,
               Label("Shore Foam Distance").Range(0.05f, 100).Group("Foam"))
        .Field("volumeColor", &OceanComponent::volumeColor,
               Label("Water Volume Color").Group("Underwater").With(PropertyFlags::Color))
        .Field("underwaterVisibility", &OceanComponent::underwaterVisibility,
               Label("Visibility").Range(0.1f, 10000).Group("Underwater"))
        .Field("underwaterTintStrength", &OceanComponent::underwaterTintStrength,
               Label("Tint Strength").Range(0, 1).Group("Underwater"))
        .Field("underwaterDistortionStrength", &OceanComponent::underwaterDistortionStrength,
               Label("Distortion Strength").Range(0, 0.1f).Group("Underwater"))
        .Field("causticsIntensity", &OceanComponent::causticsIntensity,
               Label("Caustics Intensity").Range(0, 4).Group("Underwater Lighting"))
        .Field("causticsScale", &OceanComponent::causticsScale,
               Label("Caustics Scale").Range(0.001f, 10).Group("Underwater Lighting"))
        .Field("causticsSpeed", &OceanComponent::causticsSpeed,
               Label("Caustics Speed").Range(0, 8).Group("Underwater Lighting"))
        .Field("causticsColor", &OceanComponent::causticsColor,
               Label("Caustics Color").Group("Underwater Lighting").With(PropertyFlags::Color))
        .Field("causticsSharpness", &OceanComponent::causticsSharpness,
               Label("Caustics Sharpness").Range(0, 1).Group("Underwater Lighting"))
        .Field("causticsDepthFade", &OceanComponent::causticsDepthFade,
               Label("Caustics Depth Fade").Range(0.1f, 1000).Group("Underwater Lighting"))
        .Field("godRaysIntensity", &OceanComponent::godRaysIntensity,
               Label("God Rays Intensity").Range(0, 4).Group("Underwater Lighting"))
        .Field("quality", &OceanComponent::quality, Label("Quality").Group("Rendering"))
        .Field("renderDistance", &OceanComponent::renderDistance,
               Label("Render Distance").Range(8, 200000).Group("Rendering"))
        .Field("fresnelPower", &OceanComponent::fresnelPower, Label("Fresnel Power"))
        .Field("normalStrength", &OceanComponent::normalStrength, Label("Normal Strength"))
        .Field("foamThreshold", &OceanComponent::foamThreshold, Label("Foam Threshold"))
        .Field("foamScale", &OceanComponent::foamScale, Label("Foam Scale"))
        .Field("underwaterBrightness", &OceanComponent::underwaterBrightness, Label("Underwater Brightness"))
        .Field("underwaterContrast", &OceanComponent::underwaterContrast, Label("Underwater Contrast"))
        .Field("absorptionStrength", &OceanComponent::absorptionStrength, Label("Absorption Strength"))
        .Field("underwaterDistortionScale", &OceanComponent::underwaterDistortionScale,
               Label("Underwater Distortion Scale"))
        .Field("underwaterDistortionSpeed", &OceanComponent::underwaterDistortionSpeed,
               Label("Underwater Distortion Speed"))
        .Field("waterlineSoftness", &OceanComponent::waterlineSoftness, Label("Waterline Softness"))
        .Field("godRaysScale", &OceanComponent::godRaysScale, Label("God Rays Scale"))
        .Field("causticsOnSurface", &OceanComponent::causticsOnSurface, Label("Caustics On Surface"))
        .Field("spectrum", &OceanComponent::spectrum,
               Label("Spectrum").With(PropertyFlags::ReadOnly).With(PropertyFlags::Runtime))
        .AddTransient(&OceanComponent::generatedMesh);
}

} // namespace Vornu::Scene
