#include "bench/BenchScenes.h"
#include "bench/JsonReference.h"
#include "engine/assets/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/SceneFile.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

/// Loads and saves a scene of some entities a number of times, as a scene file or as JSON. What one time
/// costs is the difference between two runs with different numbers of times.
int main(int argc, char** argv)
{
    using namespace Vornu;
    if (argc != 4)
    {
        std::fprintf(stderr, "Usage: roundtrip_bench scene|json <entities> <times>\n");
        return 2;
    }
    const bool json = std::string_view(argv[1]) == "json";
    const std::size_t entities = std::strtoull(argv[2], nullptr, 10);
    const long times = std::strtol(argv[3], nullptr, 10);

    const Bench::ScratchFolder folder;
    const std::filesystem::path source =
        json ? folder.File("scene.json") : Bench::MakeCurrentScene(folder, entities, Bench::Shape::Flat);
    if (json)
    {
        Bench::WriteText(source, Bench::JsonSceneText(entities, Bench::Shape::Flat));
    }
    Assets::AssetManager assets;
    assets.Initialize(folder.File("Content"), Assets::AssetMountMode::Authoring);
    const std::filesystem::path target = folder.File("target.vscene");
    for (long i = 0; i < times; ++i)
    {
        if (json)
        {
            if (Bench::RoundTripJson(source, target) != entities)
            {
                throw std::runtime_error("entities are missing");
            }
            continue;
        }
        Scene::Scene scene;
        std::string error;
        if (!Scene::LoadScene(source, scene, assets, &error) ||
            !Scene::SaveScene(target, scene, assets, &error))
        {
            throw std::runtime_error(error);
        }
    }
    return 0;
}
