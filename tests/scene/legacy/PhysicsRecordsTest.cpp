#include "engine/scene/components/ClothComponents.h"
#include "tests/scene/legacy/LegacyText.h"

#include <limits>
#include <utility>
#include <vector>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::ExpectRows;
using Test::LegacyText;

std::string Repeat(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

TEST(PhysicsRecords, BodiesAndColliders)
{
    ExpectRows("RigidBodyComponent", {{"rigid_body", "bodyType=Static;"},
                                      {"rigid_body 9", "bodyType=Kinematic;"},
                                      {"rigid_body 1 5 0 0 1 7 7 7 8 8 8 0",
                                       "mass=5;linearDamping=0;angularDamping=0;enabled=0;"}});
    const std::string collider =
        "collider 0 0.6 0.6 0 1000 0 4294967295 0 0 0 0 0 0 0 0.5 0.5 0.5 0.5 0.5 1.8 \"\" 1 1 0 1";
    ExpectRows("ColliderComponent", {{collider, ""},
                                     {collider + " 7 4", "meshGeometry=BoundsBox;convexHullMaxPoints=16;"},
                                     {collider + " 1 1000", "meshGeometry=TriangleMesh;"},
                                     {collider + " x 20", ""},
                                     {"collider -1", "shape=Mesh;"}});
}

TEST(PhysicsRecords, ConstraintsEndWithTheGuidOfTheirPlaceInTheFile)
{
    LegacyText legacy;
    const std::string guid = "11111111-2222-3333-4444-555555555555";
    for (const auto& [place, linked] : {std::pair("2", guid), {"0", ""}, {"3", ""}, {"4294967295", ""}})
    {
        const std::string text = "scene_version 4\nentity \"\" \"E\"\nconstraint 1 " + std::string(place) +
                                 " 1 2 3\nentity \"" + guid + "\" \"F\"\n";
        EXPECT_EQ(legacy.Changes(text, "ConstraintComponent"),
                  "localAnchor=1 2 3;" + (linked.empty() ? "" : "connectedEntityGuid=" + linked + ";"));
    }
}

TEST(PhysicsRecords, BuoyancyMustBeWholeAndWithinBounds)
{
    const std::string common = " 1 1 \"\" 0 0 0 0.5 0.5 0.5 8 1025 1 1 1.5 0.8 0.18";
    const std::string wake = " 0 9 0 0 0 0 100";
    const std::string force = " 5 0 0";
    const std::string bounded =
        "wakeStrength=4;wakeWidth=0.0500000007;wakeLifetime=0.100000001;wakeSpacing=0.0500000007;"
        "wakeMinimumSpeed=0.00999999978;maximumWakePoints=32;";
    ExpectRows("BuoyancyComponent",
               {{"buoyancy_v1" + common + " 1", "debugDraw=1;"},
                {"buoyancy_v2" + common + wake + " 0", bounded},
                {"buoyancy_v4" + common + wake + force + " 7 1 99 -1 0 0",
                 "samplingMode=CustomPoints;forceModel=PhysicalDisplacement;targetSubmersion=0.0500000007;"
                 "hullVolumeScale=0.00999999978;canFlip=1;uprightStiffness=20;uprightDamping=0;" +
                     bounded},
                {"buoyancy_v1", "<Malformed buoyancy_v1 record.>"},
                {"buoyancy_v1" + common, "<Malformed buoyancy_v1 record.>"},
                {"buoyancy_v3" + common + " 0 1", "<Malformed buoyancy_v3 wake settings.>"},
                {"buoyancy_v3" + common + wake, "<Malformed buoyancy_v3 force settings.>"},
                {"buoyancy_v3" + common + wake + force, "<Malformed buoyancy_v3 record.>"},
                {"buoyancy_v4" + common + wake + force + " 1", "<Malformed buoyancy_v4 authoring settings.>"},
                {"buoyancy_v1 1 1 \"sea\" 0 0 0 0.5 0.5 0.5 8 1025 1 1 1.5 0.8 0.18 0",
                 "<Invalid water body GUID in buoyancy_v1 record.>"},
                {"buoyancy_point 1 2 3 1 1 1", "<Buoyancy point appears before its buoyancy component.>"},
                {"buoyancy_v1" + common + " 0\nbuoyancy_point 1 2 3 -1 -1 0",
                 "localPosition=1 2 3;immersionDepth=0.00100000005;liftWeight=0;enabled=0;"},
                {"buoyancy_v1" + common + " 0\nbuoyancy_point 1 2 3", "<Malformed buoyancy_point record.>"},
                {"buoyancy_v1" + common + " 0" + Repeat("\nbuoyancy_point 0 0 0 1 1 1", 33),
                 "<Buoyancy component exceeds the maximum of 32 custom points.>"}});
    LegacyText legacy;
    EXPECT_EQ(legacy.Read("scene_version 4\nentity \"\" \"E\"\nbuoyancy_v1" + common + " 0" +
                          Repeat("\nbuoyancy_point 0 0 0 1 1 1", 32)),
              "");
    EXPECT_EQ(
        legacy.Read("scene_version 6\nentity \"11111111222233334444555555555555\" \"E\"\n"
                    "component_schema \"BuoyancyComponent\" 1 0\nend_component_schema\nbuoyancy_point 1"),
        "Failed to parse scene file at line 5: Legacy buoyancy_point cannot modify a named schema.");
}

TEST(PhysicsRecords, ClothEndsInStages)
{
    const std::string main = "cloth 1 0 \"\" 0 1 1 1 0 1 1 1 0 -9.81 0 1 0 0.25 0 0.015 0.95 0.75 0.45 "
                             "0.00002 0.00008 0.00035 4 1 "
                             "0.035 0.12 1 4294967295 0 0 0.08 0.85 2.5";
    const std::string pins = " 0.5 0.25 0.125 1 2 3 4";
    const std::string pinned =
        "paintPinsInViewport=1;pinPaintRadius=2;pinPaintStrength=3;pinPaintHardness=4;";
    const std::string welds = "seamWeldDistance=0.5;seamWeldStiffness=0.25;seamWeldCompliance=0.125;";
    ExpectRows("ClothComponent", {{main, ""},
                                  {main + " 0.5 0.25 0.125 1 2", "pinPaintRadius=2;" + welds},
                                  {main + pins, pinned + welds},
                                  {main + pins + " 99 5", pinned + "layer=31;mask=5;" + welds},
                                  {main + pins + " 3 5 1 99 1",
                                   pinned +
                                       "skinFreeParticles=1;maxSimulationStepsPerFrame=16;layer=3;mask=5;"
                                       "collideWithOwnerHierarchy=1;" +
                                       welds},
                                  {"cloth 0 1 \"\" 0 1 1 1 0 1 1 1 0 -9.81 0 1 0 0.25 0 0.015 0.95 0.75 0.45 "
                                   "0.00002 0.00008 0.00035 4 1 0.035 0.12 1 4294967295 99 9",
                                   "enabled=0;paused=1;gameplayLayer=Interactable;pinMode=Painted;"}});
}

TEST(PhysicsRecords, PinWeightsAndSamplesTakeWhatTheLineHolds)
{
    LegacyText legacy;
    const std::string text = "scene_version 5\nentity \"\" \"E\"\n";
    const std::pair<const char*, std::vector<float>> rows[] = {
        {"cloth_pin_weights 4 0.5", {0.5f, 0, 0, 0}},
        {"cloth_pin_weights 3 1 x 2", {1, 0, 0}},
        {"cloth_pin_weights 2 1 2 3", {1, 2}},
        {"cloth_pin_weights 4 1 2\ncloth_pin_weights 1 5", {5}},
        {"cloth_pin_weights 2 1e99 3", {std::numeric_limits<float>::max(), 0}},
        {"cloth_pin_weights", {}},
    };
    for (const auto& [records, weights] : rows)
    {
        EXPECT_EQ(legacy.Read(text + records), "");
        EXPECT_EQ(legacy.scene.Get<ClothComponent>(legacy.scene.AliveEntities()[0]).pinWeights, weights)
            << records;
    }
    EXPECT_EQ(legacy.Read(text + "cloth_pin_weights 2 1 1\ncloth"), "");
    EXPECT_TRUE(legacy.scene.Get<ClothComponent>(legacy.scene.AliveEntities()[0]).pinWeights.empty());
    for (const char* const keyword : {"cloth_pin_weights", "terrain_heights", "terrain_weights"})
    {
        const std::string fault = "Failed to parse scene file at line 3: " + std::string(keyword);
        for (const char* const count : {" 16777217", " 4294967295 1", " 18446744073709551615", " -1"})
        {
            EXPECT_EQ(legacy.Read(text + keyword + count),
                      fault + " count exceeds the limit of 16777216 samples.");
        }
    }
    // What is announced and missing is limited over the whole file, by what it takes in the saved one.
    const auto tooMany = [](int line)
    {
        return "Failed to parse scene file at line " + std::to_string(line) +
               ": terrain_heights asks for more empty elements than a file may have.";
    };
    EXPECT_EQ(legacy.Read(text + "terrain_heights 6710887\n"), "");
    EXPECT_EQ(legacy.Read(text + "terrain_heights 6710888\n"), tooMany(3));
    EXPECT_EQ(legacy.Read(text + Repeat("terrain_heights 3355445\n", 2)), tooMany(4));
}

TEST(PhysicsRecords, Version6KnowsOneCloth)
{
    LegacyText legacy;
    const std::string text = "scene_version 6\nentity \"11111111222233334444555555555555\" \"E\"\n";
    const std::string named = "component_schema \"ClothComponent\" 1 0\nend_component_schema\n";
    EXPECT_EQ(legacy.Read(text + "cloth_pin_weights 1 1\ncloth\ncloth"),
              "Failed to parse scene file at line 5: Duplicate cloth component.");
    EXPECT_EQ(legacy.Read(text + named + "cloth"),
              "Failed to parse scene file at line 5: Duplicate cloth component.");
    EXPECT_EQ(
        legacy.Read(text + named + "cloth_pin_weights"),
        "Failed to parse scene file at line 5: Legacy pin weights cannot modify a named cloth component.");
}

} // namespace
} // namespace Vornu::Scene::Legacy
