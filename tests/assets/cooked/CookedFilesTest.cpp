#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/cooked/CookedManifest.h"
#include "engine/assets/identity/ContentHash.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace Vornu::Assets
{
namespace
{

using Test::TestFolder;

std::vector<std::byte> Bytes(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

std::string OpenError(const std::vector<std::byte>& bytes)
{
    std::string error = "none";
    OpenContainer(bytes, ContainerKind("VMAT"), 2, "a.vmat", &error);
    return error;
}

TEST(ContentHash, IsXxh64)
{
    EXPECT_EQ(HashText(Xxh64({})), "ef46db3751d8e999");
    EXPECT_EQ(HashText(Xxh64(Bytes("abc"))), "44bc2cf5ad770999");
    const TestFolder folder;
    const std::string large(700'000, 'x');
    std::string error;
    EXPECT_EQ(HashFile(folder.Write("large", large), &error), Xxh64(Bytes(large)));
    EXPECT_EQ(HashFile(folder / "none", &error), std::nullopt);
    EXPECT_EQ(error, "Failed to open file for hashing: " + (folder / "none").native());
    EXPECT_EQ(HashFile(folder.Path(), &error), std::nullopt);
    EXPECT_EQ(error, "Failed to read file for hashing: " + folder.Path().native());
    EXPECT_EQ(ParseHashText("Ff"), 255u);
    for (const char* bad : {"", "g", "-1", "00000000000000000", "0x1"})
    {
        EXPECT_EQ(ParseHashText(bad), std::nullopt) << bad;
    }
}

TEST(CookedContainer, ReportsTheFirstFault)
{
    const std::vector<std::byte> whole = WrapContainer(ContainerKind("VMAT"), 2, Bytes("payload"));
    EXPECT_EQ(OpenError(whole), "none");
    EXPECT_EQ(OpenError(WrapContainer(ContainerKind("VMAT"), 2, {})), "none");
    const std::string prefix = "Invalid cooked file a.vmat: ";
    EXPECT_EQ(OpenError({whole.begin(), whole.begin() + 39}),
              prefix + "unknown header or container version.");
    EXPECT_EQ(OpenError(WrapContainer(ContainerKind("CLIP"), 2, {})),
              prefix + "it holds a different kind of asset.");
    EXPECT_EQ(OpenError(WrapContainer(ContainerKind("VMAT"), 3, {})),
              prefix + "format version 3, expected 2; recook the content.");
    EXPECT_EQ(OpenError({whole.begin(), whole.end() - 1}), prefix + "truncated or oversized payload.");
    std::vector<std::byte> corrupt = whole;
    corrupt.back() ^= std::byte{1};
    EXPECT_EQ(OpenError(corrupt), prefix + "checksum mismatch (corrupt file).");
}

TEST(CookedContainer, RawDataPassesOnlyWithoutTheMagic)
{
    const std::vector<std::byte> raw = Bytes("VCK");
    const auto payload = OpenContainerOrRaw(raw, ContainerKind("MESH"), 1, "m", nullptr);
    ASSERT_TRUE(payload.has_value());
    EXPECT_EQ(payload->size(), 3u);
    EXPECT_FALSE(OpenContainerOrRaw(Bytes("VCKD"), ContainerKind("MESH"), 1, "m", nullptr).has_value());
}

TEST(CookedContainer, FilesAreWrittenWholeWithTheirFolders)
{
    const TestFolder folder;
    std::string error;
    EXPECT_TRUE(WriteFileAtomically(folder / "x/y/a.bin", Bytes("data"), &error)) << error;
    EXPECT_EQ(ReadWholeFile(folder / "x/y/a.bin", &error), Bytes("data"));
    EXPECT_FALSE(WriteFileAtomically(folder / "x/y/a.bin/b", Bytes("data"), &error));
    EXPECT_EQ(error, "Failed to create " + (folder / "x/y/a.bin").native() + ": Not a directory");
    EXPECT_FALSE(WriteFileAtomically(folder / "x/y", Bytes("data"), &error));
    EXPECT_EQ(error,
              "Failed to replace " + (folder / "x/y").native() + ": Failed to replace file: Is a directory");
    EXPECT_EQ(ReadWholeFile(folder / "none", &error), std::nullopt);
    EXPECT_EQ(error, "Failed to open " + (folder / "none").native());
    EXPECT_EQ(ReadWholeFile(folder / "x", &error), std::nullopt);
    EXPECT_EQ(error, "Failed to read " + (folder / "x").native());
}

CookedManifest FullManifest(std::uint32_t version)
{
    CookedManifest manifest;
    manifest.version = version;
    manifest.platform = "li\"nux\\";
    manifest.contentRoot = "Game/Content";
    manifest.outputRoot = "Out put";
    manifest.requireCookedScenes = true;
    CookedManifestAsset asset;
    asset.kind = AssetKind::ImageDocument;
    asset.name = "a b.vimg";
    asset.firstPath = "first path";
    asset.text = "quote \"";
    asset.firstNumber = 18446744073709551615u;
    asset.flag = true;
    if (version == 1)
    {
        asset.id = 42;
    }
    else
    {
        asset.guid = {1, 2};
    }
    if (version == 3)
    {
        manifest.cookerVersion = 9;
        asset.firstHash = 0xABC;
        asset.thirdText = "third";
        asset.number32 = 7;
        asset.dependencies = {{"dep one", 5}, {"dep/two", 0xFFFFFFFFFFFFFFFF}};
    }
    manifest.assets = {asset, CookedManifestAsset{}};
    return manifest;
}

TEST(CookedManifest, EveryVersionComesBack)
{
    const TestFolder folder;
    for (const std::uint32_t version : {1u, 2u, 3u})
    {
        std::string error;
        ASSERT_TRUE(WriteCookedManifest(folder / "m", FullManifest(version), &error)) << error;
        const std::string first = folder.Read("m");
        CookedManifest read;
        ASSERT_TRUE(ReadCookedManifest(folder / "m", read, &error)) << error;
        EXPECT_EQ(read.assets.size(), 2u);
        EXPECT_EQ(read.assets[0].name, "a b.vimg");
        EXPECT_EQ(read.assets[0].kind, AssetKind::ImageDocument);
        EXPECT_EQ(read.assets[0].dependencies.size(), version == 3 ? 2u : 0u);
        ASSERT_TRUE(WriteCookedManifest(folder / "m", read, &error)) << error;
        EXPECT_EQ(folder.Read("m"), first);
    }
    EXPECT_EQ(folder.Read("m").substr(0, 61),
              "vornu_cooked_manifest 3\nplatform \"li\\\"nux\\\\\"\ncooker_version 9");
}

TEST(CookedManifest, BrokenLinesAreNamed)
{
    const TestFolder folder;
    const std::string path = (folder / "m").native();
    const std::string good =
        "asset 00000000-0000-0001-0000-000000000002 Mesh \"n\" \"\" \"\" \"\" \"\" 0 0 0 a b \"\" c \"\" 1 0";
    std::string odd = good;
    odd.replace(odd.find("0 0 0 a"), 5, "0 0 2");
    const std::pair<std::string, std::string> rows[] = {
        {"vornu_cooked_manifest 3\n" + odd + "\n", "Malformed cooked asset manifest line: " + odd},
        {"vornu_cooked_manifest 3\n\nnew_word x\n" + good + "\ndependency \"p\" 1f\n", ""},
        {"vornu_cooked_manifest 4\n", "Invalid cooked asset manifest header: " + path},
        {"other 1\n", "Invalid cooked asset manifest header: " + path},
        {"", "Invalid cooked asset manifest header: " + path},
        {"vornu_cooked_manifest 3\nasset x Mesh\n", "Malformed cooked asset manifest line: asset x Mesh"},
        {"vornu_cooked_manifest 3\ndependency \"p\" 1\n",
         "Malformed cooked asset manifest dependency: dependency \"p\" 1"},
        {"vornu_cooked_manifest 3\n" + good + "\ndependency \"p\" 12345678901234567\n",
         "Malformed cooked asset manifest dependency: dependency \"p\" 12345678901234567"},
    };
    for (const auto& [text, expected] : rows)
    {
        folder.Write("m", text);
        CookedManifest manifest;
        std::string error;
        EXPECT_EQ(ReadCookedManifest(folder / "m", manifest, &error), expected.empty());
        EXPECT_EQ(error, expected);
    }
    CookedManifest manifest;
    std::string error;
    EXPECT_FALSE(ReadCookedManifest(folder / "none", manifest, &error));
    EXPECT_EQ(error, "Failed to open cooked asset manifest: " + (folder / "none").native());
    std::filesystem::resize_file(folder.Write("large", ""), 1ull << 40); // of zeros, in one line
    EXPECT_FALSE(ReadCookedManifest(folder / "large", manifest, &error));
    EXPECT_EQ(error, "Failed to read cooked asset manifest: " + (folder / "large").native());
    EXPECT_FALSE(ReadCookedManifest("/dev/zero", manifest, &error));
    EXPECT_EQ(error, "Failed to read cooked asset manifest: /dev/zero");
    EXPECT_EQ(ReadWholeFile(folder / "large", &error, 1u << 20), std::nullopt);
    EXPECT_EQ(error, "Failed to read " + (folder / "large").native() + ": it is larger than 1048576 bytes.");
}

TEST(CookedManifest, TheDemandForCookedScenesStandsInFrontOfTheAssets)
{
    const TestFolder folder;
    EXPECT_FALSE(RequiresCookedScenes(folder.Path()));
    const std::pair<const char*, bool> rows[] = {
        {"vornu_cooked_manifest 3\nrequire_cooked_scenes 1\n", true},
        {"vornu_cooked_manifest 3\nrequire_cooked_scenes 0\n", false},
        {"vornu_cooked_manifest 3\nasset x\nrequire_cooked_scenes 1\n", false},
    };
    auto time = std::filesystem::file_time_type::clock::now();
    for (const auto& [text, expected] : rows)
    {
        const auto path = folder.Write("CookedAssetManifest.vmanifest", text);
        time += std::chrono::seconds(1); // what is remembered holds as long as the file's time
        std::filesystem::last_write_time(path, time);
        EXPECT_EQ(RequiresCookedScenes(folder.Path()), expected) << text;
        EXPECT_EQ(RequiresCookedScenes(folder.Path()), expected) << text;
    }
    std::filesystem::resize_file(folder.Write("CookedAssetManifest.vmanifest", ""), 1ull << 40);
    EXPECT_FALSE(RequiresCookedScenes(folder.Path()));
}

} // namespace
} // namespace Vornu::Assets
