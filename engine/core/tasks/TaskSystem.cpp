#include "engine/core/tasks/TaskSystem.h"

#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <string>

namespace Vornu::Core::Tasks
{
namespace
{

constexpr std::uint32_t kIoBit = 1u << static_cast<unsigned>(TaskPriority::IO);

constexpr std::size_t Index(TaskPriority priority)
{
    return static_cast<std::size_t>(priority);
}

enum class ThreadKind
{
    Foreign,
    Worker,
    IO,
};

/// What the calling thread is and does.
struct ThreadState
{
    /// The system that the thread belongs to; null on a foreign thread.
    const TaskSystem* system = nullptr;
    ThreadKind kind = ThreadKind::Foreign;
    std::uint32_t workerIndex = 0;
    /// Of the task that runs now; negative outside any.
    int currentPriority = -1;
    std::uint32_t backgroundDepth = 0;
};

thread_local constinit ThreadState currentThread;

std::atomic<TaskSystem*> installedSystem = nullptr;

std::uint32_t WorkerCountOf(const TaskSystemConfig& config)
{
    if (config.workerThreads)
    {
        return *config.workerThreads;
    }
    return std::max(std::thread::hardware_concurrency(), 2u) - 1;
}

std::uint32_t BackgroundLimitOf(const TaskSystemConfig& config, std::uint32_t workers)
{
    if (workers == 0)
    {
        return 0;
    }
    return config.maxBackgroundWorkers ? std::clamp(*config.maxBackgroundWorkers, 1u, workers)
                                       : std::max(workers, 2u) - 1;
}

} // namespace

TaskCancelledError::TaskCancelledError() : std::runtime_error("Task was cancelled by task system shutdown.")
{
}

TaskSystem::TaskSystem(const TaskSystemConfig& config)
{
    const std::uint32_t workers = WorkerCountOf(config);
    backgroundLimit_ = BackgroundLimitOf(config, workers);
    if (workers == 0)
    {
        return;
    }
    hasIoThreads_ = config.ioThreads > 0;
    workers_.reserve(workers);
    for (std::uint32_t i = 0; i < workers; ++i)
    {
        workers_.push_back(std::make_unique<Worker>());
    }
    try
    {
        StartThreads(config.ioThreads);
    }
    catch (...)
    {
        Shutdown(true);
        throw;
    }
}

TaskSystem::~TaskSystem()
{
    TaskSystem* self = this;
    installedSystem.compare_exchange_strong(self, nullptr);
    Shutdown(false);
}

TaskSystem& TaskSystem::Get()
{
    if (TaskSystem* system = installedSystem.load())
    {
        return *system;
    }
    // The message makes the logger, which thereby outlives the system.
    static const bool warned = []
    {
        LogWarning("TaskSystem::Get() used without an installed task system; tasks run inline.");
        return true;
    }();
    static_cast<void>(warned);
    static TaskSystem inlineSystem(TaskSystemConfig{.workerThreads = 0});
    return inlineSystem;
}

TaskSystem* TaskSystem::Install(TaskSystem* system) noexcept
{
    return installedSystem.exchange(system);
}

void TaskSystem::StartThreads(std::uint32_t ioThreads)
{
    for (std::uint32_t i = 0; i < workers_.size(); ++i)
    {
        workers_[i]->thread = std::thread([this, i] { RunWorker(i); });
    }
    ioThreads_.reserve(ioThreads);
    for (std::uint32_t i = 0; i < ioThreads; ++i)
    {
        ioThreads_.emplace_back([this, i] { RunIoThread(i); });
    }
}

void TaskSystem::Submit(TaskPriority priority, TaskFunction function, const CounterHandle& counter)
{
    if (priority == TaskPriority::IO && !hasIoThreads_)
    {
        priority = TaskPriority::Background;
    }
    Task task{std::move(function), &*counter};
    task.counter->AddTask(priority);
    if (IsInline())
    {
        RunTask(task, priority);
        return;
    }
    try
    {
        Enqueue(priority, task);
    }
    catch (...)
    {
        FinishTask(task, std::current_exception());
        throw;
    }
}

void TaskSystem::Enqueue(TaskPriority priority, Task& task)
{
    const bool isIo = priority == TaskPriority::IO;
    if (!isIo && currentThread.system == this && currentThread.kind == ThreadKind::Worker)
    {
        workers_[currentThread.workerIndex]->queues[Index(priority)].PushBack(task);
    }
    else if (!global_[Index(priority)].PushBackUnless(stopped_, task))
    {
        RunTask(task, priority);
        return;
    }
    if (!isIo)
    {
        WakeAllIfSleeping();
    }
    else if (sleeping_.load() > 0)
    {
        {
            const std::lock_guard lock(wakeMutex_);
        }
        ioWakeUp_.notify_one();
    }
}

CounterHandle TaskSystem::Async(TaskPriority priority, TaskFunction function)
{
    CounterHandle counter = CounterHandle::Make();
    Submit(priority, std::move(function), counter);
    return counter;
}

bool TaskSystem::HasQueued(TaskPriority priority) const noexcept
{
    const std::size_t index = Index(priority);
    return !global_[index].IsEmpty() || (priority != TaskPriority::IO && HasStealable(index));
}

bool TaskSystem::HasStealable(std::size_t priority) const noexcept
{
    return std::any_of(workers_.begin(), workers_.end(),
                       [priority](const std::unique_ptr<Worker>& worker)
                       { return !worker->queues[priority].IsEmpty(); });
}

bool TaskSystem::TakeTask(TaskPriority priority, Task& task) noexcept
{
    const std::size_t index = Index(priority);
    if (priority == TaskPriority::IO)
    {
        return global_[index].PopFront(task);
    }
    const bool isOwnWorker = currentThread.system == this && currentThread.kind == ThreadKind::Worker;
    return (isOwnWorker && workers_[currentThread.workerIndex]->queues[index].PopBack(task)) ||
           global_[index].PopFront(task) || Steal(index, task);
}

bool TaskSystem::Steal(std::size_t priority, Task& task) noexcept
{
    if (!HasStealable(priority))
    {
        return false;
    }
    const std::size_t count = workers_.size();
    const std::size_t own = currentThread.system == this && currentThread.kind == ThreadKind::Worker
                                ? currentThread.workerIndex
                                : count;
    const std::size_t start = stealRotation_.fetch_add(1, std::memory_order_relaxed) % count;
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::size_t victim = (start + i) % count;
        if (victim != own && workers_[victim]->queues[priority].PopFront(task))
        {
            return true;
        }
    }
    return false;
}

bool TaskSystem::RunQueued(TaskPriority priority)
{
    Task task;
    if (!TakeTask(priority, task))
    {
        return false;
    }
    RunTask(task, priority);
    return true;
}

bool TaskSystem::RunOneAsWorker()
{
    if (cancelling_.load())
    {
        return false;
    }
    if (RunQueued(TaskPriority::High) || RunQueued(TaskPriority::Normal))
    {
        return true;
    }
    if (!HasQueued(TaskPriority::Background))
    {
        return false;
    }
    Task task;
    if (runningBackground_.fetch_add(1) < backgroundLimit_ && TakeTask(TaskPriority::Background, task))
    {
        RunTask(task, TaskPriority::Background, BackgroundSlot::Held);
        return true;
    }
    runningBackground_.fetch_sub(1);
    return false;
}

bool TaskSystem::MayLeave() noexcept
{
    if (!stopping_.load())
    {
        return false;
    }
    if (!cancelling_.load() && !drained_.load() && IsDrained())
    {
        drained_.store(true);
    }
    return cancelling_.load() || drained_.load();
}

/// Nothing is queued and nothing runs. Only work makes work, save for other threads that submit during the
/// shutdown: so it is enough that nobody was at work before the look into the queues, and nobody began
/// meanwhile.
bool TaskSystem::IsDrained() const noexcept
{
    constexpr std::uint32_t kAllPriorities = (1u << kPriorityCount) - 1;
    const std::uint64_t ended = endedWork_.load();
    return begunWork_.load() == ended && !HasQueuedIn(kAllPriorities) && begunWork_.load() == ended;
}

void TaskSystem::RunWorker(std::uint32_t index)
{
    currentThread = {.system = this, .kind = ThreadKind::Worker, .workerIndex = index};
    Platform::SetCurrentThreadName("Vornu Worker " + std::to_string(index));
    const auto ready = [this]
    {
        return HasQueued(TaskPriority::High) || HasQueued(TaskPriority::Normal) ||
               (HasQueued(TaskPriority::Background) && runningBackground_.load() < backgroundLimit_);
    };
    do
    {
        begunWork_.fetch_add(1);
        while (RunOneAsWorker())
        {
        }
        endedWork_.fetch_add(1);
    } while (IdleUntil(workersWakeUp_, ready));
}

void TaskSystem::RunIoThread(std::uint32_t index)
{
    currentThread = {.system = this, .kind = ThreadKind::IO};
    Platform::SetCurrentThreadName("Vornu IO " + std::to_string(index));
    do
    {
        begunWork_.fetch_add(1);
        while (!cancelling_.load() && RunQueued(TaskPriority::IO))
        {
        }
        endedWork_.fetch_add(1);
    } while (IdleUntil(ioWakeUp_, [this] { return HasQueued(TaskPriority::IO); }));
}

/// False once the thread has to end.
template<class Ready>
bool TaskSystem::IdleUntil(std::condition_variable& wakeUp, const Ready& ready)
{
    bool leaves = false;
    const auto readyOrLeaving = [this, &leaves, &ready]
    {
        leaves = MayLeave();
        return leaves || ready();
    };
    Sleep(wakeUp, readyOrLeaving);
    if (leaves)
    {
        WakeAll(); // the others may go too
    }
    return !leaves;
}

void TaskSystem::RunTask(Task& task, TaskPriority priority, BackgroundSlot slot) noexcept
{
    ThreadState& thread = currentThread;
    const int outerPriority = std::exchange(thread.currentPriority, static_cast<int>(priority));
    const bool isBackground = priority == TaskPriority::Background;
    const bool outermostBackground = isBackground && thread.backgroundDepth == 0;
    if (isBackground)
    {
        if (outermostBackground && slot == BackgroundSlot::None)
        {
            runningBackground_.fetch_add(1);
        }
        ++thread.backgroundDepth;
    }
    std::exception_ptr exception;
    try
    {
        task.function();
    }
    catch (...)
    {
        exception = std::current_exception();
    }
    task.function.Reset();
    thread.currentPriority = outerPriority;
    if (isBackground)
    {
        --thread.backgroundDepth;
        if (outermostBackground)
        {
            runningBackground_.fetch_sub(1);
        }
    }
    FinishTask(task, std::move(exception));
    if (outermostBackground)
    {
        WakeAllIfSleeping();
    }
}

void TaskSystem::FinishTask(Task& task, std::exception_ptr exception) noexcept
{
    task.function.Reset();
    CounterState* const counter = std::exchange(task.counter, nullptr);
    if (exception)
    {
        counter->KeepException(std::move(exception));
    }
    if (counter->FinishTask())
    {
        WakeAllIfSleeping();
    }
}

std::uint32_t TaskSystem::HelpingMask(const CounterState& counter) const noexcept
{
    const std::uint32_t group = counter.priorities_.load();
    if (currentThread.system == this && currentThread.kind == ThreadKind::IO)
    {
        return group | kIoBit;
    }
    const int own = std::max(currentThread.currentPriority, 0);
    const std::uint32_t upToOwn = (2u << own) - 1;
    return (upToOwn & ~kIoBit) | group;
}

bool TaskSystem::HasQueuedIn(std::uint32_t mask) const noexcept
{
    for (std::size_t priority = 0; priority < kPriorityCount; ++priority)
    {
        if ((mask >> priority & 1u) != 0 && HasQueued(static_cast<TaskPriority>(priority)))
        {
            return true;
        }
    }
    return false;
}

bool TaskSystem::HelpOnce(std::uint32_t mask)
{
    for (std::size_t priority = 0; priority < kPriorityCount; ++priority)
    {
        if ((mask >> priority & 1u) != 0 && RunQueued(static_cast<TaskPriority>(priority)))
        {
            return true;
        }
    }
    return false;
}

/// Runs tasks until the group is done or there is nothing that the caller may run.
void TaskSystem::HelpWhileQueued(const CounterState& counter)
{
    const bool isForeign = !IsOwnThread(); // an own thread is at work already
    if (isForeign)
    {
        begunWork_.fetch_add(1);
    }
    while (!counter.IsDone() && HelpOnce(HelpingMask(counter)))
    {
    }
    if (isForeign)
    {
        endedWork_.fetch_add(1);
        if (stopping_.load())
        {
            WakeAll(); // the threads may have waited for this work to end
        }
    }
}

void TaskSystem::Wait(const CounterHandle& counter)
{
    if (!counter)
    {
        return;
    }
    // The caller's handle may go while the tasks run.
    const CounterHandle kept = counter;
    const bool isIoThread = currentThread.system == this && currentThread.kind == ThreadKind::IO;
    const auto ready = [this, &kept] { return kept->IsDone() || HasQueuedIn(HelpingMask(*kept)); };
    while (!kept->IsDone())
    {
        HelpWhileQueued(*kept);
        if (!ready())
        {
            kept->NoteWaiter();
            Sleep(isIoThread ? ioWakeUp_ : workersWakeUp_, ready);
        }
    }
    kept->Rethrow();
}

template<class Ready>
void TaskSystem::Sleep(std::condition_variable& wakeUp, const Ready& ready)
{
    // The raised number of sleepers and what `ready` reads are sequentially consistent, like the producer's
    // change and its look at the sleepers: one of the two sees the other's.
    std::unique_lock lock(wakeMutex_);
    sleeping_.fetch_add(1);
    std::uint64_t seenWakes = wakeCount_;
    while (!ready())
    {
        wakeUp.wait(lock);
        if (seenWakes != wakeCount_)
        {
            seenWakes = wakeCount_;
            sleeping_.fetch_add(1);
        }
    }
    sleeping_.fetch_sub(1);
}

void TaskSystem::WakeAll() noexcept
{
    {
        const std::lock_guard lock(wakeMutex_);
        // Who was told once needn't be told again before it has looked: so a burst of tasks costs one call
        // into the system.
        sleeping_.store(0);
        ++wakeCount_;
    }
    workersWakeUp_.notify_all();
    ioWakeUp_.notify_all();
}

void TaskSystem::WakeAllIfSleeping() noexcept
{
    if (sleeping_.load() > 0)
    {
        WakeAll();
    }
}

TaskPriority TaskSystem::ParallelPriority(std::optional<TaskPriority> priority) noexcept
{
    const auto current = static_cast<TaskPriority>(std::max(currentThread.currentPriority, 0));
    const TaskPriority wanted = priority.value_or(current);
    return wanted == TaskPriority::IO ? TaskPriority::Background : wanted;
}

bool TaskSystem::IsOwnThread() const noexcept
{
    return currentThread.system == this;
}

void TaskSystem::Shutdown(bool cancel)
{
    // Looked at before the mutex: its holder may be joining this very thread.
    if (IsOwnThread())
    {
        LogError("TaskSystem::Shutdown called from one of its own threads; ignored.");
        return;
    }
    const std::lock_guard lock(shutdownMutex_);
    if (stopped_.load())
    {
        return;
    }
    if (cancel)
    {
        cancelling_.store(true);
        CancelQueued();
    }
    stopping_.store(true);
    WakeAll();
    for (const std::unique_ptr<Worker>& worker : workers_)
    {
        if (worker->thread.joinable())
        {
            worker->thread.join();
        }
    }
    for (std::thread& thread : ioThreads_)
    {
        thread.join();
    }
    stopped_.store(true);
    if (cancel)
    {
        CancelQueued();
        return;
    }
    RunLeftTasks();
}

void TaskSystem::RunLeftTasks()
{
    for (std::size_t priority = 0; priority < kPriorityCount; ++priority)
    {
        const auto runAll = [this, priority](WorkQueue& queue)
        {
            for (Task& task : queue.TakeAll())
            {
                RunTask(task, static_cast<TaskPriority>(priority));
            }
        };
        runAll(global_[priority]);
        for (const std::unique_ptr<Worker>& worker : workers_)
        {
            if (priority < worker->queues.size())
            {
                runAll(worker->queues[priority]);
            }
        }
    }
}

void TaskSystem::CancelQueued()
{
    const std::exception_ptr exception = std::make_exception_ptr(TaskCancelledError());
    for (std::size_t priority = 0; priority < kPriorityCount; ++priority)
    {
        CancelQueue(global_[priority], exception);
    }
    for (const std::unique_ptr<Worker>& worker : workers_)
    {
        for (std::size_t priority = 0; priority < worker->queues.size(); ++priority)
        {
            CancelQueue(worker->queues[priority], exception);
        }
    }
}

void TaskSystem::CancelQueue(WorkQueue& queue, const std::exception_ptr& exception)
{
    for (Task& task : queue.TakeAll())
    {
        FinishTask(task, exception);
    }
}

} // namespace Vornu::Core::Tasks
