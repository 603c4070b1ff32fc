#include "engine/core/files/FileStamp.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace Vornu::Platform
{

std::optional<FileStamp> ReadFileStamp(const std::filesystem::path& path) noexcept
{
    return ReadFileStampAt(AT_FDCWD, path.c_str());
}

std::optional<FileStamp> ReadFileStampAt(int folder, const char* name) noexcept
{
    struct stat status = {};
    if (::fstatat(folder, name, &status, 0) != 0)
    {
        return std::nullopt;
    }
    return StampOf(status);
}

FileStamp StampOf(const struct ::stat& status) noexcept
{
    constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
            status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec};
}

} // namespace Vornu::Platform
