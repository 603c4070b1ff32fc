#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

enum class SplineCurveType : std::uint8_t
{
    CatmullRom = 0,
    Hermite = 1,
};

enum class SplineMeshType : std::uint8_t
{
    Tube = 0,
    Ribbon = 1,
};

enum class SplineUvMode : std::uint8_t
{
    WholeLength = 0,
    PerSegment = 1,
    DistanceTiled = 2,
    StretchToMesh = 3,
};

struct SplinePoint
{
    glm::vec3 position{0.0f};
    glm::vec3 tangentIn{-0.5f, 0.0f, 0.0f};
    glm::vec3 tangentOut{0.5f, 0.0f, 0.0f};
    float rollRadians = 0.0f;
    glm::vec3 scale{1.0f};
    float width = 1.0f;

    friend bool operator==(const SplinePoint&, const SplinePoint&) = default;
};

inline constexpr std::uint32_t kMinSplineCacheSamples = 2;
inline constexpr std::uint32_t kMaxSplineCacheSamples = 256;

struct SplineCurveRecord
{
    bool closed = false;
    SplineCurveType curveType = SplineCurveType::CatmullRom;
    std::uint32_t cacheSamplesPerSegment = 16;
    std::vector<SplinePoint> points;

    friend bool operator==(const SplineCurveRecord&, const SplineCurveRecord&) = default;
};

struct SplineMeshSettings
{
    SplineMeshType meshType = SplineMeshType::Tube;
    SplineUvMode uvMode = SplineUvMode::WholeLength;
    std::uint32_t sampleCount = 32;
    bool useDistanceSpacing = false;
    float sampleSpacing = 0.5f;
    float radius = 0.15f;
    float width = 1.0f;
    std::uint32_t radialSegments = 12;
    float uTiling = 1.0f;
    float vTiling = 1.0f;
    float uOffset = 0.0f;
    float vOffset = 0.0f;
    bool flipU = false;
    bool flipV = false;

    friend bool operator==(const SplineMeshSettings&, const SplineMeshSettings&) = default;
};

/// Stored form of a spline.
struct SplineComponentRecord
{
    SplineCurveRecord spline;
    SplineMeshSettings meshSettings;
    Assets::AssetId material = 0;
    std::vector<Assets::AssetId> materialSlots;
    std::vector<std::uint32_t> segmentMaterialSlots;
    std::uint32_t selectedPoint = 0;
    bool generateMesh = true;
    bool showDebug = true;
    bool showTangents = true;
    bool showDirectionMarkers = true;
};

struct SplineComponent : SplineComponentRecord
{
    // Run-time state.
    Assets::AssetId generatedMesh = 0;
    bool meshDirty = true;
};

} // namespace Vornu::Scene
