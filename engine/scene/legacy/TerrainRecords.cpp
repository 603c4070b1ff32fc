#include "engine/scene/legacy/Records.h"

#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadTerrain(RecordLine& line, RecordContext& context)
{
    auto terrain = BeginComponent<TerrainComponent>(context, "Duplicate terrain component.");
    terrain.surfaceLayer = GameplayLayer::Default;
    line.Read(terrain.width, terrain.length, terrain.heightScale, terrain.resolutionX, terrain.resolutionZ,
              AssetField{terrain.material}, CutField{terrain.surfaceLayer, GameplayLayer::Interactable},
              CutField{terrain.brushMode, TerrainBrushMode::PaintLayer}, terrain.brushRadius,
              terrain.brushStrength, terrain.brushFalloff, terrain.flattenHeight, terrain.activeLayer);
    context.entity.components.Set(std::move(terrain));
}

/// The terrain that a detail record changes. One that the detail makes has another surface than one of a
/// short `terrain` line.
TerrainComponent& TerrainOf(RecordContext& context)
{
    RefuseNamedRecord(context, "TerrainComponent", "Legacy terrain detail cannot modify named settings.");
    return context.entity.components.FindOrAdd<TerrainComponent>();
}

void ReadLayer(RecordLine& line, RecordContext& context)
{
    TerrainComponent& terrain = TerrainOf(context);
    TerrainLayer layer;
    layer.surfaceLayer = GameplayLayer::Default;
    line.Read(layer.name, AssetField{layer.albedoTexture}, AssetField{layer.normalTexture},
              AssetField{layer.material}, layer.tint, layer.tiling,
              CutField{layer.surfaceLayer, GameplayLayer::Interactable});
    terrain.layers.push_back(std::move(layer));
}

void ReadHeights(RecordLine& line, RecordContext& context)
{
    TerrainComponent& terrain = TerrainOf(context);
    ReadSamples(line, context, terrain.heights);
    terrain.meshDirty = true;
    terrain.collisionDirty = true;
}

void ReadWeights(RecordLine& line, RecordContext& context)
{
    ReadSamples(line, context, TerrainOf(context).layerWeights);
}

constexpr std::array kRecords = {
    EntityRecord{"terrain", &ReadTerrain},
    EntityRecord{"terrain_layer", &ReadLayer},
    EntityRecord{"terrain_heights", &ReadHeights},
    EntityRecord{"terrain_weights", &ReadWeights},
};

} // namespace

std::span<const EntityRecord> TerrainRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
