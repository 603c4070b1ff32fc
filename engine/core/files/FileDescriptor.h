#pragma once

#include <filesystem>
#include <string_view>

#include <sys/stat.h>

namespace Vornu::Platform
{

/// Owns one open file descriptor and closes it. The helpers below retry what a signal interrupts, and report
/// 0 or the error number.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int value) noexcept : value_(value) {}
    FileDescriptor(FileDescriptor&& other) noexcept : value_(other.Release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor() { Close(); }

    bool IsOpen() const noexcept { return value_ >= 0; }
    int Get() const noexcept { return value_; }

    /// Gives the descriptor away; the caller closes it.
    int Release() noexcept;

    /// Closes now. The descriptor is gone even if an error is reported.
    int Close() noexcept;

private:
    int value_ = -1;
};

/// Opens with close-on-exec added to `flags`.
int OpenDescriptor(const std::filesystem::path& path, int flags, mode_t mode, FileDescriptor& out) noexcept;

int WriteAll(const FileDescriptor& file, std::string_view bytes) noexcept;

int Flush(const FileDescriptor& file) noexcept;

/// Opens a folder for `FlushFolder`. A folder that the user may not read can't be flushed: `out` stays closed
/// and there is no error.
int OpenFolder(const std::filesystem::path& folder, FileDescriptor& out) noexcept;

/// Brings the entries of the folder to the disk. A file system that has no such operation is no error.
int FlushFolder(const FileDescriptor& folder) noexcept;

/// The folder that holds `path`; "." for a bare name.
std::filesystem::path FolderOf(const std::filesystem::path& path);

} // namespace Vornu::Platform
