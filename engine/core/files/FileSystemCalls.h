#pragma once

#include <cstddef>

#include <sys/types.h>

namespace Vornu::Platform
{

/// The system calls that every durable write of this library goes through. Each entry behaves like the call
/// of its name, `errno` included. Replacing the table is meant for tests that make a chosen call fail.
struct FileSystemCalls
{
    int (*open)(const char* path, int flags, mode_t mode);
    ssize_t (*read)(int descriptor, void* buffer, std::size_t length);
    ssize_t (*write)(int descriptor, const void* buffer, std::size_t length);
    int (*fsync)(int descriptor);
    int (*rename)(const char* from, const char* to);
    /// linkat(2) from the current folder to the current folder.
    int (*link)(const char* from, const char* to, int flags);
    int (*close)(int descriptor);
    /// fsetxattr(2) without flags.
    int (*fsetxattr)(int descriptor, const char* name, const void* value, std::size_t size);
};

/// The table in use; the system's own calls unless it was replaced.
const FileSystemCalls& ActiveFileSystemCalls() noexcept;

/// Puts `calls` in use, or the system's own ones if it is null, and gives back what was in use before.
/// `calls` has to outlive its use. Not for use while another thread works on files.
const FileSystemCalls* ReplaceFileSystemCalls(const FileSystemCalls* calls) noexcept;

} // namespace Vornu::Platform
