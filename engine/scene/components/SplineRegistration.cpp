#include "engine/scene/components/Registration.h"

#include "engine/scene/components/SplineComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

#include <stdexcept>
#include <utility>

namespace Vornu::Scene
{

namespace
{

void TakeRecord(SplineComponentRecord&& record, SplineComponent& component, const ComponentLoadContext&)
{
    const std::uint32_t samples = record.spline.cacheSamplesPerSegment;
    if (samples < kMinSplineCacheSamples || samples > kMaxSplineCacheSamples)
    {
        throw std::runtime_error("Spline cache samples must be between 2 and 256.");
    }
    static_cast<SplineComponentRecord&>(component) = std::move(record);
}

} // namespace

void RegisterSplineComponents()
{
    Reflection::RegisterEnum<SplineCurveType>("SplineCurveType",
                                              {
                                                  {SplineCurveType::CatmullRom, "CatmullRom", "Catmull-Rom"},
                                                  {SplineCurveType::Hermite, "Hermite"},
                                              });
    Reflection::RegisterEnum<SplineMeshType>("SplineMeshType",
                                             {
                                                 {SplineMeshType::Tube, "Tube"},
                                                 {SplineMeshType::Ribbon, "Ribbon", "Ribbon/Road"},
                                             });
    Reflection::RegisterEnum<SplineUvMode>(
        "SplineUvMode", {
                            {SplineUvMode::WholeLength, "WholeLength", "Whole Length"},
                            {SplineUvMode::PerSegment, "PerSegment", "Per Segment"},
                            {SplineUvMode::DistanceTiled, "DistanceTiled", "Distance Tiled"},
                            {SplineUvMode::StretchToMesh, "StretchToMesh", "Stretch To Mesh"},
                        });

    Reflection::RegisterValue<SplinePoint>("SplinePoint", "Spline Point", "World")
        .Field("position", &SplinePoint::position, Label("Position"))
        .Field("tangentIn", &SplinePoint::tangentIn, Label("Tangent In"))
        .Field("tangentOut", &SplinePoint::tangentOut, Label("Tangent Out"))
        .Field("rollRadians", &SplinePoint::rollRadians, Label("Roll Radians"))
        .Field("scale", &SplinePoint::scale, Label("Scale"))
        .Field("width", &SplinePoint::width, Label("Width"));

    Reflection::RegisterValue<SplineCurveRecord>("SplineCurveRecord", "Spline Curve", "World")
        .Field("closed", &SplineCurveRecord::closed, Label("Closed"))
        .Field("curveType", &SplineCurveRecord::curveType, Label("Curve Type"))
        .Field("cacheSamplesPerSegment", &SplineCurveRecord::cacheSamplesPerSegment,
               Label("Cache Samples Per Segment"))
        .Field("points", &SplineCurveRecord::points, Label("Points"));

    Reflection::RegisterValue<SplineMeshSettings>("SplineMeshSettings", "Spline Mesh Settings", "World")
        .Field("meshType", &SplineMeshSettings::meshType, Label("Mesh Type"))
        .Field("uvMode", &SplineMeshSettings::uvMode, Label("Uv Mode"))
        .Field("sampleCount", &SplineMeshSettings::sampleCount, Label("Sample Count"))
        .Field("useDistanceSpacing", &SplineMeshSettings::useDistanceSpacing, Label("Use Distance Spacing"))
        .Field("sampleSpacing", &SplineMeshSettings::sampleSpacing, Label("Sample Spacing"))
        .Field("radius", &SplineMeshSettings::radius, Label("Radius"))
        .Field("width", &SplineMeshSettings::width, Label("Width"))
        .Field("radialSegments", &SplineMeshSettings::radialSegments, Label("Radial Segments"))
        .Field("uTiling", &SplineMeshSettings::uTiling, Label("U Tiling"))
        .Field("vTiling", &SplineMeshSettings::vTiling, Label("V Tiling"))
        .Field("uOffset", &SplineMeshSettings::uOffset, Label("U Offset"))
        .Field("vOffset", &SplineMeshSettings::vOffset, Label("V Offset"))
        .Field("flipU", &SplineMeshSettings::flipU, Label("Flip U"))
        .Field("flipV", &SplineMeshSettings::flipV, Label("Flip V"));

    Reflection::RegisterValue<SplineComponentRecord>("SplineComponentRecord", "Spline Authoring", "World")
        .Field("spline", &SplineComponentRecord::spline, Label("Spline"))
        .Field("meshSettings", &SplineComponentRecord::meshSettings, Label("Mesh Settings"))
        .Field("material", &SplineComponentRecord::material, Label("Material").Asset("Material"))
        .Field("materialSlots", &SplineComponentRecord::materialSlots, Label("Material").Asset("Material"))
        .Field("segmentMaterialSlots", &SplineComponentRecord::segmentMaterialSlots,
               Label("Segment Material Slots"))
        .Field("selectedPoint", &SplineComponentRecord::selectedPoint, Label("Selected Point"))
        .Field("generateMesh", &SplineComponentRecord::generateMesh, Label("Generate Mesh"))
        .Field("showDebug", &SplineComponentRecord::showDebug, Label("Show Debug"))
        .Field("showTangents", &SplineComponentRecord::showTangents, Label("Show Tangents"))
        .Field("showDirectionMarkers", &SplineComponentRecord::showDirectionMarkers,
               Label("Show Direction Markers"));

    RegisterComponent<SplineComponent>("SplineComponent", "Spline", "World", kAddable)
        .Description("Creates an editable spline that can generate tube or ribbon mesh geometry.")
        .Field("material", &SplineComponent::material, Label("Material").Asset("Material"))
        .Field("generateMesh", &SplineComponent::generateMesh, Label("Generate Mesh"))
        .Field("showDebug", &SplineComponent::showDebug, Label("Show Debug"))
        .Field("showTangents", &SplineComponent::showTangents, Label("Show Tangents"))
        .Field("showDirectionMarkers", &SplineComponent::showDirectionMarkers,
               Label("Show Direction Markers"))
        .Field("meshSettings", &SplineComponent::meshSettings, Label("Mesh Settings"))
        .Field("materialSlots", &SplineComponent::materialSlots, Label("Material Slots").Asset("Material"))
        .Field("segmentMaterialSlots", &SplineComponent::segmentMaterialSlots,
               Label("Segment Material Slots"))
        .Field("selectedPoint", &SplineComponent::selectedPoint, Label("Selected Point"))
        .AddCustom(&SplineComponent::spline)
        .AddTransient(&SplineComponent::generatedMesh)
        .AddTransient(&SplineComponent::meshDirty)
        .SaveAs<SplineComponentRecord>(
            [](const SplineComponent& component, const ComponentSaveContext&) -> SplineComponentRecord
            { return component; },
            &TakeRecord)
        .OnLoad([](SplineComponent& spline, const ComponentLoadContext&) { spline.meshDirty = true; });
}

} // namespace Vornu::Scene
