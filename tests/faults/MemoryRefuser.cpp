// A library to preload into a program: it counts the allocations of memory from the beginning of `main` on,
// and refuses one of them, or all from that one on.
//
//   VORNU_MEMORY_AT    number of the allocation, from 1; 0 only counts
//   VORNU_MEMORY_ALL   set: later ones are refused as well
//   VORNU_MEMORY_LOG   gets the count at the end of the program

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

// The library's own ones, which take no lock of the dynamic loader.
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);
extern "C" void* __libc_memalign(std::size_t alignment, std::size_t size);

namespace
{

using Main = int (*)(int, char**, char**);

std::atomic<bool> isCounting = false;
std::atomic<long> count = 0;
long refusedAt = 0;
bool refusesAll = false;
Main programMain = nullptr;

bool IsRefused()
{
    if (!isCounting)
    {
        return false;
    }
    const long number = ++count;
    const bool refused = refusedAt > 0 && (number == refusedAt || (refusesAll && number > refusedAt));
    errno = refused ? ENOMEM : errno;
    return refused;
}

int CountedMain(int argumentCount, char** arguments, char** environment)
{
    const char* const at = std::getenv("VORNU_MEMORY_AT");
    refusedAt = at != nullptr ? std::atol(at) : 0;
    refusesAll = std::getenv("VORNU_MEMORY_ALL") != nullptr;
    isCounting = true;
    const int result = programMain(argumentCount, arguments, environment);
    isCounting = false;
    if (const char* const path = std::getenv("VORNU_MEMORY_LOG"))
    {
        char text[32];
        const int length = std::snprintf(text, sizeof text, "%ld\n", count.load());
        const int log = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        [[maybe_unused]] const ssize_t written = ::write(log, text, static_cast<std::size_t>(length));
        ::close(log);
    }
    return result;
}

} // namespace

extern "C" void* malloc(std::size_t size)
{
    return IsRefused() ? nullptr : __libc_malloc(size);
}

extern "C" void* calloc(std::size_t number, std::size_t size)
{
    return IsRefused() ? nullptr : __libc_calloc(number, size);
}

extern "C" void* realloc(void* block, std::size_t size)
{
    return IsRefused() ? nullptr : __libc_realloc(block, size);
}

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return IsRefused() ? nullptr : __libc_memalign(alignment, size);
}

extern "C" int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = IsRefused() ? nullptr : __libc_memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

extern "C" int __libc_start_main(Main main, int argumentCount, char** arguments, void (*first)(),
                                 void (*last)(), void (*linkerLast)(), void* stackEnd)
{
    using Start = decltype(&__libc_start_main);
    const auto start = reinterpret_cast<Start>(::dlsym(RTLD_NEXT, "__libc_start_main"));
    programMain = main;
    return start(CountedMain, argumentCount, arguments, first, last, linkerLast, stackEnd);
}
