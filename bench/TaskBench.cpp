#include "engine/core/tasks/TaskSystem.h"

#include <benchmark/benchmark.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/task_group.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Vornu::Bench
{
namespace
{

using Core::Tasks::TaskPriority;
using Core::Tasks::TaskSystem;

constexpr std::size_t kItems = 1'000'000;
constexpr std::size_t kHeavyItems = 256;

// The caller and one worker, for either scheduler.
constexpr int kThreads = 2;

TaskSystem& System()
{
    static TaskSystem system({.workerThreads = kThreads - 1});
    return system;
}

void SubmitWithTaskSystem(benchmark::State& state)
{
    const auto count = state.range(0);
    for (auto _ : state)
    {
        const auto counter = Core::Tasks::CounterHandle::Make();
        for (std::int64_t i = 0; i < count; ++i)
        {
            System().Submit(
                TaskPriority::Normal, [] {}, counter);
        }
        System().Wait(counter);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void SubmitWithTbb(benchmark::State& state)
{
    const auto count = state.range(0);
    for (auto _ : state)
    {
        oneapi::tbb::task_group group;
        for (std::int64_t i = 0; i < count; ++i)
        {
            group.run([] {});
        }
        group.wait();
    }
    state.SetItemsProcessed(state.iterations() * count);
}

/// Many small items: what they cost is little beside handing them out.
struct SmallItems
{
    std::vector<float> in = std::vector<float>(kItems, 1.5f);
    std::vector<float> out = std::vector<float>(kItems);

    static SmallItems& Get()
    {
        static SmallItems items;
        return items;
    }

    void Run(std::size_t i) { out[i] = in[i] * 1.25f + 0.5f; }
};

void SmallItemsWithTaskSystem(benchmark::State& state)
{
    SmallItems& items = SmallItems::Get();
    const auto grain = static_cast<std::size_t>(state.range(0));
    for (auto _ : state)
    {
        System().ParallelFor(kItems, grain, [&items](std::size_t i) { items.Run(i); });
        benchmark::ClobberMemory();
    }
}

template<class Partitioner>
void SmallItemsWithTbb(benchmark::State& state)
{
    SmallItems& items = SmallItems::Get();
    using Range = oneapi::tbb::blocked_range<std::size_t>;
    const auto grain = static_cast<std::size_t>(state.range(0));
    for (auto _ : state)
    {
        oneapi::tbb::parallel_for(
            Range(0, kItems, grain),
            [&items](const Range& range)
            {
                for (std::size_t i = range.begin(); i < range.end(); ++i)
                {
                    items.Run(i);
                }
            },
            Partitioner());
        benchmark::ClobberMemory();
    }
}

/// Some hundred microseconds of arithmetic. Not inlined: a compiler that sees several items in a row computes
/// them side by side, which a loop of single items can't match whatever hands them out.
[[gnu::noinline]] std::uint64_t HeavyItem(std::uint64_t value)
{
    for (int i = 0; i < 100'000; ++i)
    {
        value ^= value << 13;
        value ^= value >> 7;
        value ^= value << 17;
    }
    return value;
}

void HeavyItemsWithTaskSystem(benchmark::State& state)
{
    TaskSystem system({.workerThreads = static_cast<std::uint32_t>(state.range(0) - 1)});
    std::vector<std::uint64_t> results(kHeavyItems);
    for (auto _ : state)
    {
        system.ParallelFor(kHeavyItems, 1, [&results](std::size_t i) { results[i] = HeavyItem(i + 1); });
        benchmark::ClobberMemory();
    }
}

void HeavyItemsWithTbb(benchmark::State& state)
{
    const oneapi::tbb::global_control threads(oneapi::tbb::global_control::max_allowed_parallelism,
                                              static_cast<std::size_t>(state.range(0)));
    std::vector<std::uint64_t> results(kHeavyItems);
    for (auto _ : state)
    {
        oneapi::tbb::parallel_for(std::size_t{0}, kHeavyItems,
                                  [&results](std::size_t i) { results[i] = HeavyItem(i + 1); });
        benchmark::ClobberMemory();
    }
}

BENCHMARK(SubmitWithTaskSystem)->Name("submit/Vornu")->Arg(1)->Arg(1'000)->UseRealTime();
BENCHMARK(SubmitWithTbb)->Name("submit/oneTBB")->Arg(1)->Arg(1'000)->UseRealTime();

void Grains(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1)->Arg(64)->Arg(1'024)->Arg(16'384)->UseRealTime();
}

BENCHMARK(SmallItemsWithTaskSystem)->Name("small/Vornu")->Apply(Grains);
BENCHMARK(SmallItemsWithTbb<oneapi::tbb::auto_partitioner>)->Name("small/oneTBB")->Apply(Grains);
BENCHMARK(SmallItemsWithTbb<oneapi::tbb::simple_partitioner>)->Name("small/oneTBB simple")->Apply(Grains);

BENCHMARK(HeavyItemsWithTaskSystem)->Name("heavy/Vornu")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(HeavyItemsWithTbb)->Name("heavy/oneTBB")->Arg(1)->Arg(2)->UseRealTime();

} // namespace
} // namespace Vornu::Bench

BENCHMARK_MAIN();
