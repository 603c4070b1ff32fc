// Calls the writers of the libraries that no command line reaches, one after the other, on the project in the
// current folder. Run again, it finishes what an earlier run left open. Each failure is a FAILED line.

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/cooked/CookedManifest.h"
#include "engine/assets/identity/AssetSidecar.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/system/Signals.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/files/CookedScene.h"
#include "engine/scene/files/SceneFile.h"

#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Vornu;

bool failed = false;

void Report(const char* writer, bool succeeded, const std::string& error)
{
    if (!succeeded)
    {
        failed = true;
        std::fprintf(stderr, "FAILED   %s: %s\n", writer, error.c_str());
    }
}

void SaveOverOldScene(Assets::AssetManager& assets)
{
    Scene::Scene scene;
    std::string error;
    Report("scene",
           Scene::LoadScene("Content/new.vscene", scene, assets, &error) &&
               Scene::SaveScene("Content/old.vscene", scene, assets, &error),
           error);
}

void Cook()
{
    std::vector<std::byte> bytes;
    std::string error;
    Report("cooked scene",
           Scene::CookScene("Content/new.vscene", bytes, error) &&
               Assets::WriteFileAtomically("Cooked/Levels/new.vscene", bytes, &error),
           error);
    Assets::CookedManifest manifest;
    manifest.requireCookedScenes = true;
    Report("manifest", Assets::WriteCookedManifest("Cooked/CookedAssetManifest.vmanifest", manifest, &error),
           error);
}

void CreateMesh(Assets::AssetManager& assets)
{
    const Assets::AssetId cube = assets.GetRegistry().FindBuiltin("Cube");
    const std::filesystem::path path = "Content/new.vmesh";
    if (!std::filesystem::exists(path) && assets.EnsureMeshLoaded(cube))
    {
        Assets::MeshAsset mesh = *assets.FindMesh(cube);
        mesh.lods.clear(); // names assets by numbers of this process
        Report("mesh", assets.CreateMeshAsset(path, mesh) != 0, "see the log");
    }
}

void RenameAsset()
{
    std::string error;
    const auto move =
        std::filesystem::exists("Library/old.png") ? &Assets::RenameAssetWithSidecars : &Assets::MoveSidecars;
    Report("rename", move("Library/old.png", "Library/new.png", &error), error);
}

} // namespace

int main()
{
    Platform::PrepareStandardStreams();
    Platform::InstallTemporaryFileCleanup();
    try
    {
        Scene::EnsureSceneSchema();
        Assets::AssetManager assets;
        assets.Initialize(std::filesystem::absolute("Content"), Assets::AssetMountMode::Authoring);
        SaveOverOldScene(assets);
        Cook();
        CreateMesh(assets);
        RenameAsset();
        assets.GetRegistry().SetFileSetting("Content/stone.png", "max_size", "512");
    }
    catch (const std::exception& error)
    {
        Report("run", false, error.what());
    }
    Report("output", std::fflush(stdout) == 0 && std::ferror(stdout) == 0, "lost");
    return failed ? 1 : 0;
}
