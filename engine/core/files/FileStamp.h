#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

struct stat;

namespace Vornu::Platform
{

/// What tells whether a file is still the one that was read: two stamps differ once it was replaced or
/// written.
struct FileStamp
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    /// Time of the last modification in nanoseconds since 1970.
    std::int64_t modified = 0;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// The stamp of the file that `path` names, links followed; nothing if it can't be had, which `errno` then
/// tells the reason of.
std::optional<FileStamp> ReadFileStamp(const std::filesystem::path& path) noexcept;

/// The same for a name in a folder that is open as `folder`.
std::optional<FileStamp> ReadFileStampAt(int folder, const char* name) noexcept;

FileStamp StampOf(const struct ::stat& status) noexcept;

} // namespace Vornu::Platform
