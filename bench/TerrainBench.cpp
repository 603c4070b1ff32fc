#include "bench/BenchScenes.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/text/NumberText.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/TerrainComponents.h"
#include "engine/scene/files/SceneFile.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Bench
{
namespace
{

constexpr std::uint32_t kResolution = 2000;
constexpr std::size_t kHeights = std::size_t{kResolution} * kResolution;

/// A scene of one terrain, as a file, and the text of every height.
struct Fixture
{
    Fixture()
    {
        assets.Initialize(folder.File("Content"), Assets::AssetMountMode::Authoring);
        Scene::TerrainComponent terrain;
        terrain.resolutionX = kResolution;
        terrain.resolutionZ = kResolution;
        for (std::size_t i = 0; i < kHeights; ++i)
        {
            const auto x = static_cast<float>(i % kResolution);
            const auto z = static_cast<float>(i / kResolution);
            terrain.heights.push_back(0.5f + 0.3f * std::sin(x * 0.01f) * std::cos(z * 0.013f));
            char text[Core::kNumberTextCapacity];
            texts.emplace_back(text, Core::WriteFloatText(text, terrain.heights.back()));
        }
        scene.Add(scene.CreateEntity("Hills"), std::move(terrain));
        Save();
    }

    static Fixture& Instance()
    {
        static Fixture fixture;
        return fixture;
    }

    void Save()
    {
        std::string error;
        if (!Scene::SaveScene(file, scene, assets, &error))
        {
            throw std::runtime_error(error);
        }
    }

    void Load()
    {
        Scene::Scene loaded;
        std::string error;
        if (!Scene::LoadScene(file, loaded, assets, &error))
        {
            throw std::runtime_error(error);
        }
    }

    const std::vector<float>& Heights() const
    {
        return scene.StorageOf<Scene::TerrainComponent>()->TryGet(scene.AliveEntities().front())->heights;
    }

    ScratchFolder folder;
    std::filesystem::path file = folder.File("terrain.vscene");
    Assets::AssetManager assets;
    Scene::Scene scene;
    std::vector<std::string> texts;
};

void SaveTerrain(benchmark::State& state)
{
    Fixture& fixture = Fixture::Instance();
    for (auto _ : state)
    {
        fixture.Save();
    }
}

void LoadTerrain(benchmark::State& state)
{
    Fixture& fixture = Fixture::Instance();
    for (auto _ : state)
    {
        fixture.Load();
    }
}

void WriteFloats(benchmark::State& state)
{
    const std::vector<float>& heights = Fixture::Instance().Heights();
    char text[Core::kNumberTextCapacity];
    for (auto _ : state)
    {
        for (const float height : heights)
        {
            benchmark::DoNotOptimize(Core::WriteFloatText(text, height));
        }
        benchmark::ClobberMemory();
    }
}

void ReadFloats(benchmark::State& state)
{
    const std::vector<std::string>& texts = Fixture::Instance().texts;
    for (auto _ : state)
    {
        for (const std::string& text : texts)
        {
            benchmark::DoNotOptimize(Core::ParseFloatText(text));
        }
    }
}

BENCHMARK(SaveTerrain)->Name("save")->Unit(benchmark::kMillisecond);
BENCHMARK(LoadTerrain)->Name("load")->Unit(benchmark::kMillisecond);
BENCHMARK(WriteFloats)->Name("write")->Unit(benchmark::kMillisecond);
BENCHMARK(ReadFloats)->Name("read")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace Vornu::Bench

BENCHMARK_MAIN();
