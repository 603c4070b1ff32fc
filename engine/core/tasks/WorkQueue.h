#pragma once

#include "engine/core/tasks/SpinMutex.h"
#include "engine/core/tasks/TaskCounter.h"
#include "engine/core/tasks/TaskFunction.h"

#include <atomic>
#include <cstddef>
#include <vector>

namespace Vornu::Core::Tasks
{

/// A callable and the group that it belongs to, which lives at least until it is told that the task is
/// finished.
struct Task
{
    TaskFunction function;
    CounterState* counter = nullptr;
};

/// The tasks of one priority that wait at one place, oldest first. Safe from any thread.
class alignas(64) WorkQueue
{
public:
    /// Throws `std::bad_alloc`; `task` is then as it was.
    void PushBack(Task& task);

    /// The same, unless `closed` stands: false then, and `task` is as it was. A push that doesn't see the
    /// flag is seen by every `TakeAll` after the flag was set.
    bool PushBackUnless(const std::atomic<bool>& closed, Task& task);

    /// Whoever announces that it sleeps and then finds the queue empty can rely on being seen by the next one
    /// that pushes.
    bool IsEmpty() const noexcept { return size_.load() == 0; }

    /// The newest task; false if there is none.
    bool PopBack(Task& task) noexcept;

    /// The oldest task; false if there is none.
    bool PopFront(Task& task) noexcept;

    /// Everything, oldest first.
    std::vector<Task> TakeAll();

private:
    enum class End
    {
        Oldest,
        Newest,
    };

    bool Pop(Task& task, End end) noexcept;
    void Append(Task& task);
    void Grow();

    SpinMutex mutex_;
    /// Written with the mutex held; read without it to pass by an empty queue.
    std::atomic<std::size_t> size_ = 0;
    std::size_t first_ = 0;
    /// A ring whose length is a power of two; the entries outside the `size_` from `first_` are empty.
    std::vector<Task> ring_;
};

} // namespace Vornu::Core::Tasks
