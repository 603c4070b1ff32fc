#include "engine/core/files/FileDescriptor.h"

#include "engine/core/files/FileSystemCalls.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace Vornu::Platform
{

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept
{
    if (this != &other)
    {
        Close();
        value_ = other.Release();
    }
    return *this;
}

int FileDescriptor::Release() noexcept
{
    const int value = value_;
    value_ = -1;
    return value;
}

int FileDescriptor::Close() noexcept
{
    // An interrupted close has freed the descriptor all the same, so there is nothing to retry.
    if (!IsOpen() || ActiveFileSystemCalls().close(Release()) == 0 || errno == EINTR)
    {
        return 0;
    }
    return errno;
}

int OpenDescriptor(const std::filesystem::path& path, int flags, mode_t mode, FileDescriptor& out) noexcept
{
    int value = -1;
    do
    {
        value = ActiveFileSystemCalls().open(path.c_str(), flags | O_CLOEXEC, mode);
    } while (value < 0 && errno == EINTR);
    if (value < 0)
    {
        return errno;
    }
    out = FileDescriptor(value);
    return 0;
}

int WriteAll(const FileDescriptor& file, std::string_view bytes) noexcept
{
    while (!bytes.empty())
    {
        const ssize_t count = ActiveFileSystemCalls().write(file.Get(), bytes.data(), bytes.size());
        if (count > 0)
        {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        else if (count == 0)
        {
            return EIO;
        }
        else if (errno != EINTR)
        {
            return errno;
        }
    }
    return 0;
}

int Flush(const FileDescriptor& file) noexcept
{
    while (ActiveFileSystemCalls().fsync(file.Get()) != 0)
    {
        if (errno != EINTR)
        {
            return errno;
        }
    }
    return 0;
}

int OpenFolder(const std::filesystem::path& folder, FileDescriptor& out) noexcept
{
    const int error = OpenDescriptor(folder, O_RDONLY | O_DIRECTORY, 0, out);
    return error == EACCES || error == EPERM ? 0 : error;
}

int FlushFolder(const FileDescriptor& folder) noexcept
{
    const int error = folder.IsOpen() ? Flush(folder) : 0;
    return error == EINVAL || error == ENOTSUP || error == EBADF ? 0 : error;
}

std::filesystem::path FolderOf(const std::filesystem::path& path)
{
    return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

} // namespace Vornu::Platform
