#pragma once

#include <atomic>

namespace Vornu::Core
{

/// A mutex of one word for critical sections of a few instructions: a thread that finds it held tries again,
/// and lets others have its core after a short while. So unlocking is a plain store. Not recursive. Fits
/// `std::lock_guard`.
class SpinMutex
{
public:
    void lock() noexcept
    {
        if (!TryLock())
        {
            LockSlowly();
        }
    }

    void unlock() noexcept { held_.store(false, std::memory_order_release); }

private:
    bool TryLock() noexcept { return !held_.exchange(true, std::memory_order_acquire); }
    void LockSlowly() noexcept;

    std::atomic<bool> held_ = false;
};

} // namespace Vornu::Core
