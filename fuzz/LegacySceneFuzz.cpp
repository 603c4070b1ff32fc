#include "engine/scene/Scene.h"
#include "engine/scene/SceneFile.h"
#include "engine/scene/legacy/LegacyReader.h"
#include "fuzz/FuzzFiles.h"

/// A legacy scene that is read and saved loads in the current format.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path source = Fuzz::ScratchFile("legacy.vscene");
    static const std::filesystem::path saved = Fuzz::ScratchFile("converted.vscene");
    Assets::AssetManager& assets = Fuzz::SharedAssets();
    Fuzz::WriteBytes(source, data, size);
    Scene::Scene scene;
    std::string error;
    if (!Scene::Legacy::Load(source, scene, assets, &error))
    {
        Fuzz::Require(!error.empty(), "a failed read says nothing");
        return 0;
    }
    if (!Scene::SaveScene(saved, scene, assets, &error))
    {
        return 0; // values and hierarchies that the saver refuses
    }
    Scene::Scene proof;
    Fuzz::Require(Scene::LoadScene(saved, proof, assets, &error), "a converted scene doesn't load: " + error);
    return 0;
}
