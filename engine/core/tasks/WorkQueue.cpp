#include "engine/core/tasks/WorkQueue.h"

#include <mutex>
#include <utility>

namespace Vornu::Core::Tasks
{
namespace
{

constexpr std::size_t kFirstLength = 64;

} // namespace

void WorkQueue::PushBack(Task& task)
{
    const std::lock_guard lock(mutex_);
    Append(task);
}

bool WorkQueue::PushBackUnless(const std::atomic<bool>& closed, Task& task)
{
    const std::lock_guard lock(mutex_);
    if (closed.load())
    {
        return false;
    }
    Append(task);
    return true;
}

bool WorkQueue::PopBack(Task& task) noexcept
{
    return Pop(task, End::Newest);
}

bool WorkQueue::PopFront(Task& task) noexcept
{
    return Pop(task, End::Oldest);
}

bool WorkQueue::Pop(Task& task, End end) noexcept
{
    if (size_.load(std::memory_order_relaxed) == 0)
    {
        return false;
    }
    const std::lock_guard lock(mutex_);
    const std::size_t size = size_.load(std::memory_order_relaxed);
    if (size == 0)
    {
        return false;
    }
    const std::size_t place = end == End::Oldest ? first_ : first_ + size - 1;
    task = std::move(ring_[place & (ring_.size() - 1)]);
    first_ = end == End::Oldest ? (first_ + 1) & (ring_.size() - 1) : first_;
    size_.store(size - 1, std::memory_order_relaxed);
    return true;
}

std::vector<Task> WorkQueue::TakeAll()
{
    std::vector<Task> ring;
    std::size_t first = 0;
    std::size_t size = 0;
    {
        const std::lock_guard lock(mutex_);
        ring.swap(ring_);
        first = std::exchange(first_, 0);
        size = size_.exchange(0, std::memory_order_relaxed);
    }
    std::vector<Task> tasks;
    tasks.reserve(size);
    for (std::size_t i = 0; i < size; ++i)
    {
        tasks.push_back(std::move(ring[(first + i) & (ring.size() - 1)]));
    }
    return tasks;
}

void WorkQueue::Append(Task& task)
{
    const std::size_t size = size_.load(std::memory_order_relaxed);
    if (size == ring_.size())
    {
        Grow();
    }
    ring_[(first_ + size) & (ring_.size() - 1)] = std::move(task);
    size_.store(size + 1); // sequentially consistent for `IsEmpty`
}

void WorkQueue::Grow()
{
    std::vector<Task> larger(ring_.empty() ? kFirstLength : 2 * ring_.size());
    for (std::size_t i = 0; i < ring_.size(); ++i)
    {
        larger[i] = std::move(ring_[(first_ + i) & (ring_.size() - 1)]);
    }
    ring_.swap(larger);
    first_ = 0;
}

} // namespace Vornu::Core::Tasks
