#include "engine/core/tasks/TaskSystem.h"

#include <algorithm>

namespace Vornu::Core::Tasks
{
namespace
{

/// In how many parts a runner's share is claimed: more even out what the runners have left at the end, fewer
/// spare them the shared number.
constexpr std::size_t kClaimsPerRunner = 32;

} // namespace

/// What the runners of one loop share.
struct TaskSystem::RangeLoop
{
    ClaimFunction runClaim;
    std::size_t count;
    std::size_t grain;
    std::size_t rangeCount;
    std::size_t rangesPerClaim;
    alignas(64) std::atomic<std::size_t> nextRange = 0;
    alignas(64) std::atomic<bool> stop = false;

    /// Runs ranges until none is left.
    void Drain()
    {
        while (!stop.load(std::memory_order_relaxed))
        {
            const std::size_t first = nextRange.fetch_add(rangesPerClaim, std::memory_order_relaxed);
            if (first >= rangeCount)
            {
                return;
            }
            const bool isLast = rangeCount - first <= rangesPerClaim;
            runClaim({first * grain, isLast ? count : (first + rangesPerClaim) * grain, &stop});
        }
    }

    void DrainOrStop()
    {
        try
        {
            Drain();
        }
        catch (...)
        {
            stop.store(true, std::memory_order_relaxed);
            throw;
        }
    }
};

void TaskSystem::ParallelForRanges(std::size_t count, std::size_t grain, TaskPriority priority,
                                   ClaimFunction runClaim)
{
    const std::size_t rangeCount = count / grain + (count % grain == 0 ? 0 : 1);
    const std::size_t runners = std::min(workers_.size() + 1, rangeCount);
    RangeLoop loop{.runClaim = runClaim,
                   .count = count,
                   .grain = grain,
                   .rangeCount = rangeCount,
                   .rangesPerClaim = std::max<std::size_t>(1, rangeCount / (runners * kClaimsPerRunner))};
    const auto counter = CounterHandle::Make();
    std::exception_ptr exception;
    try
    {
        for (std::size_t i = 1; i < runners; ++i)
        {
            Submit(
                priority, [&loop] { loop.DrainOrStop(); }, counter);
        }
        loop.DrainOrStop();
    }
    catch (...)
    {
        loop.stop.store(true, std::memory_order_relaxed);
        exception = std::current_exception();
    }
    try
    {
        // The runners refer to this frame, so no way out of here may pass this by.
        Wait(counter);
    }
    catch (...)
    {
        exception = exception ? exception : std::current_exception();
    }
    if (exception)
    {
        std::rethrow_exception(exception);
    }
}

} // namespace Vornu::Core::Tasks
