#include "fuzz/FuzzScenes.h"

#include "engine/scene/files/SceneFile.h"
#include "fuzz/FuzzFiles.h"

#include <algorithm>
#include <string_view>

namespace Vornu::Fuzz
{
namespace
{

/// Escapes, defaults and longer number texts make a record larger than the one that was read.
constexpr std::string_view kTooLarge[] = {"Schema exceeds its line or record byte budget.",
                                          "Schema exceeds the nesting or field budget."};

bool IsRefusal(std::string_view error, Refusals refusals)
{
    return std::any_of(refusals.begin(), refusals.end(),
                       [&](std::string_view refusal) { return error.find(refusal) != error.npos; });
}

} // namespace

Assets::AssetManager& SharedAssets()
{
    [[maybe_unused]] static const std::filesystem::path scratch = ScratchFile("user");
    static Assets::AssetManager assets;
    [[maybe_unused]] static const bool mounted = []
    {
        assets.Initialize(VORNU_EXAMPLES "/Content", Assets::AssetMountMode::ReadOnly);
        return true;
    }();
    return assets;
}

const std::filesystem::path& SavedScene()
{
    static const std::filesystem::path path = ScratchFile("saved.vscene");
    return path;
}

std::optional<std::string> Save(const Scene::Scene& scene, Refusals refusals)
{
    std::string error;
    if (Scene::SaveScene(SavedScene(), scene, SharedAssets(), &error))
    {
        return ReadBytes(SavedScene());
    }
    Require(IsRefusal(error, kTooLarge) || IsRefusal(error, refusals), "a scene doesn't save: " + error);
    return std::nullopt;
}

std::optional<std::string> SaveStably(const Scene::Scene& scene, Refusals refusals)
{
    std::optional<std::string> first = Save(scene, refusals);
    if (first)
    {
        Scene::Scene again;
        std::string error;
        Require(Scene::LoadScene(SavedScene(), again, SharedAssets(), &error),
                "a saved scene doesn't load: " + error);
        Require(Save(again) == first, "a saved scene isn't stable");
    }
    return first;
}

} // namespace Vornu::Fuzz
