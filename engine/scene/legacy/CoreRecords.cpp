#include "engine/scene/legacy/Records.h"

#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadTransform(RecordLine& line, RecordContext& context)
{
    Transform& transform = context.entity.transform;
    line.Read(transform.position, transform.rotation, transform.scale);
}

void ReadPrefabInstance(RecordLine& line, RecordContext& context)
{
    auto instance = BeginComponent<PrefabInstanceComponent>(context, "Duplicate prefab instance component.");
    line.Read(AssetField{instance.prefab}, GuidField{instance.sourceEntityGuid},
              GuidField{instance.instanceRootGuid}, instance.connected);
    context.entity.components.Set(std::move(instance));
}

void ReadGameplayLayer(RecordLine& line, RecordContext& context)
{
    auto component = BeginComponent<GameplayLayerComponent>(context, "Duplicate gameplay_layer component.");
    line.Read(CutField{component.layer, GameplayLayer::Interactable});
    context.entity.components.Set(component);
}

void ReadRotator(RecordLine& line, RecordContext& context)
{
    RotatorComponent rotator;
    line.Read(rotator.degreesPerSecond);
    context.entity.components.Set(rotator);
}

constexpr std::array kRecords = {
    EntityRecord{"transform", &ReadTransform},
    EntityRecord{"prefab_instance", &ReadPrefabInstance},
    EntityRecord{"gameplay_layer", &ReadGameplayLayer},
    EntityRecord{"rotator", &ReadRotator},
};

} // namespace

std::span<const EntityRecord> CoreRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
