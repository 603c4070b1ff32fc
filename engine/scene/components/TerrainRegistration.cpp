#include "engine/scene/components/Registration.h"

#include "engine/scene/components/TerrainComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"
#include "engine/scene/registration/SampledComponent.h"

#include <array>
#include <cstddef>
#include <stdexcept>

namespace Vornu::Scene
{

namespace
{

/// How a terrain's samples are stored.
struct Samples
{
    using Component = TerrainComponent;
    using Counts = TerrainSampleCounts;
    using Chunk = TerrainSampleChunk;

    // By the number of the sample kind.
    static constexpr std::array kArrays{&TerrainComponent::heights, &TerrainComponent::layerWeights};
    static constexpr std::array kCounts{&TerrainSampleCounts::heights, &TerrainSampleCounts::layerWeights};
    static inline const SampleFaults kFaults{
        .tooManySamples = "Terrain exceeds its total sample limit.",
        .tooManyBytes = "Terrain exceeds its total encoded byte limit.",
        .truncated = "Truncated terrain record.",
        .chunkBeforeCounts = "Terrain chunks require sample counts first.",
        .badChunk =
            "Terrain sample chunk is empty, out of order, overlapping, or exceeds its declared count.",
        .incomplete = "Terrain samples are missing or incomplete.",
    };

    static void MarkChunk(Chunk& chunk, std::size_t array)
    {
        chunk.kind = static_cast<TerrainSampleKind>(array);
    }
    static std::size_t ArrayOf(const Chunk& chunk)
    {
        const auto array = static_cast<std::size_t>(chunk.kind);
        if (array >= kArrays.size())
        {
            throw std::runtime_error("Unknown terrain sample kind.");
        }
        return array;
    }
};

} // namespace

void RegisterTerrainComponents()
{
    Reflection::RegisterEnum<TerrainBrushMode>(
        "TerrainBrushMode", {
                                {TerrainBrushMode::RaiseLower, "RaiseLower", "Raise/Lower"},
                                {TerrainBrushMode::Smooth, "Smooth"},
                                {TerrainBrushMode::Flatten, "Flatten"},
                                {TerrainBrushMode::PaintLayer, "PaintLayer", "Paint Layer"},
                            });
    Reflection::RegisterEnum<TerrainSampleKind>(
        "TerrainSampleKind", {
                                 {TerrainSampleKind::Heights, "Heights"},
                                 {TerrainSampleKind::LayerWeights, "LayerWeights", "Layer Weights"},
                             });

    Reflection::RegisterValue<TerrainLayer>("TerrainLayer", "Terrain Layer", "World")
        .Field("name", &TerrainLayer::name, Label("Name"))
        .Field("albedoTexture", &TerrainLayer::albedoTexture, Label("Albedo Texture").Asset("Texture"))
        .Field("normalTexture", &TerrainLayer::normalTexture, Label("Normal Texture").Asset("Texture"))
        .Field("material", &TerrainLayer::material, Label("Material").Asset("Material"))
        .Field("tint", &TerrainLayer::tint, Label("Tint"))
        .Field("tiling", &TerrainLayer::tiling, Label("Tiling"))
        .Field("surfaceLayer", &TerrainLayer::surfaceLayer, Label("Surface Layer"));

    Reflection::RegisterValue<TerrainSampleCounts>("TerrainSampleCounts", "Terrain Sample Counts", "World")
        .Field("heights", &TerrainSampleCounts::heights, Label("Heights"))
        .Field("layerWeights", &TerrainSampleCounts::layerWeights, Label("Layer Weights"));

    Reflection::RegisterValue<TerrainSampleChunk>("TerrainSampleChunk", "Terrain Sample Chunk", "World")
        .Field("kind", &TerrainSampleChunk::kind, Label("Kind"))
        .Field("offset", &TerrainSampleChunk::offset, Label("Offset"))
        .Field("values", &TerrainSampleChunk::values, Label("Values"));

    ComponentBuilder<TerrainComponent> terrain =
        RegisterComponent<TerrainComponent>("TerrainComponent", "Terrain", "World", kAuthored)
            .Description("Creates editable terrain data, render mesh, and terrain collision.")
            .Field("width", &TerrainComponent::width, Label("Width").Range(0.1f, 100000))
            .Field("length", &TerrainComponent::length, Label("Length").Range(0.1f, 100000))
            .Field("heightScale", &TerrainComponent::heightScale, Label("Height Scale").Range(0.001f, 10000))
            .Field("material", &TerrainComponent::material, Label("Material").Asset("Material"))
            .Field("brushMode", &TerrainComponent::brushMode, Label("Brush Mode").Group("Brush"))
            .Field("brushRadius", &TerrainComponent::brushRadius,
                   Label("Brush Radius").Range(0.01f, 1000).Group("Brush"))
            .Field("brushStrength", &TerrainComponent::brushStrength,
                   Label("Brush Strength").Range(0, 10).Group("Brush"))
            .Field("resolutionX", &TerrainComponent::resolutionX, Label("Resolution X"))
            .Field("resolutionZ", &TerrainComponent::resolutionZ, Label("Resolution Z"))
            .Field("surfaceLayer", &TerrainComponent::surfaceLayer, Label("Surface Layer"))
            .Field("brushFalloff", &TerrainComponent::brushFalloff, Label("Brush Falloff"))
            .Field("flattenHeight", &TerrainComponent::flattenHeight, Label("Flatten Height"))
            .Field("activeLayer", &TerrainComponent::activeLayer, Label("Active Layer"))
            .Field("layers", &TerrainComponent::layers, Label("Layers"))
            .AddCustom(&TerrainComponent::heights)
            .AddCustom(&TerrainComponent::layerWeights)
            .AddTransient(&TerrainComponent::generatedMesh)
            .AddTransient(&TerrainComponent::meshDirty)
            .AddTransient(&TerrainComponent::collisionDirty);

    SaveSampled<Samples>(terrain);
}

} // namespace Vornu::Scene
