#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Scene
{

enum class NavigationBakeRole : std::uint8_t
{
    Ignore = 0,
    Walkable = 1,
    Obstacle = 2,
};

enum class PathShapeMode : std::uint8_t
{
    Linear = 0,
    Smooth = 1,
    Organic = 2,
};

enum class NavAgentAvoidance : std::uint8_t
{
    None = 0,
    Low = 1,
    Medium = 2,
    High = 3,
};

enum class NavAgentStatus : std::uint8_t
{
    Idle = 0,
    Moving = 1,
    Arrived = 2,
    Unreachable = 3,
    NoNavMesh = 4,
};

enum class NavLinkType : std::uint8_t
{
    Generic = 0,
    Jump = 1,
    Ladder = 2,
};

struct NavigationBakeComponent
{
    bool includeInBake = true;
    NavigationBakeRole role = NavigationBakeRole::Obstacle;
    std::string layer = "Default";
};

struct PathWalkerComponent
{
    Assets::AssetId navigationMesh = 0;
    glm::vec3 destination{0.0f};
    float speed = 3.5f;
    float acceleration = 20.0f;
    float radius = 0.35f;
    float height = 1.8f;
    float stoppingDistance = 0.1f;
    bool autoRepath = true;
    bool previewInEditMode = false;
    PathShapeMode pathShape = PathShapeMode::Linear;
    float pathSmoothing = 0.65f;
    std::uint32_t pathSubdivisions = 4;
    float pathVariation = 0.35f;
    std::uint32_t pathVariationSeed = 1;
    std::uint32_t selectedDestinationPoint = 0;
    std::vector<glm::vec3> destinationPoints;
    std::vector<float> destinationPointSpeeds;

    // Run-time state.
    bool hasDestination = false;
};

struct NavMeshSurfaceComponent
{
    bool enabled = true;
    Assets::AssetId navMesh = 0;
    float agentRadius = 0.35f;
    float agentHeight = 1.8f;
    float agentMaxClimb = 0.35f;
    float agentMaxSlopeDegrees = 50.0f;
    float cellSize = 0.2f;
    float cellHeight = 0.1f;
    std::uint32_t tileSizeCells = 64;
    glm::vec3 boundsCenter{0.0f};
    glm::vec3 boundsSize{0.0f};
    std::string layerFilter;
    bool bakeAtRuntimeIfMissing = true;
    bool dynamicTiles = false;
    float dynamicCheckIntervalSeconds = 0.5f;
};

struct NavAgentComponent
{
    bool enabled = true;
    float radius = 0.35f;
    float height = 1.8f;
    float maxSpeed = 3.5f;
    float maxAcceleration = 12.0f;
    float stoppingDistance = 0.3f;
    NavAgentAvoidance avoidance = NavAgentAvoidance::Medium;
    float separationWeight = 2.0f;
    bool useJumpLinks = true;
    bool useLadderLinks = true;
    NavAgentStatus status = NavAgentStatus::Idle;
};

struct NavAreaComponent
{
    bool enabled = true;
    std::uint32_t area = 1;
    float cost = 1.0f;
    bool volume = false;
    glm::vec3 volumeHalfExtents{1.0f};
};

struct NavOffMeshLinkComponent
{
    bool enabled = true;
    glm::vec3 localStart{0.0f};
    glm::vec3 localEnd{0.0f, 0.0f, 2.0f};
    float radius = 0.5f;
    bool bidirectional = true;
    NavLinkType type = NavLinkType::Jump;
    float cost = 1.0f;
};

} // namespace Vornu::Scene
