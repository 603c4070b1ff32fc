#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/scene/components/GameplayLayer.h"

#include <glm/vec4.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Scene
{

enum class TerrainBrushMode : std::uint8_t
{
    RaiseLower = 0,
    Smooth = 1,
    Flatten = 2,
    PaintLayer = 3,
};

enum class TerrainSampleKind : std::uint8_t
{
    Heights = 0,
    LayerWeights = 1,
};

struct TerrainLayer
{
    std::string name = "Layer";
    Assets::AssetId albedoTexture = 0;
    Assets::AssetId normalTexture = 0;
    Assets::AssetId material = 0;
    glm::vec4 tint{1.0f};
    float tiling = 8.0f;
    GameplayLayer surfaceLayer = GameplayLayer::Floor;

    friend bool operator==(const TerrainLayer&, const TerrainLayer&) = default;
};

/// A height field of `resolutionX` by `resolutionZ` samples, with the weights of its layers.
struct TerrainComponent
{
    float width = 24.0f;
    float length = 24.0f;
    float heightScale = 3.0f;
    Assets::AssetId material = 0;
    TerrainBrushMode brushMode = TerrainBrushMode::RaiseLower;
    float brushRadius = 2.0f;
    float brushStrength = 0.18f;
    std::uint32_t resolutionX = 65;
    std::uint32_t resolutionZ = 65;
    GameplayLayer surfaceLayer = GameplayLayer::Floor;
    float brushFalloff = 0.55f;
    float flattenHeight = 0.0f;
    std::int32_t activeLayer = 0;
    std::vector<TerrainLayer> layers;

    std::vector<float> heights;
    std::vector<float> layerWeights;

    // Run-time state.
    Assets::AssetId generatedMesh = 0;
    bool meshDirty = true;
    bool collisionDirty = true;
};

// The records of the samples.

struct TerrainSampleCounts
{
    std::uint64_t heights = 0;
    std::uint64_t layerWeights = 0;
};

struct TerrainSampleChunk
{
    TerrainSampleKind kind = TerrainSampleKind::Heights;
    std::uint64_t offset = 0;
    std::vector<float> values;
};

} // namespace Vornu::Scene
