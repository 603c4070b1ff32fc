#include "engine/core/tasks/TaskCounter.h"

#include "engine/core/logging/Logger.h"

#include <string>
#include <utility>

namespace Vornu::Core::Tasks
{
namespace
{

std::string ExceptionText(const std::exception_ptr& exception)
{
    try
    {
        std::rethrow_exception(exception);
    }
    catch (const std::exception& error)
    {
        return error.what();
    }
    catch (...)
    {
        return "unknown exception";
    }
}

} // namespace

CounterState::~CounterState()
{
    if (exception_ && !exceptionSeen_)
    {
        LogError("Task failed and nobody waited for it: " + ExceptionText(exception_));
    }
}

void CounterState::DropHandle() noexcept
{
    // The only handle of a group without tasks has nobody to compete with.
    const std::uint64_t last = kHandle;
    if ((state_.load() & ~kWaitedFor) == last || (state_.fetch_sub(kHandle) & ~kWaitedFor) == last)
    {
        delete this;
    }
}

bool CounterState::FinishTask() noexcept
{
    const std::uint64_t before = state_.fetch_sub(kTask);
    if ((before & ~kWaitedFor) == kTask)
    {
        delete this;
    }
    return (before & kUnfinished) == kTask && (before & kWaitedFor) != 0;
}

void CounterState::NoteWaiter() noexcept
{
    state_.fetch_or(kWaitedFor);
}

void CounterState::AddTask(TaskPriority priority) noexcept
{
    state_.fetch_add(kTask);
    const std::uint32_t bit = 1u << static_cast<unsigned>(priority);
    // Most groups have one priority, and reading is cheaper than writing.
    if ((priorities_.load() & bit) == 0)
    {
        priorities_.fetch_or(bit);
    }
}

void CounterState::KeepException(std::exception_ptr exception) noexcept
{
    const std::lock_guard lock(mutex_);
    if (!exception_)
    {
        exception_ = std::move(exception);
    }
}

void CounterState::Rethrow()
{
    const std::lock_guard lock(mutex_);
    if (exception_)
    {
        exceptionSeen_ = true;
        std::rethrow_exception(exception_);
    }
}

} // namespace Vornu::Core::Tasks
