#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <array>
#include <string>

namespace Vornu::Scene::Legacy
{
namespace
{

/// Reads up to `count` elements, which a line may claim without holding them.
template<class Element>
void ReadList(RecordLine& line, std::uint32_t count, std::vector<Element>& list)
{
    list.clear();
    Element element{};
    while (list.size() < count && line.Read(element))
    {
        list.push_back(element);
    }
}

PathShapeMode ShapeOf(std::uint32_t number)
{
    return number > static_cast<std::uint32_t>(PathShapeMode::Organic) ? PathShapeMode::Linear
                                                                       : static_cast<PathShapeMode>(number);
}

/// Stage by stage, each only behind a whole one.
void ReadPath(RecordLine& line, PathWalkerComponent& walker)
{
    std::uint32_t count = 0;
    if (!line.Read(walker.previewInEditMode, walker.selectedDestinationPoint, count))
    {
        return;
    }
    ReadList(line, count, walker.destinationPoints);
    std::uint32_t shape = 0;
    if (!line.Read(shape, walker.pathSmoothing, walker.pathSubdivisions, walker.pathVariation,
                   walker.pathVariationSeed))
    {
        return;
    }
    walker.pathShape = ShapeOf(shape);
    if (line.Read(count))
    {
        ReadList(line, count, walker.destinationPointSpeeds);
    }
}

/// One speed for each point, and a selection among them.
void FitToPoints(PathWalkerComponent& walker)
{
    const std::size_t points = walker.destinationPoints.size();
    walker.destinationPointSpeeds.resize(points, walker.speed);
    for (float& speed : walker.destinationPointSpeeds)
    {
        speed = std::max(speed, 0.0f);
    }
    const auto last = static_cast<std::uint32_t>(points > 0 ? points - 1 : 0);
    walker.selectedDestinationPoint = std::min(walker.selectedDestinationPoint, last);
}

void ReadPathWalker(RecordLine& line, RecordContext& context)
{
    auto walker = BeginComponent<PathWalkerComponent>(context, "Duplicate PathWalkerComponent record.");
    line.Read(AssetField{walker.navigationMesh}, walker.destination, walker.speed, walker.acceleration,
              walker.radius, walker.height, walker.stoppingDistance, walker.hasDestination,
              walker.autoRepath);
    ReadPath(line, walker);
    walker.pathSmoothing = std::clamp(walker.pathSmoothing, 0.0f, 1.0f);
    walker.pathSubdivisions = std::clamp(walker.pathSubdivisions, 1u, 16u);
    walker.pathVariation = std::max(walker.pathVariation, 0.0f);
    FitToPoints(walker);
    context.entity.components.Set(std::move(walker));
}

void ReadBake(RecordLine& line, RecordContext& context)
{
    auto bake = BeginComponent<NavigationBakeComponent>(context, "Duplicate navigation_bake component.");
    line.Read(bake.includeInBake, CutField{bake.role, NavigationBakeRole::Obstacle}, bake.layer);
    if (bake.layer.empty())
    {
        bake.layer = NavigationBakeComponent().layer;
    }
    context.entity.components.Set(std::move(bake));
}

void ReadBlackboardValue(RecordLine& line, RecordContext& context)
{
    RefuseNamedRecord(context, "BlackboardComponent",
                      "Legacy blackboard value cannot modify a named schema.");
    BlackboardValue value;
    line.Read(value.key, CutField{value.type, BlackboardValueType::String}, value.boolValue, value.floatValue,
              value.vec3Value, value.stringValue);
    context.entity.components.FindOrAdd<BlackboardComponent>().values.push_back(std::move(value));
}

void ReadAiController(RecordLine& line, RecordContext& context)
{
    auto controller =
        BeginComponent<AIControllerComponent>(context, "Duplicate AIControllerComponent record.");
    line.Read(controller.enabled, AssetField{controller.behaviorTree}, controller.restartOnTreeChange);
    context.entity.components.Set(std::move(controller));
}

constexpr std::array kRecords = {
    EntityRecord{"path_walker", &ReadPathWalker},
    EntityRecord{"navigation_bake", &ReadBake},
    EntityRecord{"blackboard_value", &ReadBlackboardValue},
    EntityRecord{"ai_controller", &ReadAiController},
};

} // namespace

std::span<const EntityRecord> NavigationRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
