#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadSurface(RecordLine& line, ClothComponent& cloth)
{
    ClothSettings& settings = cloth.settings;
    line.Read(cloth.enabled, cloth.paused, AssetField{cloth.sourceMesh}, cloth.debugDraw, cloth.showParticles,
              cloth.showConstraints, cloth.showPinned, cloth.showColliders, cloth.followSkinning,
              settings.simulateInEditMode, settings.useWorldGravity, settings.gravity, settings.windDirection,
              settings.windStrength, settings.damping, settings.stretchStiffness, settings.shearStiffness,
              settings.bendStiffness, settings.stretchCompliance, settings.shearCompliance,
              settings.bendCompliance, settings.solverIterations, settings.substeps, settings.particleRadius,
              settings.collisionFriction, settings.collisionEnabled, settings.collisionMask,
              CutField{settings.gameplayLayer, GameplayLayer::Interactable},
              CutField{settings.pinMode, ClothPinMode::Painted}, settings.topPinPercent,
              settings.vertexColorPinThreshold, settings.teleportDistance);
}

/// The settings that came later stand behind the others in stages. The flag of a stage counts only if the
/// stage is whole.
void ReadStages(RecordLine& line, ClothComponent& cloth)
{
    constexpr std::uint32_t kLastFilterLayer = 31;
    ClothSettings& settings = cloth.settings;
    bool flag = false;
    if (line.Read(settings.seamWeldDistance, settings.seamWeldStiffness, settings.seamWeldCompliance, flag,
                  cloth.pinPaintRadius, cloth.pinPaintStrength, cloth.pinPaintHardness))
    {
        cloth.paintPinsInViewport = flag;
    }
    line.Read(settings.filter.layer, settings.filter.mask);
    if (line.Read(flag))
    {
        settings.collideWithOwnerHierarchy = flag;
    }
    settings.filter.layer = std::min(settings.filter.layer, kLastFilterLayer);
    line.Read(settings.maxSimulationStepsPerFrame);
    settings.maxSimulationStepsPerFrame = std::clamp(settings.maxSimulationStepsPerFrame, 1u, 16u);
    line.Read(settings.skinFreeParticles);
}

void ReadCloth(RecordLine& line, RecordContext& context)
{
    PendingEntity& entity = context.entity;
    if (context.version == kNamedRecordsVersion &&
        (entity.clothSeen || entity.HasNamedRecord("ClothComponent")))
    {
        throw std::runtime_error("Duplicate cloth component.");
    }
    entity.clothSeen = true;
    ClothComponent cloth;
    ReadSurface(line, cloth);
    ReadStages(line, cloth);
    entity.components.Set(std::move(cloth));
}

void ReadPinWeights(RecordLine& line, RecordContext& context)
{
    RefuseNamedRecord(context, "ClothComponent", "Legacy pin weights cannot modify a named cloth component.");
    ReadSamples(line, context, context.entity.components.FindOrAdd<ClothComponent>().pinWeights);
}

constexpr std::array kRecords = {
    EntityRecord{"cloth", &ReadCloth},
    EntityRecord{"cloth_pin_weights", &ReadPinWeights},
};

} // namespace

std::span<const EntityRecord> ClothRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
