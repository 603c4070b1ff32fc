#include "tests/scene/legacy/LegacyText.h"

#include <gtest/gtest.h>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::ExpectRows;
using Test::LegacyText;

TEST(LegacyRecords, Transform)
{
    ExpectRows("TransformComponent",
               {{"transform 1 2 3 4 5 6 7 8 9", "position=1 2 3;rotation=4 5 6;scale=7 8 9;"},
                {"transform 1 2 3 4 5 6", "position=1 2 3;rotation=4 5 6;"},
                {"transform 1 2 x 4 5 6 7 8 9", "position=1 2 0;"},
                {"transform 1 2 3\ntransform 7 x", "position=7 0 3;"},
                {"transform 1e2 -.5 +3. 1.5.5", "position=100 -0.5 3;rotation=1.5 0.5 0;"},
                {"transform 1e99 2", "position=3.40282347e+38 0 0;"},
                {"transform 1e-99 2", "position=0 2 0;"},
                {"transform nan 2", ""},
                {"transform 0x10 2", ""}});
}

TEST(LegacyRecords, PrefabInstance)
{
    const std::string source = "11111111-2222-3333-4444-555555555555";
    LegacyText legacy;
    legacy.assets.GetRegistry().RegisterBuiltin(Assets::AssetKind::Prefab, "Lamp");
    const struct
    {
        std::string fields;
        std::string changes;
    } rows[] = {
        {"\"builtin:Lamp\" \"" + source + "\" 21111111222233334444555555555555 0",
         "prefab=builtin:Lamp;sourceEntityGuid=" + source +
             ";instanceRootGuid=21111111-2222-3333-4444-555555555555;connected=0;"},
        {"\"gone\" \"" + source + "x\" \"\" 2", ""},
        {"\"\" \"" + source, "sourceEntityGuid=" + source + ";"},
        {"", ""},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(legacy.Changes("scene_version 2\nentity \"\" \"E\"\nprefab_instance " + row.fields + "\n",
                                 "PrefabInstanceRecord"),
                  row.changes)
            << row.fields;
    }
}

TEST(LegacyRecords, CameraLayerAndRotator)
{
    ExpectRows("CameraComponent",
               {{"camera 60 0.5 200 1", "verticalFovDegrees=60;nearClip=0.5;farClip=200;primary=1;"},
                {"camera", ""},
                {"camera 60 0.5\ncamera 30", "verticalFovDegrees=30;"},
                {"camera 60 x 200 1", "verticalFovDegrees=60;nearClip=0;"},
                {"camera 60 0.5 200 -3.7", "verticalFovDegrees=60;nearClip=0.5;farClip=200;primary=1;"}});
    ExpectRows(
        "RotatorComponent",
        {{"rotator 90", "degreesPerSecond=90;"}, {"rotator", ""}, {"rotator fast", "degreesPerSecond=0;"}});
    ExpectRows("GameplayLayerComponent", {{"gameplay_layer 5", "layer=Player;"},
                                          {"gameplay_layer 16", "layer=Interactable;"},
                                          {"gameplay_layer 200", "layer=Interactable;"},
                                          {"gameplay_layer -1", "layer=Interactable;"},
                                          {"gameplay_layer 4294967296", "layer=Interactable;"},
                                          {"gameplay_layer Player", ""},
                                          {"gameplay_layer", ""},
                                          {"gameplay_layer 3\ngameplay_layer", ""}});
}

TEST(LegacyRecords, Lights)
{
    ExpectRows("DirectionalLightComponent",
               {{"directional_light 1 2 3 4 0 1 5 6 7 8 -9 10 11 12 13 1",
                 "color=1 2 3;intensity=4;enabled=0;castsShadows=1;shadowResolution=10;shadowMaxDistance=12;"
                 "shadowBias=5;shadowNormalBias=6;shadowSlopeBias=7;shadowStrength=8;shadowPcfRadius=-9;"
                 "shadowCascadeCount=11;shadowCascadeLambda=13;showCascadeDebug=1;"},
                {"directional_light", ""},
                {"directional_light 1 2", "color=1 2 0.879999995;"},
                {"directional_light 1 2 3 4 on 1", "color=1 2 3;intensity=4;enabled=0;"}});
    ExpectRows("PointLightComponent",
               {{"point_light 1 2 3 4 5 0 1 6 7 8 9 10 11 12 13",
                 "color=1 2 3;intensity=4;range=5;inverseSquareFalloff=0;enabled=0;castsShadows=1;"
                 "shadowBias=6;shadowNormalBias=7;shadowSlopeBias=8;shadowStrength=9;shadowPcfRadius=10;"
                 "shadowResolution=11;shadowNearPlane=12;shadowFarPlane=13;"},
                {"point_light", "inverseSquareFalloff=0;"},
                {"point_light 1 2 3 4 5 0.5 1", "color=1 2 3;intensity=4;range=5;inverseSquareFalloff=0;"
                                                "enabled=0;"}});
    ExpectRows("SpotLightComponent",
               {{"spot_light 1 2 3 4 5 6 7 0 1 8 9 10 11 12 13 14 15",
                 "color=1 2 3;intensity=4;range=5;inverseSquareFalloff=0;innerAngleDegrees=6;"
                 "outerAngleDegrees=7;enabled=0;castsShadows=1;shadowBias=8;shadowNormalBias=9;"
                 "shadowSlopeBias=10;shadowStrength=11;shadowPcfRadius=12;shadowResolution=13;"
                 "shadowNearPlane=14;shadowFarPlane=15;"},
                {"spot_light", "inverseSquareFalloff=0;"},
                {"spot_light 1 2 3 4 5 6 7 1 1 8 9 10 11 99999999999 13",
                 "color=1 2 3;intensity=4;range=5;inverseSquareFalloff=0;innerAngleDegrees=6;"
                 "outerAngleDegrees=7;castsShadows=1;shadowBias=8;shadowNormalBias=9;shadowSlopeBias=10;"
                 "shadowStrength=11;shadowPcfRadius=2147483647;"}});
}

TEST(LegacyRecords, MeshRenderer)
{
    const char* const none = "material=builtin:Builtin/DefaultMaterial;builtin:Builtin/DefaultMaterial;";
    const char* const red = "material=builtin:Red;builtin:Red;";
    const std::string tail = "enableLod=1;forceLodLevel=1;forcedLodLevel=2;lodDistanceScale=3;"
                             "maxDrawDistance=4;";
    const std::string eight = red + std::string("visible=0;occluder=0;allowOcclusion=0;") + tail;
    const std::string nine = red + std::string("skinningEnabled=0;visible=0;") + tail;
    const std::string wrapped =
        red + std::string("forcedLodLevel=4294967295;lodDistanceScale=0;") + "maxDrawDistance=0.5;";
    ExpectRows("MeshRendererComponent",
               {{"mesh_renderer", none},
                {"mesh_renderer \"gone\" \"builtin:Red\"", red},
                {"mesh_renderer \"builtin:Box\" \"builtin:Red\" \"gone\"",
                 "mesh=builtin:Box;material=builtin:Red;builtin:Red;"},
                {"mesh_renderer \"\" \"builtin:Red\" \"\" x x x x x x x", red},
                {"mesh_renderer \"\" \"builtin:Red\" \"\" 0 0 0 1 1 2 3 4", eight.c_str()},
                {"mesh_renderer \"\" \"builtin:Red\" \"\" 0 0 1 1 1 1 2 3 4 x", nine.c_str()},
                {"mesh_renderer \"\" \"builtin:Red\" \"\" 1 1.9 1x 0 0 -1 0x0 .5e0y", wrapped.c_str()},
                {"mesh_renderer \"\" \"builtin:Red\"\nmesh_renderer", none}});
}

TEST(LegacyRecords, MeshMaterialSlots)
{
    const char* const none = "material=builtin:Builtin/DefaultMaterial;builtin:Builtin/DefaultMaterial;";
    ExpectRows(
        "MeshRendererComponent",
        {{"mesh_material_slot 0 \"builtin:Red\"", "material=builtin:Red;builtin:Red;"},
         {"mesh_material_slot 2 \"builtin:Red\"", "material=builtin:Red;;;builtin:Red;"},
         {"mesh_renderer \"\" \"builtin:Builtin/DefaultMaterial\"\nmesh_material_slot 2 \"builtin:Red\"",
          "material=builtin:Builtin/DefaultMaterial;builtin:Builtin/DefaultMaterial;"
          "builtin:Builtin/DefaultMaterial;builtin:Red;"},
         {"mesh_renderer \"\" \"builtin:Builtin/DefaultMaterial\"\nmesh_material_slot 0 \"builtin:Red\"",
          "material=builtin:Red;builtin:Red;"},
         {"mesh_material_slot 2 \"builtin:Red\"\nmesh_renderer", none},
         {"mesh_material_slot 65536 \"builtin:Red\"",
          "<Failed to parse scene file at line 3: mesh_material_slot index exceeds the limit of 65536 "
          "elements.>"}});
    LegacyText legacy;
    EXPECT_EQ(legacy.Read("scene_version 3\nentity \"\" \"E\"\nmesh_material_slot 65535 \"builtin:Red\"\n"),
              "");
}

TEST(LegacyRecords, Environment)
{
    ExpectRows(
        "EnvironmentSettings",
        {{"environment \"builtin:Sky\" 2 3 4 0",
          "texture=builtin:Sky;lightIntensity=2;backgroundIntensity=3;rotationDegrees=4;"
          "showBackground=0;"},
         {"environment", ""},
         {"environment \"builtin:Sky\" 2\nenvironment \"gone\" 1 5", "backgroundIntensity=5;"},
         {"environment \"builtin:Sky 2 3", ""},
         {"environment Sky 2 x 3", "lightIntensity=2;backgroundIntensity=0;"},
         {"post_process_materials 3 \"builtin:Red\" \"gone\" \"builtin:Red\"", "builtin:Red;builtin:Red;"},
         {"post_process_materials 9 \"builtin:Red\"\npost_process_materials 1", ""},
         {"post_process_materials 1 \"builtin:Red\" \"builtin:Red\"", "builtin:Red;"},
         {"post_process_materials 99999999999999999999 \"builtin:Red\"", ""},
         {"post_process_materials x \"builtin:Red\"", ""}});
    ExpectRows("EnvironmentSettings", {{"environment \"\" 2\npost_process 0", ""}}, 1);
    ExpectRows("EnvironmentSettings", {{"environment \"\" 2", "lightIntensity=2;"}}, 2);
}

TEST(LegacyRecords, PostProcess)
{
    const std::string head = "0 1 2 3 4 1 5 6 7 8 9 10 0 11 12 13";
    const std::string headChanges = "enabled=0;debugView=1;exposure=2;toneMapper=3;gamma=4;applyGamma=1;"
                                    "contrast=5;saturation=6;tintColor=7 8 9;tintStrength=10;"
                                    "vignetteEnabled=0;vignetteStrength=11;vignetteRadius=12;"
                                    "vignetteSoftness=13;";
    const std::string bloom = " 0.9 21 22 23 24 25.9";
    const std::string bloomChanges = "bloomEnabled=0;bloomThreshold=21;bloomKnee=22;bloomIntensity=23;"
                                     "bloomRadius=24;bloomIterations=25;";
    const std::string fog = " -1.5 31 32 33 34 35 36 37 38 0 0 39 40";
    const std::string fogChanges =
        "atmosphericFogEnabled=1;atmosphericFogColor=31 32 33;atmosphericFogDensity=34;"
        "atmosphericFogStartDistance=35;atmosphericFogMaxOpacity=36;atmosphericFogBaseHeight=37;"
        "atmosphericFogHeightFalloff=38;atmosphericFogAffectSky=0;atmosphericFogDirectionalScattering=0;"
        "atmosphericFogScatteringStrength=39;atmosphericFogAnisotropy=40;";
    const auto skip = [](int count)
    {
        std::string text;
        for (int i = 0; i < count; ++i)
        {
            text += " 99";
        }
        return text;
    };
    const std::string malformed = "<Malformed post_process_v2 record.>";
    const struct
    {
        std::string record;
        std::string changes;
    } rows[] = {
        {"post_process_v2 " + head + " 0 21 22 23 24 25 1 31 32 33 34 35 36 37 38 0 0 39 40 more",
         headChanges + bloomChanges + fogChanges},
        {"post_process_v2 " + head + " 0 21 22 23 24 25 1 31 32 33 34 35 36 37 38 0 0 39", malformed},
        {"post_process_v2 " + head + " 0 21 22 23 24 25.9 1 31 32 33 34 35 36 37 38 0 0 39 x", malformed},
        {"post_process_v2", malformed},
        {"post_process", ""},
        {"post_process " + head, headChanges},
        {"post_process 1 1.5 2", "debugView=1;exposure=0.5;toneMapper=2;"},
        {"post_process 1 x 2 3", ""},
        {"post_process " + head + skip(18), headChanges},
        {"post_process " + head + bloom + skip(13), headChanges + bloomChanges},
        {"post_process " + head + bloom + skip(12), headChanges},
        {"post_process " + head + bloom + skip(15) + fog, headChanges + bloomChanges + fogChanges},
        {"post_process " + head + bloom + skip(15) + fog + " 1 2 3", headChanges + bloomChanges + fogChanges},
        {"post_process " + head + bloom + skip(15) + fog.substr(0, fog.size() - 3) + " x",
         headChanges + bloomChanges},
        {"post_process " + head + "\npost_process 1", headChanges.substr(10)},
    };
    LegacyText legacy;
    for (const auto& row : rows)
    {
        EXPECT_EQ(legacy.Changes("scene_version 4\n" + row.record + "\n", "EnvironmentSettings"), row.changes)
            << row.record;
    }
}

} // namespace
} // namespace Vornu::Scene::Legacy
