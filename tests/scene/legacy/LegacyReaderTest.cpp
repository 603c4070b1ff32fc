#include "engine/scene/entities/CoreComponents.h"
#include "tests/scene/legacy/LegacyText.h"

#include <gtest/gtest.h>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::LegacyText;

struct Row
{
    std::string text;
    std::string error;
};

void ExpectRows(std::initializer_list<Row> rows)
{
    LegacyText legacy;
    legacy.scene.CreateEntity("kept");
    for (const Row& row : rows)
    {
        EXPECT_EQ(legacy.Read(row.text), row.error) << row.text;
        EXPECT_EQ(legacy.scene.AliveEntities().size(), 1u) << row.text;
    }
}

std::string AtLine(int line, const std::string& fault)
{
    return "Failed to parse scene file at line " + std::to_string(line) + ": " + fault;
}

/// "name(parent's name) " for every entity.
std::string Tree(LegacyText& legacy, const std::string& text)
{
    const std::string error = legacy.Read(text);
    std::string tree = error;
    for (const Entity entity : legacy.scene.AliveEntities())
    {
        const Entity parent = legacy.scene.GetParent(entity);
        tree += legacy.scene.Get<NameComponent>(entity).name + "(" +
                (parent != kNullEntity ? legacy.scene.Get<NameComponent>(parent).name : "") + ") ";
    }
    return tree;
}

const std::string kA = "00000000-0000-0000-0000-00000000000a";
const std::string kB = "00000000-0000-0000-0000-00000000000b";
const std::string kV6 = "scene_version 6\n";
const std::string kTransform = "component_schema \"TransformComponent\" 1 0\nend_component_schema\n";

std::string Named(const std::string& guid, const std::string& records)
{
    return "entity \"" + guid + "\" \"E\"\n" + kTransform + records + "end_entity\n";
}

TEST(LegacyReader, TheHeader)
{
    const std::string missing = "Scene file is missing a valid header.";
    ExpectRows({
        {"", missing},
        {"\n# scene_version 3\n \t \n", missing},
        {"# c\n\nentity \"\" \"\"\n", AtLine(3, "Scene records require a version header.")},
        {"unknown\n", AtLine(1, "Scene records require a version header.")},
        {"property\n", AtLine(1, "Scene records require a version header.")},
        {"scene_version\n", AtLine(1, "Malformed scene version.")},
        {"scene_version x\n", AtLine(1, "Malformed scene version.")},
        {"scene_version 99999999999\n", AtLine(1, "Malformed scene version.")},
        {"scene_version 3 x\n", AtLine(1, "Trailing scene version data.")},
        {"scene_version 3.0\n", AtLine(1, "Trailing scene version data.")},
        {"scene_version 0\n", "Unsupported scene format version."},
        {"scene_version 7\n", "Unsupported scene format version."},
        {"scene_version -3\n", "Unsupported scene format version."},
        {"scene_version 3\nentity \"\" \"\"\nscene_version 3\n",
         AtLine(3, "Duplicate or misplaced scene header.")},
    });
}

TEST(LegacyReader, LinesThatAreRefusedInEveryVersion)
{
    for (const std::string word : {"property", "object_property", "array_property", "end_component_schema",
                                   "value", "object", "array", "end_array"})
    {
        ExpectRows({{"scene_version 3\n" + word + "\n",
                     AtLine(2, "Schema property or terminator outside a schema record.")}});
    }
    const std::string strict = "scene_version 2\nentity \"\" \"\"\nmesh_renderer \"\" \"\" \"\" ";
    ExpectRows({
        {"scene_version 3\nentity\n", AtLine(2, "Malformed entity header.")},
        {"scene_version 3\nentity \"a\"\n", AtLine(2, "Malformed entity header.")},
        {"scene_version 3\nentity \"a\" \"b\n", AtLine(2, "Malformed entity header.")},
        {"scene_version 5\nentity \"\" \"\"\n" + kTransform,
         AtLine(3, "Schema requires scene version 6 and cannot appear inside a script.")},
        {strict + "1 1 x 1 1 1 1 1\n", AtLine(3, "invalid stoi argument")},
        {strict + "x 1 1 1 1 1 1 1 1\n", AtLine(3, "invalid stoi argument")},
        {strict + "1 1 2147483648 1 1 1 1 1\n", AtLine(3, "stoi argument out of range")},
        {strict + "1 1 -2147483649 1 1 1 1 1\n", AtLine(3, "stoi argument out of range")},
        {strict + "1 1 1 1 1 - 1 1\n", AtLine(3, "invalid stoul argument")},
        {strict + "1 1 1 1 1 4294967296 1 1\n", AtLine(3, "stoul argument out of range")},
        {strict + "1 1 1 1 1 99999999999999999999999 1 1\n", AtLine(3, "stoul argument out of range")},
        {strict + "1 1 1 1 1 1 . 1\n", AtLine(3, "invalid stof argument")},
        {strict + "1 1 1 1 1 1 1e39 1\n", AtLine(3, "stof argument out of range")},
        {strict + "1 1 1 1 1 1 1 1e-40\n", AtLine(3, "stof argument out of range")},
        {"scene_version 1\npost_process_v2 1\n", "Malformed post_process_v2 record."},
    });
}

TEST(LegacyReader, EntityFramesOfVersion6)
{
    const std::string open = kV6 + "entity \"" + kA + "\" \"E\"\n";
    ExpectRows({
        {kV6 + "entity \"\" \"E\"\n", AtLine(2, "Malformed or null entity GUID.")},
        {kV6 + "entity \"x\" \"E\" 1\n", AtLine(2, "Malformed or null entity GUID.")},
        {kV6 + "entity \"" + std::string(32, '0') + "\" \"E\"\n",
         AtLine(2, "Malformed or null entity GUID.")},
        {kV6 + "entity \"" + kA + "\" \"E\" 1\n", AtLine(2, "Trailing entity header data.")},
        {open + "entity\n", AtLine(3, "Missing entity terminator.")},
        {open + "end_entity\n", AtLine(3, "Entity is missing its TransformComponent record.")},
        {open + kTransform, "Scene read failed or entity terminator is missing."},
        {kV6 + "end_entity\n", AtLine(2, "Entity is missing its Transform schema or opening record.")},
        {open + "parent\n", AtLine(3, "Malformed parent GUID.")},
        {open + "parent \"" + kB + "\n", AtLine(3, "Malformed parent GUID.")},
        {open + "parent \"Root\" 1\n", AtLine(3, "Malformed parent GUID.")},
        {open + "parent \"" + std::string(32, '0') + "\"\n", AtLine(3, "Malformed parent GUID.")},
        {open + "parent \"\" 1\n", AtLine(3, "Trailing parent data.")},
        {open + "parent \"\"\nparent x\n", AtLine(4, "Duplicate parent record.")},
        {kV6 + Named(kA, "") + Named(kA, "parent \"" + kB + "\"\n"),
         "Failed to load scene: Scene contains duplicate entity GUIDs."},
        {kV6 + Named(kA, "parent \"" + kB + "\"\n"),
         "Failed to load scene: Scene hierarchy references a missing parent."},
        {kV6 + Named(kA, "parent \"" + kB + "\"\n") + Named(kB, "parent \"" + kA + "\"\n"),
         "Failed to load scene: Scene hierarchy contains a cycle."},
    });
}

TEST(LegacyReader, NamedAndPositionalRecordsOfVersion6)
{
    const std::string open = kV6 + "entity \"" + kA + "\" \"E\"\n" + kTransform; // 4 lines
    const std::string environment = "component_schema \"EnvironmentSettings\" 1 0\nend_component_schema\n";
    const std::string renderer = "component_schema \"MeshRendererComponent\" 1 0\nend_component_schema\n";
    const std::string mixed = "Duplicate or mixed environment records.";
    for (const std::string word : {"transform", "camera", "point_light", "rotator"})
    {
        const std::string fault = "Version 6 requires a named component schema for " + word;
        ExpectRows({{kV6 + word + "\n", AtLine(2, fault)}, {open + word + " 1\n", AtLine(5, fault)}});
    }
    for (const std::string word :
         {"environment", "post_process", "post_process_v2", "post_process_materials"})
    {
        ExpectRows({{open + word + "\n", AtLine(5, "Environment records must be outside entities.")},
                    {kV6 + environment + word + "\n", AtLine(4, mixed)}});
    }
    ExpectRows({
        {kV6 + "environment\nenvironment\n", AtLine(3, mixed)},
        {kV6 + "post_process\npost_process_v2\n", AtLine(3, mixed)},
        {kV6 + "post_process\n" + environment, AtLine(4, mixed)},
        {kV6 + environment + environment, AtLine(5, mixed)},
        {open + environment, AtLine(6, "Environment schema must be outside entities.")},
        {kV6 + kTransform, AtLine(3, "Component schema requires an entity.")},
        {kV6 + "component_schema" + std::string(65'520, ' ') + "\n",
         AtLine(2, "Schema header exceeds the record limit.")},
        {kV6 + "component_schema" + std::string(65'519, ' ') + "\n",
         AtLine(2, "Malformed quoted schema token.")},
        {open + "component_schema \"Nonsense\" 1 0\nend_component_schema\n",
         AtLine(6, "Unsupported component schema: Nonsense")},
        {open + kTransform, AtLine(6, "Duplicate component schema: TransformComponent")},
        {open + renderer + "mesh_material_slot 0 \"\"\n",
         AtLine(7, "Legacy mesh_material_slot cannot modify a named schema.")},
        {kV6 + Named(kA, "mesh_renderer\n" + renderer),
         "Failed to load scene: Duplicate component: mixed named and positional records."},
        {open + "mesh_material_slot 0 \"\"\nmesh_renderer\n",
         AtLine(6, "Duplicate mesh_renderer component.")},
        {open + "prefab_instance\nprefab_instance\n", AtLine(6, "Duplicate prefab instance component.")},
        {open + "gameplay_layer\ngameplay_layer\n", AtLine(6, "Duplicate gameplay_layer component.")},
        {open + "directional_light\ndirectional_light\n",
         AtLine(6, "Duplicate DirectionalLightComponent record.")},
        {open + "spot_light\nspot_light\n", AtLine(6, "Duplicate SpotLightComponent record.")},
    });
}

TEST(LegacyReader, WhatVersion6TakesFromBothForms)
{
    LegacyText legacy;
    const std::string text = kV6 +
                             "environment \"\" 2\npost_process 0\npost_process_materials 0\nunknown 1\n" +
                             Named(kA, "parent \"\"\nmesh_renderer\nspot_light 1 1 1 5\nunknown 1\n") +
                             "mesh_renderer\nentity \"" + kB + "\" \"F\"\n" +
                             "component_schema \"Transform\" 1 1\nproperty \"position\" \"1 2 3\"\n"
                             "end_component_schema\nparent \"" +
                             kA + "\"\nend_entity\n";
    EXPECT_EQ(Tree(legacy, text), "E() F(E) ");
    EXPECT_EQ(legacy.Changes(text, "EnvironmentSettings"), "lightIntensity=2;enabled=0;");
    EXPECT_EQ(legacy.Changes(text, "SpotLightComponent"), "color=1 1 1;intensity=5;inverseSquareFalloff=0;");
    EXPECT_NE(legacy.Convert(text).find("\"position\" \"1 2 3\""), std::string::npos);
}

TEST(LegacyReader, EntitiesAndParentsOfOlderVersions)
{
    const struct
    {
        const char* records;
        const char* tree;
    } rows[] = {
        {"", ""},
        {"entity \"\" \"A\"\nentity \"\" \"B\"\nend_entity\nend_entity\nentity x C y", "A() B() C() "},
        {"parent \"B\"\nmesh_renderer x\nentity \"\" \"A\"\nunknown\n", "A() "},
        {"entity \"\" \"A\"\nparent \"B\"\nentity \"\" \"B\"\n", "A(B) B() "},
        {"entity \"\" \"A\"\nparent \"none\"\nentity \"id\" \"none\"\n", "A() none() "},
        {"entity \"i\" \"d\"\nentity \"\" \"A\"\nparent id", "d() A(d) "},
        {"entity \"\" \"A\"\nparent \"B\"\nparent \"\"\nentity \"\" \"B\"", "A(B) B() "},
        {"entity \"\" \"A\"\nparent \"B\"\nparent \"C\"\nentity \"\" \"B\"\nentity \"\" \"C\"",
         "A(C) B() C() "},
        {"entity \"\" \"A\"\nparent \"B\nentity \"\" \"B\"", "A(B) B() "},
        {"entity \"\" \"A\"\nparent 0000000000000000000000000000000b\n"
         "entity \"-b-0000000000000000000000000000000-\" \"B\"",
         "A() B() "},
        {"entity \"\" \"A\"\nparent 0000000000000000000000000000000b\n"
         "entity \"-0000000000000000000000000000000-b\" \"B\"",
         "A(B) B() "},
        {"entity 00000000000000000000000000000000 \"A\"\nparent \"B\"\nentity \"\" \"B\"\nparent \"A\"",
         "A() B(A) "},
        {"entity \"\" \"a \\\"b\\\" \\\\ \\n\"", "a \"b\" \\ n() "},
    };
    LegacyText legacy;
    for (const auto& row : rows)
    {
        EXPECT_EQ(Tree(legacy, std::string("scene_version 5\n") + row.records), row.tree) << row.records;
    }
    EXPECT_EQ(
        legacy.Convert("scene_version 1\nentity \"\" \"A\"\nparent \"B\"\nentity \"\" \"B\"\nparent \"A\"\n"),
        "<Failed to save scene: Scene hierarchy contains a cycle.>");
    EXPECT_EQ(legacy.Convert("scene_version 1\nentity \"\" \"A\"\nparent \"A\"\n"),
              "<Failed to save scene: Scene hierarchy contains a cycle.>");
    EXPECT_EQ(legacy.Convert("scene_version 1\nentity \"\" \"A\"\nentity \"\" \"A\"\n"),
              "<Failed to save scene: Cannot save duplicate entity GUIDs.>");
}

TEST(LegacyReader, FilesThatCannotBeRead)
{
    LegacyText legacy;
    std::string error;
    EXPECT_FALSE(Load("/nowhere/a.vscene", legacy.scene, legacy.assets, &error));
    EXPECT_EQ(error, "Failed to open scene file for reading.");
    EXPECT_FALSE(Load("/", legacy.scene, legacy.assets, &error));
    EXPECT_EQ(error, "Scene file is missing a valid header.");
    EXPECT_FALSE(Load("/nowhere/a.vscene", legacy.scene, legacy.assets, nullptr));
}

} // namespace
} // namespace Vornu::Scene::Legacy
