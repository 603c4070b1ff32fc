#include "engine/core/tasks/SpinMutex.h"

#include <thread>

namespace Vornu::Core
{
namespace
{

// A holder is done within some ten nanoseconds; one that takes longer was most likely taken off its core.
// Trying less and less often leaves the cache line to those who work there.
constexpr int kMostPauses = 64;

/// Tells the processor that the caller polls a value.
void RelaxProcessor() noexcept
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

} // namespace

void SpinMutex::LockSlowly() noexcept
{
    int pauses = 1;
    do
    {
        for (int i = 0; i < pauses; ++i)
        {
            RelaxProcessor();
        }
        if (pauses < kMostPauses)
        {
            pauses *= 2;
        }
        else
        {
            std::this_thread::yield();
        }
    } while (held_.load(std::memory_order_relaxed) || !TryLock());
}

} // namespace Vornu::Core
