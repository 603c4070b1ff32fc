#pragma once

#include "engine/core/FunctionRef.h"
#include "engine/core/tasks/TaskCounter.h"
#include "engine/core/tasks/TaskFunction.h"
#include "engine/core/tasks/WorkQueue.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vornu::Core::Tasks
{

struct TaskSystemConfig
{
    /// Absent: one less than the hardware's threads, at least 1. 0: no threads at all, and every task runs on
    /// the thread that submits it.
    std::optional<std::uint32_t> workerThreads = std::nullopt;
    /// Without effect when there are no workers.
    std::uint32_t ioThreads = 0;
    /// How many workers run `Background` tasks at once. Absent: one less than the workers, at least 1.
    /// Present: clamped to between 1 and the number of workers.
    std::optional<std::uint32_t> maxBackgroundWorkers = std::nullopt;
};

/// What a group reports for a task that a shutdown dropped before it started.
class TaskCancelledError : public std::runtime_error
{
public:
    TaskCancelledError();
};

/// What `AsyncResult` gives: the group of the one task, for waiting with help, and its result. The result's
/// future also carries the exception of the callable; one whose task was cancelled is a broken promise.
template<class Result>
struct TypedTask
{
    CounterHandle counter;
    std::future<Result> result;
};

/// A pool of worker threads with priorities, a pool of IO threads, and waiters that help. Safe from any
/// thread, except that it may only be destroyed when nobody else uses it any more.
class TaskSystem
{
public:
    /// Throws `std::system_error` if a thread can't be started.
    explicit TaskSystem(const TaskSystemConfig& config = {});

    /// Finishes all queued work. An installed system is taken out first.
    ~TaskSystem();

    TaskSystem(const TaskSystem&) = delete;
    TaskSystem& operator=(const TaskSystem&) = delete;

    /// The installed system. Without one, a system without threads that lives until the process exits; its
    /// first use logs a warning.
    static TaskSystem& Get();

    /// Makes `system` the one that `Get` gives; null for none. Gives the previous one, or null. The caller
    /// keeps the ownership of both.
    static TaskSystem* Install(TaskSystem* system) noexcept;

    /// Adds one task to the group of `counter`, which mustn't be null. A task that waits for IO belongs to
    /// `IO`; without IO threads that is `Background`. Runs it at once if the system has no threads or is
    /// stopped. What the task throws goes to the group; throws itself only `std::bad_alloc`.
    void Submit(TaskPriority priority, TaskFunction function, const CounterHandle& counter);

    /// Submits one task as a group of its own.
    CounterHandle Async(TaskPriority priority, TaskFunction function);

    /// The same with a result.
    template<class Callable>
    auto AsyncResult(TaskPriority priority, Callable&& callable)
    {
        using Result = std::invoke_result_t<std::decay_t<Callable>&>;
        std::packaged_task<Result()> task(std::forward<Callable>(callable));
        std::future<Result> result = task.get_future();
        return TypedTask<Result>{Async(priority, std::move(task)), std::move(result)};
    }

    /// Returns once no task of the group is unfinished, and runs tasks meanwhile: those of the group, and
    /// others of at least the class of the task that the caller is in. Throws the group's first exception;
    /// each waiter gets it. Null counts as done.
    void Wait(const CounterHandle& counter);

    /// Calls `function(index)` for every index below `count`, in ranges of `grain` indexes that run at the
    /// same time; in rising order on the caller alone if there is only one range or there are no workers. The
    /// priority is that of the caller's task, `High` outside any, and `Background` instead of `IO`. After an
    /// exception no further range starts, and it is thrown here once the running ones have ended.
    template<class Function>
    void ParallelFor(std::size_t count, std::size_t grain, Function&& function)
    {
        ParallelFor(count, grain, std::nullopt, std::forward<Function>(function));
    }

    /// The same at a given priority.
    template<class Function>
    void ParallelFor(std::size_t count, std::size_t grain, std::optional<TaskPriority> priority,
                     Function&& function)
    {
        grain = grain == 0 ? 1 : grain;
        if (count <= grain || workers_.empty())
        {
            for (std::size_t index = 0; index < count; ++index)
            {
                function(index);
            }
            return;
        }
        const auto runRanges = [&function, grain](const RangeClaim& claim)
        {
            // By value, or what the items write would have it read again for each range.
            const std::size_t step = grain;
            const auto [begin, end, stop] = claim;
            if (step == 1) // a loop in a loop would cost more than a small item
            {
                for (std::size_t index = begin; index < end && !stop->load(std::memory_order_relaxed);
                     ++index)
                {
                    function(index);
                }
                return;
            }
            for (std::size_t first = begin; first < end; first += step)
            {
                if (stop->load(std::memory_order_relaxed))
                {
                    return;
                }
                const std::size_t rangeEnd = end - first < step ? end : first + step;
                for (std::size_t index = first; index < rangeEnd; ++index)
                {
                    function(index);
                }
            }
        };
        ParallelForRanges(count, grain, ParallelPriority(priority), runRanges);
    }

    /// Ends the threads; from then on a task runs on the thread that submits it. Queued tasks are finished
    /// first, or dropped with a `TaskCancelledError` each if `cancel` is set. Called by a thread of this
    /// system, logs an error and does nothing. A second call does nothing.
    void Shutdown(bool cancel = false);

    bool IsInline() const noexcept { return workers_.empty(); }
    std::uint32_t WorkerCount() const noexcept { return static_cast<std::uint32_t>(workers_.size()); }
    /// How many workers run `Background` tasks at once; 0 without workers.
    std::uint32_t BackgroundLimit() const noexcept { return backgroundLimit_; }

private:
    struct Worker
    {
        std::array<WorkQueue, 3> queues;
        std::thread thread;
    };

    /// Indexes that one runner of a loop has taken: whole ranges, save for the last of all.
    struct RangeClaim
    {
        std::size_t first;
        std::size_t end;
        /// No further range is to start.
        const std::atomic<bool>* stop;
    };
    /// Runs the ranges of a claim, in order. A whole claim per call, as a call costs more than a small range.
    using ClaimFunction = FunctionRef<void(const RangeClaim&)>;
    struct RangeLoop;

    void StartThreads(std::uint32_t ioThreads);
    void RunWorker(std::uint32_t index);
    void RunIoThread(std::uint32_t index);
    bool RunOneAsWorker();
    bool RunQueued(TaskPriority priority);
    template<class Ready>
    bool IdleUntil(std::condition_variable& wakeUp, const Ready& ready);
    bool MayLeave() noexcept;
    bool IsDrained() const noexcept;

    bool TakeTask(TaskPriority priority, Task& task) noexcept;
    bool Steal(std::size_t priority, Task& task) noexcept;
    bool HasQueued(TaskPriority priority) const noexcept;
    bool HasStealable(std::size_t priority) const noexcept;
    void Enqueue(TaskPriority priority, Task& task);

    enum class BackgroundSlot
    {
        None,
        Held,
    };
    void RunTask(Task& task, TaskPriority priority, BackgroundSlot slot = BackgroundSlot::None) noexcept;
    void FinishTask(Task& task, std::exception_ptr exception) noexcept;

    std::uint32_t HelpingMask(const CounterState& counter) const noexcept;
    bool HasQueuedIn(std::uint32_t mask) const noexcept;
    bool HelpOnce(std::uint32_t mask);
    void HelpWhileQueued(const CounterState& counter);

    template<class Ready>
    void Sleep(std::condition_variable& wakeUp, const Ready& ready);
    void WakeAll() noexcept;
    void WakeAllIfSleeping() noexcept;

    bool IsOwnThread() const noexcept;
    void RunLeftTasks();
    void CancelQueued();
    void CancelQueue(WorkQueue& queue, const std::exception_ptr& exception);

    static TaskPriority ParallelPriority(std::optional<TaskPriority> priority) noexcept;
    void ParallelForRanges(std::size_t count, std::size_t grain, TaskPriority priority,
                           ClaimFunction runClaim);

    std::uint32_t backgroundLimit_ = 0;
    std::vector<std::unique_ptr<Worker>> workers_;
    std::vector<std::thread> ioThreads_;
    bool hasIoThreads_ = false;
    std::array<WorkQueue, kPriorityCount> global_;

    /// Threads that sleep and weren't told to wake. Written with the wake mutex held.
    alignas(64) std::atomic<std::uint32_t> sleeping_ = 0;
    /// Background tasks that aren't inside another one.
    std::atomic<std::uint32_t> runningBackground_ = 0;

    // Stretches of work, in which a thread takes and runs tasks until it finds none. Outside them no task
    // runs.
    alignas(64) std::atomic<std::uint64_t> begunWork_ = 0;
    std::atomic<std::uint64_t> endedWork_ = 0;

    alignas(64) std::atomic<bool> stopping_ = false;
    std::atomic<bool> cancelling_ = false;
    /// No task was unfinished at some time after the stop. All threads leave then, even if tasks came in
    /// since: otherwise some of them would wait for tasks that only those already gone could run.
    std::atomic<bool> drained_ = false;
    std::atomic<bool> stopped_ = false;
    std::atomic<std::uint32_t> stealRotation_ = 0;

    /// Protects the decision to sleep only: who has changed something locks it before notifying.
    std::mutex wakeMutex_;
    std::uint64_t wakeCount_ = 0;
    std::condition_variable workersWakeUp_;
    std::condition_variable ioWakeUp_;

    std::mutex shutdownMutex_;
};

} // namespace Vornu::Core::Tasks
