#include "engine/assets/manager/AssetManager.h"

#include "engine/assets/formats/mesh/CookedModel.h"
#include "engine/assets/formats/mesh/NativeMesh.h"
#include "engine/assets/formats/texture/ImageDecoder.h"
#include "engine/assets/registry/AssetReference.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/logging/Logger.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Vornu::Assets
{
namespace
{

using Test::TestFolder;

std::string CookedModelText()
{
    const std::vector<std::byte> bytes = EncodeCookedModel({});
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class AssetManagerTest : public testing::Test
{
protected:
    AssetManagerTest()
    {
        setenv("VORNU_USER_SETTINGS_DIR", (user_.Path()).c_str(), 1);
        Core::GetLogger().SetConsoleEnabled(false);
        Core::GetLogger().ClearHistory();
    }
    ~AssetManagerTest() override
    {
        Core::GetLogger().SetConsoleEnabled(true);
        SetModelImporter(nullptr);
        RegisterImageDecoder(".png", nullptr);
    }

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

    void FinishLoads()
    {
        // The count is of the end of an update, so a finished job may still wait for its publishing.
        for (int idle = 0; idle < 3; ++idle)
        {
            while (assets_.UpdateAsyncLoads() != 0)
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
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
    try
    {
        assets_.Initialize(content_ / "none", AssetMountMode::ReadOnly);
        ADD_FAILURE();
    }
    catch (const std::runtime_error& fault)
    {
        EXPECT_EQ(std::string(fault.what()),
                  "Read-only asset content directory is missing: " + (content_ / "none").native());
    }
    WriteMesh("good.vmesh", 1);
    const std::string before = content_.List();
    assets_.Initialize(content_.Path(), AssetMountMode::ReadOnly);
    EXPECT_TRUE(assets_.EnsureMeshLoaded(Find("content:good.vmesh")));
    EXPECT_EQ(content_.List(), before);
}

TEST_F(AssetManagerTest, FinishesRequestsAndReloadsInUpdates)
{
    WriteMesh("good.vmesh", 3);
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    const AssetId good = Find("content:good.vmesh");
    EXPECT_FALSE(assets_.RequestTextureLoad(good)) << "it is a mesh";
    const AssetLoadHandle handle = assets_.RequestMeshLoad(good);
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Queued);
    FinishLoads();
    ASSERT_EQ(AssetLoader::State(handle), AssetLoadState::Ready);
    ASSERT_NE(assets_.FindMesh(good), nullptr);

    WriteMesh("good.vmesh", 2);
    EXPECT_TRUE(assets_.ReloadAsset(good));
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Ready) << "the old data serves meanwhile";
    FinishLoads();
    EXPECT_EQ(assets_.FindMesh(good)->submeshes.size(), 2u);
    EXPECT_EQ(handle.Version(), 2u);

    content_.Write("good.vmesh", "broken");
    EXPECT_TRUE(assets_.ReloadAsset(good));
    FinishLoads();
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Ready);
    EXPECT_EQ(assets_.FindMesh(good)->submeshes.size(), 2u);
    EXPECT_NE(assets_.FailureText(good), "");
    EXPECT_FALSE(assets_.ReloadAsset(0));

    const AssetId cube = Find("builtin:Cube");
    EXPECT_TRUE(assets_.ReloadAsset(cube));
    EXPECT_TRUE(assets_.ReloadAsset(Find("builtin:White")));
    const AssetLoadHandle cubeHandle = assets_.RequestMeshLoad(cube);
    FinishLoads();
    EXPECT_EQ(AssetLoader::State(cubeHandle), AssetLoadState::Ready);
}

TEST_F(AssetManagerTest, RefreshPrunesWhatHasGoneAndTriesFailuresAgain)
{
    WriteMesh("gone.vmesh", 1);
    content_.Write("bad.vmesh", "no mesh");
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    const AssetId gone = Find("content:gone.vmesh");
    const AssetId bad = Find("content:bad.vmesh");
    ASSERT_TRUE(assets_.EnsureMeshLoaded(gone));
    ASSERT_FALSE(assets_.EnsureMeshLoaded(bad));
    const std::uint64_t generation = assets_.TableGeneration();

    std::filesystem::remove(content_ / "gone.vmesh");
    WriteMesh("bad.vmesh", 1);
    EXPECT_FALSE(assets_.EnsureMeshLoaded(bad)) << "not before the refresh";
    assets_.Refresh(false);
    EXPECT_EQ(assets_.FindMesh(gone), nullptr);
    EXPECT_EQ(assets_.TableGeneration(), generation + 1);
    EXPECT_FALSE(assets_.EnsureMeshLoaded(gone));
    EXPECT_EQ(Find("content:bad.vmesh"), bad);
    EXPECT_TRUE(assets_.EnsureMeshLoaded(bad));
    EXPECT_EQ(assets_.FailureText(bad), "");

    // In a package nothing is mended.
    content_.Write("bad.vmesh", "no mesh");
    assets_.Initialize(content_.Path(), AssetMountMode::ReadOnly);
    EXPECT_FALSE(assets_.EnsureMeshLoaded(bad));
    assets_.Refresh(false);
    EXPECT_FALSE(assets_.EnsureMeshLoaded(bad));
    EXPECT_EQ(CountLogged("Mesh asset previously failed to load: bad.vmesh"), 1u);
}

TEST_F(AssetManagerTest, TexturesGoThroughTheDecoderOfTheirExtension)
{
    content_.Write("a.PNG", "pixels");
    content_.Write("b.jpg", "pixels");
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    RegisterImageDecoder(".png",
                         [](const std::filesystem::path&) {
                             return ImportedTexture{2, 1, std::vector<std::byte>(8, std::byte{7}), false};
                         });
    const AssetId png = Find("content:a.PNG");
    const AssetId jpg = Find("content:b.jpg");
    ASSERT_TRUE(assets_.EnsureTextureLoaded(png));
    EXPECT_EQ(*assets_.FindTexture(png),
              (TextureAsset{2, 1, TextureFormat::Rgba8, std::vector<std::byte>(8, std::byte{7})}));
    EXPECT_FALSE(assets_.EnsureMeshLoaded(png));
    EXPECT_FALSE(assets_.EnsureTextureLoaded(jpg));
    EXPECT_EQ(CountLogged("Failed to load texture asset: b.jpg"), 1u);
    EXPECT_EQ(assets_.FailureText(jpg), "No image decoder for '.jpg' is registered in this program (source "
                                        "importers are authoring-only): " +
                                            (assets_.RootPath() / "b.jpg").native());
    const AssetId normal = Find("builtin:Builtin/FlatNormal");
    ASSERT_TRUE(assets_.EnsureTextureLoaded(normal));
    EXPECT_EQ(assets_.FindTexture(normal)->pixels,
              (std::vector{std::byte{128}, std::byte{128}, std::byte{255}, std::byte{255}}));

    TestFolder outside;
    outside.Write("c.png", "pixels");
    assets_.Initialize(content_.Path(), AssetMountMode::ReadOnly);
    std::filesystem::remove(content_ / "b.jpg");
    EXPECT_FALSE(assets_.EnsureTextureLoaded(jpg));
    EXPECT_EQ(assets_.FailureText(jpg),
              "Missing packaged texture: " + (assets_.RootPath() / "b.jpg").native());
    const AssetId foreign = assets_.GetRegistry().RegisterFile(AssetKind::Texture, outside / "c.png");
    EXPECT_FALSE(assets_.EnsureTextureLoaded(foreign));
    EXPECT_EQ(assets_.FailureText(foreign),
              "Read-only assets require a packaged source inside content: " + (outside / "c.png").native());
}

TEST_F(AssetManagerTest, AnImporterGivesModelsTheirParts)
{
    content_.Write("Models/house.fbx", "");
    content_.Write("Models/broken.glb", "");
    content_.Write("note.txt", "");
    int imports = 0;
    std::vector<std::string> meshes{"wall"};
    SetModelImporter(
        [&](const std::filesystem::path& path)
        {
            ++imports;
            if (path.extension() == ".glb")
            {
                throw 1;
            }
            ImportedSceneData data;
            data.nodes.resize(2);
            for (const std::string& mesh : meshes)
            {
                data.meshes.push_back({mesh, BuiltinMeshes()[0].make(), 0});
            }
            data.materials = {{"brick"}, {""}};
            data.skeletons = {{"A B"}};
            return data;
        });
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    PreloadProgress progress;
    assets_.PreloadProjectAssets(&progress);
    assets_.PreloadProjectAssets(&progress);
    EXPECT_EQ(progress.state, PreloadState::Done);
    EXPECT_EQ(progress.total, 2u);
    EXPECT_EQ(progress.finished, 2u);
    EXPECT_EQ(imports, 3) << "a scene that is there isn't imported again";
    EXPECT_EQ(CountLogged("Failed to load scene asset: unknown exception"), 1u);
    EXPECT_EQ(
        CountLogged("Imported scene with 2 nodes, 1 unique meshes, 1 skeletons, 0 clips, and 2 materials."),
        1u);

    const std::filesystem::path model = assets_.RootPath() / "Models/house.fbx";
    const AssetRegistry& registry = assets_.GetRegistry();
    const AssetId mesh = registry.FindSubAsset(model, "mesh#wall#0", AssetKind::Mesh);
    const AssetId skeleton = registry.FindSubAsset(model, "skel#A B#0", AssetKind::Skeleton);
    EXPECT_TRUE(assets_.EnsureMeshLoaded(mesh));
    ASSERT_NE(skeleton, 0u);
    EXPECT_EQ(assets_.FindMesh(mesh)->skeleton, skeleton);
    EXPECT_EQ(registry.FindRecord(skeleton)->dataPath, assets_.RootPath() / "Models/Skeletons/0_A_B.vskel");
    const AssetId unnamed = registry.FindSubAsset(model, "Material#1", AssetKind::Material);
    ASSERT_NE(unnamed, 0u);
    EXPECT_EQ(registry.FindRecord(unnamed)->name, "house.fbx/");

    assets_.Refresh(true);
    EXPECT_EQ(imports, 4);
    EXPECT_EQ(registry.FindSubAsset(model, "mesh#wall#0", AssetKind::Mesh), mesh) << "its GUID is listed";
    EXPECT_TRUE(assets_.EnsureMeshLoaded(mesh));
    const AssetLoadHandle held = assets_.RequestMeshLoad(mesh);
    std::uint64_t generation = assets_.TableGeneration();
    assets_.Refresh(false);
    EXPECT_FALSE(assets_.EnsureMeshLoaded(mesh));
    EXPECT_EQ(assets_.TableGeneration(), generation + 1);
    EXPECT_TRUE(assets_.LoadSceneAsset(registry.FindByPath(model)));
    EXPECT_TRUE(assets_.EnsureMeshLoaded(mesh)) << "the parts come back without another import";
    EXPECT_EQ(imports, 4);

    meshes = {"door", "wall"};
    EXPECT_TRUE(assets_.ReloadAsset(mesh));
    EXPECT_EQ(registry.FindSubAsset(model, "mesh#wall#1", AssetKind::Mesh), mesh)
        << "a renumbered part keeps its identity";
    meshes = {"door"};
    generation = assets_.TableGeneration();
    EXPECT_TRUE(assets_.ReloadAsset(registry.FindByPath(model)));
    EXPECT_FALSE(assets_.EnsureMeshLoaded(mesh));
    EXPECT_EQ(assets_.TableGeneration(), generation + 1);

    content_.Write("Models/cooked.fbx", CookedModelText());
    assets_.Refresh(false);
    const std::filesystem::path cooked = assets_.RootPath() / "Models/cooked.fbx";
    EXPECT_FALSE(assets_.LoadSceneAsset(registry.FindByPath(cooked)));
    EXPECT_EQ(CountLogged("Failed to load scene asset: Failed to load cooked model: " + cooked.native()), 1u);

    EXPECT_EQ(assets_.ImportSceneFile(content_ / "none.fbx"), 0u);
    EXPECT_EQ(CountLogged("Import failed. Source file does not exist: " + (content_ / "none.fbx").native()),
              1u);
    EXPECT_EQ(assets_.ImportSceneFile(content_ / "note.txt"), 0u);
    EXPECT_EQ(CountLogged("Import failed. Unsupported mesh format: " + (content_ / "note.txt").native()), 1u);
    EXPECT_EQ(assets_.ImportSceneFile(content_ / "Models/house.fbx"), registry.FindByPath(model));

    progress.cancel = true;
    assets_.PreloadProjectAssets(&progress);
    EXPECT_EQ(progress.finished, 0u);
}

TEST_F(AssetManagerTest, OnlyModelsAreImported)
{
    content_.Write("level.vscene", "scene_version 6\n");
    content_.Write("picture.png", "");
    content_.Write("house.obj", "");
    int imports = 0;
    SetModelImporter(
        [&](const std::filesystem::path&)
        {
            ++imports;
            ImportedSceneData data;
            MeshAsset mesh = BuiltinMeshes()[0].make();
            mesh.lods.clear();
            data.meshes.push_back({"wall", mesh, kNoImportedIndex});
            return data;
        });
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    EXPECT_FALSE(assets_.ReloadAsset(Find("content:level.vscene")));
    assets_.RebuildImportedSceneAssets({content_ / "level.vscene", content_ / "picture.png"});
    EXPECT_EQ(imports, 0);

    // An `.obj` file is a mesh, and yet a model with parts.
    const AssetId house = assets_.ImportSceneFile(content_ / "house.obj");
    ASSERT_NE(house, 0u);
    const AssetRegistry& registry = assets_.GetRegistry();
    const AssetId wall = registry.FindSubAsset(content_ / "house.obj", "mesh#wall#0", AssetKind::Mesh);
    ASSERT_NE(wall, 0u);
    EXPECT_EQ(assets_.FindMesh(wall)->lods, std::vector<MeshLod>{{wall}});
    EXPECT_TRUE(assets_.EnsureMeshLoaded(house));
    EXPECT_EQ(assets_.FindMesh(house)->lods, std::vector<MeshLod>{{house}});
    assets_.Refresh(true);
    EXPECT_EQ(imports, 3);
    EXPECT_TRUE(registry.FindRecord(wall));

    // A package holds what it imports, whatever the path to it looks like.
    const TestFolder outside;
    outside.Write("far.fbx", "");
    assets_.Initialize(content_.Path(), AssetMountMode::ReadOnly);
    const auto winding = content_.Path() / ".." / outside.Path().filename() / "far.fbx";
    EXPECT_EQ(assets_.ImportSceneFile(winding), 0u);
    EXPECT_EQ(CountLogged("Read-only assets require a packaged source inside content: " + winding.native()),
              1u);
    EXPECT_NE(assets_.ImportSceneFile(std::filesystem::relative(content_ / "house.obj")), 0u);
    EXPECT_EQ(imports, 4);
}

TEST_F(AssetManagerTest, TheFirstImportOfManyPartsWritesOneSidecar)
{
    content_.Write("a.fbx", "");
    SetModelImporter(
        [](const std::filesystem::path&)
        {
            ImportedSceneData data;
            data.materials.assign(20'000, {"m"});
            data.rigs = {{"r"}};
            return data;
        });
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    static int renames = 0;
    renames = 0;
    Platform::FileSystemCalls calls = Platform::ActiveFileSystemCalls();
    calls.rename = [](const char* from, const char* to) { return ++renames, std::rename(from, to); };
    const Platform::FileSystemCalls* const real = Platform::ReplaceFileSystemCalls(&calls);
    EXPECT_TRUE(assets_.LoadSceneAsset(Find("content:a.fbx")));
    Platform::ReplaceFileSystemCalls(real);
    EXPECT_EQ(renames, 1);
    EXPECT_EQ(ReadSidecar(content_ / "a.fbx.vmeta")->subAssets.size(), 20'001u);
}

TEST_F(AssetManagerTest, AMeshFileHoldsNoIdOfTheProcess)
{
    assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
    const AssetId cube = Find("builtin:Cube");
    ASSERT_TRUE(assets_.EnsureMeshLoaded(cube));
    ASSERT_FALSE(assets_.FindMesh(cube)->lods.empty());
    const AssetId copy = assets_.CreateMeshAsset(content_ / "copy.vmesh", *assets_.FindMesh(cube));
    ASSERT_TRUE(assets_.EnsureMeshLoaded(copy));
    EXPECT_TRUE(assets_.FindMesh(copy)->lods.empty());
}

TEST_F(AssetManagerTest, ReadOnlyRefusesWhatChangesTheDisk)
{
    const AssetId cube = [this]
    {
        assets_.Initialize(content_.Path(), AssetMountMode::Authoring);
        const AssetId mesh = assets_.CreateMeshAsset(content_ / "new.vmesh", BuiltinMeshes()[0].make());
        EXPECT_TRUE(assets_.EnsureMeshLoaded(mesh));
        EXPECT_EQ(assets_.CreateMeshAsset(content_ / "new.vmesh", {}), 0u) << "it exists";
        EXPECT_EQ(assets_.CreateMeshAsset(content_ / "new.png", {}), 0u);
        EXPECT_EQ(assets_.CreateMeshAsset(content_ / "new.vmesh/x.vmesh", {}), 0u);
        return mesh;
    }();
    assets_.Initialize(content_.Path(), AssetMountMode::ReadOnly);
    const std::string before = content_.List();
    using Operation = std::function<void(AssetManager&)>;
    const std::pair<const char*, Operation> operations[] = {
        {"CreateAnimatorControllerAsset", [](auto& a) { a.CreateAnimatorControllerAsset("a"); }},
        {"CreateMaterialAsset", [](auto& a) { a.CreateMaterialAsset("a"); }},
        {"CreateMeshAsset", [](auto& a) { a.CreateMeshAsset("a", {}); }},
        {"CreateRigDefinitionAsset", [](auto& a) { a.CreateRigDefinitionAsset("a"); }},
        {"CreateUiDocumentAsset", [](auto& a) { a.CreateUiDocumentAsset("a"); }},
        {"SaveAnimationClipAsset", [&](auto& a) { a.SaveAnimationClipAsset(cube); }},
        {"SaveAnimatorControllerAsset", [&](auto& a) { a.SaveAnimatorControllerAsset(cube); }},
        {"SaveMaterialAsset", [&](auto& a) { a.SaveMaterialAsset(cube); }},
        {"SaveRigDefinitionAsset", [&](auto& a) { a.SaveRigDefinitionAsset(cube); }},
        {"SaveUiDocumentAsset", [&](auto& a) { a.SaveUiDocumentAsset(cube); }},
        {"SaveImportedMaterialOverride", [&](auto& a) { a.SaveImportedMaterialOverride(cube); }},
        {"BeginTextureSetImportForImportedModel",
         [&](auto& a) { a.BeginTextureSetImportForImportedModel(cube); }},
        {"ImportTextureSetForImportedModel", [&](auto& a) { a.ImportTextureSetForImportedModel(cube); }},
        {"StepTextureSetImport", [](auto& a) { a.StepTextureSetImport(); }},
        {"ImportAnimationClipsForSkeleton", [&](auto& a) { a.ImportAnimationClipsForSkeleton(cube); }},
        {"CommitAnimationClipsForSkeleton", [&](auto& a) { a.CommitAnimationClipsForSkeleton(cube); }},
    };
    for (const auto& [name, operation] : operations)
    {
        try
        {
            operation(assets_);
            ADD_FAILURE() << name;
        }
        catch (const std::runtime_error& fault)
        {
            EXPECT_EQ(std::string(fault.what()),
                      std::string(name) + " is unavailable with read-only asset sources.");
        }
    }
    EXPECT_EQ(content_.List(), before);

    assets_.ReportFallback("No such mesh.");
    assets_.ReportFallback("No such mesh.");
    EXPECT_EQ(assets_.FallbackCount(), 2u);
    EXPECT_EQ(CountLogged("No such mesh. Using a built-in fallback."), 1u);
}

} // namespace
} // namespace Vornu::Assets
