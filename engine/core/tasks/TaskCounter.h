#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>
#include <utility>

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
/// and by whoever waits; safe from any thread. It goes with its last handle, but not before its last task,
/// and if it then holds an exception that no waiter saw, that is logged as an error.
class CounterState
{
public:
    CounterState(const CounterState&) = delete;
    CounterState& operator=(const CounterState&) = delete;

    /// No task of the group is unfinished.
    bool IsDone() const noexcept { return (state_.load() & kUnfinished) == 0; }

private:
    friend class CounterHandle;
    friend class TaskSystem;

    // The parts of `state_`. They stand in one word so that finishing a task is one operation, behind which
    // the group may be gone.
    static constexpr std::uint64_t kTask = 1;
    static constexpr std::uint64_t kUnfinished = 0xFFFF'FFFF;
    /// Somebody has slept until the group was done.
    static constexpr std::uint64_t kWaitedFor = std::uint64_t{1} << 32;
    static constexpr std::uint64_t kHandle = std::uint64_t{1} << 33;

    CounterState() = default;
    ~CounterState();

    void AddHandle() noexcept { state_.fetch_add(kHandle, std::memory_order_relaxed); }
    void DropHandle() noexcept;

    void AddTask(TaskPriority priority) noexcept;
    /// True if it was the last one and somebody may sleep for it. The group may be gone afterwards.
    bool FinishTask() noexcept;
    void NoteWaiter() noexcept;
    void KeepException(std::exception_ptr exception) noexcept;
    /// Marks the first exception as seen and throws it.
    void Rethrow();

    std::atomic<std::uint64_t> state_ = kHandle;
    /// One bit for each priority that was submitted.
    std::atomic<std::uint32_t> priorities_ = 0;
    std::mutex mutex_;
    std::exception_ptr exception_;
    bool exceptionSeen_ = false;
};

/// Shares a group.
class CounterHandle
{
public:
    /// A new group without tasks.
    static CounterHandle Make() { return CounterHandle(new CounterState()); }

    CounterHandle(std::nullptr_t = nullptr) noexcept {}
    CounterHandle(const CounterHandle& other) noexcept : counter_(other.counter_)
    {
        if (counter_ != nullptr)
        {
            counter_->AddHandle();
        }
    }
    CounterHandle(CounterHandle&& other) noexcept : counter_(std::exchange(other.counter_, nullptr)) {}
    CounterHandle& operator=(CounterHandle other) noexcept
    {
        std::swap(counter_, other.counter_);
        return *this;
    }
    ~CounterHandle()
    {
        if (counter_ != nullptr)
        {
            counter_->DropHandle();
        }
    }

    CounterState* operator->() const noexcept { return counter_; }
    CounterState& operator*() const noexcept { return *counter_; }
    explicit operator bool() const noexcept { return counter_ != nullptr; }

private:
    explicit CounterHandle(CounterState* counter) noexcept : counter_(counter) {}

    CounterState* counter_ = nullptr;
};

} // namespace Vornu::Core::Tasks
