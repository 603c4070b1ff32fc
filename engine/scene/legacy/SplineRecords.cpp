#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadSpline(RecordLine& line, RecordContext& context)
{
    auto spline = BeginComponent<SplineComponent>(context, "Duplicate spline record.");
    SplineCurveRecord& curve = spline.spline;
    line.Read(curve.closed, CutField{curve.curveType, SplineCurveType::Hermite}, spline.generateMesh,
              spline.showDebug, spline.showTangents, spline.showDirectionMarkers, spline.selectedPoint,
              curve.cacheSamplesPerSegment);
    curve.cacheSamplesPerSegment =
        std::clamp(curve.cacheSamplesPerSegment, kMinSplineCacheSamples, kMaxSplineCacheSamples);
    context.entity.components.Set(std::move(spline));
}

/// The spline that a detail record changes.
SplineComponent& SplineOf(RecordContext& context)
{
    RefuseNamedRecord(context, "SplineComponentRecord", "Legacy spline detail cannot modify a named record.");
    return context.entity.components.FindOrAdd<SplineComponent>();
}

void ReadMesh(RecordLine& line, RecordContext& context)
{
    SplineMeshSettings& mesh = SplineOf(context).meshSettings;
    line.Read(CutField{mesh.meshType, SplineMeshType::Ribbon}, mesh.sampleCount, mesh.useDistanceSpacing,
              mesh.sampleSpacing, mesh.radius, mesh.width, mesh.radialSegments);
}

void ReadUv(RecordLine& line, RecordContext& context)
{
    SplineMeshSettings& mesh = SplineOf(context).meshSettings;
    line.Read(CutField{mesh.uvMode, SplineUvMode::StretchToMesh}, mesh.uTiling, mesh.vTiling, mesh.uOffset,
              mesh.vOffset, mesh.flipU, mesh.flipV);
}

void ReadMaterial(RecordLine& line, RecordContext& context)
{
    line.Read(AssetField{SplineOf(context).material});
}

void ReadMaterialSlot(RecordLine& line, RecordContext& context)
{
    SplineComponent& spline = SplineOf(context);
    std::uint32_t slot = 0;
    line.Read(slot);
    line.Read(AssetField{ElementAt(context, spline.materialSlots, slot, spline.material)});
}

void ReadSegmentMaterial(RecordLine& line, RecordContext& context)
{
    SplineComponent& spline = SplineOf(context);
    std::uint32_t segment = 0;
    line.Read(segment);
    line.Read(ElementAt(context, spline.segmentMaterialSlots, segment));
}

void ReadPoint(RecordLine& line, RecordContext& context)
{
    SplineComponent& spline = SplineOf(context);
    SplinePoint point;
    line.Read(point.position, point.tangentIn, point.tangentOut, point.rollRadians, point.scale);
    line.ReadTogether(point.width);
    spline.spline.points.push_back(point);
}

constexpr std::array kRecords = {
    EntityRecord{"spline", &ReadSpline},
    EntityRecord{"spline_mesh", &ReadMesh},
    EntityRecord{"spline_uv", &ReadUv},
    EntityRecord{"spline_material", &ReadMaterial},
    EntityRecord{"spline_material_slot", &ReadMaterialSlot},
    EntityRecord{"spline_segment_material", &ReadSegmentMaterial},
    EntityRecord{"spline_point", &ReadPoint},
};

} // namespace

std::span<const EntityRecord> SplineRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
