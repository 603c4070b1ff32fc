#include "engine/scene/components/Registration.h"

#include "engine/scene/components/NavigationComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterNavigationComponents()
{
    Reflection::RegisterEnum<NavigationBakeRole>("NavigationBakeRole",
                                                 {
                                                     {NavigationBakeRole::Ignore, "Ignore"},
                                                     {NavigationBakeRole::Walkable, "Walkable"},
                                                     {NavigationBakeRole::Obstacle, "Obstacle"},
                                                 });
    Reflection::RegisterEnum<PathShapeMode>("PathShapeMode", {
                                                                 {PathShapeMode::Linear, "Linear"},
                                                                 {PathShapeMode::Smooth, "Smooth"},
                                                                 {PathShapeMode::Organic, "Organic"},
                                                             });
    Reflection::RegisterEnum<NavAgentAvoidance>("NavAgentAvoidance",
                                                {
                                                    {NavAgentAvoidance::None, "None"},
                                                    {NavAgentAvoidance::Low, "Low"},
                                                    {NavAgentAvoidance::Medium, "Medium"},
                                                    {NavAgentAvoidance::High, "High"},
                                                });
    Reflection::RegisterEnum<NavAgentStatus>("NavAgentStatus",
                                             {
                                                 {NavAgentStatus::Idle, "Idle"},
                                                 {NavAgentStatus::Moving, "Moving"},
                                                 {NavAgentStatus::Arrived, "Arrived"},
                                                 {NavAgentStatus::Unreachable, "Unreachable"},
                                                 {NavAgentStatus::NoNavMesh, "NoNavMesh", "No NavMesh"},
                                             });
    Reflection::RegisterEnum<NavLinkType>("NavLinkType", {
                                                             {NavLinkType::Generic, "Generic"},
                                                             {NavLinkType::Jump, "Jump"},
                                                             {NavLinkType::Ladder, "Ladder"},
                                                         });

    RegisterComponent<NavigationBakeComponent>("NavigationBakeComponent", "Navigation Bake", "Navigation",
                                               kAddable)
        .Description(
            "Controls whether this object is ignored, walkable, or an obstacle during VornuNavMesh baking.")
        .Field("includeInBake", &NavigationBakeComponent::includeInBake, Label("Include In Bake"))
        .Field("role", &NavigationBakeComponent::role, Label("Role"))
        .Field("layer", &NavigationBakeComponent::layer, Label("Layer"));

    RegisterComponent<PathWalkerComponent>("PathWalkerComponent", "Path Walker", "Navigation", kAddable)
        .Description("Moves the entity along VornuNavMesh paths to its destinations.")
        .Field("navigationMesh", &PathWalkerComponent::navigationMesh,
               Label("Navigation Mesh").Asset("VornuNavMesh"))
        .Field("destination", &PathWalkerComponent::destination, Label("Destination"))
        .Field("speed", &PathWalkerComponent::speed, Label("Speed").Range(0, 1000))
        .Field("acceleration", &PathWalkerComponent::acceleration, Label("Acceleration").Range(0, 10000))
        .Field("radius", &PathWalkerComponent::radius, Label("Radius").Range(0, 1000))
        .Field("height", &PathWalkerComponent::height, Label("Height").Range(0, 1000))
        .Field("stoppingDistance", &PathWalkerComponent::stoppingDistance,
               Label("Stopping Distance").Range(0, 1000))
        .Field("autoRepath", &PathWalkerComponent::autoRepath, Label("Auto Repath"))
        .Field("previewInEditMode", &PathWalkerComponent::previewInEditMode, Label("Preview In Edit Mode"))
        .Field("pathShape", &PathWalkerComponent::pathShape, Label("Path Shape").Group("Path Shape"))
        .Field("pathSmoothing", &PathWalkerComponent::pathSmoothing,
               Label("Smoothing").Range(0, 1).Group("Path Shape"))
        .Field("pathSubdivisions", &PathWalkerComponent::pathSubdivisions,
               Label("Subdivisions").Range(1, 16).Group("Path Shape"))
        .Field("pathVariation", &PathWalkerComponent::pathVariation,
               Label("Variation").Range(0, 1000).Group("Path Shape"))
        .Field("pathVariationSeed", &PathWalkerComponent::pathVariationSeed,
               Label("Variation Seed").Group("Path Shape"))
        .Field("selectedDestinationPoint", &PathWalkerComponent::selectedDestinationPoint,
               Label("Selected Destination Point"))
        .Field("destinationPoints", &PathWalkerComponent::destinationPoints, Label("Destination Points"))
        .Field("destinationPointSpeeds", &PathWalkerComponent::destinationPointSpeeds,
               Label("Destination Point Speeds"))
        .Version(2)
        .AddTransient(&PathWalkerComponent::hasDestination)
        .Migrate([](Reflection::SchemaRecord& record, std::uint32_t)
                 { record.RemoveFields({"hasDestination"}); });

    RegisterComponent<NavMeshSurfaceComponent>("NavMeshSurfaceComponent", "NavMesh Surface", "Navigation",
                                               kAddable)
        .Description("Tiled navmesh of the level (Recast/Detour): bake settings for the agent profile and "
                     "the baked .vnav asset.")
        .Field("enabled", &NavMeshSurfaceComponent::enabled, Label("Enabled"))
        .Field("navMesh", &NavMeshSurfaceComponent::navMesh, Label("Baked NavMesh").Asset("VornuNavMesh"))
        .Field("agentRadius", &NavMeshSurfaceComponent::agentRadius,
               Label("Agent Radius").Range(0, 10).Group("Agent"))
        .Field("agentHeight", &NavMeshSurfaceComponent::agentHeight,
               Label("Agent Height").Range(0.1f, 20).Group("Agent"))
        .Field("agentMaxClimb", &NavMeshSurfaceComponent::agentMaxClimb,
               Label("Max Climb").Range(0, 10).Group("Agent"))
        .Field("agentMaxSlopeDegrees", &NavMeshSurfaceComponent::agentMaxSlopeDegrees,
               Label("Max Slope").Range(0, 89).Group("Agent"))
        .Field("cellSize", &NavMeshSurfaceComponent::cellSize,
               Label("Cell Size").Range(0.02f, 4).Group("Bake"))
        .Field("cellHeight", &NavMeshSurfaceComponent::cellHeight,
               Label("Cell Height").Range(0.01f, 4).Group("Bake"))
        .Field("tileSizeCells", &NavMeshSurfaceComponent::tileSizeCells,
               Label("Tile Size (cells)").Range(8, 1024).Group("Bake"))
        .Field("boundsCenter", &NavMeshSurfaceComponent::boundsCenter, Label("Bounds Center").Group("Bake"))
        .Field("boundsSize", &NavMeshSurfaceComponent::boundsSize, Label("Bounds Size").Group("Bake"))
        .Field("layerFilter", &NavMeshSurfaceComponent::layerFilter, Label("Layer Filter").Group("Bake"))
        .Field("bakeAtRuntimeIfMissing", &NavMeshSurfaceComponent::bakeAtRuntimeIfMissing,
               Label("Bake At Runtime If Missing"))
        .Field("dynamicTiles", &NavMeshSurfaceComponent::dynamicTiles, Label("Dynamic Tiles"))
        .Field("dynamicCheckIntervalSeconds", &NavMeshSurfaceComponent::dynamicCheckIntervalSeconds,
               Label("Dynamic Check Interval").Range(0, 60));

    RegisterComponent<NavAgentComponent>("NavAgentComponent", "NavMesh Agent", "Navigation", kAddable)
        .Description("Follows tiled navmesh paths with local avoidance; walks through the Character "
                     "Controller when present.")
        .Field("enabled", &NavAgentComponent::enabled, Label("Enabled"))
        .Field("radius", &NavAgentComponent::radius, Label("Radius").Range(0.05f, 10))
        .Field("height", &NavAgentComponent::height, Label("Height").Range(0.1f, 20))
        .Field("maxSpeed", &NavAgentComponent::maxSpeed, Label("Max Speed").Range(0, 100))
        .Field("maxAcceleration", &NavAgentComponent::maxAcceleration,
               Label("Max Acceleration").Range(0, 1000))
        .Field("stoppingDistance", &NavAgentComponent::stoppingDistance,
               Label("Stopping Distance").Range(0, 100))
        .Field("avoidance", &NavAgentComponent::avoidance, Label("Avoidance"))
        .Field("separationWeight", &NavAgentComponent::separationWeight,
               Label("Separation Weight").Range(0, 20))
        .Field("useJumpLinks", &NavAgentComponent::useJumpLinks, Label("Use Jump Links"))
        .Field("useLadderLinks", &NavAgentComponent::useLadderLinks, Label("Use Ladder Links"))
        .Field("status", &NavAgentComponent::status, Label("Status").With(PropertyFlags::Runtime));

    RegisterComponent<NavAreaComponent>("NavAreaComponent", "NavMesh Area", "Navigation", kAddable)
        .Description("Navigation area (traversal cost) of this entity's surface, or of a box volume.")
        .Field("enabled", &NavAreaComponent::enabled, Label("Enabled"))
        .Field("area", &NavAreaComponent::area, Label("Area").Range(0, 59))
        .Field("cost", &NavAreaComponent::cost, Label("Cost").Range(0.01f, 1000))
        .Field("volume", &NavAreaComponent::volume, Label("Volume"))
        .Field("volumeHalfExtents", &NavAreaComponent::volumeHalfExtents, Label("Volume Half Extents"));

    RegisterComponent<NavOffMeshLinkComponent>("NavOffMeshLinkComponent", "NavMesh Link", "Navigation",
                                               kAddable)
        .Description("Off-mesh connection (jump, ladder) between two points near the navmesh.")
        .Field("enabled", &NavOffMeshLinkComponent::enabled, Label("Enabled"))
        .Field("localStart", &NavOffMeshLinkComponent::localStart, Label("Start"))
        .Field("localEnd", &NavOffMeshLinkComponent::localEnd, Label("End"))
        .Field("radius", &NavOffMeshLinkComponent::radius, Label("Radius").Range(0.05f, 10))
        .Field("bidirectional", &NavOffMeshLinkComponent::bidirectional, Label("Bidirectional"))
        .Field("type", &NavOffMeshLinkComponent::type, Label("Type"))
        .Field("cost", &NavOffMeshLinkComponent::cost, Label("Cost").Range(0.01f, 1000));
}

} // namespace Vornu::Scene
