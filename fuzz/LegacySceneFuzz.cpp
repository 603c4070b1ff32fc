#include "engine/scene/legacy/LegacyReader.h"
#include "fuzz/FuzzFiles.h"
#include "fuzz/FuzzScenes.h"

namespace
{

/// The reader leaves these to the saver: identities and parents of versions 1 to 5, assets of another kind
/// than their field's, lists that are longer than any file may hold, and what scripts may hold.
constexpr std::string_view kRefusals[] = {
    "Cannot save duplicate entity GUIDs.",         "Scene hierarchy contains a cycle.",
    "Unregistered asset or mismatched asset type", "Invalid or oversized collection.",
    "Cannot save a non-finite schema value.",      "Unsupported script field type.",
    "Script collection exceeds its array limit.",  "Script authoring data exceeds its record budget."};

} // namespace

/// A legacy scene that loads saves stably in the current format, which this reader takes for the same scene.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path source = Fuzz::ScratchFile("legacy.vscene");
    Assets::AssetManager& assets = Fuzz::SharedAssets();
    Fuzz::WriteBytes(source, Fuzz::AsText(data, size));
    Scene::Scene scene;
    std::string error;
    const bool loaded = Scene::Legacy::Load(source, scene, assets, &error);
    Fuzz::Require(loaded == error.empty(), "a load and its error disagree: " + error);
    if (!loaded)
    {
        return 0;
    }
    if (const std::optional<std::string> saved = Fuzz::SaveStably(scene, kRefusals))
    {
        Fuzz::Require(Scene::Legacy::Load(Fuzz::SavedScene(), scene, assets, &error),
                      "the legacy reader refuses a saved scene: " + error);
        Fuzz::Require(Fuzz::Save(scene) == saved, "the legacy reader reads another scene");
    }
    return 0;
}
