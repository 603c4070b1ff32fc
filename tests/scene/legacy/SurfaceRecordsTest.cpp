#include "engine/scene/components/OceanComponents.h"
#include "engine/scene/components/SplineComponents.h"
#include "engine/scene/components/TerrainComponents.h"
#include "tests/scene/legacy/LegacyText.h"

#include <limits>
#include <utility>
#include <vector>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::ExpectParts;
using Test::ExpectRows;
using Test::LegacyText;

const std::string kNamedGuid = "scene_version 6\nentity \"11111111222233334444555555555555\" \"E\"\n";

std::string Numbers(int count, const std::string& number)
{
    std::string all;
    for (int i = 0; i < count; ++i)
    {
        all += " " + number;
    }
    return all;
}

TEST(TerrainRecords, DetailsMakeATerrainOfTheirOwn)
{
    ExpectRows("TerrainComponent",
               {{"terrain", "surfaceLayer=Default;"},
                {"terrain 1 2 3 4 5 \"\" 99 99 1", "width=1;length=2;brushMode=PaintLayer;brushRadius=1;"
                                                   "resolutionX=4;resolutionZ=5;surfaceLayer=Interactable;"},
                {"terrain_weights 0", ""}});
    ExpectParts("TerrainComponent", {{"terrain_layer \"Moss\"", "name=Moss;surfaceLayer=Default;"}});
    LegacyText legacy;
    const std::string text = "scene_version 5\nentity \"\" \"E\"\n";
    const auto terrain = [&]() -> const TerrainComponent&
    { return legacy.scene.Get<TerrainComponent>(legacy.scene.AliveEntities()[0]); };
    EXPECT_EQ(legacy.Read(text + "terrain_heights 4 1 2\nterrain_weights 2 0.5 x"), "");
    EXPECT_EQ(terrain().heights, (std::vector<float>{1, 2, 0, 0}));
    EXPECT_EQ(terrain().layerWeights, (std::vector<float>{0.5f, 0}));
    EXPECT_EQ(legacy.Read(text + "terrain_layer \"Moss\"\nterrain"), "");
    EXPECT_TRUE(terrain().layers.empty());
    EXPECT_EQ(legacy.Read(kNamedGuid + "terrain_layer \"Moss\"\nterrain"),
              "Failed to parse scene file at line 4: Duplicate terrain component.");
    const std::string named = "component_schema \"TerrainComponent\" 1 0\nend_component_schema\n"
                              "component_schema \"TerrainSampleCounts\" 1 0\nend_component_schema\n";
    for (const char* const detail : {"terrain_layer", "terrain_heights", "terrain_weights"})
    {
        EXPECT_EQ(
            legacy.Read(kNamedGuid + named + detail),
            "Failed to parse scene file at line 7: Legacy terrain detail cannot modify named settings.");
    }
}

TEST(OceanRecords, TheOldestFormIsDerivedOrDropped)
{
    LegacyText legacy;
    const auto ocean = [&](const std::string& resolution, const std::string& size, const std::string& rest)
    {
        const std::string text = "scene_version 2\nentity \"\" \"E\"\nocean 1 1 7 " + resolution + " " +
                                 size + " 0 0" + rest + "\n";
        EXPECT_EQ(legacy.Read(text), "");
        return legacy.scene.TryGet<OceanComponent>(legacy.scene.AliveEntities()[0]);
    };
    const std::string rest = " 5 0 0.5 -1 0.5 0.25 0 0" + Numbers(12, "0.5");
    for (const auto& [resolution, quality] : {std::pair("64", OceanQuality::Low),
                                              {"65", OceanQuality::Medium},
                                              {"128", OceanQuality::Medium},
                                              {"129", OceanQuality::High},
                                              {"256", OceanQuality::High},
                                              {"257", OceanQuality::Ultra}})
    {
        const OceanComponent* const made = ocean(resolution, "0.5", rest);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->quality, quality) << resolution;
        EXPECT_EQ(made->preset, OceanPreset::Custom);
        EXPECT_EQ(made->bodySize, glm::vec2(1.0f));
        EXPECT_EQ(made->renderDistance, 8.0f);
        EXPECT_EQ(made->animationSpeed, 0.0f);
        EXPECT_EQ(made->shortWaveStrength, 2.0f);
        EXPECT_EQ(made->shortWaveScale, 15.0f);
        EXPECT_FLOAT_EQ(made->causticsScale, 2.34f);
    }
    EXPECT_EQ(ocean("64", "10", " 5 0 0.5"), nullptr);
    // One that is dropped leaves the one before it.
    EXPECT_EQ(legacy
                  .Changes("scene_version 2\nentity \"\" \"E\"\nocean 0 1 7 64 9 0 0" + rest + "\nocean 1",
                           "OceanComponent")
                  .substr(0, 10),
              "enabled=0;");
}

TEST(OceanRecords, LaterFormsMustBeWhole)
{
    const std::string head = " 1 1 1 2 0 2048 2048 500 1400";
    const std::string text = "scene_version 2\nentity \"\" \"E\"\n";
    LegacyText legacy;
    const auto fault = [&](const std::string& record) { return legacy.Read(text + record); };
    EXPECT_EQ(fault("ocean_v2 1"), "Malformed ocean_v2 record.");
    EXPECT_EQ(fault("ocean_v4" + head + Numbers(51, "0.5")), "Malformed ocean_v4 record.");
    EXPECT_EQ(fault("ocean_v4" + head + Numbers(52, "0.5")), "Malformed ocean_v4 record.");
    EXPECT_EQ(fault("ocean_v4" + head + Numbers(52, "0.5") + " 1"), "");
    EXPECT_EQ(fault("ocean_v3" + head + Numbers(52, "0.5") + " 1"), "Malformed ocean_v3 record.");
    EXPECT_EQ(fault("ocean_v5" + head + Numbers(55, "0.5")), "Malformed ocean_v5 reflection settings.");
    EXPECT_EQ(fault("ocean_v6" + head + Numbers(61, "0.5")), "Malformed ocean_v6 caustics settings.");
    EXPECT_EQ(fault("ocean_v6" + head + Numbers(62, "0.5")), "Malformed ocean_v6 record.");
    EXPECT_EQ(fault("ocean_v6" + head + Numbers(62, "0.5") + " 1"), "");
    EXPECT_EQ(legacy.scene.Get<OceanComponent>(legacy.scene.AliveEntities()[0]).causticsScale, 0.5f);
    EXPECT_EQ(legacy.Read(kNamedGuid + "ocean_v6" + head + Numbers(62, "0.5") + " 1\nocean"),
              "Failed to parse scene file at line 4: Duplicate ocean component.");
    EXPECT_EQ(fault("ocean_wave x\nocean_caustics_layer"), "");
}

TEST(OceanRecords, TheSecondFormTurnsItsNumbersAround)
{
    LegacyText legacy;
    const auto ocean = [&](const std::string& extent, const std::string& murkiness)
    {
        const std::string record = "ocean_v2 1 1 7 -3 9" + Numbers(9, "0.5") + " " + extent +
                                   Numbers(3, "0.5") + Numbers(22, "0.01") + " 0.5 3 \"x\"" +
                                   Numbers(4, "0.5") + " " + murkiness + Numbers(7, "0.5") + " 1";
        EXPECT_EQ(legacy.Read("scene_version 2\nentity \"\" \"E\"\n" + record), "");
        return legacy.scene.Get<OceanComponent>(legacy.scene.AliveEntities()[0]);
    };
    const OceanComponent wide = ocean("1000", "0");
    EXPECT_EQ(wide.preset, OceanPreset::Calm);
    EXPECT_EQ(wide.quality, OceanQuality::Ultra);
    EXPECT_EQ(wide.bodySize, glm::vec2(1000.0f));
    EXPECT_EQ(wide.renderDistance, 650.0f);
    EXPECT_EQ(wide.underwaterVisibility, 10000.0f);
    EXPECT_EQ(wide.foamScale, 0.5f);
    EXPECT_EQ(wide.shoreFoamDistance, 0.05f);
    EXPECT_EQ(ocean("2", "0.5").renderDistance, 8.0f);
    EXPECT_EQ(ocean("0", "0.5").bodySize, glm::vec2(1.0f));
}

TEST(SplineRecords, DetailsChangeTheSplineInPlace)
{
    constexpr char kSpline[] = "SplineComponentRecord";
    ExpectRows(kSpline, {{"spline 1 5", "closed=1;curveType=Hermite;"},
                         {"spline 0 0 1 1 1 1 0 1", "cacheSamplesPerSegment=2;"},
                         {"spline 0 0 1 1 1 1 0 300", "cacheSamplesPerSegment=256;"},
                         {"spline_material \"builtin:Red\"\nspline_material_slot 2 \"\"",
                          "material=builtin:Red;builtin:Red;builtin:Red;;"},
                         {"spline_material \"builtin:Red\"\nspline_material", "material=builtin:Red;"},
                         {"spline_material \"builtin:Red\"\nspline_material \"", ""},
                         {"spline_segment_material 3 1", "0;0;0;1;"},
                         {"spline_segment_material 1 5\nspline_segment_material 1", "0;5;"},
                         {"spline_mesh 9 7\nspline_mesh 0", "sampleCount=7;"},
                         {"spline_mesh 9 7\nspline", ""},
                         {"spline_uv 9 2 3", "uvMode=StretchToMesh;uTiling=2;vTiling=3;"}});
    ExpectParts(kSpline,
                {{"spline_point 1 2 3 4 5 6 7 8 9 10 11 12 13",
                  "position=1 2 3;tangentIn=4 5 6;tangentOut=7 8 9;rollRadians=10;scale=11 12 13;"}});
    LegacyText legacy;
    for (const auto& [end, width] : {std::pair("", 1.0f), {" x", 1.0f}, {" 5", 5.0f}})
    {
        EXPECT_EQ(legacy.Read("scene_version 1\nentity \"\" \"E\"\nspline_point" + Numbers(13, "2") + end),
                  "");
        const auto& spline = legacy.scene.Get<SplineComponent>(legacy.scene.AliveEntities()[0]);
        EXPECT_EQ(spline.spline.points.at(0).width, width) << end;
    }
    EXPECT_EQ(legacy.Read(kNamedGuid + "spline_mesh 1\nspline"),
              "Failed to parse scene file at line 4: Duplicate spline record.");
    const std::string named = "component_schema \"SplineComponentRecord\" 1 0\nend_component_schema\n";
    for (const char* const detail : {"spline_mesh", "spline_uv", "spline_material", "spline_material_slot",
                                     "spline_segment_material", "spline_point"})
    {
        EXPECT_EQ(legacy.Read(kNamedGuid + named + detail),
                  "Failed to parse scene file at line 5: Legacy spline detail cannot modify a named record.");
    }
    EXPECT_EQ(legacy.Read(kNamedGuid + "spline_segment_material 4000000000 1"),
              "Failed to parse scene file at line 3: spline_segment_material index exceeds the limit of "
              "65536 elements.");
    // A named spline reaches its entity though it is held back.
    EXPECT_EQ(legacy.Read(kNamedGuid + "component_schema \"TransformComponent\" 1 0\nend_component_schema\n" +
                          named + "end_entity\n"),
              "");
    EXPECT_TRUE(legacy.scene.Has<SplineComponent>(legacy.scene.AliveEntities()[0]));
}

} // namespace
} // namespace Vornu::Scene::Legacy
