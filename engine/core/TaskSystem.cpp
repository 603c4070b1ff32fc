#include "engine/core/TaskSystem.h"

#include "engine/core/Logger.h"
#include "engine/core/System.h"

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
    Task task{std::move(function), counter};
    task.counter->AddTask(priority);
    unfinished_.fetch_add(1);
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
        EndTask(false);
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
    queued_[Index(priority)].fetch_add(1);
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
    auto counter = std::make_shared<CounterState>();
    Submit(priority, std::move(function), counter);
    return counter;
}

bool TaskSystem::HasQueued(TaskPriority priority) const noexcept
{
    return queued_[Index(priority)].load() > 0;
}

bool TaskSystem::TakeTask(TaskPriority priority, Task& task) noexcept
{
    if (!HasQueued(priority))
    {
        return false;
    }
    const std::size_t index = Index(priority);
    bool taken = false;
    if (priority == TaskPriority::IO)
    {
        taken = global_[index].PopFront(task);
    }
    else
    {
        const bool isOwnWorker = currentThread.system == this && currentThread.kind == ThreadKind::Worker;
        taken = (isOwnWorker && workers_[currentThread.workerIndex]->queues[index].PopBack(task)) ||
                global_[index].PopFront(task) || Steal(index, task);
    }
    if (taken)
    {
        queued_[index].fetch_sub(1);
    }
    return taken;
}

bool TaskSystem::Steal(std::size_t priority, Task& task) noexcept
{
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
    if (!cancelling_.load() && !drained_.load() && unfinished_.load() == 0)
    {
        drained_.store(true);
    }
    return cancelling_.load() || drained_.load();
}

void TaskSystem::RunWorker(std::uint32_t index)
{
    currentThread = {.system = this, .kind = ThreadKind::Worker, .workerIndex = index};
    Platform::SetCurrentThreadName("Vornu Worker " + std::to_string(index));
    bool leaves = false;
    while (!leaves)
    {
        if (RunOneAsWorker())
        {
            continue;
        }
        Sleep(workersWakeUp_,
              [this, &leaves]
              {
                  leaves = MayLeave();
                  return leaves || HasQueued(TaskPriority::High) || HasQueued(TaskPriority::Normal) ||
                         (HasQueued(TaskPriority::Background) &&
                          runningBackground_.load() < backgroundLimit_);
              });
    }
}

void TaskSystem::RunIoThread(std::uint32_t index)
{
    currentThread = {.system = this, .kind = ThreadKind::IO};
    Platform::SetCurrentThreadName("Vornu IO " + std::to_string(index));
    bool leaves = false;
    while (!leaves)
    {
        if (!cancelling_.load() && RunQueued(TaskPriority::IO))
        {
            continue;
        }
        Sleep(ioWakeUp_,
              [this, &leaves]
              {
                  leaves = MayLeave();
                  return leaves || HasQueued(TaskPriority::IO);
              });
    }
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
    EndTask(outermostBackground);
}

void TaskSystem::FinishTask(Task& task, std::exception_ptr exception) noexcept
{
    task.function.Reset();
    CounterState& counter = *task.counter;
    if (exception)
    {
        counter.KeepException(std::move(exception));
    }
    if (counter.unfinished_.fetch_sub(1) == 1 && counter.waiters_.load() > 0)
    {
        WakeAllIfSleeping();
    }
    task.counter.reset();
}

void TaskSystem::EndTask(bool outermostBackground) noexcept
{
    const bool drained = unfinished_.fetch_sub(1) == 1 && stopping_.load();
    if (drained)
    {
        drained_.store(true);
    }
    if (outermostBackground || drained)
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
        if ((mask >> priority & 1u) != 0 && queued_[priority].load() > 0)
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

void TaskSystem::Wait(const CounterHandle& counter)
{
    if (!counter)
    {
        return;
    }
    // The caller's handle may go while the tasks run.
    const CounterHandle kept = counter;
    const bool isIoThread = currentThread.system == this && currentThread.kind == ThreadKind::IO;
    while (!kept->IsDone())
    {
        if (HelpOnce(HelpingMask(*kept)))
        {
            continue;
        }
        kept->waiters_.fetch_add(1);
        Sleep(isIoThread ? ioWakeUp_ : workersWakeUp_,
              [this, &kept] { return kept->IsDone() || HasQueuedIn(HelpingMask(*kept)); });
        kept->waiters_.fetch_sub(1);
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
    // Not by the queued counts: a producer may have pushed its task and not counted it yet.
    for (std::size_t priority = 0; priority < kPriorityCount; ++priority)
    {
        const auto runAll = [this, priority](WorkQueue& queue)
        {
            for (Task& task : queue.TakeAll())
            {
                queued_[priority].fetch_sub(1);
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
        CancelQueue(global_[priority], priority, exception);
    }
    for (const std::unique_ptr<Worker>& worker : workers_)
    {
        for (std::size_t priority = 0; priority < worker->queues.size(); ++priority)
        {
            CancelQueue(worker->queues[priority], priority, exception);
        }
    }
}

void TaskSystem::CancelQueue(WorkQueue& queue, std::size_t priority, const std::exception_ptr& exception)
{
    for (Task& task : queue.TakeAll())
    {
        queued_[priority].fetch_sub(1);
        FinishTask(task, exception);
        EndTask(false);
    }
}

} // namespace Vornu::Core::Tasks
