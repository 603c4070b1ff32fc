#include "engine/assets/cooked/CookedContainer.h"
#include "engine/scene/files/SceneStage.h"
#include "engine/scene/files/SceneVersionProbe.h"
#include "fuzz/FuzzFiles.h"
#include "tools/upgrade/Classify.h"

namespace
{

using namespace Vornu;

bool SaysLegacy(std::string_view error)
{
    return error.find("Positional records are a legacy format") != std::string_view::npos ||
           error.find("is a legacy format the engine no longer reads") != std::string_view::npos;
}

} // namespace

/// A text that is called legacy is none that the reader of the current format takes, and one that this reader
/// calls legacy has a reason to be, if its header is found: a line of blanks in front hides that from one
/// alone.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Fuzz::AsText(data, size);
    Core::LineReader source(text);
    const std::optional<std::string> reason = Upgrade::ClassifyText(source).reason;
    if (text.starts_with(Assets::kContainerMagic))
    {
        return 0;
    }
    Core::LineReader head(text);
    std::uint64_t lineNumber = 0;
    const bool found = Scene::ProbeSceneVersion(head, lineNumber).found;
    Core::LineReader lines(text);
    Scene::SceneStage stage;
    std::string error;
    const bool parsed = Scene::ParseSceneText(lines, stage, "scene", error);
    Fuzz::Require(!reason || !parsed, "a current file is called legacy: " + reason.value_or(""));
    Fuzz::Require(reason || !found || !SaysLegacy(error), "a legacy file has no reason: " + error);
    return 0;
}
