#include "bench/BenchScenes.h"
#include "bench/JsonReference.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Vornu::Bench
{
namespace
{

/// The same tree of entities as a positional scene, as a current one and as JSON.
void MakeFiles(const std::filesystem::path& folder, std::size_t entities)
{
    const ScratchFolder scratch;
    WriteText(folder / "legacy.vscene", LegacySceneText(entities, Shape::Tree));
    std::filesystem::copy_file(MakeCurrentScene(scratch, entities, Shape::Tree), folder / "current.vscene");
    WriteText(folder / "scene.json", JsonSceneText(entities, Shape::Tree));
}

void RoundTripScene(const std::filesystem::path& source, const std::filesystem::path& target,
                    Assets::AssetManager& assets)
{
    Scene::Scene scene;
    std::string error;
    if (!Scene::LoadScene(source, scene, assets, &error) || !Scene::SaveScene(target, scene, assets, &error))
    {
        throw std::runtime_error(error);
    }
}

/// Prints the nanoseconds of each time.
void RoundTrips(const std::filesystem::path& source, long times)
{
    const ScratchFolder scratch;
    const std::filesystem::path target = scratch.File("target");
    const bool json = source.extension() == ".json";
    Assets::AssetManager assets;
    assets.Initialize(scratch.File("Content"), Assets::AssetMountMode::Authoring);
    for (long i = 0; i < times; ++i)
    {
        const auto start = std::chrono::steady_clock::now();
        if (json)
        {
            RoundTripJson(source, target);
        }
        else
        {
            RoundTripScene(source, target, assets);
        }
        const std::chrono::nanoseconds taken = std::chrono::steady_clock::now() - start;
        std::printf("%lld\n", static_cast<long long>(taken.count()));
    }
}

} // namespace
} // namespace Vornu::Bench

/// Makes files of one scene, or loads and saves one of them a number of times. How many instructions one time
/// takes is the difference between two runs with different numbers of times.
int main(int argc, char** argv)
{
    if (argc != 4)
    {
        std::fprintf(stderr, "Usage: roundtrip_bench make <folder> <entities>\n"
                             "       roundtrip_bench run <file> <times>\n");
        return 2;
    }
    const unsigned long number = std::strtoul(argv[3], nullptr, 10);
    if (std::string_view(argv[1]) == "make")
    {
        Vornu::Bench::MakeFiles(argv[2], number);
    }
    else
    {
        Vornu::Bench::RoundTrips(argv[2], static_cast<long>(number));
    }
    return 0;
}
