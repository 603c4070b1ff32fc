#include "bench/BenchScenes.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/legacy/LegacyReader.h"
#include "tools/upgrade/Classify.h"
#include "tools/upgrade/UpgradeFile.h"
#include "tools/upgrade/VerifyRoundTrip.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>

namespace Vornu::Bench
{
namespace
{

/// The files of one row; kept, as rows take turns.
class Fixture
{
public:
    explicit Fixture(const benchmark::State& state)
    {
        const auto entityCount = static_cast<std::size_t>(state.range(0));
        const auto shape = static_cast<Shape>(state.range(1));
        current = MakeCurrentScene(folder, entityCount, shape);
        legacy = folder.File("legacy.vscene");
        WriteText(legacy, LegacySceneText(entityCount, shape));
        assets.Initialize(folder.File("Content"), Assets::AssetMountMode::Authoring);
    }

    static Fixture& For(const benchmark::State& state)
    {
        static std::map<std::pair<long, long>, Fixture> fixtures;
        return fixtures.try_emplace({state.range(0), state.range(1)}, state).first->second;
    }

    ScratchFolder folder;
    std::filesystem::path current;
    std::filesystem::path legacy;
    Assets::AssetManager assets;
};

void Report(benchmark::State& state, const std::filesystem::path& file)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(file)));
}

void Require(benchmark::State& state, bool success, const std::string& error)
{
    if (!success)
    {
        state.SkipWithError(error.c_str());
    }
}

void Classify(benchmark::State& state)
{
    Fixture& fixture = Fixture::For(state);
    for (auto _ : state)
    {
        Require(state, !Upgrade::ClassifyFile(fixture.current), "a current file counts as legacy");
    }
    Report(state, fixture.current);
}

void LegacyRead(benchmark::State& state)
{
    Fixture& fixture = Fixture::For(state);
    for (auto _ : state)
    {
        Scene::Scene scene;
        std::string error;
        Require(state, Scene::Legacy::Load(fixture.legacy, scene, fixture.assets, &error), error);
    }
    Report(state, fixture.legacy);
}

void Save(benchmark::State& state)
{
    Fixture& fixture = Fixture::For(state);
    Scene::Scene scene;
    std::string error;
    Require(state, Scene::LoadScene(fixture.current, scene, fixture.assets, &error), error);
    for (auto _ : state)
    {
        Require(state, Scene::SaveScene(fixture.folder.File("saved.vscene"), scene, fixture.assets, &error),
                error);
    }
    Report(state, fixture.current);
}

void Load(benchmark::State& state)
{
    Fixture& fixture = Fixture::For(state);
    for (auto _ : state)
    {
        Scene::Scene scene;
        std::string error;
        Require(state, Scene::LoadScene(fixture.current, scene, fixture.assets, &error), error);
    }
    Report(state, fixture.current);
}

void UpgradeWhole(benchmark::State& state)
{
    Fixture& fixture = Fixture::For(state);
    const Upgrade::UpgradeOptions options{fixture.folder.File("upgraded.vscene"), false};
    for (auto _ : state)
    {
        const Upgrade::UpgradeResult result = Upgrade::UpgradeFile(fixture.legacy, fixture.assets, options);
        Require(state, result.status == Upgrade::UpgradeStatus::Converted, result.message);
    }
    Report(state, fixture.current);
}

void Verify(benchmark::State& state)
{
    Fixture& fixture = Fixture::For(state);
    for (auto _ : state)
    {
        std::string error;
        Require(state, Upgrade::VerifyRoundTrip(fixture.current, fixture.assets, error), error);
    }
    Report(state, fixture.current);
}

} // namespace
} // namespace Vornu::Bench

int main(int argc, char** argv)
{
    using namespace Vornu::Bench;
    struct Row
    {
        const char* name;
        void (*run)(benchmark::State&);
    };
    const Row rows[] = {{"classify", &Classify}, {"legacy_read", &LegacyRead}, {"save", &Save},
                        {"load", &Load},         {"upgrade", &UpgradeWhole},   {"verify", &Verify}};
    const std::pair<Shape, const char*> shapes[] = {
        {Shape::Tree, "/tree"}, {Shape::Flat, "/flat"}, {Shape::Deep, "/deep"}, {Shape::Mixed, "/mixed"}};
    constexpr long kLargest = 100'000;
    for (const auto& [shape, shapeName] : shapes)
    {
        for (const long count : {10'000L, kLargest})
        {
            for (const Row& row : rows)
            {
                const std::string name = std::string(row.name) + shapeName;
                benchmark::RegisterBenchmark(name.c_str(), row.run)
                    ->Args({count, static_cast<long>(shape)})
                    ->Iterations(kLargest / count) // samples of equal length
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
