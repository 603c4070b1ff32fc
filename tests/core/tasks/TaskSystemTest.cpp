#include "engine/core/tasks/TaskSystem.h"

#include "engine/core/logging/Logger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Vornu::Core::Tasks
{
namespace
{

TaskSystemConfig Threads(std::uint32_t workers, std::uint32_t io = 0)
{
    return {.workerThreads = workers, .ioThreads = io};
}

/// How often the text stands among the messages logged since the object was made.
class LoggedMessages
{
public:
    /// How often the text stands among all messages of the process.
    static int CountInProcess(std::string_view text) { return CountSince(0, text); }

    int Count(std::string_view text) const { return CountSince(start_, text); }

private:
    static int CountSince(std::uint64_t start, std::string_view text)
    {
        std::vector<LogRecord> records;
        GetLogger().HistorySince(start, records);
        return static_cast<int>(std::count_if(records.begin(), records.end(),
                                              [text](const LogRecord& record)
                                              { return record.message == text; }));
    }

    static std::uint64_t LastSequence()
    {
        std::vector<LogRecord> records;
        return GetLogger().HistorySince(0, records);
    }

    std::uint64_t start_ = LastSequence();
};

std::string WaitFailure(TaskSystem& system, const CounterHandle& counter)
{
    try
    {
        system.Wait(counter);
    }
    catch (const std::exception& error)
    {
        return error.what();
    }
    return "none";
}

/// Holds up every worker until it is opened.
class Gate
{
public:
    Gate(TaskSystem& system, std::uint32_t workers) : entered_(workers), counter_(CounterHandle::Make())
    {
        for (std::uint32_t i = 0; i < workers; ++i)
        {
            system.Submit(
                TaskPriority::High,
                [this]
                {
                    entered_.count_down();
                    open_.wait(false);
                },
                counter_);
        }
        entered_.wait();
    }

    void Open()
    {
        open_.store(true);
        open_.notify_all();
    }

    const CounterHandle& Counter() const { return counter_; }

private:
    std::latch entered_;
    std::atomic<bool> open_ = false;
    CounterHandle counter_;
};

TEST(TaskSystem, ProcessWithoutSystemRunsTasksInlineAndWarnsOnce)
{
    const std::thread::id self = std::this_thread::get_id();
    TaskSystem& system = TaskSystem::Get();
    EXPECT_EQ(&TaskSystem::Get(), &system);
    EXPECT_EQ(LoggedMessages::CountInProcess(
                  "TaskSystem::Get() used without an installed task system; tasks run inline."),
              1);
    EXPECT_TRUE(system.IsInline());
    EXPECT_EQ(system.BackgroundLimit(), 0u);

    std::thread::id ran;
    const CounterHandle counter =
        system.Async(TaskPriority::IO, [&ran] { ran = std::this_thread::get_id(); });
    EXPECT_EQ(ran, self);
    EXPECT_TRUE(counter->IsDone());
    const CounterHandle failed = system.Async(TaskPriority::Normal, [] { throw std::runtime_error("kept"); });
    EXPECT_EQ(WaitFailure(system, failed), "kept");

    std::vector<std::size_t> order;
    system.ParallelFor(5, 2, [&order](std::size_t i) { order.push_back(i); });
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST(TaskSystem, InstalledSystemLeavesItsSlotWhenItEnds)
{
    TaskSystem outer(Threads(0));
    EXPECT_EQ(TaskSystem::Install(&outer), nullptr);
    {
        TaskSystem inner(Threads(1));
        EXPECT_EQ(TaskSystem::Install(&inner), &outer);
        EXPECT_EQ(&TaskSystem::Get(), &inner);
    }
    EXPECT_EQ(TaskSystem::Install(&outer), nullptr);
    TaskSystem{Threads(1)}.Wait(nullptr);
    EXPECT_EQ(TaskSystem::Install(nullptr), &outer);
}

TEST(TaskSystem, ConfigurationIsClamped)
{
    const std::uint32_t hardware = std::max(std::thread::hardware_concurrency(), 2u) - 1;
    EXPECT_EQ(TaskSystem().WorkerCount(), hardware);
    struct Row
    {
        std::uint32_t workers;
        std::optional<std::uint32_t> background;
        std::uint32_t limit;
    };
    const Row rows[] = {{1, {}, 1}, {2, {}, 1}, {4, {}, 3}, {3, 0, 1}, {3, 2, 2}, {3, 9, 3}, {0, 5, 0}};
    for (const Row& row : rows)
    {
        const TaskSystem system({.workerThreads = row.workers, .maxBackgroundWorkers = row.background});
        EXPECT_EQ(system.BackgroundLimit(), row.limit) << row.workers;
    }
}

TEST(TaskSystem, ManyProducersLoseNoTask)
{
    TaskSystem system(Threads(3, 2));
    std::atomic<int> ran = 0;
    std::vector<std::thread> producers;
    for (int producer = 0; producer < 4; ++producer)
    {
        producers.emplace_back(
            [&system, &ran, producer]
            {
                for (int round = 0; round < 50; ++round)
                {
                    const auto counter = CounterHandle::Make();
                    for (int i = 0; i < 20; ++i)
                    {
                        const auto priority = static_cast<TaskPriority>((producer + i) % 4);
                        system.Submit(
                            priority, [&ran] { ran.fetch_add(1); }, counter);
                    }
                    system.Wait(counter);
                }
            });
    }
    for (std::thread& producer : producers)
    {
        producer.join();
    }
    EXPECT_EQ(ran.load(), 4 * 50 * 20);
}

int Fibonacci(TaskSystem& system, int n)
{
    if (n < 2)
    {
        return n;
    }
    int first = 0;
    const CounterHandle counter =
        system.Async(TaskPriority::Normal, [&system, &first, n] { first = Fibonacci(system, n - 1); });
    const int second = Fibonacci(system, n - 2);
    system.Wait(counter);
    return first + second;
}

TEST(TaskSystem, WaitsInsideTasksMakeProgressOnAFullPool)
{
    for (const std::uint32_t workers : {0u, 1u, 3u})
    {
        TaskSystem system(Threads(workers));
        EXPECT_EQ(Fibonacci(system, 15), 610);
    }
}

TEST(TaskSystem, IoTaskWaitsForItsLikeOnTheOnlyIoThread)
{
    TaskSystem system(Threads(1, 1));
    bool inner = false;
    system.Wait(system.Async(TaskPriority::IO, [&]
                             { system.Wait(system.Async(TaskPriority::IO, [&inner] { inner = true; })); }));
    EXPECT_TRUE(inner);
}

TEST(TaskSystem, WorkerTakesHigherPriorityFirstAndItsOwnNewestFirst)
{
    TaskSystem system(Threads(1));
    const auto counter = CounterHandle::Make();
    std::string order;
    Gate gate(system, 1);
    const auto note = [&order](char c) { return [&order, c] { order += c; }; };
    system.Submit(TaskPriority::Background, note('b'), counter);
    system.Submit(TaskPriority::Normal, note('1'), counter);
    system.Submit(TaskPriority::Normal, note('2'), counter);
    system.Submit(
        TaskPriority::High,
        [&]
        {
            order += 'h';
            for (const char c : {'x', 'y', 'z'})
            {
                system.Submit(TaskPriority::Normal, note(c), counter);
            }
        },
        counter);
    gate.Open();
    system.Shutdown();
    EXPECT_EQ(order, "hzyx12b");
}

TEST(TaskSystem, WaiterHelpsOnlyWithItsOwnClassAndTheGroup)
{
    TaskSystem system(Threads(1));
    Gate gate(system, 1);
    bool normalRan = false;
    bool highRan = false;
    const CounterHandle normal = system.Async(TaskPriority::Normal, [&normalRan] { normalRan = true; });
    const CounterHandle high = system.Async(TaskPriority::High, [&highRan] { highRan = true; });
    // Of the two only the first is below the class of a waiter outside any task.
    system.Wait(system.Async(TaskPriority::Background, [] {}));
    EXPECT_TRUE(highRan);
    EXPECT_FALSE(normalRan);
    gate.Open();
    system.Wait(normal);
    EXPECT_TRUE(normalRan);
}

TEST(TaskSystem, BackgroundTasksStayBelowTheirLimit)
{
    TaskSystem system({.workerThreads = 3, .maxBackgroundWorkers = 1});
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    std::atomic<int> ran = 0;
    for (int i = 0; i < 200; ++i)
    {
        system.Async(TaskPriority::Background,
                     [&]
                     {
                         const int now = running.fetch_add(1) + 1;
                         most.store(std::max(most.load(), now));
                         std::this_thread::yield();
                         running.fetch_sub(1);
                         ran.fetch_add(1);
                     });
    }
    // The other workers are free for the higher classes meanwhile.
    std::latch both(2);
    for (int i = 0; i < 2; ++i)
    {
        system.Async(TaskPriority::Normal, [&both] { both.arrive_and_wait(); });
    }
    both.wait();
    system.Shutdown();
    EXPECT_EQ(most.load(), 1);
    EXPECT_EQ(ran.load(), 200);
}

TEST(TaskSystem, FirstExceptionOfAGroupReachesEveryWaiter)
{
    const LoggedMessages log;
    TaskSystem system(Threads(2));
    const auto counter = CounterHandle::Make();
    std::atomic<int> ran = 0;
    for (int i = 0; i < 100; ++i)
    {
        system.Submit(
            TaskPriority::Normal,
            [&ran]
            {
                ran.fetch_add(1);
                throw std::runtime_error("same text");
            },
            counter);
    }
    EXPECT_EQ(WaitFailure(system, counter), "same text");
    EXPECT_EQ(ran.load(), 100);
    EXPECT_EQ(WaitFailure(system, counter), "same text");
    EXPECT_EQ(WaitFailure(system, system.Async(TaskPriority::Normal, std::function<void()>())),
              std::bad_function_call().what());

    system.Async(TaskPriority::Normal, [] { throw std::runtime_error("alone"); });
    system.Async(TaskPriority::Normal, [] { throw 7; });
    system.Shutdown();
    EXPECT_EQ(log.Count("Task failed and nobody waited for it: alone"), 1);
    EXPECT_EQ(log.Count("Task failed and nobody waited for it: unknown exception"), 1);
    EXPECT_EQ(log.Count("Task failed and nobody waited for it: same text"), 0);
}

TEST(TaskSystem, ResultsComeThroughTheFuture)
{
    TaskSystem system(Threads(1));
    auto moved = std::make_unique<int>(42);
    TypedTask<int> task =
        system.AsyncResult(TaskPriority::Normal, [value = std::move(moved)] { return *value; });
    system.Wait(task.counter);
    EXPECT_EQ(task.result.get(), 42);
    TypedTask<void> failing =
        system.AsyncResult(TaskPriority::Normal, [] { throw std::runtime_error("typed"); });
    system.Wait(failing.counter);
    EXPECT_THROW(failing.result.get(), std::runtime_error);
}

TEST(TaskSystem, CallablesOfAnySizeAreDestroyedOnce)
{
    const auto guard = std::make_shared<int>(0);
    TaskSystem system(Threads(1));
    const std::array<std::uint64_t, 20> large{1, 2, 3};
    std::uint64_t sum = 0;
    for (int i = 0; i < 100; ++i)
    {
        system.Wait(system.Async(TaskPriority::Normal, [guard, &sum] { sum += guard != nullptr; }));
        system.Wait(system.Async(TaskPriority::Normal, [guard, large, &sum] { sum += large[2]; }));
    }
    EXPECT_EQ(sum, 400u);
    EXPECT_EQ(guard.use_count(), 1);
}

TEST(TaskSystem, ParallelForCallsEveryIndexOnce)
{
    TaskSystem system(Threads(3));
    const std::size_t counts[] = {0, 1, 7, 64, 65, 1'000, 10'007};
    for (const std::size_t count : counts)
    {
        for (const std::size_t grain : {std::size_t{0}, std::size_t{1}, std::size_t{64}, std::size_t{5'000}})
        {
            std::vector<std::atomic<int>> calls(count);
            system.ParallelFor(count, grain, [&calls](std::size_t i) { calls[i].fetch_add(1); });
            const bool allOnce =
                std::all_of(calls.begin(), calls.end(), [](const auto& n) { return n.load() == 1; });
            EXPECT_TRUE(allOnce) << count << " by " << grain;
        }
    }
}

TEST(TaskSystem, ParallelForNestsAndRunsItsRangesTogether)
{
    TaskSystem system(Threads(2));
    // Each range waits for the other two: they must run on three threads.
    std::latch together(3);
    system.ParallelFor(3, 1, [&together](std::size_t) { together.arrive_and_wait(); });

    std::atomic<int> calls = 0;
    system.ParallelFor(20, 1, [&](std::size_t) { system.ParallelFor(50, 4, [&](std::size_t) { ++calls; }); });
    EXPECT_EQ(calls.load(), 1'000);
}

TEST(TaskSystem, ParallelForStopsAtTheFirstException)
{
    TaskSystem system(Threads(2));
    for (int round = 0; round < 50; ++round)
    {
        std::atomic<int> calls = 0;
        EXPECT_THROW(system.ParallelFor(100'000, 1,
                                        [&calls](std::size_t)
                                        {
                                            if (calls.fetch_add(1) == 10)
                                            {
                                                throw std::runtime_error("range");
                                            }
                                        }),
                     std::runtime_error);
        EXPECT_LT(calls.load(), 100'000);
    }
}

TEST(TaskSystem, ParallelForInsideIoRunsInTheBackground)
{
    TaskSystem system(Threads(1, 1));
    Gate gate(system, 1);
    std::atomic<bool> normalRan = false;
    std::atomic<int> calls = 0;
    const CounterHandle normal = system.Async(TaskPriority::Normal, [&normalRan] { normalRan = true; });
    const CounterHandle io = system.Async(
        TaskPriority::IO, [&] { system.ParallelFor(10, 1, [&calls](std::size_t) { calls.fetch_add(1); }); });
    // The worker is held up, so it is the IO thread that runs the loop's background task.
    while (!io->IsDone())
    {
        std::this_thread::yield();
    }
    EXPECT_EQ(calls.load(), 10);
    EXPECT_FALSE(normalRan.load());
    gate.Open();
    system.Wait(normal);
}

TEST(TaskSystem, ShutdownUnderLoadFinishesEverything)
{
    for (int round = 0; round < 20; ++round)
    {
        TaskSystem system(Threads(2, 1));
        std::atomic<int> ran = 0;
        std::atomic<int> submitted = 0;
        std::atomic<bool> end = false;
        std::thread producer(
            [&]
            {
                while (!end.load())
                {
                    const auto priority = static_cast<TaskPriority>(submitted.fetch_add(2) / 2 % 4);
                    system.Async(priority,
                                 [&]
                                 {
                                     ran.fetch_add(1);
                                     system.Async(TaskPriority::Normal, [&ran] { ran.fetch_add(1); });
                                 });
                    // Keeps the queues from growing without end.
                    while (submitted.load() - ran.load() > 1'000)
                    {
                        std::this_thread::yield();
                    }
                }
            });
        while (ran.load() < 100)
        {
            std::this_thread::yield();
        }
        // The producer holds itself back, so the unfinished work has an end.
        std::thread stopper([&system] { system.Shutdown(); });
        std::this_thread::yield();
        end.store(true);
        producer.join();
        stopper.join();
        EXPECT_EQ(ran.load(), submitted.load());

        bool late = false;
        system.Async(TaskPriority::IO, [&late] { late = true; });
        EXPECT_TRUE(late);
    }
}

TEST(TaskSystem, ShutdownWaitsForTheTaskThatAWaiterRuns)
{
    for (const bool workerSleeps : {false, true})
    {
        TaskSystem system(Threads(1));
        Gate gate(system, 1);
        std::latch running(1);
        std::atomic<bool> leftover = false;
        std::atomic<bool> ended = false;
        const CounterHandle task =
            system.Async(TaskPriority::High,
                         [&]
                         {
                             running.count_down();
                             std::this_thread::sleep_for(std::chrono::milliseconds(20));
                             system.Async(TaskPriority::Normal, [&] { leftover = true; });
                             ended = true;
                         });
        std::thread waiter([&] { system.Wait(task); });
        running.wait();
        gate.Open();
        if (workerSleeps)
        {
            system.Wait(gate.Counter());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        system.Shutdown();
        EXPECT_TRUE(ended.load());
        EXPECT_TRUE(leftover.load());
        waiter.join();
    }
}

TEST(TaskSystem, SleepingThreadsWakeForEachPriority)
{
    TaskSystem system(Threads(3, 1));
    for (const TaskPriority priority :
         {TaskPriority::High, TaskPriority::Normal, TaskPriority::Background, TaskPriority::IO})
    {
        // Longer than any thread looks for work. As many tasks meet as the pool has threads for them.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const int count = priority == TaskPriority::IO ? 1 : priority == TaskPriority::Background ? 2 : 3;
        std::latch together(count);
        const CounterHandle counter = CounterHandle::Make();
        for (int i = 0; i < count; ++i)
        {
            system.Submit(
                priority, [&together] { together.arrive_and_wait(); }, counter);
        }
        together.wait();
        system.Wait(counter);
    }
}

TEST(TaskSystem, GroupOutlivesItsHandlesUntilItsLastTask)
{
    const LoggedMessages log;
    TaskSystem system(Threads(1));
    Gate gate(system, 1);
    CounterHandle handle = CounterHandle::Make();
    for (int i = 0; i < 100; ++i)
    {
        system.Submit(
            TaskPriority::Normal, [i] { i == 99 ? throw std::runtime_error("last of 100") : 0; }, handle);
    }
    CounterHandle moved = std::move(handle);
    handle = moved;
    moved = nullptr;
    EXPECT_FALSE(handle->IsDone());
    handle = nullptr;
    EXPECT_EQ(log.Count("Task failed and nobody waited for it: last of 100"), 0);
    gate.Open();
    system.Shutdown();
    EXPECT_EQ(log.Count("Task failed and nobody waited for it: last of 100"), 1);
}

TEST(TaskSystem, CancellingShutdownRunsNothingThatHasNotStarted)
{
    const std::string cancelled = "Task was cancelled by task system shutdown.";
    TaskSystem system(Threads(2, 1));
    Gate gate(system, 2);
    std::atomic<int> ran = 0;
    const auto guard = std::make_shared<int>(0);
    std::vector<CounterHandle> counters;
    for (int i = 0; i < 30; ++i)
    {
        const auto priority = static_cast<TaskPriority>(i % 3);
        counters.push_back(system.Async(priority, [&ran, guard] { ran.fetch_add(1); }));
    }
    std::thread stopper([&system] { system.Shutdown(true); });
    for (const CounterHandle& counter : counters)
    {
        while (!counter->IsDone())
        {
            std::this_thread::yield();
        }
        EXPECT_EQ(WaitFailure(system, counter), cancelled);
    }
    gate.Open();
    stopper.join();
    EXPECT_EQ(WaitFailure(system, gate.Counter()), "none");
    EXPECT_EQ(ran.load(), 0);
    EXPECT_EQ(guard.use_count(), 1);
    system.Shutdown(false);
    system.Shutdown(true);
}

TEST(TaskSystem, ShutdownFromAnOwnThreadIsIgnored)
{
    const LoggedMessages log;
    TaskSystem system(Threads(1, 1));
    system.Wait(system.Async(TaskPriority::Background, [] {}));
    for (const TaskPriority priority : {TaskPriority::Normal, TaskPriority::IO})
    {
        std::atomic<bool> done = false;
        system.Async(priority,
                     [&]
                     {
                         system.Shutdown(true);
                         done = true;
                     });
        while (!done.load())
        {
            std::this_thread::yield();
        }
    }
    EXPECT_EQ(log.Count("TaskSystem::Shutdown called from one of its own threads; ignored."), 2);
    std::thread::id ran;
    const CounterHandle counter =
        system.Async(TaskPriority::Normal, [&ran] { ran = std::this_thread::get_id(); });
    while (!counter->IsDone())
    {
        std::this_thread::yield();
    }
    EXPECT_NE(ran, std::this_thread::get_id());
}

} // namespace
} // namespace Vornu::Core::Tasks
