#include "engine/assets/cooked/CookedContainer.h"
#include "engine/scene/files/CookedScene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/files/SceneStage.h"
#include "fuzz/FuzzFiles.h"
#include "fuzz/FuzzScenes.h"

namespace
{

/// An error without the place of the fault, which a cooked scene names in another way.
std::string_view Fault(std::string_view error)
{
    const std::size_t colon = error.find(": ");
    return colon == error.npos ? error : error.substr(colon);
}

} // namespace

/// A text scene that loads saves stably, and its cooked form loads as the same scene.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path source = Fuzz::ScratchFile("source.vscene");
    static const std::filesystem::path cooked = Fuzz::ScratchFile("cooked.vscene");
    const std::string_view text = Fuzz::AsText(data, size);
    if (text.starts_with(Assets::kContainerMagic))
    {
        return 0; // for another target
    }
    Core::LineReader lines(text);
    Scene::SceneStage stage;
    std::string parseError;
    const bool parsed = Scene::ParseSceneText(lines, stage, source, parseError);

    Fuzz::WriteBytes(source, text);
    Scene::Scene scene;
    std::string error;
    std::string cookedError;
    const bool loaded = Scene::LoadScene(source, scene, Fuzz::SharedAssets(), &error);
    Fuzz::Require(loaded == error.empty(), "a load and its error disagree: " + error);
    Fuzz::Require(parsed || error == parseError, "a load fails unlike the parser: " + error);
    if (!parsed)
    {
        return 0;
    }

    const std::vector<std::byte> bytes = Scene::EncodeCookedScene(stage);
    Fuzz::WriteBytes(cooked, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    Scene::Scene fromCooked;
    Scene::LoadScene(cooked, fromCooked, Fuzz::SharedAssets(), &cookedError);
    Fuzz::Require(Fault(error) == Fault(cookedError),
                  "text and cooked form load differently: " + error + " / " + cookedError);
    if (loaded)
    {
        Fuzz::Require(Fuzz::SaveStably(scene) == Fuzz::Save(fromCooked),
                      "text and cooked form are different scenes");
    }
    return 0;
}
