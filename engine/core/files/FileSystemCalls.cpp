#include "engine/core/files/FileSystemCalls.h"

#include <atomic>
#include <cstdio>

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace Vornu::Platform
{
namespace
{

constexpr FileSystemCalls kSystemCalls = {
    [](const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); },
    [](int descriptor, void* buffer, std::size_t length) { return ::read(descriptor, buffer, length); },
    [](int descriptor, const void* buffer, std::size_t length)
    { return ::write(descriptor, buffer, length); },
    [](int descriptor) { return ::fsync(descriptor); },
    [](const char* from, const char* to) { return std::rename(from, to); },
    [](const char* from, const char* to, int flags) { return ::linkat(AT_FDCWD, from, AT_FDCWD, to, flags); },
    [](int descriptor) { return ::close(descriptor); },
    [](int descriptor, const char* name, const void* value, std::size_t size)
    { return ::fsetxattr(descriptor, name, value, size, 0); },
};

std::atomic<const FileSystemCalls*> activeCalls = &kSystemCalls;

} // namespace

const FileSystemCalls& ActiveFileSystemCalls() noexcept
{
    return *activeCalls.load(std::memory_order_acquire);
}

const FileSystemCalls* ReplaceFileSystemCalls(const FileSystemCalls* calls) noexcept
{
    return activeCalls.exchange(calls != nullptr ? calls : &kSystemCalls, std::memory_order_acq_rel);
}

} // namespace Vornu::Platform
