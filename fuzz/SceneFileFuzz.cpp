#include "engine/scene/Scene.h"
#include "engine/scene/SceneFile.h"
#include "fuzz/FuzzFiles.h"

/// A scene that loads and saves loads again, and saves to the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path source = Fuzz::ScratchFile("source.vscene");
    static const std::filesystem::path saved = Fuzz::ScratchFile("saved.vscene");
    Assets::AssetManager& assets = Fuzz::SharedAssets();
    Fuzz::WriteBytes(source, data, size);
    Scene::Scene scene;
    std::string error;
    if (!Scene::LoadScene(source, scene, assets, &error))
    {
        Fuzz::Require(!error.empty(), "a failed load says nothing");
        return 0;
    }
    if (!Scene::SaveScene(saved, scene, assets, &error))
    {
        return 0; // what the defaults add can break a limit
    }
    const std::string first = Fuzz::ReadBytes(saved);
    Fuzz::Require(Scene::LoadScene(saved, scene, assets, &error), "a saved scene doesn't load: " + error);
    Fuzz::Require(Scene::SaveScene(saved, scene, assets, &error), "a loaded scene doesn't save: " + error);
    Fuzz::Require(Fuzz::ReadBytes(saved) == first, "a saved scene isn't stable");
    return 0;
}
