#include "engine/scene/components/Environment.h"
#include "engine/scene/files/LoadFault.h"
#include "engine/scene/legacy/Records.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadEnvironment(RecordLine& line, EnvironmentSettings& environment)
{
    const EnvironmentSettings defaults;
    environment.texture = defaults.texture;
    environment.lightIntensity = defaults.lightIntensity;
    environment.backgroundIntensity = defaults.backgroundIntensity;
    environment.rotationDegrees = defaults.rotationDegrees;
    environment.showBackground = defaults.showBackground;
    line.Read(AssetField{environment.texture}, environment.lightIntensity, environment.backgroundIntensity,
              environment.rotationDegrees, environment.showBackground);
}

/// The sixteen fields that both forms of the post-process record begin with.
RecordLine& ReadPostProcessHead(RecordLine& line, PostProcessSettings& settings)
{
    return line.Read(settings.enabled, settings.debugView, settings.exposure, settings.toneMapper,
                     settings.gamma, settings.applyGamma, settings.contrast, settings.saturation,
                     settings.tintColor, settings.tintStrength, settings.vignetteEnabled,
                     settings.vignetteStrength, settings.vignetteRadius, settings.vignetteSoftness);
}

void ReadPostProcessV2(RecordLine& line, EnvironmentSettings& environment)
{
    PostProcessSettings& settings = environment.postProcess;
    ReadPostProcessHead(line, settings)
        .Read(settings.bloomEnabled, settings.bloomThreshold, settings.bloomKnee, settings.bloomIntensity,
              settings.bloomRadius, settings.bloomIterations, settings.atmosphericFogEnabled,
              settings.atmosphericFogColor, settings.atmosphericFogDensity,
              settings.atmosphericFogStartDistance, settings.atmosphericFogMaxOpacity,
              settings.atmosphericFogBaseHeight, settings.atmosphericFogHeightFalloff,
              settings.atmosphericFogAffectSky, settings.atmosphericFogDirectionalScattering,
              settings.atmosphericFogScatteringStrength, settings.atmosphericFogAnisotropy);
    if (!line)
    {
        throw LoadFault("Malformed post_process_v2 record.");
    }
}

/// The integer part of a float; the lowest integer where it has no place in 32 bits.
std::int32_t Truncate(float value)
{
    constexpr float kLimit = 2147483648.0f;
    return value > -kLimit && value < kLimit ? static_cast<std::int32_t>(value)
                                             : std::numeric_limits<std::int32_t>::min();
}

void TakeBloom(const float* values, PostProcessSettings& settings)
{
    settings.bloomEnabled = Truncate(values[0]) != 0;
    settings.bloomThreshold = values[1];
    settings.bloomKnee = values[2];
    settings.bloomIntensity = values[3];
    settings.bloomRadius = values[4];
    settings.bloomIterations = Truncate(values[5]);
}

void TakeFog(const float* values, PostProcessSettings& settings)
{
    settings.atmosphericFogEnabled = Truncate(values[0]) != 0;
    settings.atmosphericFogColor = {values[1], values[2], values[3]};
    settings.atmosphericFogDensity = values[4];
    settings.atmosphericFogStartDistance = values[5];
    settings.atmosphericFogMaxOpacity = values[6];
    settings.atmosphericFogBaseHeight = values[7];
    settings.atmosphericFogHeightFalloff = values[8];
    settings.atmosphericFogAffectSky = Truncate(values[9]) != 0;
    settings.atmosphericFogDirectionalScattering = Truncate(values[10]) != 0;
    settings.atmosphericFogScatteringStrength = values[11];
    settings.atmosphericFogAnisotropy = values[12];
}

/// The older form: behind the head stands a list whose length tells which settings it holds. Settings that no
/// longer exist are skipped.
void ReadPostProcess(RecordLine& line, EnvironmentSettings& environment)
{
    constexpr std::size_t kBloomListSize = 19;
    constexpr std::size_t kBloomSize = 6;
    constexpr std::size_t kFogSize = 13;
    constexpr std::size_t kRemovedBlocks[] = {11, 4};

    ReadPostProcessHead(line, environment.postProcess);
    std::vector<float> list;
    for (float value = 0.0f; line.Read(value);)
    {
        list.push_back(value);
    }
    std::size_t position = 0;
    if (list.size() >= kBloomListSize)
    {
        TakeBloom(list.data(), environment.postProcess);
        position = kBloomSize;
    }
    for (const std::size_t block : kRemovedBlocks)
    {
        if (position + block <= list.size())
        {
            position += block;
        }
    }
    if (list.size() >= position + kFogSize)
    {
        TakeFog(list.data() + position, environment.postProcess);
    }
}

void ReadPostProcessMaterials(RecordLine& line, EnvironmentSettings& environment)
{
    environment.postProcessMaterials.clear();
    std::uint64_t count = 0;
    line.Read(count);
    for (std::uint64_t i = 0; i < count; ++i)
    {
        Assets::AssetId material = 0;
        if (!line.Read(AssetField{material}))
        {
            break;
        }
        if (material != 0)
        {
            environment.postProcessMaterials.push_back(material);
        }
    }
}

constexpr std::array kRecords = {
    EnvironmentRecord{"environment", "environment", &ReadEnvironment},
    EnvironmentRecord{"post_process_v2", "post_process", &ReadPostProcessV2},
    EnvironmentRecord{"post_process", "post_process", &ReadPostProcess},
    EnvironmentRecord{"post_process_materials", "post_process_materials", &ReadPostProcessMaterials},
};

} // namespace

std::span<const EnvironmentRecord> EnvironmentRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
