#include "engine/scene/Registry.h"
#include "engine/scene/components/CoreComponents.h"

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

/// Times one operation on a registry that was filled for it.
template<class Operation>
void Measure(benchmark::State& state, Operation operation)
{
    for (auto _ : state)
    {
        Scene::Registry registry;
        Fill(registry, static_cast<std::size_t>(state.range(0)));
        const auto start = std::chrono::steady_clock::now();
        operation(registry);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
}

void Clear(benchmark::State& state)
{
    Measure(state, [](Scene::Registry& registry) { registry.Clear(); });
}

void DestroyEveryTenth(benchmark::State& state)
{
    Measure(state,
            [](Scene::Registry& registry)
            {
                const std::vector<Scene::Entity> entities = registry.AliveEntities();
                for (std::size_t i = 0; i < entities.size(); i += 10)
                {
                    registry.DestroyEntity(entities[i]);
                }
            });
}

BENCHMARK(Clear)->Name("clear")->Arg(100'000)->Arg(1'000'000)->UseManualTime();
BENCHMARK(DestroyEveryTenth)->Name("destroy")->Arg(100'000)->Arg(1'000'000)->UseManualTime();

} // namespace
} // namespace Vornu::Bench

BENCHMARK_MAIN();
