#include "engine/scene/components/ScriptComponents.h"
#include "engine/scene/components/ScriptValues.h"
#include "engine/scene/entities/EntityReferenceRemapper.h"
#include "engine/scene/registration/ComponentRegistry.h"
#include "tests/core/Failure.h"
#include "tests/scene/OneEntityScene.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace Vornu::Scene
{
namespace
{

using Test::FailureOf;
using Test::Load;
using Test::Save;
using enum ScriptFieldType;

constexpr char kBadNumber[] = "Invalid or out-of-range numeric value.";
constexpr char kUnsupported[] = "Unsupported script field type.";
constexpr char kTooMany[] = "Script collection exceeds its array limit.";
constexpr char kTooMuch[] = "Script authoring data exceeds its record budget.";

TEST(ScriptValues, TextsOfEveryTypeComeBack)
{
    const std::pair<ScriptFieldType, std::string> rows[] = {
        {Bool, "0"},
        {Bool, "1"},
        {Int32, "-2147483648"},
        {UInt32, "4294967295"},
        {Int64, "-9223372036854775808"},
        {Int64, "9223372036854775807"},
        {Float, "0.25"},
        {Double, "0.10000000000000001"},
        {Double, "1e+22"},
        {String, ""},
        {String, "a \"b\"\n\\"},
        {Vector2, "1 2"},
        {Vector3, "1 2 3"},
        {Vector4, "1 2 3 4"},
        {Quaternion, "1 0 0.5 0"},
        {Color, "0.5 1 0"},
        {EntityReference, ""},
        {EntityReference, "00000000-0000-0000-0000-0000000000ab"},
        {AssetReference, "content:Textures/a.png"},
        {Enum, "-7"},
    };
    for (const auto& [type, text] : rows)
    {
        EXPECT_EQ(FormatScriptValue(type, ParseScriptValue(type, text)), text);
    }
    // The first number of a quaternion is w.
    EXPECT_EQ(std::get<glm::quat>(ParseScriptValue(Quaternion, "1 0 0.5 0")).y, 0.5f);
    EXPECT_EQ(std::get<glm::quat>(ParseScriptValue(Quaternion, "1 0 0.5 0")).w, 1.0f);
}

TEST(ScriptValues, RefuseWhatTheirTypeDoesNotHold)
{
    struct Row
    {
        ScriptFieldType type;
        std::string text;
        std::string expected;
    };
    const Row rows[] = {
        {Bool, "true", "Script boolean must be 0 or 1."},
        {Bool, "", "Script boolean must be 0 or 1."},
        {Bool, "01", "Script boolean must be 0 or 1."},
        {Int32, "2147483648", kBadNumber},
        {Int32, "", kBadNumber},
        {Enum, "+1", kBadNumber},
        {UInt32, "-1", kBadNumber},
        {UInt32, "1 ", kBadNumber},
        {Int64, "9223372036854775808", kBadNumber},
        {Int64, "1.0", kBadNumber},
        {Float, "1e39", kBadNumber},
        {Float, "nan", "Non-finite numeric value."},
        {Double, "1e309", kBadNumber},
        {Double, "1x", kBadNumber},
        {Double, "-inf", "Non-finite numeric value."},
        {Vector2, "1", "Missing vector component."},
        {Color, "1 2", "Missing vector component."},
        {Quaternion, "1 2 3", "Missing vector component."},
        {static_cast<ScriptFieldType>(15), "1", kUnsupported},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(FailureOf([&] { ParseScriptValue(row.type, row.text); }), row.expected) << row.text;
    }
    EXPECT_NE(FailureOf([] { ParseScriptValue(EntityReference, "x"); }), "none");
    EXPECT_NE(FailureOf([] { ParseScriptValue(Vector3, "1 2 3 4"); }), "none");

    const double infinite = std::numeric_limits<double>::infinity();
    const std::string nonFinite = "Cannot save a non-finite schema value.";
    EXPECT_EQ(FailureOf([&] { FormatScriptValue(Double, infinite); }), nonFinite);
    EXPECT_EQ(FailureOf([&] { FormatScriptValue(Float, static_cast<float>(infinite)); }), nonFinite);
    EXPECT_EQ(FailureOf([] { FormatScriptValue(Bool, 1.0f); }), "Cannot format schema value.");
    EXPECT_EQ(FailureOf([] { FormatScriptValue(static_cast<ScriptFieldType>(15), true); }), kUnsupported);
}

/// A stored field; `lines` and their count take the place of the type and the value.
std::string Field(const std::string& name, int lineCount, const std::string& lines)
{
    return "object \"ScriptFieldRecord\" 1 " + std::to_string(2 + lineCount) +
           "\nproperty \"fieldId\" \"\"\nproperty \"fieldName\" \"" + name + "\"\n" + lines +
           "end_component_schema\n";
}

std::string Typed(const std::string& name, const std::string& type, const std::string& value)
{
    return Field(name, 2, "property \"type\" \"" + type + "\"\nproperty \"value\" \"" + value + "\"\n");
}

/// A component of one script whose class is missing, as it is saved.
std::string Script(const std::string& serialized, const std::string& unknown)
{
    return "component_schema \"ScriptComponentRecord\" 1 1\narray_property \"scripts\" 1\n"
           "object \"ScriptAttachmentRecord\" 1 10\n"
           "property \"attachmentId\" \"00000000-0000-0000-0000-0000000000a1\"\n"
           "property \"typeId\" \"\"\nproperty \"assemblyName\" \"Game\"\n"
           "property \"namespaceName\" \"Game.Doors\"\nproperty \"className\" \"Gate\"\n"
           "property \"enabled\" \"0\"\nproperty \"executionOrder\" \"-3\"\nproperty \"missingScript\" "
           "\"1\"\n"
           "array_property \"serializedFields\" 1\n" +
           serialized + "end_array\narray_property \"unknownFields\" 1\n" + unknown +
           "end_array\nend_component_schema\nend_array\nend_component_schema\n";
}

TEST(ScriptComponent, KeepsEverythingOfAScriptThatIsMissing)
{
    Scene scene;
    const std::string stored = Script(Typed("speed", "Double", "2.5"), Typed("old", "Enum", "4"));
    ASSERT_EQ(Load(stored, scene), "");
    EXPECT_EQ(Save(scene), stored);

    const std::string fine = Typed("a", "Bool", "1");
    const std::string variant = "Script variant requires explicit type and value fields.";
    const std::string value = "property \"value\" \"0\"\n";
    const std::string type = "property \"type\" \"Float\"\n";
    EXPECT_EQ(Load(Script(Field("a", 1, value), fine), scene), variant);
    EXPECT_EQ(Load(Script(fine, Field("a", 1, type)), scene), variant);
    EXPECT_EQ(Load(Script(Typed("a", "Bool", "true"), fine), scene), "Script boolean must be 0 or 1.");
    EXPECT_NE(Load(Script(fine, Typed("a", "Matrix", "1")), scene), "");
}

/// A scene of one entity with a script for each count, each with so many fields.
Scene SceneWithFields(std::initializer_list<std::size_t> counts)
{
    Scene scene;
    auto& component = scene.Add<ScriptComponent>(scene.CreateEntity("E"));
    for (const std::size_t count : counts)
    {
        component.scripts.emplace_back().unknownFields.resize(count);
    }
    return scene;
}

TEST(ScriptComponent, IsMeasuredBeforeItIsSaved)
{
    const std::string prefix = "Failed to save scene: ScriptComponent: ";
    EXPECT_EQ(Save(SceneWithFields({1025})), prefix + kTooMany);
    EXPECT_EQ(Save(SceneWithFields({1000, 1000, 1000, 1000, 1000})), prefix + kTooMuch);
    EXPECT_EQ(Save(SceneWithFields({1024, 1024, 1024, 1020, 1})), prefix + kTooMuch);
    // Smaller ones pass this measure and then stand under the limits of any record, where a field counts
    // five times: for itself and for its four properties.
    const std::string record = "Schema exceeds the nesting or field budget.";
    EXPECT_TRUE(Save(SceneWithFields({1024, 1024, 1024, 1019})).ends_with(record));
    EXPECT_TRUE(Save(SceneWithFields({1024})).ends_with(record));
    EXPECT_EQ(Save(SceneWithFields({800})).find("Failed"), std::string::npos);

    Scene scene;
    auto& component = scene.Add<ScriptComponent>(scene.CreateEntity("E"));
    component.scripts.resize(1025);
    EXPECT_EQ(Save(scene), prefix + kTooMany);
    component.scripts.resize(1);
    ScriptAttachment& script = component.scripts[0];
    script.className = std::string(0x80000, 'c');
    script.serializedFields.push_back(
        {{}, std::string(0x40000, 'f'), AssetReference, std::string(0x40000, 'v')});
    EXPECT_NE(Save(scene), prefix + kTooMuch);
    script.assemblyName = "a";
    EXPECT_EQ(Save(scene), prefix + kTooMuch);
}

class Shift : public EntityReferenceRemapper
{
public:
    void RemapEntity(Entity&) const override {}
    void RemapGuid(Core::Guid& guid) const override { guid.low += 1; }
    void RemapEntityText(Entity&, std::string&) const override {}
    void RemapEntityReference(Entity&, Core::Guid&) const override {}
};

TEST(ScriptComponent, ReferencesOfBothListsAreRemapped)
{
    const Scene schemaFirst;
    ScriptComponent component;
    ScriptAttachment& script = component.scripts.emplace_back();
    script.typeId = {0, 3};
    script.serializedFields = {{{0, 1}, "door", EntityReference, Core::Guid{0, 5}},
                               {{}, "name", String, std::string("x")}};
    script.unknownFields = {{{}, "key", EntityReference, Core::Guid{0, 7}}};
    for (const auto& hook : ComponentRegistry::Instance().Find("ScriptComponent")->remapHooks)
    {
        hook(&component, Shift());
    }
    EXPECT_EQ(std::get<Core::Guid>(script.serializedFields[0].value).low, 6u);
    EXPECT_EQ(std::get<Core::Guid>(script.unknownFields[0].value).low, 8u);
    EXPECT_EQ(script.serializedFields[0].fieldId.low, 1u);
    EXPECT_EQ(script.typeId.low, 3u);
}

} // namespace
} // namespace Vornu::Scene
