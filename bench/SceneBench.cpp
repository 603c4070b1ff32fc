#include "bench/BenchScenes.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "tools/upgrade/UpgradeFile.h"
#include "tools/upgrade/VerifyRoundTrip.h"

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Vornu::Bench
{
namespace
{

void Require(bool success, const std::string& error)
{
    if (!success)
    {
        throw std::runtime_error(error);
    }
}

/// Lets callgrind count what `operation` takes, under a name of its own.
template<class Operation>
void Count(const char* name, Operation operation)
{
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    operation();
    CALLGRIND_DUMP_STATS_AT(name);
    CALLGRIND_STOP_INSTRUMENTATION;
}

/// The stages of one scene, each for the first time, but that assets are mounted.
void CountStages(std::size_t entities, Shape shape)
{
    const ScratchFolder folder;
    MakeContent(folder.File("Content"));
    const std::filesystem::path current = folder.File("Content/Levels/current.vscene");
    const std::filesystem::path legacy = folder.File("Content/Levels/legacy.vscene");
    MakeCurrentScene(current, entities, shape);
    WriteText(legacy, LegacySceneText(entities, shape));
    Assets::AssetManager assets;
    assets.Initialize(folder.File("Content"), Assets::AssetMountMode::Authoring);

    std::string error;
    {
        Scene::Scene scene;
        Count("load", [&] { Require(Scene::LoadScene(current, scene, assets, &error), error); });
        Count("save",
              [&] { Require(Scene::SaveScene(folder.File("saved.vscene"), scene, assets, &error), error); });
    }
    Count("verify", [&] { Require(Upgrade::VerifyRoundTrip(current, assets, error), error); });
    Count("upgrade",
          [&]
          {
              const Upgrade::UpgradeResult result = Upgrade::UpgradeFile(legacy, assets, {});
              Require(result.status == Upgrade::UpgradeStatus::Converted, result.message);
          });
}

} // namespace
} // namespace Vornu::Bench

/// Runs under callgrind, which writes a file for each stage.
int main(int argc, char** argv)
{
    using Vornu::Bench::Shape;
    const std::map<std::string_view, Shape> shapes = {
        {"tree", Shape::Tree}, {"flat", Shape::Flat}, {"deep", Shape::Deep}, {"mixed", Shape::Mixed}};
    const auto shape = argc == 3 ? shapes.find(argv[1]) : shapes.end();
    if (shape == shapes.end())
    {
        std::fprintf(stderr, "Usage: scene_bench tree|flat|deep|mixed <entities>\n");
        return 2;
    }
    Vornu::Bench::CountStages(std::strtoul(argv[2], nullptr, 10), shape->second);
    return 0;
}
