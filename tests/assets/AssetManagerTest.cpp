#include "engine/assets/AssetManager.h"

#include "engine/assets/AssetReference.h"
#include "engine/assets/formats/NativeMesh.h"
#include "engine/core/Logger.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vornu::Assets
{
namespace
{

using Test::TestFolder;

class AssetManagerTest : public testing::Test
{
protected:
    AssetManagerTest()
    {
        setenv("VORNU_USER_SETTINGS_DIR", (user_.Path()).c_str(), 1);
        Core::GetLogger().SetConsoleEnabled(false);
        Core::GetLogger().ClearHistory();
    }
    ~AssetManagerTest() override { Core::GetLogger().SetConsoleEnabled(true); }

    void WriteMesh(const std::string& name, std::size_t submeshes)
    {
        MeshAsset mesh = BuiltinMeshes()[0].make();
        mesh.submeshes.clear();
        for (std::size_t i = 0; i < submeshes; ++i)
        {
            mesh.submeshes.push_back({0, 3, static_cast<std::uint32_t>(i), "part"});
        }
        const std::vector<std::byte> bytes = EncodeNativeMesh(mesh);
        content_.Write(name, std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    static std::size_t CountLogged(const std::string& message)
    {
        const std::vector<Core::LogRecord> history = Core::GetLogger().CopyHistory();
        return static_cast<std::size_t>(std::count_if(
            history.begin(), history.end(),
            [&](const Core::LogRecord& r) { return r.message.find(message) != std::string::npos; }));
    }

    AssetId Find(const std::string& reference) const
    {
        return ResolveAssetReference(assets_.GetRegistry(), reference);
    }

    TestFolder content_;
    TestFolder user_;
    AssetManager assets_;
};

TEST_F(AssetManagerTest, LoadsNativeMeshesOnceAndReportsBrokenOnesOnce)
{
    WriteMesh("good.vmesh", 3);
    content_.Write("bad.vmesh", "no mesh");
    content_.Write("old.obj", "v 0 0 0");
    content_.Write("picture.png", "");
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);

    const AssetId good = Find("content:good.vmesh");
    ASSERT_NE(good, 0u);
    EXPECT_EQ(assets_.FindMesh(good), nullptr);
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(assets_.EnsureMeshLoaded(good));
        EXPECT_FALSE(assets_.EnsureMeshLoaded(Find("content:bad.vmesh")));
        EXPECT_FALSE(assets_.EnsureMeshLoaded(Find("content:old.obj")));
    }
    ASSERT_NE(assets_.FindMesh(good), nullptr);
    EXPECT_EQ(assets_.FindMesh(good)->submeshes.size(), 3u);
    EXPECT_EQ(CountLogged("Loaded native mesh asset: "), 1u);
    EXPECT_EQ(CountLogged("Failed to load native mesh asset: "), 1u);
    EXPECT_EQ(CountLogged("No model importer is registered in this program"), 1u);
    EXPECT_FALSE(assets_.EnsureMeshLoaded(Find("content:picture.png")));
    EXPECT_FALSE(assets_.EnsureMeshLoaded(0));

    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    EXPECT_EQ(Find("content:good.vmesh"), good) << "a GUID keeps its id";
    EXPECT_EQ(assets_.FindMesh(good), nullptr);
}

TEST_F(AssetManagerTest, OffersBuiltinsAndNamesModelsWithoutImporter)
{
    content_.Write("Models/house.fbx", "");
    content_.Write("Levels/a.vscene", "scene_version 6\n");
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    assets_.PreloadProjectAssets(nullptr);
    EXPECT_EQ(
        CountLogged("Failed to load scene asset: No model importer is registered in this program (source "
                    "importers are authoring-only): "),
        1u);
    const AssetId sphere = Find("builtin:Sphere");
    EXPECT_TRUE(assets_.EnsureMeshLoaded(sphere));
    ASSERT_NE(assets_.FindMesh(sphere), nullptr);
    EXPECT_EQ(assets_.FindMesh(sphere)->lods, (std::vector<MeshLod>{{sphere, 1'000'000.0f}}));
    EXPECT_EQ(Find("builtin:Builtin/DefaultMaterial"), assets_.DefaultMaterial());
    EXPECT_NE(Find("builtin:Builtin/FlatNormal"), 0u);
}

TEST_F(AssetManagerTest, AReadOnlyMountWantsItsFolderAndWritesNothing)
{
    EXPECT_THROW(assets_.Initialize(content_ / "none", AssetMountMode::ReadOnly), std::runtime_error);
    WriteMesh("good.vmesh", 1);
    const std::string before = content_.List();
    assets_.Initialize(content_.Path(), AssetMountMode::ReadOnly);
    EXPECT_TRUE(assets_.EnsureMeshLoaded(Find("content:good.vmesh")));
    EXPECT_EQ(content_.List(), before);
}

} // namespace
} // namespace Vornu::Assets
