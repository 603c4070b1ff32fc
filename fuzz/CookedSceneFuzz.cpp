#include "engine/assets/cooked/CookedContainer.h"
#include "engine/scene/files/CookedScene.h"
#include "engine/scene/files/SceneFile.h"
#include "fuzz/FuzzFiles.h"
#include "fuzz/FuzzScenes.h"

#include <span>

namespace
{

/// A plain length holds a name that no line can.
constexpr std::string_view kRefusals[] = {"Cannot save an entity name that holds a line feed."};

} // namespace

/// The input is a payload, wrapped here so that it passes the checksum. What decodes is encoded as bytes that
/// decode alike, and what loads saves stably.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path cooked = Fuzz::ScratchFile("cooked.vscene");
    const auto wrapped =
        Assets::WrapContainer(Assets::ContainerKind(Scene::kCookedSceneKind), Scene::kCookedSceneFormat,
                              std::as_bytes(std::span(data, size)));
    Scene::SceneStage stage;
    std::string error;
    if (!Scene::DecodeCookedScene(wrapped, stage, "scene", error))
    {
        Fuzz::Require(!error.empty(), "a failed read says nothing");
        return 0;
    }
    const std::vector<std::byte> first = Scene::EncodeCookedScene(stage);
    Scene::SceneStage again;
    Fuzz::Require(Scene::DecodeCookedScene(first, again, "scene", error), "an encoded scene doesn't decode");
    Fuzz::Require(Scene::EncodeCookedScene(again) == first, "a cooked scene changed over a write and a read");

    Fuzz::WriteBytes(cooked, {reinterpret_cast<const char*>(wrapped.data()), wrapped.size()});
    Scene::Scene scene;
    if (Scene::LoadScene(cooked, scene, Fuzz::SharedAssets(), &error))
    {
        Fuzz::SaveStably(scene, kRefusals);
    }
    return 0;
}
