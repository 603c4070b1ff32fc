#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/Registry.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

namespace Vornu::Bench
{
namespace
{

void Fill(Scene::Registry& registry, std::size_t count)
{
    std::mt19937_64 random(count);
    registry.Reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        const Scene::Entity entity = registry.CreateEntity();
        registry.Add(entity, Scene::NameComponent{"Prop_" + std::to_string(i)});
        registry.Add(entity, Scene::EntityGuidComponent{Core::Guid{random() | 1, random()}});
        registry.Add(entity, Scene::TransformComponent{});
    }
}

/// Times one operation on a registry that was filled for it: `operation(registry, prepare(registry))`.
template<class Prepare, class Operation>
void Measure(benchmark::State& state, Prepare prepare, Operation operation)
{
    for (auto _ : state)
    {
        Scene::Registry registry;
        Fill(registry, static_cast<std::size_t>(state.range(0)));
        const auto entities = prepare(registry);
        const auto start = std::chrono::steady_clock::now();
        operation(registry, entities);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}

std::vector<Scene::Entity> NoEntities(const Scene::Registry&)
{
    return {};
}

std::vector<Scene::Entity> EveryTenth(const Scene::Registry& registry)
{
    std::vector<Scene::Entity> entities;
    const std::vector<Scene::Entity>& alive = registry.AliveEntities();
    for (std::size_t i = 0; i < alive.size(); i += 10)
    {
        entities.push_back(alive[i]);
    }
    return entities;
}

void Clear(benchmark::State& state)
{
    Measure(state, &NoEntities,
            [](Scene::Registry& registry, const std::vector<Scene::Entity>&) { registry.Clear(); });
}

void DestroyEveryTenth(benchmark::State& state)
{
    Measure(state, &EveryTenth,
            [](Scene::Registry& registry, const std::vector<Scene::Entity>& entities)
            {
                for (const Scene::Entity entity : entities)
                {
                    registry.DestroyEntity(entity);
                }
            });
}

// Samples of equal length.
BENCHMARK(Clear)->Name("clear")->Arg(100'000)->Iterations(10)->UseManualTime();
BENCHMARK(Clear)->Name("clear")->Arg(1'000'000)->Iterations(1)->UseManualTime();
BENCHMARK(DestroyEveryTenth)->Name("destroy")->Arg(100'000)->Iterations(10)->UseManualTime();
BENCHMARK(DestroyEveryTenth)->Name("destroy")->Arg(1'000'000)->Iterations(1)->UseManualTime();

} // namespace
} // namespace Vornu::Bench

BENCHMARK_MAIN();
