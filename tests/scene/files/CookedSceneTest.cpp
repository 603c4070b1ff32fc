#include "engine/scene/files/CookedScene.h"

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/files/ByteStream.h"
#include "engine/core/files/Files.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/files/SceneVersionProbe.h"
#include "engine/scene/registration/EntityRecordStage.h"
#include "tests/core/TestFolder.h"
#include "tests/scene/legacy/LegacyText.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace Vornu::Scene
{
namespace
{

using Core::ByteWriter;
using Test::TestFolder;

constexpr char kSceneText[] = R"(scene_version 6
component_schema "EnvironmentSettings" 1 1
property "lightIntensity" "0.5"
end_component_schema
entity "6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e34" "Root \"A\""
component_schema "TransformComponent" 1 1
object_property "transform" "Transform" 1 1
property "position" "1 2 3"
end_component_schema
end_component_schema
component_schema "mygame.Door" 3 2
property "tab\tand quote\"" "\0"
array_property "deep" 2
array 1
value "x"
end_array
object "Any" 9 0
end_component_schema
end_array
end_component_schema
end_entity
entity "b81e7d02-5a46-47f3-8d10-c4e96a3f0721" "Child"
parent "6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e34"
component_schema "Transform" 1 0
end_component_schema
component_schema "PointLightComponent" 1 0
end_component_schema
end_entity
)";

std::vector<std::byte> Wrap(const std::function<void(ByteWriter&)>& payload)
{
    ByteWriter out;
    payload(out);
    return Assets::WrapContainer(Assets::ContainerKind("SCNE"), 1, out.Bytes());
}

std::string DecodeError(const std::vector<std::byte>& bytes)
{
    SceneStage stage;
    std::string error = "none";
    DecodeCookedScene(bytes, stage, "a.vscene", error);
    return error;
}

void WriteSceneHead(ByteWriter& out, std::uint32_t entities)
{
    out.WriteU32(6);
    out.WriteU8(0);
    out.WriteU32(entities);
}

/// One entity whose records `body` writes, their number included.
std::vector<std::byte> WrapEntity(const std::function<void(ByteWriter&)>& body)
{
    return Wrap(
        [&](ByteWriter& out)
        {
            WriteSceneHead(out, 1);
            out.WriteU64(1);
            out.WriteU64(2);
            out.WriteString("e");
            out.WriteU8(0);
            out.WriteU64(0);
            out.WriteU64(0);
            body(out);
        });
}

std::vector<std::byte> WrapValue(const std::function<void(ByteWriter&)>& value)
{
    return WrapEntity(
        [&](ByteWriter& out)
        {
            out.WriteU32(1);
            out.WriteU64(0);
            out.WriteString("R");
            out.WriteU32(1);
            out.WriteU32(1);
            out.WriteString("f");
            value(out);
        });
}

/// Bytes of the record that `WrapValue` makes, in front of the text of its leaf.
constexpr std::size_t kHeadOfValue = 5 + 4 + 4 + 5 + 5;

void WriteLeaf(ByteWriter& out, std::size_t size)
{
    out.WriteU8(0);
    out.WriteString(std::string(size, 'x'));
}

/// An array of leaves, or of as many arrays as there are sizes.
void WriteArray(ByteWriter& out, const std::vector<std::uint32_t>& sizes)
{
    if (sizes.size() > 1)
    {
        out.WriteU8(2);
        out.WriteU32(static_cast<std::uint32_t>(sizes.size()));
    }
    for (const std::uint32_t size : sizes)
    {
        out.WriteU8(2);
        out.WriteU32(size);
        for (std::uint32_t i = 0; i < size; ++i)
        {
            WriteLeaf(out, 0);
        }
    }
}

std::vector<std::string> NumberedNames(std::size_t count)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i)
    {
        names.push_back(std::to_string(i));
    }
    return names;
}

/// One record with a leaf under each name.
std::vector<std::byte> WrapFields(const std::vector<std::string>& names)
{
    return WrapEntity(
        [&](ByteWriter& out)
        {
            out.WriteU32(1);
            out.WriteU64(0);
            out.WriteString("R");
            out.WriteU32(1);
            out.WriteU32(static_cast<std::uint32_t>(names.size()));
            for (const std::string& name : names)
            {
                out.WriteString(name);
                WriteLeaf(out, 0);
            }
        });
}

void WriteNestedArrays(ByteWriter& out, int count)
{
    for (int i = 0; i < count; ++i)
    {
        out.WriteU8(2);
        out.WriteU32(1);
    }
    out.WriteU8(0);
    out.WriteString("leaf");
}

/// Scenes on their way through a cooked file.
class CookedFiles : public testing::Test
{
protected:
    /// The error of cooking a text; empty if it can be cooked.
    std::string Cook(const std::string& text)
    {
        std::string error;
        const bool done = CookScene(folder_.Write("text.vscene", text), cooked_, error);
        EXPECT_EQ(done, error.empty());
        return error;
    }

    /// What a save of the loaded file writes, or "<error>".
    std::string Reload(std::string_view bytes)
    {
        Scene scene;
        std::string error;
        return LoadScene(folder_.Write("a.vscene", std::string(bytes)), scene, legacy_.assets, &error) &&
                       SaveScene(folder_ / "saved.vscene", scene, legacy_.assets, &error)
                   ? folder_.Read("saved.vscene")
                   : "<" + error + ">";
    }

    std::string_view Cooked() const
    {
        return {reinterpret_cast<const char*>(cooked_.data()), cooked_.size()};
    }

    TestFolder folder_;
    Vornu::Test::LegacyText legacy_; // for the assets that the expected texts name
    std::vector<std::byte> cooked_;
};

TEST_F(CookedFiles, LoadToTheSameSceneAsTheirText)
{
    ASSERT_EQ(Cook(kSceneText), "");
    const std::string saved = Reload(kSceneText);
    EXPECT_EQ(Reload(Cooked()), saved);
    EXPECT_NE(saved.find("property \"tab\\tand quote\\\"\" \"\\0\""), std::string::npos);
    EXPECT_EQ(ProbeSceneVersion(folder_ / "a.vscene").version, 6u);
}

/// Scenes of real size: every record that there is, and more fields than one record may have.
TEST_F(CookedFiles, LoadToTheSameSceneAsAnyText)
{
    for (const auto& entry : std::filesystem::recursive_directory_iterator(VORNU_TEST_DATA "/legacy"))
    {
        if (entry.path().extension() == ".expected")
        {
            const std::string text = Platform::ReadFileBinary(entry.path()).bytes;
            ASSERT_EQ(Cook(text), "");
            EXPECT_EQ(Reload(Cooked()), text) << entry.path();
        }
    }
}

TEST_F(CookedFiles, HoldNoMoreThanTheirLimits)
{
    const std::string refused = "Failed to encode cooked scene " + (folder_ / "text.vscene").string() + ": ";
    const auto entity = [](const std::string& name, std::size_t records)
    {
        std::string text = "scene_version 6\nentity \"6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e34\" \"" + name +
                           "\"\ncomponent_schema \"Transform\" 1 0\nend_component_schema\n";
        for (std::size_t i = 1; i < records; ++i)
        {
            text += "component_schema \"cooked.Limit\" 1 0\nend_component_schema\n";
        }
        return text + "end_entity\n";
    };
    EXPECT_EQ(Cook(entity(std::string(65'537, 'n'), 1)), refused + "Cooked string exceeds its limit.");
    EXPECT_EQ(Cook(entity("n", 65'537)), refused + "Cooked item count exceeds its limit.");

    const std::string largest = entity(std::string(65'536, 'n'), 65'536);
    ASSERT_EQ(Cook(largest), "");
    EXPECT_EQ(Reload(Cooked()), Reload(largest));
}

TEST(CookedScene, FaultsOfRecordsNameTheEntity)
{
    const TestFolder folder;
    Assets::AssetManager assets;
    const std::vector<std::byte> bytes = WrapEntity([](ByteWriter& out) { out.WriteU32(0); });
    const auto path =
        folder.Write("a.vscene", std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    Scene scene;
    std::string error;
    EXPECT_FALSE(LoadScene(path, scene, assets, &error));
    EXPECT_EQ(error,
              "Failed to load cooked scene entity 0: Entity is missing its TransformComponent record.");
}

TEST(CookedScene, FaultsOfThePayload)
{
    const std::string prefix = "Invalid cooked scene a.vscene: ";
    const std::pair<std::vector<std::byte>, std::string> rows[] = {
        {Wrap([](ByteWriter& out) { WriteSceneHead(out, 0); }), "none"},
        {Wrap([](ByteWriter& out) { out.WriteU32(5); }),
         prefix + "Cooked scene holds scene version 5; recook the content."},
        {Wrap(
             [](ByteWriter& out)
             {
                 out.WriteU32(6);
                 out.WriteU8(2);
             }),
         prefix + "Malformed environment flag."},
        {Wrap(
             [](ByteWriter& out)
             {
                 out.WriteU32(6);
                 out.WriteU8(1);
                 out.WriteString("Other");
                 out.WriteU32(1);
                 out.WriteU32(0);
             }),
         prefix + "Malformed environment record."},
        {Wrap(
             [](ByteWriter& out)
             {
                 WriteSceneHead(out, 0);
                 out.WriteU8(0);
             }),
         prefix + "Trailing data after the last entity."},
        {Wrap(
             [](ByteWriter& out)
             {
                 WriteSceneHead(out, 2);
                 out.WriteBytes(std::vector<std::byte>(81));
             }),
         prefix + "Cooked item count exceeds the data."},
        {Wrap(
             [](ByteWriter& out)
             {
                 WriteSceneHead(out, 1);
                 out.WriteBytes(std::vector<std::byte>(41));
             }),
         prefix + "Null entity GUID."},
        {WrapValue([](ByteWriter& out) { out.WriteU8(3); }), prefix + "Unknown record value tag."},
        {WrapValue([](ByteWriter& out) { WriteNestedArrays(out, 16); }), "none"},
        {WrapValue([](ByteWriter& out) { WriteNestedArrays(out, 17); }),
         prefix + "Record nesting exceeds the schema depth limit."},
        {WrapEntity(
             [](ByteWriter& out)
             {
                 out.WriteU32(1);
                 out.WriteU64(0);
                 out.WriteString("");
                 out.WriteU64(0);
             }),
         prefix + "Record without a type name."},
        {WrapEntity(
             [](ByteWriter& out)
             {
                 out.WriteU32(1);
                 out.WriteU64(0);
                 out.WriteString("R");
                 out.WriteU64(0);
             }),
         prefix + "Invalid component schema header."},
        {WrapFields({"a", "b"}), "none"},
        {WrapFields({"a", ""}), prefix + "Empty or duplicate schema field."},
        {WrapFields({"a", "b", "a"}), prefix + "Empty or duplicate schema field."},
        {WrapFields(NumberedNames(1024)), "none"},
        {WrapFields(NumberedNames(1025)), prefix + "Cooked item count exceeds its limit."},
        {WrapFields({std::string(65'537, 'n')}), prefix + "Cooked string exceeds its limit."},
        {WrapValue([](ByteWriter& out) { WriteArray(out, {1024}); }), "none"},
        {WrapValue([](ByteWriter& out) { WriteArray(out, {1025}); }),
         prefix + "Cooked item count exceeds its limit."},
        // With the field and the elements of the outer array 4,096, and one more.
        {WrapValue(
             [](ByteWriter& out) {
                 WriteArray(out, {1024, 1024, 1024, 1019});
             }),
         "none"},
        {WrapValue(
             [](ByteWriter& out) {
                 WriteArray(out, {1024, 1024, 1024, 1020});
             }),
         prefix + "Record exceeds the total field limit."},
        {WrapValue([](ByteWriter& out) { WriteLeaf(out, 0x100000 - kHeadOfValue); }), "none"},
        {WrapValue([](ByteWriter& out) { WriteLeaf(out, 0x100001 - kHeadOfValue); }),
         prefix + "Record exceeds the schema size limit."},
        {WrapValue([](ByteWriter& out) { WriteLeaf(out, 0x100001); }),
         prefix + "Cooked string exceeds its limit."},
        {WrapEntity(
             [](ByteWriter& out)
             {
                 out.WriteU32(1);
                 out.WriteU64(0);
                 out.WriteString("EnvironmentSettings");
                 out.WriteU32(1);
                 out.WriteU32(0);
             }),
         prefix + "Environment record inside an entity."},
    };
    for (const auto& [bytes, expected] : rows)
    {
        EXPECT_EQ(DecodeError(bytes), expected);
    }
}

TEST(CookedScene, SizesThatAreStoredCanNotBeTooSmall)
{
    for (const std::uint64_t stored : {std::uint64_t{0}, std::uint64_t{500}, kUnknownEncodedBytes})
    {
        const std::vector<std::byte> bytes = WrapEntity(
            [&](ByteWriter& out)
            {
                out.WriteU32(1);
                out.WriteU64(stored);
                out.WriteString("R");
                out.WriteU32(1);
                out.WriteU32(0);
            });
        SceneStage stage;
        std::string error;
        ASSERT_TRUE(DecodeCookedScene(bytes, stage, "a", error)) << error;
        EXPECT_EQ(stage.entities[0].records[0].encodedBytes, std::max<std::uint64_t>(stored, 13));
    }
}

TEST(CookedScene, NoCutOrFlippedFileIsTakenForAWholeOne)
{
    const TestFolder folder;
    std::vector<std::byte> cooked;
    std::string error;
    ASSERT_TRUE(CookScene(folder.Write("text.vscene", kSceneText), cooked, error)) << error;
    for (std::size_t size = 0; size < cooked.size(); ++size)
    {
        EXPECT_NE(DecodeError({cooked.begin(), cooked.begin() + static_cast<std::ptrdiff_t>(size)}), "none")
            << size;
    }
    for (std::size_t bit = 0; bit < 8 * 32; ++bit) // what follows the checksum in the header is reserved
    {
        std::vector<std::byte> flipped = cooked;
        flipped[bit / 8] ^= static_cast<std::byte>(1u << (bit % 8));
        EXPECT_NE(DecodeError(flipped), "none") << bit;
    }
    // Behind a right checksum every cut of the payload must still be refused.
    const std::vector<std::byte> payload(cooked.begin() + 40, cooked.end());
    for (std::size_t size = 0; size < payload.size(); ++size)
    {
        const auto cut =
            Assets::WrapContainer(Assets::ContainerKind("SCNE"), 1, std::span(payload).first(size));
        EXPECT_NE(DecodeError(cut), "none") << size;
    }
}

} // namespace
} // namespace Vornu::Scene
