#include "engine/scene/components/AnimatorComponents.h"
#include "tests/scene/legacy/LegacyText.h"

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::ExpectParts;
using Test::ExpectRows;
using Test::LegacyText;

constexpr char kAnimator[] = "AnimatorComponent";

TEST(AnimatorRecords, TheLaterFlagsAreReadOneByOne)
{
    const std::string head = "animator \"\" \"\" \"\" \"\" 1 1 1 2 0 \"Run\" \"\" 0 0 0";
    const std::string run = "speed=2;initialState=Run;";
    ExpectRows(
        kAnimator,
        {{head, run},
         {head + " 1", run + "manualPoseEnabled=1;showBones=1;"},
         {head + " 1 0 0 1 0 0", "speed=2;applyRootMotion=1;enableAnimationLayers=0;enableIk=0;initialState="
                                 "Run;manualPoseEnabled=1;renderBonesInFront=0;"},
         // A word is tried again by each flag; a number out of range is passed over.
         {head + " 0 x 0", run},
         {head + " 0 99999999999 0 1", "speed=2;applyRootMotion=1;initialState=Run;renderBonesInFront=0;"},
         {"animator \"\" \"\" \"\" \"\" 1 1 1 fast 0 \"Run\"", "speed=0;"},
         {"animator \"\" \"\" \"\" \"\" 1 1 1 1e99 0 0 0",
          "speed=3.40282347e+38;enableAnimationLayers=0;renderBonesInFront=0;"},
         {head + "\nanimator_parameter \"P\"\nanimator", ""}});
}

TEST(AnimatorRecords, TheRigCameWithVersion3)
{
    LegacyText legacy;
    legacy.assets.GetRegistry().RegisterBuiltin(Assets::AssetKind::Rig, "Rig");
    legacy.assets.GetRegistry().RegisterBuiltin(Assets::AssetKind::AnimationClip, "Clip");
    const std::string entity = "entity \"\" \"E\"\nanimator \"\" ";
    EXPECT_EQ(
        legacy.Changes("scene_version 3\n" + entity + "\"builtin:Rig\" \"builtin:Clip\" \"\" 0", kAnimator),
        "rig=builtin:Rig;clip=builtin:Clip;enabled=0;");
    EXPECT_EQ(legacy.Changes("scene_version 2\n" + entity + "\"builtin:Clip\" \"\" 0", kAnimator),
              "clip=builtin:Clip;enabled=0;");
}

TEST(AnimatorRecords, DetailsFillListsByPlace)
{
    const std::string animator = "animator\n";
    const std::string layers = "Layer;";
    ExpectParts(
        kAnimator,
        {{animator + "animator_parameter \"Speed\" 9\nanimator_parameter \"\" -1",
          "name=Speed;type=Trigger;type=Bool;"},
         {animator + "animator_layer_mask 0 \"Spine\"\nanimator_layer 0 \"Top\"", "name=Top;looping=1;"},
         {animator + "animator_layer 0 \"Top\"\nanimator_layer_mask 0 \"Spine\" 0 0.5",
          "name=Top;boneName=Spine;includeDescendants=0;weight=0.5;"},
         {animator + "animator_ik_chain_bone 0 \"A\"\nanimator_ik_chain_bone 0 \"B\"", "name=IK Chain;A;B;"},
         {animator + "animator_pose 0 1 2 3 0.5 0.25", "position=1 2 3;rotation=0.5 0.25 0 0;"},
         {"animator_pose 0 1 2 3\nanimator", ""},
         {animator + "animator_layer x \"Top\"", "name=Layer;"}});
    LegacyText legacy;
    const std::string text = "scene_version 3\nentity \"\" \"E\"\nanimator\n";
    EXPECT_EQ(legacy.Read(text + "animator_layer 3 \"Top\"\n"), "");
    const Entity entity = legacy.scene.AliveEntities()[0];
    EXPECT_EQ(legacy.scene.Get<AnimatorComponent>(entity).layers.size(), 4u);
    const std::string fault =
        "Failed to parse scene file at line 4: animator_layer index exceeds the limit of 65536 elements.";
    EXPECT_EQ(legacy.Read(text + "animator_layer 4000000000"), fault);
    EXPECT_EQ(legacy.Read(text + "animator_layer -1"), fault);
}

TEST(AnimatorRecords, ChainsHaveTheirTargetsInTwoForms)
{
    const std::string chain =
        "animator\nanimator_ik_chain 0 \"C\" 1 0 \"\" \"\" \"\" 0 0 0 0 0 0 0 0 1 0 0 1 8 0.01 ";
    const std::string plain = "name=C;";
    const std::string look = "animator\nanimator_look_at_chain 0 \"C\" 1 \"\" 0 1.6 1 0 0 -1 0 1 0 ";
    const std::string guid = "11111111-2222-3333-4444-555555555555";
    ExpectParts(
        kAnimator,
        {{chain + "1 \"Target\" 0 \"\"", plain + "useTargetEntity=1;targetEntityName=Target;"},
         {chain + "1 \"" + guid + "\" \"T\" 1 \"\" \"P\"",
          plain + "useTargetEntity=1;targetEntityGuid=" + guid +
              ";targetEntityName=T;usePoleEntity=1;poleEntityName=P;"},
         {chain + "1 \"a\" \"T\" 1 \"b\" \"P\"",
          plain + "useTargetEntity=1;targetEntityName=T;usePoleEntity=1;poleEntityName=P;"}, // no GUIDs
         {chain + "1 \"a\" \"T\"", plain},
         {look + "1 1 \"Target\"", plain + "useTargetEntity=1;targetEntityName=Target;"},
         {look + "1 1 \"" + guid + "\" \"T\"",
          plain + "useTargetEntity=1;targetEntityGuid=" + guid + ";targetEntityName=T;"},
         // The older form is tried behind a number out of range too.
         {look + "1e50 1 \"Target\"",
          plain + "useTargetEntity=1;targetEntityName=Target;weight=3.40282347e+38;"}});
}

TEST(AnimatorRecords, Version6KnowsOneAnimator)
{
    LegacyText legacy;
    const std::string text = "scene_version 6\nentity \"11111111222233334444555555555555\" \"E\"\n";
    const std::string named = "component_schema \"AnimatorComponent\" 2 0\nend_component_schema\n";
    EXPECT_EQ(legacy.Read(text + "animator\nanimator"),
              "Failed to parse scene file at line 4: Duplicate AnimatorComponent record.");
    for (const char* const detail :
         {"animator_parameter", "animator_layer", "animator_layer_mask", "animator_ik_chain",
          "animator_ik_chain_bone", "animator_look_at_chain", "animator_pose"})
    {
        EXPECT_EQ(legacy.Read(text + named + detail),
                  "Failed to parse scene file at line 5: Legacy detail appended to named animator.");
    }
    EXPECT_EQ(legacy.Read(text + "animator\n" + named +
                          "component_schema \"TransformComponent\" 1 0\n"
                          "end_component_schema\nend_entity\n"),
              "Failed to load scene: Duplicate component: mixed named and positional records.");
}

} // namespace
} // namespace Vornu::Scene::Legacy
