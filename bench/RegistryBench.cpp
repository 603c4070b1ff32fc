#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/Registry.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <utility>
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

/// Components by entity and nothing else: a dense array, and a sparse one of the places in it.
template<class Component>
class SparseSet
{
public:
    void Add(std::uint32_t entity, Component component)
    {
        if (entity >= places_.size())
        {
            places_.resize(entity + 1, kNone);
        }
        places_[entity] = static_cast<std::uint32_t>(entities_.size());
        entities_.push_back(entity);
        components_.push_back(std::move(component));
    }

    void Remove(std::uint32_t entity)
    {
        if (entity >= places_.size() || places_[entity] == kNone)
        {
            return;
        }
        const std::uint32_t place = std::exchange(places_[entity], kNone);
        if (place != entities_.size() - 1)
        {
            places_[entities_.back()] = place;
            entities_[place] = entities_.back();
            components_[place] = std::move(components_.back());
        }
        entities_.pop_back();
        components_.pop_back();
    }

private:
    static constexpr std::uint32_t kNone = 0xffffffff;

    std::vector<std::uint32_t> places_;
    std::vector<std::uint32_t> entities_;
    std::vector<Component> components_;
};

/// The least that entities and components take.
template<class... Components>
class SparseSets
{
public:
    std::uint32_t CreateEntity()
    {
        if (free_.empty())
        {
            generations_.push_back(0);
            return static_cast<std::uint32_t>(generations_.size() - 1);
        }
        const std::uint32_t entity = free_.back();
        free_.pop_back();
        return entity;
    }

    template<class Component>
    void Add(std::uint32_t entity, Component component)
    {
        std::get<SparseSet<Component>>(sets_).Add(entity, std::move(component));
    }

    void DestroyEntity(std::uint32_t entity)
    {
        (std::get<SparseSet<Components>>(sets_).Remove(entity), ...);
        ++generations_[entity];
        free_.push_back(entity);
    }

private:
    std::tuple<SparseSet<Components>...> sets_;
    std::vector<std::uint32_t> generations_;
    std::vector<std::uint32_t> free_;
};

template<class Operation>
void TimeOf(benchmark::State& state, Operation operation)
{
    const auto start = std::chrono::steady_clock::now();
    operation();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
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
        TimeOf(state, [&] { operation(registry, entities); });
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

/// What the storages of a filled registry hold.
void DestroyVectors(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    for (auto _ : state)
    {
        using Storages =
            std::tuple<std::vector<Scene::NameComponent>, std::vector<Scene::EntityGuidComponent>,
                       std::vector<Scene::TransformComponent>>;
        auto storages = std::make_optional<Storages>();
        std::get<1>(*storages).resize(count);
        std::get<2>(*storages).resize(count);
        for (std::size_t i = 0; i < count; ++i)
        {
            std::get<0>(*storages).push_back({"Prop_" + std::to_string(i)});
        }
        TimeOf(state, [&] { storages.reset(); });
    }
}

/// Creates entities with three components and destroys them in the same order, twice, so that places are used
/// again.
template<class Registry>
void Life(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    for (auto _ : state)
    {
        Registry registry;
        std::vector<decltype(registry.CreateEntity())> entities(count);
        TimeOf(state,
               [&]
               {
                   for (int round = 0; round < 2; ++round)
                   {
                       for (auto& entity : entities)
                       {
                           entity = registry.CreateEntity();
                           registry.Add(entity, Scene::TransformComponent{});
                           registry.Add(entity, Scene::RigidBodyComponent{});
                           registry.Add(entity, Scene::PointLightComponent{});
                       }
                       for (const auto entity : entities)
                       {
                           registry.DestroyEntity(entity);
                       }
                   }
               });
    }
}

/// Destroys entities from the end, with a GUID of their own or all with the same.
template<bool kOneGuid>
void DestroyGuids(benchmark::State& state)
{
    for (auto _ : state)
    {
        Scene::Registry registry;
        std::mt19937_64 random;
        std::vector<Scene::Entity> entities;
        for (std::int64_t i = 0; i < state.range(0); ++i)
        {
            entities.push_back(registry.CreateEntity());
            const Core::Guid guid = kOneGuid ? Core::Guid{1, 2} : Core::Guid{random() | 1, random()};
            registry.Add(entities.back(), Scene::EntityGuidComponent{guid});
        }
        TimeOf(state,
               [&]
               {
                   for (auto entity = entities.rbegin(); entity != entities.rend(); ++entity)
                   {
                       registry.DestroyEntity(*entity);
                   }
               });
    }
}

using PlainRegistry =
    SparseSets<Scene::TransformComponent, Scene::RigidBodyComponent, Scene::PointLightComponent>;

// Samples of equal length.
BENCHMARK(Clear)->Name("clear")->Arg(100'000)->Iterations(10)->UseManualTime();
BENCHMARK(Clear)->Name("clear")->Arg(1'000'000)->Iterations(1)->UseManualTime();
BENCHMARK(DestroyEveryTenth)->Name("destroy")->Arg(100'000)->Iterations(10)->UseManualTime();
BENCHMARK(DestroyEveryTenth)->Name("destroy")->Arg(1'000'000)->Iterations(1)->UseManualTime();

BENCHMARK(DestroyVectors)->Name("vectors")->Arg(1'000'000)->Iterations(1)->UseManualTime();
BENCHMARK(Life<Scene::Registry>)->Name("life")->Arg(1'000'000)->Iterations(1)->UseManualTime();
BENCHMARK(Life<PlainRegistry>)->Name("sparse set life")->Arg(1'000'000)->Iterations(1)->UseManualTime();
BENCHMARK(DestroyGuids<true>)->Name("one guid")->Arg(100'000)->Iterations(1)->UseManualTime();
BENCHMARK(DestroyGuids<false>)->Name("own guids")->Arg(100'000)->Iterations(1)->UseManualTime();

} // namespace
} // namespace Vornu::Bench

BENCHMARK_MAIN();
