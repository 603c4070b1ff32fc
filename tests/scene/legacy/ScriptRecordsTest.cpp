#include "engine/scene/components/ScriptComponents.h"
#include "tests/scene/legacy/LegacyText.h"

#include <cstdint>
#include <limits>
#include <string>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::LegacyText;

const std::string kHead = "scene_version 4\nentity \"\" \"E\"\n";
const std::string kNamedHead = "scene_version 6\nentity \"11111111222233334444555555555555\" \"E\"\n";

class ScriptRecords : public testing::Test
{
protected:
    const ScriptComponent* Read(const std::string& records)
    {
        EXPECT_EQ(legacy_.Read(kHead + records + "\n"), "");
        return legacy_.scene.TryGet<ScriptComponent>(legacy_.scene.AliveEntities()[0]);
    }

    ScriptValue Value(int type, const std::string& text)
    {
        return Read("script\nscript_field 0 \"\" \"f\" " + std::to_string(type) + " \"" + text + "\"")
            ->scripts.at(0)
            .serializedFields.at(0)
            .value;
    }

    std::string FaultOf(int type, const std::string& text)
    {
        const std::string prefix = "Failed to parse scene file at line 4: ";
        const std::string fault = legacy_.Read(kHead + "script\nscript_field 0 \"\" \"f\" " +
                                               std::to_string(type) + " \"" + text + "\"\n");
        return fault.starts_with(prefix) ? fault.substr(prefix.size()) : "<" + fault + ">";
    }

    LegacyText legacy_;
};

TEST_F(ScriptRecords, NamesGiveTheMissingIdentities)
{
    const auto* const component =
        Read("script \"\" \"x\" \"A\" \"My\" \"Door\" 0 -2 1\nscript_field 1 \"\" \"speed\" 4 \"1.5\"\n"
             "end_script\nscript_field 0 \"\" \"late\" 0 \"1\"\nscript \"11111111222233334444555555555555\" "
             "\"\" \"\" \"\" \"Lamp\"");
    ASSERT_EQ(component->scripts.size(), 2u);
    const ScriptAttachment& door = component->scripts[0];
    EXPECT_EQ(door.attachmentId, Core::GuidFromName("My.Door:attachment"));
    EXPECT_EQ(door.typeId, Core::GuidFromName("My.Door"));
    EXPECT_FALSE(door.enabled);
    EXPECT_EQ(door.executionOrder, -2);
    EXPECT_TRUE(door.missingScript);
    EXPECT_TRUE(door.serializedFields.empty());
    ASSERT_EQ(door.unknownFields.size(), 1u);
    EXPECT_EQ(door.unknownFields[0].fieldId, Core::GuidFromName("speed"));
    EXPECT_EQ(component->scripts[1].attachmentId, Core::ParseStableGuid("11111111222233334444555555555555"));
    EXPECT_EQ(component->scripts[1].typeId, Core::GuidFromName("Lamp"));
    EXPECT_EQ(Read("script_field 0 \"\" \"early\" 0 \"1\"")->scripts.size(), 0u);
    EXPECT_EQ(Read("end_script")->scripts.size(), 0u);
    EXPECT_EQ(Read("health"), nullptr);
}

TEST_F(ScriptRecords, ValuesAreReadByTheirType)
{
    EXPECT_EQ(Value(0, "TRUE"), ScriptValue(true));
    EXPECT_EQ(Value(0, "yes"), ScriptValue(false));
    EXPECT_EQ(Value(1, " -12x"), ScriptValue(std::int32_t{-12}));
    EXPECT_EQ(Value(2, "-1"), ScriptValue(std::uint32_t{4294967295u}));
    EXPECT_EQ(Value(3, "-9223372036854775808"), ScriptValue(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(Value(4, "0x10"), ScriptValue(16.0f));
    EXPECT_EQ(Value(5, "1e300"), ScriptValue(1e300));
    EXPECT_EQ(Value(6, "a\\\"b"), ScriptValue(std::string("a\"b")));
    EXPECT_EQ(Value(7, "1"), ScriptValue(glm::vec2(0.0f)));
    EXPECT_EQ(Value(8, "1,,2"), ScriptValue(glm::vec3(0.0f)));
    EXPECT_EQ(Value(8, "1,,2,3,4"), ScriptValue(glm::vec3(1, 2, 3)));
    EXPECT_EQ(Value(9, "1,2,3,4"), ScriptValue(glm::vec4(1, 2, 3, 4)));
    EXPECT_EQ(Value(10, ""), ScriptValue(glm::quat(1, 0, 0, 0)));
    EXPECT_EQ(Value(10, "1,2,3,4"), ScriptValue(glm::quat(4, 1, 2, 3)));
    EXPECT_EQ(Value(12, "Root"), ScriptValue(Core::Guid()));
    EXPECT_EQ(Value(14, "7"), ScriptValue(std::int32_t{7}));
    EXPECT_EQ(Value(15, "7"), ScriptValue(0.0f));

    EXPECT_EQ(FaultOf(1, ""), "invalid stoi argument");
    EXPECT_EQ(FaultOf(1, "2147483648"), "stoi argument out of range");
    EXPECT_EQ(FaultOf(2, "x"), "invalid stoul argument");
    EXPECT_EQ(FaultOf(2, "4294967296"), "stoul argument out of range");
    EXPECT_EQ(FaultOf(3, "-"), "invalid stoll argument");
    EXPECT_EQ(FaultOf(3, "9223372036854775808"), "stoll argument out of range");
    EXPECT_EQ(FaultOf(4, "word"), "invalid stof argument");
    EXPECT_EQ(FaultOf(4, "1e39"), "stof argument out of range");
    EXPECT_EQ(FaultOf(5, "word"), "invalid stod argument");
    EXPECT_EQ(FaultOf(5, "1e400"), "stod argument out of range");
    EXPECT_EQ(FaultOf(8, "1,x,2"), "invalid stof argument");
}

TEST_F(ScriptRecords, ReferencesBecomeTheIdsOfTheirAssets)
{
    const Assets::AssetId red = legacy_.assets.GetRegistry().FindBuiltin("Red");
    EXPECT_EQ(Value(13, "builtin:Red"), ScriptValue(std::to_string(red)));
    EXPECT_EQ(Value(13, std::to_string(red)), ScriptValue(std::to_string(red)));
    EXPECT_NE(legacy_.Save().find("\"value\" \"builtin:Red\""), std::string::npos);
    // A field of text may hold the same digits, and text that names no asset stays as it is.
    Read("script\nscript_field 0 \"\" \"f\" 6 \"" + std::to_string(red) + "\"");
    EXPECT_NE(legacy_.Save().find("\"value\" \"" + std::to_string(red) + "\""), std::string::npos);
    for (const char* const lost : {"12345", "18446744073709551616", "content:gone.png", ""})
    {
        EXPECT_EQ(Value(13, lost), ScriptValue(std::string(lost)));
        EXPECT_NE(legacy_.Save().find("\"value\" \"" + std::string(lost) + "\""), std::string::npos);
    }
}

TEST_F(ScriptRecords, WhatCannotBeSavedIsNamed)
{
    Read("script\nscript_field 0 \"\" \"f\" 4 \"inf\"");
    EXPECT_EQ(legacy_.Save(),
              "<Failed to save scene: ScriptComponent: Cannot save a non-finite schema value.>");
    for (const char* const type : {"15", "-1", "256", "99"})
    {
        Read("script\nscript_field 0 \"\" \"f\" " + std::string(type) + " \"1\"");
        EXPECT_EQ(legacy_.Save(), "<Failed to save scene: ScriptComponent: Unsupported script field type.>")
            << type;
    }
}

TEST_F(ScriptRecords, NamedAndPositionalScriptsDoNotMix)
{
    const std::string named = "component_schema \"ScriptComponentRecord\" 1 0\nend_component_schema\n";
    for (const char* const record : {"script", "script_field", "end_script"})
    {
        EXPECT_EQ(legacy_.Read(kNamedHead + named + record),
                  "Failed to parse scene file at line 5: Legacy script records cannot modify a named script "
                  "component.");
    }
    EXPECT_EQ(legacy_.Read(kNamedHead + "end_script\n" + named),
              "Failed to parse scene file at line 5: Mixed named and legacy script records.");
    EXPECT_EQ(legacy_.Read(kNamedHead + "script\n" + named),
              "Failed to parse scene file at line 4: Schema requires scene version 6 and cannot appear "
              "inside a script.");
}

} // namespace
} // namespace Vornu::Scene::Legacy
