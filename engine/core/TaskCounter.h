#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>

namespace Vornu::Core::Tasks
{

/// Lowest number served first.
enum class TaskPriority : std::uint8_t
{
    High,
    Normal,
    /// With a limit on how many run at once.
    Background,
    /// Run by the IO threads only, and by any thread that waits for such a task.
    IO,
};

inline constexpr unsigned kPriorityCount = 4;

/// The tasks of one group: how many are unfinished, and the first exception among them. Shared by the tasks
/// and by whoever waits; safe from any thread. When the last reference goes while it holds an exception that
/// no waiter saw, that is logged as an error.
class CounterState
{
public:
    CounterState() = default;
    ~CounterState();

    CounterState(const CounterState&) = delete;
    CounterState& operator=(const CounterState&) = delete;

    /// No task of the group is unfinished.
    bool IsDone() const noexcept { return unfinished_.load() == 0; }

private:
    friend class TaskSystem;

    void AddTask(TaskPriority priority) noexcept;
    void KeepException(std::exception_ptr exception) noexcept;
    /// Marks the first exception as seen and throws it.
    void Rethrow();

    std::atomic<std::int64_t> unfinished_ = 0;
    /// One bit for each priority that was submitted.
    std::atomic<std::uint32_t> priorities_ = 0;
    std::atomic<std::uint32_t> waiters_ = 0;
    std::mutex mutex_;
    std::exception_ptr exception_;
    bool exceptionSeen_ = false;
};

using CounterHandle = std::shared_ptr<CounterState>;

} // namespace Vornu::Core::Tasks
