#pragma once

#include <atomic>

namespace Vornu::Core
{

/// A mutex of one word for critical sections of a few instructions: a thread that finds it held tries for a
/// short while and then sleeps. Not recursive. Fits `std::lock_guard` and `std::unique_lock`.
///
/// The word's three values follow U. Drepper, "Futexes Are Tricky" (2011), so a holder only pays for waking
/// when somebody sleeps.
class AdaptiveMutex
{
public:
    void lock() noexcept
    {
        if (!TryFree())
        {
            LockSlowly();
        }
    }

    bool try_lock() noexcept { return TryFree(); }

    void unlock() noexcept
    {
        if (state_.exchange(kFree, std::memory_order_release) == kContended)
        {
            state_.notify_one();
        }
    }

private:
    static constexpr int kFree = 0;
    static constexpr int kHeld = 1;
    static constexpr int kContended = 2;

    bool TryFree() noexcept
    {
        int expected = kFree;
        return state_.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
                                              std::memory_order_relaxed);
    }

    void LockSlowly() noexcept;

    std::atomic<int> state_ = kFree;
};

/// Tells the processor that the caller polls a value.
void RelaxProcessor() noexcept;

} // namespace Vornu::Core
