#include "engine/reflection/ValueBuilder.h"
#include "engine/scene/components/SceneSchema.h"
#include "tests/core/ShellRun.h"
#include "tools/schema/JsonWriter.h"
#include "tools/schema/MarkdownTable.h"
#include "tools/schema/SchemaJson.h"
#include "tools/schema/SchemaMarkdown.h"

#include <glm/vec2.hpp>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>

namespace Vornu::Schema
{
namespace
{

using Layout = JsonWriter::Layout;
using Vornu::Test::ShellRun;

ShellRun RunTool(const std::string& script)
{
    const Vornu::Test::TestFolder folder;
    return RunShell(folder, "schema", VORNU_SCHEMA_PROGRAM, script);
}

enum class Mood : std::int8_t
{
    Low = -1,
    High = 1,
};

struct Leaf
{
    float weight = 0.1f;
    bool operator==(const Leaf&) const = default;
};

struct Sample
{
    Mood mood = Mood::High;
    std::vector<std::vector<std::uint64_t>> textures;
    std::array<glm::vec2, 2> corners = {glm::vec2(1, 0), glm::vec2(0.5f, 2)};
    Leaf own;
    Leaf other = {0.2f};
};

/// One property of each form.
void RegisterSample(Reflection::ReflectionRegistry& registry)
{
    using Reflection::FieldAttr;
    using Reflection::PropertyFlags;
    registry.AddAssetType("Texture", 2);
    registry.RegisterEnum<Mood>("Mood", {{Mood::Low, "Low", "Very low"}, {Mood::High, "High"}});
    Reflection::ValueBuilder<Leaf>(registry, "Leaf", "A | leaf", "Test")
        .Field("weight", &Leaf::weight, FieldAttr().Range(-1, 100000).Since(2).Until(4))
        .Version(3);
    Reflection::ValueBuilder<Sample>(registry, "Sample", "", "Test")
        .Field("mood", &Sample::mood, FieldAttr().Tooltip("\"Feels\" so\n"))
        .Field("textures", &Sample::textures, FieldAttr().Asset("Texture").Group("Looks"))
        .Field("corners", &Sample::corners,
               FieldAttr().With(PropertyFlags::ReadOnly).With(PropertyFlags::Runtime))
        .Field("own", &Sample::own)
        .Field("other", &Sample::other);
}

std::string Indented(const std::string& property)
{
    return "        {\n" + property + "\n        }";
}

TEST(SchemaJson, PrintsEveryFormOfAProperty)
{
    Reflection::ReflectionRegistry registry;
    RegisterSample(registry);
    const std::string tail = R"(          "sinceVersion": 1,
          "untilVersion": 0)";
    const std::string expected = R"({
  "assetTypes": [
    {"name": "Texture", "nativeId": 2}
  ],
  "enums": [
    {
      "name": "Mood",
      "values": [
        {"value": -1, "name": "Low", "displayName": "Very low"},
        {"value": 1, "name": "High", "displayName": "High"}
      ]
    }
  ],
  "types": [
    {
      "name": "Leaf",
      "displayName": "A | leaf",
      "category": "Test",
      "version": 3,
      "properties": [
)" + Indented(R"(          "name": "weight",
          "kind": "Float",
          "default": "0.100000001",
          "range": [-1, 100000],
          "displayName": "weight",
          "group": "",
          "tooltip": "",
          "attributes": [],
          "sinceVersion": 2,
          "untilVersion": 4)") + R"(
      ]
    },
    {
      "name": "Sample",
      "displayName": "Sample",
      "category": "Test",
      "version": 1,
      "properties": [
)" + Indented(R"(          "name": "mood",
          "kind": "Enum",
          "enum": "Mood",
          "default": "High",
          "displayName": "mood",
          "group": "",
          "tooltip": "\"Feels\" so\n",
          "attributes": [],
)" + tail) + ",\n" + Indented(R"(          "name": "textures",
          "kind": "Array",
          "elementKinds": ["Array", "AssetRef"],
          "asset": "Texture",
          "default": [],
          "displayName": "textures",
          "group": "Looks",
          "tooltip": "",
          "attributes": [],
)" + tail) + ",\n" + Indented(R"(          "name": "corners",
          "kind": "Array",
          "elementKinds": ["Vec2"],
          "length": 2,
          "default": ["1 0", "0.5 2"],
          "displayName": "corners",
          "group": "",
          "tooltip": "",
          "attributes": ["ReadOnly", "Runtime"],
)" + tail) + ",\n" + Indented(R"(          "name": "own",
          "kind": "Object",
          "object": "Leaf",
          "default": {"weight": "0.100000001"},
          "displayName": "own",
          "group": "",
          "tooltip": "",
          "attributes": [],
)" + tail) + ",\n" + Indented(R"(          "name": "other",
          "kind": "Object",
          "object": "Leaf",
          "default": {"weight": "0.200000003"},
          "displayName": "other",
          "group": "",
          "tooltip": "",
          "attributes": [],
)" + tail) + R"(
      ]
    }
  ],
  "components": []
}
)";
    EXPECT_EQ(SchemaJson({registry, Scene::ComponentRegistry()}), expected);
}

TEST(SchemaMarkdown, LeavesOutWhatSaysNothing)
{
    Reflection::ReflectionRegistry registry;
    RegisterSample(registry);
    const std::string page = SchemaMarkdown({registry, Scene::ComponentRegistry()});
    const std::string expected = R"(## Nested types

### Leaf

A \| leaf, category Test, version 3.

| Property | Type | Default | Range | Display name | Versions |
|---|---|---|---|---|---|
| `weight` | Float | `0.1` | -1 to 100000 | weight | 2 to 3 |

### Sample

Sample, category Test, version 1.

| Property | Type | Default | Display name | Group | Attributes | Tooltip |
|---|---|---|---|---|---|---|
| `mood` | [Mood](#mood) | `High` | mood | | | "Feels" so  |
| `textures` | array of array of AssetRef (Texture) | | textures | Looks | | |
| `corners` | array of 2 Vec2 | 2 elements | corners | | `ReadOnly`, `Runtime` | |
| `own` | [Leaf](#leaf) | `its own` | own | | | |
| `other` | [Leaf](#leaf) | see the JSON | other | | | |

## Enumerations
)";
    EXPECT_NE(page.find(expected), std::string::npos) << page;
}

TEST(JsonWriter, EscapesWhatJsonDoesNotTake)
{
    JsonWriter json;
    json.BeginArray();
    json.String(std::string_view("\"\\\n\t\r\0\x1f\x7f/", 9));
    json.String("\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8C\x8A");
    // A lone continuation, a cut sequence, an overlong form, a surrogate, a value above the last.
    json.String("a\x80"
                "b\xC3"
                "c\xC0\xAF"
                "d\xED\xA0\x80"
                "e\xF4\x90\x80\x80"
                "f\xE2\x82");
    json.BeginObject();
    json.End();
    json.BeginArray(Layout::Inline);
    json.BeginObject();
    json.Member("deep", true);
    json.End();
    json.BeginArray();
    json.End();
    json.End();
    json.End();
    const std::string bad = "\xEF\xBF\xBD";
    EXPECT_EQ(json.Text(), "[\n"
                           "  \"\\\"\\\\\\n\\t\\u000d\\u0000\\u001f\x7f/\",\n"
                           "  \"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8C\x8A\",\n"
                           "  \"a" +
                               bad + "b" + bad + "c" + bad + bad + "d" + bad + bad + bad + "e" + bad + bad +
                               bad + bad + "f" + bad + bad +
                               "\",\n"
                               "  {},\n"
                               "  [{\"deep\": true}, []]\n"
                               "]\n");
}

TEST(SchemaTool, PrintsAllComponentsAndTheSameBytesInEveryRun)
{
    const ShellRun first = RunTool("schema");
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.err, "");
    std::size_t at = 0;
    for (std::uint64_t serial = 0; serial < 55; ++serial)
    {
        at = first.out.find("\"serial\": " + std::to_string(serial) + ",\n", at + 1);
        ASSERT_NE(at, std::string::npos) << serial;
    }
    EXPECT_EQ(first.out.find("\"serial\": ", at + 1), std::string::npos);
    EXPECT_EQ(RunTool("schema").out, first.out);
    for (
        const char* const piece :
        {R"({"name": "TerrainSampleChunk", "repeatable": true})", R"("aliases": ["Transform"],)",
         R"("saveGame": {"version": 1, "fields": ["linearVelocity", "angularVelocity", "isAwake"]},)",
         R"({"path": "transform.rotation", "quantized": true, "step": 0.01, "minimum": -720, "maximum": 720,)",
         R"("flags": ["UserAddable", "Serialized"],)"})
    {
        EXPECT_NE(first.out.find(piece), std::string::npos) << piece;
    }
}

TEST(SchemaTool, RefusesWrongUsageAndReportsAFailedOutput)
{
    const std::string usage = "Usage: vornu-schema [--markdown]\n"
                              "\n"
                              "Prints every registered asset type, enumeration, type and component as JSON.\n"
                              "\n"
                              "  --markdown  Print them as a reference page instead.\n"
                              "  -h, --help  Print this text.\n";
    const std::string failed = "vornu-schema: standard output could not be written\n";
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"schema --help", usage + "[err] [exit] 0"},
        {"schema --markdown -h", usage + "[err] [exit] 0"},
        {"schema --xml --help", "[err] Unknown option: --xml\n" + usage + "[exit] 2"},
        {"schema page.md", "[err] Unexpected argument: page.md\n" + usage + "[exit] 2"},
        {"schema ''", "[err] Unexpected argument: \n" + usage + "[exit] 2"},
        {"schema >/dev/full", "[err] " + failed + "[exit] 1"},
        {"schema --markdown >/dev/full", "[err] " + failed + "[exit] 1"},
        {"schema --help >/dev/full", "[err] " + failed + "[exit] 1"},
    };
    for (const auto& [script, expected] : rows)
    {
        EXPECT_EQ(RunTool(script).Text(), expected) << script;
    }
}

TEST(SchemaTool, TheReferencePageIsUpToDate)
{
    Scene::EnsureSceneSchema();
    std::ifstream file(VORNU_DOCS "/components.md", std::ios::binary);
    const std::string page(std::istreambuf_iterator<char>(file), {});
    const std::string current =
        SchemaMarkdown({Reflection::ReflectionRegistry::Instance(), Scene::ComponentRegistry::Instance()});
    EXPECT_TRUE(page == current)
        << "docs/components.md is stale; docs/checklists.md says how to make it anew";
}

} // namespace
} // namespace Vornu::Schema
