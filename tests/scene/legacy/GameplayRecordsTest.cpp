#include "tests/scene/legacy/LegacyText.h"

#include <string>
#include <utility>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::ExpectParts;
using Test::ExpectRows;
using Test::LegacyText;

const std::string kGuid = "11111111-2222-3333-4444-555555555555";
const std::string kOther = "21111111-2222-3333-4444-555555555555";
const std::string kCharacter = "character_controller 1 1.8 0.35 4.5 1.65 5.2 18 50 0.22 1 ";
const std::string kVisual = " 0 0 0 0 0 0 1 1 1 0 0 0.12 0 0.08 0.12 0.65";

TEST(GameplayRecords, ACharacterPushesOnlyWithAllItsSettings)
{
    const std::string line = kCharacter + "0" + kVisual;
    ExpectRows("CharacterControllerComponent",
               {{line, ""},
                {line + " \"no guid\" 0 1 2 3", "pushForce=1;pushMaxMass=2;pushMinClosingSpeed=3;"},
                {line + " \"\" 0 220 120 0.15 7", "pushRigidBodies=0;pushGameplayLayerMask=7;"}});
}

TEST(GameplayRecords, ACharacterFindsItsVisual)
{
    LegacyText legacy;
    const std::string head = "scene_version 3\nentity \"\" \"Hero\"\n" + kCharacter;
    const std::string child = "\nentity \"" + kGuid + "\" \"Visual\"\nparent \"Hero\"\nentity \"" + kOther +
                              "\" \"Other\"\nparent \"Hero\"\n";
    const auto linked = [&](const std::string& fields)
    { return legacy.Changes(head + fields + child, "CharacterControllerComponent"); };
    EXPECT_EQ(linked("0"), "visualRootGuid=" + kGuid + ";");
    EXPECT_EQ(linked("2"), "visualRootGuid=" + kGuid + ";");
    EXPECT_EQ(linked("3"), "visualRootGuid=" + kOther + ";") << "a child is kept";
    EXPECT_EQ(linked("1"), "visualRootGuid=" + kGuid + ";") << "no child";
    EXPECT_EQ(linked("0" + kVisual + " \"" + kOther + "\""), "visualRootGuid=" + kOther + ";");
    EXPECT_EQ(linked("9" + kVisual + " \"31111111222233334444555555555555\""),
              "visualRootGuid=31111111-2222-3333-4444-555555555555;")
        << "a GUID that isn't there is kept";
}

TEST(GameplayRecords, ACameraFollowsTheCharacterAboveIt)
{
    LegacyText legacy;
    const auto target = [&](const std::string& parentRecord, const std::string& fields)
    {
        const std::string changes =
            legacy.Changes("scene_version 3\nentity \"" + kGuid + "\" \"Hero\"\n" + parentRecord +
                               "\nentity \"" + kOther + "\" \"Crate\"\nentity \"\" \"Eye\"\nparent \"" +
                               kGuid + "\"\nthird_person_camera_controller 1 0 " + fields + "\n",
                           "ThirdPersonCameraControllerComponent");
        return changes;
    };
    EXPECT_EQ(target("character_controller", "0"), "targetGuid=" + kGuid + ";");
    EXPECT_EQ(target("character_controller", "2"), "targetGuid=" + kGuid + ";") << "a crate is no character";
    EXPECT_EQ(target("", "0"), "");
    EXPECT_EQ(target("", "2"), "targetGuid=" + kOther + ";");
    EXPECT_EQ(target("character_controller", "0 4.2 1.45 0.12 0.18 8 -65 75 \"" + kOther + "\""),
              "targetGuid=" + kOther + ";");
    EXPECT_EQ(target("character_controller", "1 4.2 1.45 0.12 0.18 8 -65 75 \"\" 1 1 2 \"\""),
              "showCrosshair=1;driveAimTarget=1;targetGuid=" + kGuid + ";aimTargetGuid=" + kOther + ";");
}

TEST(GameplayRecords, APathHasASpeedForEachPoint)
{
    const std::string head = "path_walker \"\" 0 0 0 2 20 0.35 1.8 0.1 0 1 0 ";
    const std::string points = "9 3 1 2 3 4 5 6 7 8 9";
    const std::string three = "1 2 3;4 5 6;7 8 9;";
    ExpectRows(
        "PathWalkerComponent",
        {{head + "9 0", "speed=2;"},
         {head + points, "speed=2;selectedDestinationPoint=2;" + three + "2;2;2;"},
         {head + points + " 5", "speed=2;selectedDestinationPoint=2;" + three + "2;2;2;"},
         {head + points + " 2 9 99 -1 7 2 5 -5",
          "speed=2;pathShape=Organic;pathSmoothing=1;pathSubdivisions=16;pathVariation=0;"
          "pathVariationSeed=7;selectedDestinationPoint=2;" +
              three + "5;0;2;"},
         {head + points + " 5 0 0 0 1",
          "speed=2;pathSmoothing=0;pathSubdivisions=1;pathVariation=0;selectedDestinationPoint=2;" + three +
              "2;2;2;"},
         {head + points + " 2 x", "speed=2;pathSmoothing=0;selectedDestinationPoint=2;" + three + "2;2;2;"},
         {head + "1 4000000000 1 2 3 4 5", "speed=2;1 2 3;2;"},
         {head + points + " 0 0.65 4 0.35 1 4000000000 1",
          "speed=2;selectedDestinationPoint=2;" + three + "1;2;2;"},
         {"path_walker \"\" 0 0 0 -2 20 0.35 1.8 0.1 0 1 0 0 1 1 2 3", "speed=-2;1 2 3;0;"}});
}

TEST(GameplayRecords, NavigationAndThoughts)
{
    ExpectRows("NavigationBakeComponent",
               {{"navigation_bake 1 9 \"\"", ""},
                {"navigation_bake 0 1 \"Roof\"", "includeInBake=0;role=Walkable;layer=Roof;"}});
    ExpectParts("BlackboardComponent", {{"blackboard_value \"a\" 9 1\nblackboard_value \"a\" 1 0 2.5",
                                         "key=a;type=String;boolValue=1;key=a;type=Float;floatValue=2.5;"}});
    ExpectRows("WorldChunkComponent",
               {{"world_chunk \"C\" 1 2 3 9 9 9 4 5 9 0 0 0 0",
                 "chunkId=C;center=1 2 3;loadDistance=4;unloadDistance=5;affectRendering=0;affectLogic=0;"}});
    ExpectRows("HealthComponent", {{"health 50 20 1\nweapon 1 2 3\npickup x\ndamage",
                                    "maxHealth=50;currentHealth=20;invulnerable=1;"}});
    ExpectRows("SpawnPointComponent", {{"spawn_point 0 \"\"", "playerSpawn=0;tag=;"}, {"spawn_point", ""}});
}

TEST(GameplayRecords, Version6KnowsOneOfEach)
{
    LegacyText legacy;
    const std::string text = "scene_version 6\nentity \"" + kGuid + "\" \"E\"\n";
    const std::pair<const char*, const char*> rows[] = {
        {"character_controller", "Duplicate CharacterControllerComponent record."},
        {"first_person_camera_controller", "Duplicate FirstPersonCameraControllerComponent record."},
        {"third_person_camera_controller", "Duplicate ThirdPersonCameraControllerComponent record."},
        {"path_walker", "Duplicate PathWalkerComponent record."},
        {"navigation_bake", "Duplicate navigation_bake component."},
        {"ai_controller", "Duplicate AIControllerComponent record."},
        {"world_streaming_source", "Duplicate WorldStreamingSourceComponent record."},
        {"world_chunk", "Duplicate WorldChunkComponent record."},
        {"health", "Duplicate HealthComponent record."},
        {"spawn_point", "Duplicate SpawnPointComponent record."},
        {"rigid_body", "Duplicate RigidBodyComponent record."},
        {"collider", "Duplicate ColliderComponent record."},
        {"constraint", "Duplicate ConstraintComponent record."},
        {"particle_emitter", "Duplicate particle emitter record."},
        {"audio_source", "Duplicate audio_source component."},
        {"audio_listener", "Duplicate audio_listener component."},
        {"ui_canvas", "Duplicate UI canvas component."},
    };
    for (const auto& [keyword, fault] : rows)
    {
        EXPECT_EQ(legacy.Read(text + keyword + "\n" + keyword),
                  "Failed to parse scene file at line 4: " + std::string(fault));
    }
    EXPECT_EQ(
        legacy.Read(text +
                    "component_schema \"BlackboardComponent\" 1 0\nend_component_schema\nblackboard_value"),
        "Failed to parse scene file at line 5: Legacy blackboard value cannot modify a named schema.");
}

TEST(GameplayRecords, EffectsAndCanvases)
{
    const std::string emitter = "particle_emitter 1 1 1 1 0 1 1 0 5 40 1 1 1.6 1 3 0.08 0.18 0.2 0.25 18 0 "
                                "100 0 512 9 99 99 99 \"\" 1 1 1 0 -0.2 0 1 0.7 0.25 1 1 0.1 0.02 0";
    const std::string cut = "randomSeed=9;shape=Circle;simulationSpace=World;facingMode=WorldUp;";
    ExpectRows("ParticleEmitterComponent",
               {{emitter, cut},
                {emitter + " 1 5 6", cut},
                {emitter + " 1 5 6 7", "followPrimaryCamera=1;" + cut + "followOffset=5 6 7;"}});
    ExpectRows("UICanvasComponent", {{"ui_canvas \"\" 7 1 1 -4", "space=WorldBillboard;sortOrder=-4;"}});
    ExpectRows("AudioListenerComponent", {{"audio_listener 0 2", "enabled=0;gain=2;"}});
}

} // namespace
} // namespace Vornu::Scene::Legacy
