#include "engine/scene/files/CookedScene.h"

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/files/ByteStream.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/files/SceneVersionProbe.h"
#include "engine/scene/registration/EntityRecordStage.h"
#include "tests/core/TestFolder.h"

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

TEST(CookedScene, LoadsToTheSameSceneAsItsText)
{
    const TestFolder folder;
    Assets::AssetManager assets;
    const std::filesystem::path text = folder.Write("text.vscene", kSceneText);
    std::vector<std::byte> cooked;
    std::string error;
    ASSERT_TRUE(CookScene(text, cooked, error)) << error;
    const std::filesystem::path binary = folder.Write(
        "cooked.vscene", std::string(reinterpret_cast<const char*>(cooked.data()), cooked.size()));
    EXPECT_EQ(ProbeSceneVersion(binary).version, 6u);

    std::string saved[2];
    for (const auto& [path, out] : {std::pair(text, &saved[0]), std::pair(binary, &saved[1])})
    {
        Scene scene;
        ASSERT_TRUE(LoadScene(path, scene, assets, &error)) << error;
        ASSERT_TRUE(SaveScene(folder / "saved.vscene", scene, assets, &error)) << error;
        *out = folder.Read("saved.vscene");
    }
    EXPECT_EQ(saved[0], saved[1]);
    EXPECT_NE(saved[1].find("property \"tab\\tand quote\\\"\" \"\\0\""), std::string::npos);
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
