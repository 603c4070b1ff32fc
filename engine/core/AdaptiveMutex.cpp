#include "engine/core/AdaptiveMutex.h"

namespace Vornu::Core
{
namespace
{

// A holder is done within some ten nanoseconds; one that takes longer was most likely taken off its core.
constexpr int kTries = 128;

} // namespace

void RelaxProcessor() noexcept
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

void AdaptiveMutex::LockSlowly() noexcept
{
    for (int i = 0; i < kTries; ++i)
    {
        if (state_.load(std::memory_order_relaxed) == kFree && TryFree())
        {
            return;
        }
        RelaxProcessor();
    }
    while (state_.exchange(kContended, std::memory_order_acquire) != kFree)
    {
        state_.wait(kContended, std::memory_order_relaxed);
    }
}

} // namespace Vornu::Core
