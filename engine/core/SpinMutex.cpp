#include "engine/core/SpinMutex.h"

#include <thread>

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

void SpinMutex::LockSlowly() noexcept
{
    int tries = 0;
    do
    {
        while (held_.load(std::memory_order_relaxed))
        {
            if (++tries % kTries == 0)
            {
                std::this_thread::yield();
            }
            RelaxProcessor();
        }
    } while (!TryLock());
}

} // namespace Vornu::Core
